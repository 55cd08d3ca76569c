#include "storage/document.h"

#include "core/texts.h"
#include "core/timetext.h"
#include "storage/prefs_file.h"
#include "storage/timesheet_file.h"

#include <QDir>
#include <QFileInfo>

namespace storage
{

namespace
{

// A row marked as running whose count has no start time to go on from is stopped, so that selecting it
// cannot put the window into the running state with no timer, and a stop cannot charge from midnight.
void stopRunningRows(std::vector<core::JobRow>& rows)
{
    for (core::JobRow& row : rows)
        if (row.run == core::kRunRunning)
            row.run = core::kRunStopped;
}

// A free name beside `path`: the file's name and the moment in the pattern, counted on where taken.
QString besideName(const FileStore& files, const QString& path, const QString& pattern, const QDateTime& now)
{
    const QFileInfo info(path);
    const QString moment = now.toString(QStringLiteral("yyyy-MM-dd HH.mm"));
    QString name = info.dir().filePath(pattern.arg(info.completeBaseName(), moment));
    for (int n = 2; files.exists(name); ++n)
        name =
            info.dir().filePath(pattern.arg(info.completeBaseName(), moment + QLatin1Char('-') + QString::number(n)));
    return name;
}

// Whether two versions of a file differ, within one run: cheaper than a cryptographic digest at every
// minute's save, and only ever compared with itself.
size_t digestOf(const QByteArray& bytes)
{
    return qHashBits(bytes.constData(), size_t(bytes.size()), 0);
}

// The minutes the timer put on rows here since the last save, job by job (day, job, project and
// operation), onto another version of the list: onto its first row of that job, or onto a new row.
Document::Carried carryTimed(const core::Timesheet& mine, const QHash<QString, qint64>& timed, core::Timesheet& into)
{
    Document::Carried carried;
    QSet<QString> done;
    for (const core::JobRow& timedRow : mine.rows) {
        const QString key = timedRow.timingKey();
        const qint64 minutes = timed.value(key);
        if (minutes == 0 || done.contains(key))
            continue;
        done.insert(key);
        const auto found = std::find_if(into.rows.begin(), into.rows.end(),
                                        [&](const core::JobRow& row) { return row.timingKey() == key; });
        const int index = int(found - into.rows.begin());
        if (found != into.rows.end()) {
            found->setMinutes(std::max<qint64>(0, found->minutes() + minutes));
            carried.told << (minutes > 0 ? Document::kCarriedTo : Document::kCarriedOff)
                                .arg(core::hhmm(std::abs(minutes)))
                                .arg(index + 1);
        } else if (minutes > 0) {
            core::JobRow row = timedRow;
            row.setMinutes(minutes);
            row.run = core::kRunStopped;
            into.AddRow(std::move(row));
            carried.told << Document::kCarriedNew.arg(core::hhmm(minutes)).arg(index + 1);
        } else {
            continue;
        }
        if (carried.firstRow < 0)
            carried.firstRow = index;
    }
    return carried;
}

// Whether every row of `mine` is somewhere in `theirs`, as many times, the run mark aside.
bool rowsContained(const std::vector<core::JobRow>& mine, const std::vector<core::JobRow>& theirs)
{
    const auto text = [](core::JobRow row) {
        row.run = core::kRunStopped;
        QByteArray bytes;
        for (const auto& cell : row.cells)
            bytes += cell.text().toUtf8() + '\x1f';
        return bytes + row.note.toUtf8() + '\x1f' + row.budget.text().toUtf8() + '\x1f' + row.user.text().toUtf8();
    };
    QHash<QByteArray, int> counts;
    for (const core::JobRow& row : theirs)
        ++counts[text(row)];
    for (const core::JobRow& row : mine)
        if (--counts[text(row)] < 0)
            return false;
    return true;
}

} // namespace

bool isConflictCopy(const QString& fileName, const QString& name)
{
    const QFileInfo file(fileName);
    const QString base = file.completeBaseName();
    const QString suffix = QLatin1Char('.') + file.suffix();
    if (!name.endsWith(suffix) || name == fileName)
        return false;
    // Dropbox and Nextcloud: "NAME (… conflicted copy …).vlk"; Syncthing: "NAME.sync-conflict-….vlk".
    return (name.startsWith(base + QStringLiteral(" (")) && name.contains(QStringLiteral("conflicted copy"))) ||
           name.startsWith(base + QStringLiteral(".sync-conflict-"));
}

Document::Document(core::App& app, FileStore& files, platform::Dialogs& dialogs, platform::Desktop& desktop,
                   platform::Clock& clock, QString documentsFolder)
    : m_app(app), m_files(files), m_dialogs(dialogs), m_desktop(desktop), m_clock(clock),
      m_backups(files, backupFolder()), m_documents(std::move(documentsFolder))
{}

void Document::sesame(Marks marks)
{
    core::Mainwndo& w = m_app.mainwndo();
    w.deleteall();
    if (m_app.thisdoc.isEmpty())
        return;

    const QString path = QFileInfo(m_app.thisdoc).absoluteFilePath();
    QByteArray bytes;
    // Taken before the read: a write that comes between the two shows as a change at the next save.
    FileStamp stamp;
    m_files.stamp(path, stamp);
    platform::Result read = m_files.read(path, bytes);
    ReadResult result;
    if (read.ok())
        result = decodeTimesheet(bytes);
    // A damaged file still shows what could be read; with no path the damaged file is never overwritten.
    w.ListBox1.rows = std::move(result.sheet.rows);
    // A running row is charged from the start time, which is stored last: a file cut short has none.
    if (!result.complete || result.sheet.starthrs.isEmpty() || marks == Marks::Stopped)
        stopRunningRows(w.ListBox1.rows);
    w.ListBox1.starthrs = result.sheet.starthrs;
    w.ListBox1.startmin = result.sheet.startmin;
    emit w.rowsReset();
    if (!read.ok() || !result.complete) {
        loadFailed(path);
        // What could be read is in no file now: it stays dirty until the user keeps it with Save As.
        w.boxchange = w.ListBox1.ListCount() > 0;
        w.Uptotal2(1);
        w.rowcheck();
        return;
    }

    w.xpath = path;
    m_app.prefs.lastdoc = path;
    know(path, stamp, bytes);

    // A row still marked as running was left so by a crash or a quit: charge the time since.
    int remembered = 0;
    bool found = false;
    for (int i = 0; i < w.ListBox1.ListCount(); ++i) {
        if (w.ListBox1.row(i).run == core::kRunRunning) {
            m_desktop.beep();
            m_dialogs.message(core::App::kAppRunWarning + QStringLiteral("\n\n") + kAppTimerNotStopped +
                              QString::number(i + 1) + kAppElapsedTime);
            if (found)
                w.ListBox1.row(remembered).run = core::kRunStopped; // one job runs at a time: the last
            remembered = i;
            found = true;
        }
    }
    w.setListIndex(w.ListBox1.ListCount() > 0 ? remembered : -1);
    w.rebuildClientRows(); // a timesheet read again under the single-client view
    w.boxchange = false;
    w.Windowfilename();
    w.Uptotal2(w.ListBox2Ctl.visible ? 2 : 1);
    if (found) {
        w.Allstop();
        w.allcont(core::Mainwndo::From::LastStop);
    }
    w.njButton2.enabled = !w.running;
    emit w.controlsChanged();
    w.checkAllBudgets(); // the budget marks and the preset list's hours, as of this timesheet
    emit w.opened();
    noticeConflictCopies(path);
}

void Document::newSaveAs()
{
    m_app.mainwndo(); // New opens an untitled window, which stays when the chooser is cancelled
    const QString chosen =
        m_dialogs.saveFile(kAppNewSheetDlgTitle, kAppNewSheetPrompt, m_documents, kAppSuggestFileName, kFileFilter);
    if (!chosen.isEmpty())
        saveAsChosen(chosen);
}

bool Document::saveAsChosen(const QString& chosen)
{
    core::Mainwndo& w = m_app.mainwndo();
    QString path = QFileInfo(chosen).absoluteFilePath();
    if (QFileInfo(path).suffix().isEmpty())
        path += QLatin1Char('.') + kTimesheetSuffix;

    w.showStatus(core::Mainwndo::kDSWrite);
    const platform::Result written = writeOver(path, w.ListBox1);
    if (!written.ok()) {
        writeFailed(written);
        return false;
    }
    w.xpath = path;
    m_app.prefs.lastdoc = path;
    m_app.thisdoc = path;
    w.Windowfilename();
    w.boxchange = false;
    w.timedSinceSave.clear();
    w.rowcheck();
    w.Uptotal2(w.ListBox2Ctl.visible ? 2 : 1);
    emit w.opened();
    return true;
}

void Document::open()
{
    // A sync conflict copy told of is offered: the chooser starts on it.
    const QString start = m_files.exists(m_copyOffered) ? m_copyOffered : m_documents;
    const QString chosen = m_dialogs.openFile(kAppOpenDlgTitle, start, kFileFilter);
    if (chosen.isEmpty() || !m_files.exists(chosen))
        return;
    m_app.thisdoc = chosen;
    sesame();
}

void Document::openOld()
{
    platform::Question question;
    question.message = kAppOpenOldExplain;
    question.action = Tr::MWButtonOK;
    question.caution = false;
    if (m_dialogs.ask(question) != platform::Answer::Action)
        return;
    const QString chosen = m_dialogs.openFile(kAppOpenDlgTitle, m_documents, QStringLiteral("All files (*)"));
    QByteArray bytes;
    if (chosen.isEmpty())
        return;
    const bool read = m_files.read(chosen, bytes).ok();
    ReadResult result = read ? decodeTimesheet(bytes) : ReadResult{};
    if (!read || !result.complete)
        loadFailed(chosen); // what could be read is still converted
    if (!read)
        return;
    core::Mainwndo& w = m_app.mainwndo();
    w.deleteall();
    w.ListBox1.rows = std::move(result.sheet.rows);
    // The clock start of another file means nothing here; the converted list starts with no timer.
    stopRunningRows(w.ListBox1.rows);
    emit w.rowsReset();
    w.setListIndex(w.ListBox1.ListCount() > 0 ? 0 : -1);
    w.Uptotal2(1);
    w.markChanged();
}

void Document::loadFailed(const QString& path)
{
    m_desktop.beep();
    m_dialogs.message(QStringLiteral("Veltrick - Error [-2]\r\r") + core::App::kAppRunWarning + QLatin1Char('\r') +
                      core::App::kAppLastPath + path);
}

bool Document::switchitConfirmed()
{
    m_desktop.beep();
    platform::Question question;
    question.message = kSWQuestion;
    question.explanation = kSWExplain;
    question.action = Tr::MWButtonOK;
    return m_dialogs.ask(question) == platform::Answer::Action;
}

platform::Result Document::writeTimesheet(const QString& path, const core::Timesheet& sheet)
{
    if (changedOnDisk(path)) {
        keepMine(path, sheet);
        return platform::Result::failure(platform::Result::kChangedElsewhere, kNotSaved);
    }
    return writeOver(path, sheet);
}

platform::Result Document::writeOver(const QString& path, const core::Timesheet& sheet)
{
    m_backups.beforeWrite(path, m_clock.now().date());
    int cut = 0;
    encodeTimesheet(sheet, m_buffer, &cut);
    FileStamp stamp;
    const platform::Result result = m_files.write(path, m_buffer, stamp);
    if (!result.ok())
        return result;
    know(path, stamp, m_buffer);
    if (cut > 0 && !m_toldCut) {
        m_toldCut = true;
        m_dialogs.message(kNoteCut);
    }
    return result;
}

void Document::writeFailed(const platform::Result& result)
{
    m_desktop.beep();
    m_dialogs.message(QStringLiteral("Error [") + QString::number(result.code) + QStringLiteral("] ") + kAppNoAccess +
                      QStringLiteral("\n\n") + kAppNoAccessTxt);
}

void Document::knowTheirs()
{
    m_known.stamp = m_theirsStamp;
    m_known.digest = digestOf(m_theirs);
}

void Document::know(const QString& path, const FileStamp& stamp, const QByteArray& bytes)
{
    if (path != m_known.path)
        m_mine.clear(); // a copy beside another timesheet is that one's
    m_known = {path, stamp, digestOf(bytes)};
}

bool Document::changedOnDisk(const QString& path)
{
    if (path != m_known.path)
        return false; // a file chosen in Save As: the chooser asked before replacing it
    FileStamp now;
    if (!m_files.stamp(path, now) || now == m_known.stamp)
        return false; // the same file, or none: writing it again loses nothing
    QByteArray bytes;
    if (!m_files.read(path, bytes).ok())
        return false; // the write that follows says what is wrong
    if (digestOf(bytes) == m_known.digest) {
        m_known.stamp = now; // touched, or copied back as it was
        return false;
    }
    m_theirs = std::move(bytes);
    m_theirsStamp = now;
    return true;
}

void Document::keepMine(const QString& path, const core::Timesheet& sheet)
{
    if (m_mine.isEmpty())
        m_mine = besideName(m_files, path, kMineName, m_clock.now());
    m_mineKept = m_files.write(m_mine, encodeTimesheet(sheet));
}

void Document::dropMine()
{
    if (!m_mine.isEmpty())
        m_files.remove(m_mine);
    m_mine.clear();
}

void Document::reread(const QString& path)
{
    m_app.thisdoc = path;
    sesame(Marks::Stopped);
}

void Document::changedElsewhere()
{
    core::Mainwndo* w = m_app.existingMainwndo();
    if (m_choosing || !w || w->xpath.isEmpty())
        return;
    if (!changedOnDisk(w->xpath)) {
        // Put back as it was meanwhile: this list can go to its file again.
        if (w->autosave())
            dropMine();
        return;
    }
    m_choosing = true;
    keepMine(w->xpath, w->ListBox1);
    // Theirs half written, or damaged: there is nothing whole to open.
    const bool whole = decodeTimesheet(m_theirs).complete;
    platform::Question question;
    question.message = kChangedQuestion.arg(QFileInfo(w->xpath).fileName());
    question.explanation = (whole ? kChangedExplain : kChangedDamaged).arg(QFileInfo(m_mine).fileName());
    question.action = whole ? kOpenTheirs : kKeepMine;
    question.alternate = whole ? kKeepMine : QString();
    question.other = kSaveMineAs;
    m_desktop.beep();
    // An answer that fails (a full disk) leaves the question for the next save or change to ask again.
    switch (m_dialogs.ask(question)) {
    case platform::Answer::Action:
        if (whole)
            openTheirs();
        else
            keepMineOver();
        break;
    case platform::Answer::Alternate:
        keepMineOver();
        break;
    case platform::Answer::Cancel:
        saveMineAs();
        break;
    }
    m_choosing = false;
    m_theirs = QByteArray(); // a whole file: not kept once answered
}

void Document::openTheirs()
{
    core::Mainwndo& w = m_app.mainwndo();
    // The stop puts the minutes up to now on the row; its save is refused, and this list goes beside.
    if (w.running)
        w.Allstop();
    core::Timesheet merged = decodeTimesheet(m_theirs).sheet;
    stopRunningRows(merged.rows);
    const Carried carried = carryTimed(w.ListBox1, w.timedSinceSave, merged);
    const bool contained = rowsContained(w.ListBox1.rows, merged.rows);
    if (!contained && !m_mineKept.ok()) {
        m_desktop.beep();
        m_dialogs.message(kMineNotKept.arg(m_mineKept.message));
        return;
    }
    // Written only over the version the user chose to open: one newer still is asked about when it is
    // noticed, as any change.
    const OnDisk before = m_known;
    knowTheirs();
    if (changedOnDisk(w.xpath)) {
        m_known = before;
        return;
    }
    const platform::Result written = writeOver(w.xpath, merged);
    if (!written.ok()) {
        m_known = before;
        writeFailed(written);
        return;
    }
    const QString mineBeside = m_mine;
    reread(w.xpath);
    m_mine = mineBeside;
    if (carried.firstRow >= 0 && carried.firstRow < w.ListBox1.ListCount() && !w.running) {
        w.setListIndex(carried.firstRow);
        w.rebuildClientRows();
    }
    if (!carried.told.isEmpty())
        m_dialogs.message(carried.told.join(QLatin1Char('\n')));
    if (contained)
        dropMine();
    else
        m_dialogs.message(kMineKept.arg(QFileInfo(m_mine).fileName()));
    m_mine.clear();
}

void Document::keepMineOver()
{
    core::Mainwndo& w = m_app.mainwndo();
    const QString theirs = besideName(m_files, w.xpath, kTheirsName, m_clock.now());
    const platform::Result kept = m_files.write(theirs, m_theirs);
    if (!kept.ok()) {
        writeFailed(kept);
        return;
    }
    // Theirs is safe beside: the file may take this list. A version newer still is asked about again.
    knowTheirs();
    if (w.autosave())
        dropMine();
    w.showNotice(kTheirsKept.arg(QFileInfo(theirs).fileName()));
}

void Document::saveMineAs()
{
    core::Mainwndo& w = m_app.mainwndo();
    const QString chosen = m_dialogs.saveFile(kAppNewSheetDlgTitle, kAppNewSheetPrompt, QFileInfo(w.xpath).path(),
                                              QFileInfo(m_mine).fileName(), kFileFilter);
    if (chosen.isEmpty())
        return;
    // The timesheet's own name, chosen and confirmed: that is Keep Mine, theirs kept beside.
    if (QFileInfo(chosen).absoluteFilePath() == w.xpath) {
        keepMineOver();
        return;
    }
    const QString mineBeside = m_mine;
    if (!saveAsChosen(chosen))
        return;
    if (QFileInfo(chosen).absoluteFilePath() != mineBeside)
        m_files.remove(mineBeside);
    m_mine.clear();
}

void Document::checkDisk()
{
    core::Mainwndo* w = m_app.existingMainwndo();
    if (m_choosing || !w || w->xpath.isEmpty())
        return;
    if (changedOnDisk(w->xpath)) {
        if (w->boxchange || w->running) {
            changedElsewhere();
        } else if (decodeTimesheet(m_theirs).complete) { // one still being written reads short: it comes again
            const int index = w->ListBox1.ListIndex;
            w->showNotice(kReread); // a conflict copy found with the new version is told of in its place
            reread(w->xpath);
            m_theirs = QByteArray();
            if (index < w->ListBox1.ListCount()) {
                w->setListIndex(index);
                w->rebuildClientRows();
            }
            return;
        }
    }
    noticeConflictCopies(w->xpath);
}

void Document::noticeConflictCopies(const QString& path)
{
    // A linked timesheet's sync tool works in the folder of the file linked to.
    const QString target = QFileInfo(path).canonicalFilePath();
    const QFileInfo file(target.isEmpty() ? path : target);
    QStringList told;
    for (const QString& name : m_files.list(file.absolutePath())) {
        const QString copy = file.dir().filePath(name);
        if (isConflictCopy(file.fileName(), name) && !m_toldCopies.contains(copy)) {
            m_toldCopies.insert(copy);
            m_copyOffered = copy;
            told << name;
        }
    }
    if (!told.isEmpty())
        m_app.mainwndo().showNotice(kConflictCopy.arg(told.join(QStringLiteral("\u201d, \u201c"))));
}

void Document::readPrefs(core::AppPrefs& prefs)
{
    QByteArray bytes;
    if (m_files.read(prefFile(kPrefsFileName), bytes).ok())
        prefs = decodePrefs(bytes, prefs);
}

void Document::saveprefs(const core::AppPrefs& prefs)
{
    if (!m_files.write(prefFile(kPrefsFileName), encodePrefs(prefs)).ok()) {
        m_desktop.beep();
        m_dialogs.message(kAppPrefsError);
    }
}

} // namespace storage

#include "storage/document.h"

#include "core/texts.h"
#include "storage/prefs_file.h"
#include "storage/timesheet_file.h"

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

} // namespace

Document::Document(core::App& app, FileStore& files, platform::Dialogs& dialogs, platform::Desktop& desktop,
                   platform::Clock& clock, QString documentsFolder)
    : m_app(app), m_files(files), m_dialogs(dialogs), m_desktop(desktop), m_clock(clock),
      m_backups(files, backupFolder()), m_documents(std::move(documentsFolder))
{}

void Document::sesame()
{
    core::Mainwndo& w = m_app.mainwndo();
    w.deleteall();
    if (m_app.thisdoc.isEmpty())
        return;

    const QString path = QFileInfo(m_app.thisdoc).absoluteFilePath();
    QByteArray bytes;
    platform::Result read = m_files.read(path, bytes);
    ReadResult result;
    if (read.ok())
        result = decodeTimesheet(bytes);
    // A damaged file still shows what could be read; with no path the damaged file is never overwritten.
    w.ListBox1.rows = std::move(result.sheet.rows);
    // A running row is charged from the start time, which is stored last: a file cut short has none.
    if (!result.complete || result.sheet.starthrs.isEmpty())
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
}

void Document::newSaveAs()
{
    core::Mainwndo& w = m_app.mainwndo();
    const QString chosen =
        m_dialogs.saveFile(kAppNewSheetDlgTitle, kAppNewSheetPrompt, m_documents, kAppSuggestFileName, kFileFilter);
    if (chosen.isEmpty())
        return;
    QString path = QFileInfo(chosen).absoluteFilePath();
    if (QFileInfo(path).suffix().isEmpty())
        path += QLatin1Char('.') + kTimesheetSuffix;

    w.showStatus(core::Mainwndo::kDSWrite);
    const platform::Result written = writeTimesheet(path, w.ListBox1);
    if (!written.ok()) {
        m_desktop.beep();
        m_dialogs.message(QStringLiteral("Error [") + QString::number(written.code) + QStringLiteral("] ") +
                          kAppNoAccess + QStringLiteral("\n\n") + kAppNoAccessTxt);
        return;
    }
    w.xpath = path;
    m_app.prefs.lastdoc = path;
    m_app.thisdoc = path;
    w.Windowfilename();
    w.boxchange = false;
    w.rowcheck();
    w.Uptotal2(w.ListBox2Ctl.visible ? 2 : 1);
    emit w.opened();
}

void Document::open()
{
    const QString chosen = m_dialogs.openFile(kAppOpenDlgTitle, m_documents, kFileFilter);
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
    m_backups.beforeWrite(path, m_clock.now().date());
    int cut = 0;
    encodeTimesheet(sheet, m_buffer, &cut);
    const platform::Result result = m_files.write(path, m_buffer);
    if (result.ok() && cut > 0 && !m_toldCut) {
        m_toldCut = true;
        m_dialogs.message(kNoteCut);
    }
    return result;
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

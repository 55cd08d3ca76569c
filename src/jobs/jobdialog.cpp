#include "jobs/jobdialog.h"

#include "clients/clientview.h"
#include "core/app.h"
#include "core/timetext.h"
#include "jobs/notes.h"
#include "platform/yieldgate.h"
#include "storage/clients_file.h"

namespace jobs
{

namespace
{

const QString kSeparatorOfEntry = QStringLiteral(" : ");
const QString kButtonOkjob = QStringLiteral("okjob");
const QString kButtonOkjob2 = QStringLiteral("okjob2");
const QString kLineEnds = QStringLiteral("\n\n");

MenuRow row(const QString& text)
{
    return MenuRow{text, false};
}

MenuRow separator()
{
    return MenuRow{QString(), true};
}

bool isChoosable(const MenuButton& menu, int index)
{
    return index >= 0 && index < menu.rows.size() && !menu.rows[index].separator;
}

} // namespace

QString menuText(const QString& text)
{
    return QString(text).replace(QLatin1Char('&'), QStringLiteral("&&"));
}

QString fromMenuText(const QString& text)
{
    return QString(text).replace(QStringLiteral("&&"), QStringLiteral("&"));
}

// ---- sources ----

FileSources::FileSources(const storage::FileStore& files, const core::AppPrefs& prefs, QString prefFolder,
                         storage::PresetJobList& joblst)
    : m_files(files), m_prefs(prefs), m_prefFolder(std::move(prefFolder)), m_joblst(joblst)
{}

QString FileSources::operationsPath() const
{
    if (!m_prefs.rmteops.isEmpty())
        return m_prefs.rmteops;
    return m_prefFolder + QLatin1Char('/') + storage::kOperationsFileName;
}

QString FileSources::clientsPath() const
{
    return m_prefFolder + QLatin1Char('/') + storage::kClientsFileName;
}

std::optional<storage::OperationList> FileSources::operations() const
{
    const QString path = operationsPath();
    QByteArray bytes;
    if (!m_files.exists(path) || !m_files.read(path, bytes).ok())
        return std::nullopt;
    return storage::decodeOperations(bytes);
}

std::optional<QStringList> FileSources::clients() const
{
    const QString path = clientsPath();
    QByteArray bytes;
    if (!m_files.exists(path) || !m_files.read(path, bytes).ok())
        return std::nullopt;
    return storage::decodeClientList(bytes);
}

// ---- the dialog ----

specialw::specialw(JobServices services, bool& openFlag)
    : m_s(services), m_openFlag(openFlag), m_specialtimer(m_s.timers.create(kTimerPeriod)),
      m_captionTimer(m_s.timers.create(kTimerPeriod))
{
    m_specialtimer->action = [this] { specialtimer_Action(); };
    m_captionTimer->action = [this] { captionTimer_Action(); };
}

specialw::~specialw()
{
    // Gone without a close (the opener ended it): nothing may fire into a dead form.
    m_specialtimer->setMode(platform::Timer::Off);
    m_captionTimer->setMode(platform::Timer::Off);
    if (!closed)
        m_openFlag = false;
}

QString specialw::dayCaption(const QDate& date)
{
    // Monday is 1 in the calendar's numbering.
    static const std::array<const QString*, 7> names{&kDayMonday, &kDayTuesday,  &kDayWedneday, &kDayThursday,
                                                     &kDayFriday, &kDaySaturday, &kDaySunday};
    const int day = date.dayOfWeek();
    return day >= 1 && day <= 7 ? *names[static_cast<size_t>(day - 1)] : kDay;
}

void specialw::Event_Open()
{
    // Both menus come up with their fixed rows even when their file is missing.
    fillOpps(m_s.sources.operations().value_or(storage::OperationList()));
    fillClients(m_s.sources.clients());

    // A new job defaults to the client picked beside the list.
    const QString& preset = m_s.main.clientnameselected;
    if (!preset.isEmpty() && preset != Tr::MWClientListf)
        popupclnt.caption = preset;

    refreshJobsList();
    nmepopup = m_s.prefs.usrname;
    m_openFlag = true;
    m_captionTimer->setMode(platform::Timer::Multiple);
    emit changed();
}

void specialw::fillOpps(const storage::OperationList& operations)
{
    popup.rows = {row(kRefreshList), row(kEditOperations), separator()};
    platform::YieldGate gate(m_s.desktop);
    for (const storage::Operation& op : operations) {
        popup.rows << row(menuText(op.description.isEmpty() ? op.name : op.name + kSeparatorOfEntry + op.description));
        gate.step();
    }
    popup.MenuValue = 2;
}

void specialw::fillClients(const std::optional<QStringList>& names)
{
    popupclnt.rows = {row(kSyncContacts), row(kAddNewClient), separator()};
    m_noClients = !names;
    if (names) {
        platform::YieldGate gate(m_s.desktop);
        for (const QString& name : *names) {
            popupclnt.rows << row(menuText(name));
            gate.step();
        }
    } else {
        popupclnt.rows << row(kNoClients);
    }
    popupclnt.MenuValue = 2;
}

void specialw::NotesArea_Open(bool dark)
{
    NotesAreaBackground = dark ? kNotesBackDark : kNotesBackLight;
    NotesAreaTextColor = dark ? kNotesTextDark : kNotesTextLight;
    emit changed();
}

void specialw::refreshOppsList()
{
    // A file that has gone is a list with no entries: the menu keeps only its own rows.
    fillOpps(m_s.sources.operations().value_or(storage::OperationList()));
    emit changed();
}

void specialw::refreshClientList()
{
    m_s.hooks.syncaddressbook2();
    rebuildClientMenu();
}

void specialw::rebuildClientMenu()
{
    const auto names = m_s.sources.clients();
    if (!names)
        return;
    fillClients(names);
    popupclnt.caption = kNoChoice;
    emit changed();
}

void specialw::refreshJobsList()
{
    choosejob.rows = {row(kRefreshList), row(kEditPresetJob), row(kAddPresetJobList), separator()};
    platform::YieldGate gate(m_s.desktop);
    for (const storage::PresetJob& job : m_s.sources.joblst()) {
        choosejob.rows << row(menuText(job.job + kSeparatorOfEntry + job.project));
        gate.step();
    }
    choosejob.MenuValue = 3;
    emit changed();
}

void specialw::popup_Action(int index)
{
    if (!isChoosable(popup, index))
        return;
    popup.MenuValue = index;
    if (index == 0) {
        refreshOppsList();
    } else if (index == 1) {
        m_s.hooks.editOperations();
        popup.MenuValue = 2;
    } else {
        const QString& text = popup.rows[index].text;
        const qsizetype cut = text.indexOf(kSeparatorOfEntry);
        popup.caption = cut < 0 ? text : text.left(cut);
    }
    emit changed();
}

void specialw::popupclnt_Action(int index)
{
    if (!isChoosable(popupclnt, index))
        return;
    popupclnt.MenuValue = index;
    popupclnt.caption = popupclnt.rows[index].text;
    if (index == 1) {
        m_s.hooks.syncaddressbook2();
        // Without access to the contacts the message has been given and the caption stays. A client
        // just added is the one the job is for.
        if (m_s.main.contactsAccess) {
            const QString added = menuText(m_s.hooks.showAddressadd());
            popupclnt.caption = kNoChoice;
            popupclnt.MenuValue = 2;
            for (int r = 3; !added.isEmpty() && r < popupclnt.rows.size(); ++r) {
                if (popupclnt.rows[r].text.compare(added, Qt::CaseInsensitive) == 0) {
                    popupclnt.caption = popupclnt.rows[r].text;
                    popupclnt.MenuValue = r;
                    break;
                }
            }
        }
    } else if (index == 0) {
        refreshClientList();
    } else if (m_noClients && index == 3) {
        popupclnt.caption = kNoChoice;
        popupclnt.MenuValue = 2;
    }
    emit changed();
}

void specialw::choosejob_Action(int index)
{
    if (!isChoosable(choosejob, index))
        return;
    choosejob.MenuValue = index;
    if (index == 0) {
        refreshJobsList();
    } else if (index == 1) {
        if (m_s.main.ListBox2Ctl.visible) {
            m_s.desktop.beep();
            m_s.dialogs.message(core::App::kAppRunWarning + kLineEnds + kNSUNotifiAlertMsg);
        } else {
            m_s.hooks.editPresetJobs();
        }
        choosejob.MenuValue = 3;
    } else if (index == 2) {
        // Nothing is checked: empty fields give an empty entry, as the user asked for it.
        storage::PresetJob job;
        job.job = enterjob.toUpper();
        job.project = enterclient;
        job.budget = QStringLiteral("00");
        m_s.sources.joblst().insert(0, job);
        m_s.hooks.joblistupdate();
        choosejob.MenuValue = 3;
    } else {
        // Split at the first colon: the job number ends two characters before it, the project starts
        // two after, which drops the " : " the menu put between them.
        const QString text = fromMenuText(choosejob.rows[index].text);
        const qsizetype p = text.indexOf(QLatin1Char(':')) + 1;
        enterjob = text.left(std::max<qsizetype>(0, p - 2));
        enterclient = text.right(std::max<qsizetype>(0, text.size() - p - 1));
    }
    emit changed();
}

bool specialw::timeKeyDown(QChar key)
{
    const char16_t c = key.unicode();
    if ((c >= u'0' && c <= u'9') || c == 13 || c == 8 || c == 9 || c == 3)
        return false;
    m_s.desktop.beep();
    return true;
}

bool specialw::sphrs_KeyDown(QChar key)
{
    return timeKeyDown(key);
}

bool specialw::spmin_KeyDown(QChar key)
{
    return timeKeyDown(key);
}

void specialw::spmin_TextChange()
{
    if (core::Val(spmin) <= 59)
        return;
    m_s.desktop.beep();
    m_s.dialogs.message(kMinsLess);
    spmin.clear();
    emit changed();
}

void specialw::enterjob_GotFocus()
{
    enterjobMask = QStringLiteral(">");
}

bool specialw::NotesArea_TextChange(const QString& text)
{
    // A note longer than the file's field would be cut on save; refuse it here, where the user sees why.
    if (!noteTakes(NotesArea, text)) {
        m_s.desktop.beep();
        noteWarning = noteFullText();
        emit changed();
        return false;
    }
    NotesArea = text;
    if (!noteWarning.isEmpty()) {
        noteWarning.clear();
        emit changed();
    }
    return true;
}

void specialw::stepDate(int days)
{
    const auto date = core::parseShortDate(dateField, m_s.clock.now().date());
    if (!date)
        return;
    const QDate moved = date->addDays(days);
    dateField = core::shortDate(moved);
    dateDay = dayCaption(moved);
    emit changed();
}

void specialw::captionTimer_Action()
{
    const QString& caption = m_s.desktop.ctrlDown() ? Tr::MWStartButtonSt : Tr::MWButtonOK;
    if (okjob.caption == caption && okjob2.caption == caption)
        return;
    okjob.caption = caption;
    okjob2.caption = caption;
    emit changed();
}

void specialw::okjob_Action()
{
    okjob.enabled = false;
    bp = kButtonOkjob;
    emit changed();
    setdata();
}

void specialw::okjob2_Action()
{
    okjob2.enabled = false;
    bp = kButtonOkjob2;
    emit changed();
    setdata();
}

void specialw::onErrActivate()
{
    if (bp == kButtonOkjob)
        okjob.enabled = true;
    else
        okjob2.enabled = true;
    emit changed();
}

void specialw::fail(const QString& message)
{
    m_s.desktop.beep();
    m_s.dialogs.message(message);
    onErrActivate();
}

void specialw::setdata()
{
    core::Mainwndo& w = m_s.main;
    const QDate today = m_s.clock.now().date();

    int row = w.ListBox1.ListIndex;
    const QString job = enterjob.toUpper();
    const QString project = fromMenuText(enterclient);
    const QString operation = fromMenuText(popup.caption);
    const QString user = nmepopup;
    const QString hours = core::fmt00(core::Val(sphrs));
    const QString minutes = core::fmt00(core::Val(spmin));
    const QString client = fromMenuText(popupclnt.caption);
    const QString note = NotesArea;
    const auto date = core::parseShortDate(dateField, today);

    if (job.isEmpty() || project.isEmpty())
        return fail(kEnterDatainEveryBox);
    if (popup.caption == kNoChoice)
        return fail(kChooseOperation);
    if (user.isEmpty())
        return fail(kEnterDatainEveryBox);
    if (!date)
        return fail(kEnterValidDate + core::shortDate(today));
    if (w.ListBox2Ctl.visible && client.compare(w.LB2ClientName, Qt::CaseInsensitive) != 0)
        return fail(kSingleClientList + w.LB2ClientName + kLineEnds + kSameClientName);

    // An edit with nothing selected has no row to go into; the typed job is kept as a new row instead.
    const bool newRow = bp == kButtonOkjob || !w.ListBox1.hasSelection();
    if (newRow) {
        row = 0;
        w.insertRow(0, core::JobRow{}); // a job that runs keeps its row selected
    }
    core::JobRow& target = w.ListBox1.row(row);
    target.setCell(core::CellDate, core::shortDate(*date));
    target.setCell(core::CellHours, hours);
    target.setCell(core::CellMinutes, minutes);
    // Only a new row can become "never started"; an edit leaves the run mark alone.
    if (newRow && core::Val(hours) < 1 && core::Val(minutes) < 1)
        target.run = core::kRunNever;
    target.setCell(core::CellJob, job);
    target.setCell(core::CellProject, project);
    target.setCell(core::CellOperation, operation);
    target.setCell(core::CellClient, client);
    target.user = user;
    target.note = note;
    w.notebox.caption = note;
    if (newRow)
        emit w.rowsReset();
    else
        emit w.rowChanged(row);

    w.setListIndex(row);
    w.boxchange = true;
    if (w.ListBox2Ctl.visible)
        m_s.clientView.rebuildKeepingIndex(); // ListBox1 follows the row the view keeps selected
    m_s.mainHooks.budgetcheck();
    w.Uptotal2(w.ListBox2Ctl.visible ? 2 : 1);
    w.rowcheck();
    w.markChanged();
    ButtonPressed = Tr::MWButtonOK;
    m_specialtimer->setMode(platform::Timer::Single);

    // Saved with the Command key down: the job starts timing at once.
    if (m_s.desktop.ctrlDown()) {
        if (w.runButton.caption == Tr::MWStartButtonFs)
            w.gostart();
        else
            w.allcont();
        m_s.mainHooks.menuControl();
        w.rowcheck();
    }
}

void specialw::specialtimer_Action()
{
    m_specialtimer->setMode(platform::Timer::Off);
    closeWindow();
}

void specialw::canceljob_Action()
{
    ButtonPressed = Tr::MWButtonCancel;
    closeWindow();
}

void specialw::closeWindow()
{
    m_specialtimer->setMode(platform::Timer::Off);
    m_captionTimer->setMode(platform::Timer::Off);
    m_openFlag = false;
    if (closed)
        return;
    closed = true;
    emit closeRequested();
}

} // namespace jobs

#include "shell/program.h"

#include "core/noactivity.h"
#include "core/texts.h"
#include "core/timetext.h"
#include "netlink/apptexts.h"
#include "netlink/stylesheet.h"
#include "shell/aboutbox.h"
#include "shell/printforms.h"
#include "storage/clients_file.h"
#include "storage/operations_file.h"
#include "storage/timesheet_file.h"

#include <QDir>
#include <QFileInfo>
#include <QSysInfo>
#include <QUrl>

namespace shell
{

Program::Window::Window(Program& program, core::Mainwndo& form)
    : sources(program.m_s.files, program.m_app.prefs, storage::prefFolder(), program.m_joblst),
      clientView(form, {program.m_s.desktop, program, program.m_s.files, storage::prefFile(storage::kClientsFileName)}),
      jobs({form, program, program.m_app.prefs, program.m_s.clock, program.m_s.desktop, program.m_s.dialogs,
            program.m_s.timers, sources, program, clientView}),
      rowOps(form, {program.m_s.clock, program.m_s.desktop, program.m_s.dialogs, program, clientView}),
      notes(form, program.m_app.prefs, {program.m_s.desktop, program.m_s.dialogs, clientView}),
      lists(form, {program.m_s.clock, program.m_s.desktop, clientView},
            {[&program](core::Item item) { return program.commandState().enabled(item); },
             [&program](core::Item item) { program.command(item); }}),
      strip({form, clientView, program.m_app.prefs, program.m_s.desktop}),
      budgets({form, program.m_joblst, program.m_s.desktop, program.m_s.dialogs, program.m_s.notifier,
               [&program] { program.updatestatus(); },
               [&program](const QString& text) { program.noticeFallback(text); },
               [&program](const QString& job) {
                   program.m_presets.selectJob(job);
                   program.m_presets.show();
               }})
{}

Program::Program(Services services)
    : m_s(std::move(services)),
      m_app(core::Mainwndo::Services{m_s.clock, m_s.desktop, m_s.dialogs, m_s.timers, *this, m_gate}, *this),
      m_document(m_app, m_s.files, m_s.dialogs, m_s.desktop, m_s.clock, m_s.documentsFolder),
      m_presets(m_joblst, {m_s.files, m_app.prefs, m_s.desktop, m_s.dialogs, storage::prefFolder(),
                           prefwin::defaultDesktopFolder(), [this] { presetDependants(); },
                           [this] {
                               if (m_window)
                                   m_window->budgets.budgetTotalizer();
                           },
                           [this] {
                               if (mainwndo())
                                   mainwndo()->budgetNotice = false;
                           }}),
      m_sync(m_s.contacts, m_s.dialogs, m_s.desktop, m_s.files, storage::prefFile(storage::kClientsFileName), *this)
{
    m_gate.settled = [this] { emit commandsChanged(); };
    m_s.notifier.activated = [this](unsigned id) {
        post([this, id] {
            if (m_window)
                m_window->budgets.Event_DidActivateNotification(id);
        });
    };
    connect(&m_app, &core::App::mainwndoCreated, this, [this](core::Mainwndo* form) {
        // The preset list is read with the first window, and stays in memory for the whole run.
        if (!m_presetsRead) {
            m_presetsRead = true;
            m_presets.readlocalprst();
        }
        m_window = std::make_unique<Window>(*this, *form);
        // A timesheet read or made shows the strip, when the settings want it.
        connect(form, &core::Mainwndo::opened, this, [this] {
            if (m_window && m_app.prefs.statusquo)
                m_window->strip.show();
        });
    });
    connect(&m_app, &core::App::mainwndoClosed, this, [this] {
        m_window.reset();
        emit windowClosed();
        emit commandsChanged();
    });
}

Program::~Program()
{
    m_gate.settled = nullptr;
    m_s.notifier.activated = nullptr;
}

void Program::start(const QStringList& documents)
{
    platform::EventGate::Scope startup(m_gate);
    m_app.Event_Open();
    openDocuments(documents);
}

void Program::openDocuments(const QStringList& paths)
{
    // Timesheets only; one that cannot be read gets the same message as any failed load.
    for (const QString& path : paths)
        if (QFileInfo(path).suffix().compare(storage::kTimesheetSuffix, Qt::CaseInsensitive) == 0)
            m_app.Event_OpenDocument(path);
}

void Program::openRequested(const QStringList& paths)
{
    post([this, paths] {
        if (!m_quitting)
            openDocuments(paths);
    });
}

void Program::runButton()
{
    post([this] {
        if (core::Mainwndo* w = mainwndo())
            w->runButton_Action();
    });
}

core::MenuItems Program::commandState() const
{
    return m_app.menuState();
}

bool Program::keyDown(QChar key)
{
    const core::Mainwndo* w = mainwndo();
    if (!w || !w->takesKey(key))
        return false;
    post([this, key] {
        if (core::Mainwndo* form = mainwndo())
            form->Event_KeyDown(key);
    });
    return true;
}

void Program::command(core::Item item)
{
    post([this, item] { runCommand(item); });
}

void Program::runCommand(core::Item item)
{
    using core::Item;
    // Asked again here: a key, the tray or a command that waited may come after the state moved on.
    if (!commandState().enabled(item)) {
        m_s.desktop.beep();
        return;
    }
    // The window's commands are on only while it is open, so they find it here.
    core::Mainwndo* w = mainwndo();
    Window* parts = m_window.get();
    switch (item) {
    case Item::nusheet:
    case Item::saveAs:
        m_document.newSaveAs();
        return;
    case Item::open:
        m_document.open();
        return;
    case Item::openOld:
        m_document.openOld();
        return;
    case Item::clozeit:
        m_app.closeMainwndo();
        return;
    case Item::switchit:
        if (m_document.switchitConfirmed()) {
            if (m_window)
                m_window->budgets.budgetTotalizer();
            m_presets.joblistupdate();
            m_app.closeMainwndo();
        }
        return;
    case Item::presetJobs:
        m_presets.show();
        return;
    case Item::FileQuit:
        quit();
        return;
    case Item::nineprefs:
        showPrefwin(-1);
        return;
    case Item::aboutme:
        aboutme();
        return;
    case Item::helpon2:
        helpon2();
        return;
    case Item::webo:
        _webo_Action();
        return;
    default:
        break;
    }
    if (!w || !parts)
        return;
    switch (item) {
    case Item::save:
        w->_save_Action();
        break;
    case Item::FileAddNewClient:
        m_sync.addClient();
        break;
    case Item::syncAddressBook:
        m_sync._syncAddressBook_Action();
        break;
    case Item::nujobmenu2:
        parts->jobs._nujobmenu2_Action();
        break;
    case Item::duplicate:
        parts->jobs._duplicate_Action();
        break;
    case Item::edjobmenu:
        parts->jobs._edjobmenu_Action();
        break;
    case Item::notey:
        parts->notes._notey_Action();
        break;
    case Item::zerorow:
        parts->rowOps._zerorow_Action();
        break;
    case Item::clearjb2:
        parts->rowOps.deletejb();
        break;
    case Item::totaltime2:
        w->_totaltime2_Action();
        break;
    case Item::totaldy2:
        w->_totaldy2_Action();
        break;
    case Item::shwnts:
        parts->notes._shwnts_Action(commandState().caption(Item::shwnts));
        break;
    case Item::statusStart:
        w->_statusStart_Action();
        break;
    case Item::statusStop:
        w->_statusStop_Action();
        break;
    case Item::FilePrintLayout: {
        printsetup form(m_app.prefs);
        form.Event_Open();
        m_s.dialogs.showModal(form);
        break;
    }
    case Item::printit: {
        pntops form(w->ListBox1, m_app.prefs, m_s.dialogs,
                    QLocale().toString(m_s.clock.now().date(), QLocale::LongFormat));
        m_s.dialogs.showModal(form);
        break;
    }
    case Item::exportmenu:
        exportmenu(*w);
        break;
    default:
        break; // the text fields' own Cut, Copy and Paste
    }
}

void Program::quit()
{
    if (m_quitting)
        return; // a second way out while the first is under way (a close button, the tray) changes nothing
    m_quitting = true;
    if (!m_app._FileQuit_Action())
        m_quitting = false; // cancelled at the save question
}

bool Program::operationsFileExists() const
{
    return m_s.files.exists(storage::prefFile(storage::kOperationsFileName));
}

void Program::firstRun()
{
    core::Noopps welcome;
    m_s.dialogs.showModal(welcome);
    showPrefwin(kOperationsTab); // it cannot be left without an operation
}

void Program::exportmenu(core::Mainwndo& w)
{
    // With Alt the item reads "Export Options..." and opens their tab of the preferences.
    if (m_s.desktop.altDown()) {
        showPrefwin(kExportTab);
        return;
    }
    xpops form({w, m_app.prefs, m_s.dialogs, m_s.files, m_s.clock, prefwin::defaultDesktopFolder()});
    form.Event_Open();
    m_s.dialogs.showModal(form);
}

void Program::showPrefwin(int tab)
{
    prefwin form({m_app.prefs, m_s.dialogs, m_s.desktop, m_s.files, *this,
                  storage::prefFile(storage::kOperationsFileName), prefwin::defaultDesktopFolder()});
    form.TabPanel1 = tab >= 0 ? tab : m_prefTab;
    m_s.dialogs.showModal(form);
    m_prefTab = form.TabPanel1;
}

void Program::refreshOppsList()
{
    if (m_window && m_window->jobs.openDialog())
        m_window->jobs.openDialog()->refreshOppsList();
}

void Program::locateStyleSheet()
{
    const platform::Result loaded = netlink::loadStyleSheet(m_s.appDir, m_styleSheetTxt);
    if (!loaded.ok()) {
        m_s.desktop.beep();
        m_s.dialogs.message(netlink::kAppStyleSheetFailure);
    }
}

void Program::mainwndoOpened(core::Mainwndo&)
{
    m_window->clientView.clientlist2_Open();
    m_window->notes.restoreStrip();
    restartWeb();
    updatestatus();
    emit windowOpened(mainwndo());
}

void Program::updatestatus()
{
    core::Mainwndo* w = mainwndo();
    if (!m_window || !w)
        return;
    VLKMenulet& menulet = m_window->menulet;
    if (!w->ListBox1.hasSelection()) {
        m_window->strip.setText(Tr::MWStatusNoJob);
        menulet.ToolTip = statuswindow::kNoJobBullet;
        menulet.Title = VLKMenulet::kNoTime;
    } else {
        const core::JobRow& row = w->ListBox1.selected();
        const QString dash = QStringLiteral(" - ");
        if (!menulet.notice.contains(QLatin1Char(' ') + row.cell(core::CellJob) + QStringLiteral(" : ")))
            menulet.notice.clear(); // a notice stays while its job is the selected one
        menulet.Title = row.cell(core::CellHours) + QLatin1Char(':') + row.cell(core::CellMinutes);
        menulet.ToolTip = row.cell(core::CellJob) + dash + row.cell(core::CellProject) + dash +
                          row.cell(core::CellOperation) + dash + menulet.Title;
        m_window->strip.setText(menulet.ToolTip);
    }
    emit menulet.changed();
}

void Program::menuControl()
{
    core::Mainwndo* w = mainwndo();
    if (m_window && w) {
        QList<VLKMenulet::MenuItem> menu;
        if (!w->ListBox1.hasSelection()) {
            menu.append({VLKMenulet::kMLTStart, false});
        } else {
            const core::JobRow& row = w->ListBox1.selected();
            const QString dash = QStringLiteral(" - ");
            menu.append(
                {row.cell(core::CellJob) + dash + row.cell(core::CellProject) + dash + row.cell(core::CellOperation),
                 false});
            menu.append({w->running ? VLKMenulet::kMLTStop : VLKMenulet::kMLTStart, true});
        }
        menu.append({QString(), true});
        menu.append({VLKMenulet::kMLTTimesheet, true});
        m_window->menulet.Menu = menu;
        emit m_window->menulet.changed();
    }
    emit commandsChanged();
}

void Program::alertnoactive()
{
    core::Mainwndo* w = mainwndo();
    if (!m_window || !w)
        return;
    m_s.desktop.beep();
    core::noactivity warning(*w, m_app.prefs, m_s.timers);
    warning.Event_Open();
    m_s.dialogs.showModal(warning);
    warning.Event_Close(); // closed without an answer: the job runs on
    // New: the idle time goes to a job the user names, dated today.
    if (warning.ButtonPressed == Tr::MWButtonNew && m_window && mainwndo() == w)
        m_window->jobs.donewjob(warning.inacH, warning.inacM);
}

void Program::statusUpDateDark()
{
    core::Mainwndo* w = mainwndo();
    if (!m_window || !w)
        return;
    m_window->strip.statusUpDateDark();
    m_window->menulet.setImage(w->running ? VLKMenulet::Image::StatusAvailable : VLKMenulet::Image::StatusUnavailable);
}

void Program::StatusItemHandler(const QString& title)
{
    // Start and Stop are the Control menu's commands, with their state asked again as they run.
    if (title == VLKMenulet::kMLTStart)
        command(core::Item::statusStart);
    else if (title == VLKMenulet::kMLTStop)
        command(core::Item::statusStop);
    else if (title == VLKMenulet::kMLTTimesheet)
        emit timesheetWanted();
}

void Program::switchJob(int tag)
{
    post([this, tag] {
        if (m_window)
            m_window->strip.statustext_ContextualMenuAction(tag);
    });
}

void Program::showStatusWindow()
{
    if (m_window)
        m_window->strip.show();
}

void Program::hideStatusWindow()
{
    if (m_window)
        m_window->strip.hide(true);
}

void Program::setStatusOpacity(double opacity)
{
    if (m_window)
        m_window->strip.setOpacity(opacity);
}

void Program::budgetcheck()
{
    if (m_window)
        m_window->budgets.budgetcheck();
}

void Program::budgetcheck2()
{
    if (m_window)
        m_window->budgets.budgetcheck2();
}

void Program::checkAllBudgets()
{
    if (m_window)
        m_window->budgets.checkAll();
}

void Program::presetsActivated()
{
    post([this] {
        if (m_window && !mainwndo()->running)
            m_window->budgets.checkAll();
    });
}

void Program::editPresetJobs()
{
    m_s.dialogs.showModal(m_presets);
}

void Program::presetDependants()
{
    core::Mainwndo* w = mainwndo();
    if (!m_app.thisdoc.isEmpty() && w && m_window) {
        // The first row of the list on show with the job of the selected preset takes the selection,
        // and so its check; without one, the selected row is checked again.
        const int preset = m_presets.ListIndex;
        const QString job = preset >= 0 && preset < m_joblst.size() ? m_joblst[preset].job : QString();
        const bool client = w->ListBox2Ctl.visible;
        const core::Timesheet& list = client ? w->ListBox2 : w->ListBox1;
        int found = -1;
        for (int r = 0; !job.isEmpty() && r < list.ListCount(); ++r) {
            if (core::sameText(list.Cell(r, core::CellJob), job)) {
                found = r;
                break;
            }
        }
        // A row that is selected already is checked where it stands: a changed budget must show on its
        // rows now, and the notice may come again for it.
        const bool moves = found >= 0 && found != list.ListIndex;
        if (moves && client)
            m_window->clientView.setListBox2Index(found);
        else if (!moves || !w->setListIndex(found))
            client ? m_window->budgets.budgetcheck2() : m_window->budgets.budgetcheck();
    }
    if (m_window && m_window->jobs.openDialog())
        m_window->jobs.openDialog()->refreshJobsList();
}

void Program::noticeFallback(const QString& text)
{
    // No notice service: the status line says it, and the tray's tool tip keeps it.
    setStatus(text);
    startTimer2();
    if (m_window)
        m_window->menulet.notice = text;
}

void Program::quitting()
{
    m_presets.Event_CancelClose();
    // The strip's place is kept for the next start.
    if (m_window) {
        m_app.prefs.statusleft = m_window->strip.Left;
        m_app.prefs.statusposition = m_window->strip.Top;
        m_window->strip.hide(false);
    }
}

void Program::populatelistbox2()
{
    if (m_window)
        m_window->clientView.rebuildFollowingListBox1();
}

void Program::restartWeb()
{
    m_socket1.reset();
    if (!m_app.prefs.netlook || !m_app.existingMainwndo())
        return;
    m_socket1 = std::make_unique<netlink::Socket1>(*this, m_s.desktop);
    m_socket1->Listen(); // a failure shows in the status line; the Connect button tries again
}

void Program::_webo_Action()
{
    if (m_app.thisdoc.isEmpty()) {
        m_s.desktop.beep();
        m_s.dialogs.message(netlink::kAppNoSheetWeb);
        return;
    }
    m_s.desktop.openUrl(netlink::kWebUrl);
}

void Program::helpon2()
{
    // The manual lies under share/ beside the program's folder, in the build tree as when installed.
    const QFileInfo manual(QDir::cleanPath(m_s.appDir + QLatin1Char('/') + kManualPath));
    if (!manual.isFile()) {
        m_s.desktop.beep();
        m_s.dialogs.message(kNoManual.arg(manual.filePath()));
        return;
    }
    m_s.desktop.openUrl(QUrl::fromLocalFile(manual.canonicalFilePath()).toString());
}

void Program::aboutme()
{
    Aboutbox about;
    about.version = core::App::kAppVersion;
    about.qtVersion = QString::fromLatin1(qVersion());
    about.system = QSysInfo::prettyProductName();
    about.netLink = Aboutbox::kNetLinkOff;
    if (m_socket1 && m_socket1->isListening())
        about.netLink = m_socket1->pageUrl();
    m_s.dialogs.showModal(about);
}

const core::Timesheet& Program::ListBox1() const
{
    const core::Mainwndo* w = mainwndo();
    return w ? w->ListBox1 : m_noSheet;
}

bool Program::running() const
{
    const core::Mainwndo* w = mainwndo();
    return w && w->running;
}

QString& Program::ipnumber()
{
    core::Mainwndo* w = mainwndo();
    return w ? w->ipnumber : m_noAddress;
}

void Program::setStatus(const QString& datastream)
{
    if (core::Mainwndo* w = mainwndo())
        w->setDatastream(datastream);
}

void Program::startTimer2()
{
    if (core::Mainwndo* w = mainwndo())
        w->Timer2().setMode(platform::Timer::Single);
}

bool Program::contactsAccess() const
{
    const core::Mainwndo* w = mainwndo();
    return w && w->contactsAccess;
}

void Program::setContactsAccess(bool on)
{
    if (core::Mainwndo* w = mainwndo())
        w->contactsAccess = on;
}

void Program::resetClientList()
{
    if (m_window)
        m_window->clientView.clientlist2_Open();
}

void Program::refreshClientList()
{
    if (m_window && m_window->jobs.openDialog())
        m_window->jobs.openDialog()->rebuildClientMenu();
}

} // namespace shell

#include "shell/ui/shell.h"

#include "clients/clientview.h"
#include "clients/ui/addressaddview.h"
#include "clients/ui/clientpane.h"
#include "core/texts.h"
#include "core/ui/mainwndoview.h"
#include "core/ui/modalviews.h"
#include "jobs/listbehaviour.h"
#include "jobs/listtexts.h"
#include "jobs/notes.h"
#include "jobs/rowops.h"
#include "jobs/ui/jobdialogview.h"
#include "jobs/ui/listwiring.h"
#include "jobs/ui/rowviews.h"
#include "netlink/apptexts.h"
#include "netlink/stylesheet.h"
#include "shell/ui/prefwinview.h"
#include "storage/clients_file.h"
#include "storage/operations_file.h"
#include "storage/timesheet_file.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCloseEvent>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QMainWindow>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <QTimer>
#include <QTreeView>
#include <QUrl>
#include <QVBoxLayout>

namespace shell::ui
{

struct Shell::Window
{
    Window(Shell& shell, core::Mainwndo& form)
        : sources(shell.m_files, shell.m_app.prefs, storage::prefFolder(), shell.m_joblst),
          jobs({form, shell, shell.m_app.prefs, shell.m_clock, shell.m_desktop, shell.m_dialogs, shell.m_timers,
                sources, shell}),
          clientView(form, {shell.m_desktop, shell, shell.m_files, storage::prefFile(storage::kClientsFileName)}),
          rowOps(form, {shell.m_clock, shell.m_desktop, shell.m_dialogs, shell, clientView}),
          notes(form, shell.m_app.prefs, {shell.m_desktop, shell.m_dialogs, clientView}),
          lists(form, {shell.m_clock, shell.m_desktop, clientView, rowOps, notes},
                {[this] { jobs.doeditjob(); }, [this] { jobs.clone(); }, [this] { jobs.donewjob(); }})
    {}

    jobs::FileSources sources;
    jobs::JobOps jobs;
    clients::ClientView clientView;
    jobs::RowOps rowOps;
    jobs::Notes notes;
    jobs::ListBehaviour lists;
};

namespace
{

QString documentsFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
}

// The small window of the idle program: its menus and the two ways in. Closing it quits.
class StartWindow : public QMainWindow
{
public:
    std::function<void()> closed;

protected:
    void closeEvent(QCloseEvent* event) override
    {
        event->ignore(); // the quit decides, and may be cancelled at the save question
        if (closed)
            closed();
    }
};

} // namespace

Shell::Shell()
    : m_app(core::Mainwndo::Services{m_clock, m_desktop, m_dialogs, m_timers, *this}, *this),
      m_document(m_app, m_files, m_dialogs, m_desktop, documentsFolder()), m_contacts(m_files),
      m_sync(m_contacts, m_dialogs, m_desktop, m_files, storage::prefFile(storage::kClientsFileName), *this)
{
    core::ui::registerModalViews(m_dialogs);
    clients::ui::registerAddressaddView(m_dialogs);
    jobs::ui::registerSpecialwView(m_dialogs);
    jobs::ui::registerRowViews(m_dialogs);
    registerPrefwinView(m_dialogs);
    connect(&m_app, &core::App::mainwndoCreated, this, &Shell::showMainwndo);
    connect(&m_app, &core::App::mainwndoClosed, this, [this] {
        if (m_view) {
            m_view->close();
            m_view->deleteLater();
        }
        m_window.reset();
        if (!m_quitting && m_startWindow)
            m_startWindow->show();
    });
    buildStartWindow();
}

Shell::~Shell() = default;

void Shell::start(const QStringList& documents)
{
    // On a first start the start window stands behind the welcome, so the user sees the program
    // before any question; otherwise it shows only when no timesheet opens.
    if (!operationsFileExists())
        m_startWindow->show();
    m_app.Event_Open();
    openDocuments(documents);
    if (!m_app.existingMainwndo())
        m_startWindow->show();
}

void Shell::openDocuments(const QStringList& paths)
{
    // Timesheets only; one that cannot be read gets the same message as any failed load.
    for (const QString& path : paths)
        if (QFileInfo(path).suffix().compare(storage::kTimesheetSuffix, Qt::CaseInsensitive) == 0)
            m_app.Event_OpenDocument(path);
}

void Shell::openRequested(const QStringList& paths)
{
    openDocuments(paths);
    QWidget* front = m_view ? static_cast<QWidget*>(m_view) : m_startWindow;
    front->show();
    front->raise();
    front->activateWindow();
}

bool Shell::operationsFileExists() const
{
    return m_files.exists(storage::prefFile(storage::kOperationsFileName));
}

void Shell::firstRun()
{
    core::Noopps welcome;
    m_dialogs.showModal(welcome);
    showPrefwin(kOperationsTab); // it cannot be left without an operation
}

void Shell::showPrefwin(int tab)
{
    prefwin form({m_app.prefs, m_dialogs, m_desktop, m_files, *this, storage::prefFile(storage::kOperationsFileName),
                  prefwin::defaultDesktopFolder()});
    form.TabPanel1 = tab >= 0 ? tab : m_prefTab;
    m_dialogs.showModal(form);
    m_prefTab = form.TabPanel1;
}

void Shell::applyListFont(const QString& font, int size)
{
    if (!m_view)
        return;
    const QFont chosen = font == QStringLiteral("System") ? QFont() : QFont(font, size);
    QFont sized = chosen;
    sized.setPointSize(size);
    m_view->ListBox1()->setFont(sized);
    if (m_pane)
        for (QWidget* list : m_pane->findChildren<QAbstractItemView*>())
            list->setFont(sized);
}

void Shell::refreshOppsList()
{
    if (m_window && m_window->jobs.openDialog())
        m_window->jobs.openDialog()->refreshOppsList();
}

void Shell::locateStyleSheet()
{
    const platform::Result loaded = netlink::loadStyleSheet(QCoreApplication::applicationDirPath(), m_styleSheetTxt);
    if (!loaded.ok()) {
        m_desktop.beep();
        m_dialogs.message(netlink::kAppStyleSheetFailure);
    }
}

void Shell::mainwndoOpened(core::Mainwndo&)
{
    m_window->clientView.clientlist2_Open();
    m_window->notes.restoreStrip();
    restartWeb();
}

void Shell::populatelistbox2()
{
    if (m_window)
        m_window->clientView.rebuildFollowingListBox1();
}

void Shell::windowClosing()
{
    m_socket1.reset();
}

void Shell::refreshClientList()
{
    if (m_window && m_window->jobs.openDialog())
        m_window->jobs.openDialog()->rebuildClientMenu();
}

void Shell::restartWeb()
{
    m_socket1.reset();
    if (!m_app.prefs.netlook || !m_app.existingMainwndo())
        return;
    m_socket1 = std::make_unique<netlink::Socket1>(*this, m_desktop);
    m_socket1->Listen(); // a failure shows in the status line; the Connect button tries again
}

void Shell::_webo_Action()
{
    if (m_app.thisdoc.isEmpty()) {
        m_desktop.beep();
        m_dialogs.message(netlink::kAppNoSheetWeb);
        return;
    }
    m_desktop.openUrl(netlink::kWebUrl);
}

const core::Timesheet& Shell::ListBox1() const
{
    const core::Mainwndo* w = m_app.existingMainwndo();
    return w ? w->ListBox1 : m_noSheet;
}

bool Shell::running() const
{
    const core::Mainwndo* w = m_app.existingMainwndo();
    return w && w->running;
}

QString& Shell::ipnumber()
{
    core::Mainwndo* w = m_app.existingMainwndo();
    return w ? w->ipnumber : m_noAddress;
}

void Shell::setStatus(const QString& datastream)
{
    if (core::Mainwndo* w = m_app.existingMainwndo())
        w->setDatastream(datastream);
}

void Shell::startTimer2()
{
    if (core::Mainwndo* w = m_app.existingMainwndo())
        w->Timer2().setMode(platform::Timer::Single);
}

bool Shell::contactsAccess() const
{
    const core::Mainwndo* w = m_app.existingMainwndo();
    return w && w->contactsAccess;
}

void Shell::setContactsAccess(bool on)
{
    if (core::Mainwndo* w = m_app.existingMainwndo())
        w->contactsAccess = on;
}

void Shell::resetClientList()
{
    if (m_view)
        emit m_view->clientListChanged();
}

void Shell::exit()
{
    QApplication::quit();
}

void Shell::quit()
{
    m_quitting = true;
    if (!m_app._FileQuit_Action())
        m_quitting = false; // cancelled at the save question
}

void Shell::buildStartWindow()
{
    auto* window = new StartWindow;
    m_startWindow = window;
    window->setObjectName(QStringLiteral("StartWindow"));
    window->setWindowTitle(core::Mainwndo::kAppTitle);
    window->closed = [this] { quit(); };
    auto* central = new QWidget(window);
    auto* layout = new QVBoxLayout(central);
    auto* heading = new QLabel(QStringLiteral("<b>Veltrick</b> %1").arg(core::App::kAppVersion), central);
    layout->addWidget(heading);
    auto* buttons = new QHBoxLayout;
    auto* newButton = new QPushButton(kStartNew, central);
    auto* openButton = new QPushButton(kStartOpen, central);
    connect(newButton, &QPushButton::clicked, this, [this] { m_document.newSaveAs(); });
    connect(openButton, &QPushButton::clicked, this, [this] { m_document.open(); });
    buttons->addWidget(newButton);
    buttons->addWidget(openButton);
    layout->addLayout(buttons);
    window->setCentralWidget(central);
    fillMenus(window->menuBar(), false);
}

void Shell::fillMenus(QMenuBar* bar, bool documentOpen)
{
    QMenu* file = bar->addMenu(QStringLiteral("&File"));
    QAction* nusheet = file->addAction(kStartNew, QKeySequence::New, this, [this] { m_document.newSaveAs(); });
    QAction* open = file->addAction(kStartOpen, QKeySequence::Open, this, [this] { m_document.open(); });
    nusheet->setEnabled(!documentOpen);
    open->setEnabled(!documentOpen);
    if (documentOpen) {
        file->addAction(QStringLiteral("Close Timesheet"), QKeySequence::Close, this,
                        [this] { m_app.closeMainwndo(); });
        file->addSeparator();
        QAction* addClient = file->addAction(QStringLiteral("Add New Client…"), this, [this] { m_sync.addClient(); });
        QAction* syncClients = file->addAction(QStringLiteral("Sync Client List with Contacts"), this,
                                               [this] { m_sync._syncAddressBook_Action(); });
        // Not while a job runs: the client list is part of what stays still then.
        connect(file, &QMenu::aboutToShow, this, [this, addClient, syncClients] {
            const bool idle = !running();
            addClient->setEnabled(idle);
            syncClients->setEnabled(idle);
        });
        file->addSeparator();
        file->addAction(QStringLiteral("Close && Total Budgets…"), QKeySequence(QStringLiteral("Ctrl+Shift+W")), this,
                        [this] {
                            // The totalling of the budgets joins here once preset jobs exist.
                            if (m_document.switchitConfirmed())
                                m_app.closeMainwndo();
                        });
    } else {
        file->addSeparator();
        file->addAction(QStringLiteral("Convert Older VLK Timesheet…"), this, [this] { m_document.openOld(); });
    }
    if (documentOpen) {
        file->addSeparator();
        file->addAction(Tr::SaveMenuText, QKeySequence::Save, this, [this] {
            if (auto* w = m_app.existingMainwndo())
                w->autosave();
        });
        file->addAction(QStringLiteral("Save As…"), QKeySequence(QStringLiteral("Ctrl+Shift+S")), this,
                        [this] { m_document.newSaveAs(); });
    }
    file->addSeparator();
    file->addAction(QStringLiteral("Quit"), QKeySequence::Quit, this, [this] { quit(); });

    if (documentOpen) {
        QMenu* edit = bar->addMenu(QStringLiteral("&Edit"));
        const auto jobCommand = [this](void (jobs::JobOps::*command)()) {
            return [this, command] {
                if (m_window)
                    (m_window->jobs.*command)();
            };
        };
        QAction* add = edit->addAction(Tr::EMAddJob, QKeySequence(QStringLiteral("Ctrl+J")), this,
                                       jobCommand(&jobs::JobOps::_nujobmenu2_Action));
        QAction* duplicate = edit->addAction(Tr::EMDupeJob, QKeySequence(QStringLiteral("Ctrl+D")), this,
                                             jobCommand(&jobs::JobOps::_duplicate_Action));
        QAction* details = edit->addAction(Tr::EMJobDetails, QKeySequence(QStringLiteral("Ctrl+F")), this,
                                           jobCommand(&jobs::JobOps::_edjobmenu_Action));
        QAction* notey = edit->addAction(Tr::EMJobNotes, QKeySequence(QStringLiteral("Ctrl+E")), this, [this] {
            if (m_window)
                m_window->notes._notey_Action();
        });
        edit->addSeparator();
        QAction* zerorow = edit->addAction(Tr::EMReset, QKeySequence(QStringLiteral("Ctrl+R")), this, [this] {
            if (m_window)
                m_window->rowOps._zerorow_Action();
        });
        QAction* clearjb2 = edit->addAction(Tr::EMDeleteJob, this, [this] {
            if (m_window)
                m_window->rowOps.deletejb();
        });
        connect(edit, &QMenu::aboutToShow, this, [this, add, duplicate, details, notey, zerorow, clearjb2] {
            const core::Mainwndo* w = m_app.existingMainwndo();
            const bool idle = w && !w->running;
            const bool selected = w && w->ListBox1.hasSelection();
            add->setEnabled(idle);
            for (QAction* rowCommand : {duplicate, details, notey, zerorow, clearjb2})
                rowCommand->setEnabled(idle && selected);
            if (m_window)
                zerorow->setText(m_window->rowOps.zerorowCaption()); // Alt gives "Reset All Rows..."
        });
        QMenu* view = bar->addMenu(QStringLiteral("&View"));
        view->addAction(Tr::EMJobTotal, QKeySequence(QStringLiteral("Ctrl+A")), this, [this] {
            if (auto* w = m_app.existingMainwndo())
                w->_totaltime2_Action();
        });
        view->addAction(Tr::EMDayTotal, QKeySequence(QStringLiteral("Ctrl+L")), this, [this] {
            if (auto* w = m_app.existingMainwndo())
                w->_totaldy2_Action();
        });
        view->addSeparator();
        QAction* shwnts = view->addAction(m_window ? m_window->notes.shwntsCaption() : Tr::VMShowNotes);
        connect(shwnts, &QAction::triggered, this, [this, shwnts] {
            if (m_window)
                shwnts->setText(m_window->notes._shwnts_Action(shwnts->text()));
        });
        QAction* webo = view->addAction(QStringLiteral("View in Web Browser"), this, [this] { _webo_Action(); });
        connect(view, &QMenu::aboutToShow, webo, [this, webo] { webo->setEnabled(m_app.prefs.netlook); });
        QMenu* control = bar->addMenu(QStringLiteral("&Control"));
        control->addAction(Tr::CMStart, this, [this] {
            if (auto* w = m_app.existingMainwndo())
                w->_statusStart_Action();
        });
        control->addAction(Tr::CMStop, this, [this] {
            if (auto* w = m_app.existingMainwndo())
                w->_statusStop_Action();
        });
    }
    QMenu* settings = bar->addMenu(QStringLiteral("&Settings"));
    settings->addAction(QStringLiteral("Preferences..."), QKeySequence::Preferences, this, [this] { showPrefwin(-1); });
    QMenu* help = bar->addMenu(QStringLiteral("&Help"));
    help->addAction(QStringLiteral("Online Help"), this, [this] {
        // The manual is the README installed beside the program, or the one of the source tree.
        const QString appDir = QCoreApplication::applicationDirPath();
        for (const QString& path : {appDir + QStringLiteral("/../share/doc/veltrick/README.md"),
                                    appDir + QStringLiteral("/../../README.md")}) {
            if (QFileInfo(path).isFile()) {
                m_desktop.openUrl(QUrl::fromLocalFile(QFileInfo(path).canonicalFilePath()).toString());
                return;
            }
        }
        m_desktop.beep();
    });
    help->addAction(QStringLiteral("About Veltrick"), this, [this] {
        QMessageBox::about(
            QApplication::activeWindow(), QStringLiteral("About Veltrick"),
            QStringLiteral("Veltrick %1\nA timesheet for the hours you bill.").arg(core::App::kAppVersion));
    });
}

void Shell::showMainwndo(core::Mainwndo* form)
{
    m_window = std::make_unique<Window>(*this, *form);
    auto* view = new core::ui::MainwndoView(*form, m_app.prefs);
    view->setAttribute(Qt::WA_DeleteOnClose, false);
    m_view = view;
    // The client picker and the client's list stand beside the timesheet, in one splitter with it.
    auto* pane = new clients::ui::ClientPane(m_window->clientView, *form, m_app.prefs, view->ListBox1());
    static_cast<QVBoxLayout*>(view->centralWidget()->layout())->insertWidget(0, pane, 1);
    m_pane = pane;
    new jobs::ui::ListWiring(view->ListBox1(), 1, m_window->lists);
    new jobs::ui::ListWiring(pane->ListBox2(), 2, m_window->lists);
    connect(pane, &clients::ui::ClientPane::addClientClicked, this, [this] { m_sync.addClient(); });
    connect(view, &core::ui::MainwndoView::clientListChanged, this, [this] {
        if (m_window)
            m_window->clientView.clientlist2_Open();
    });
    view->closeRequested = [this] { return m_quitting || m_app.closeMainwndo(); };
    connect(view, &core::ui::MainwndoView::njButton2Clicked, this, [this] {
        if (m_window)
            m_window->jobs.njButton2_MouseDown();
    });
    fillMenus(view->menuBar(), true);
    m_startWindow->hide();
    // Shown once the event loop is back: a timesheet being read appears whole, not row by row.
    QTimer::singleShot(0, view, &QWidget::show);
}

} // namespace shell::ui

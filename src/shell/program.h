#pragma once

#include "budgets/budgets.h"
#include "budgets/presetjobs.h"
#include "clients/clientsync.h"
#include "clients/clientview.h"
#include "core/app.h"
#include "jobs/jobdialog.h"
#include "jobs/jobops.h"
#include "jobs/listbehaviour.h"
#include "jobs/notes.h"
#include "jobs/rowops.h"
#include "netlink/netlinkhost.h"
#include "netlink/socket1.h"
#include "platform/contacts.h"
#include "platform/eventgate.h"
#include "platform/notifier.h"
#include "shell/prefwin.h"
#include "shell/statuswindow.h"
#include "storage/document.h"
#include "storage/filestore.h"
#include "storage/preset_file.h"

#include <QObject>

#include <memory>

namespace shell
{

// The running program without its windows: the application and its document, the main window's logic
// with the row operations and the client view, the contacts sync and Net Link, and the one command
// state that every menu item, key, button, tray item and context menu obeys. Everything that changes
// rows comes in through the event gate, one event at a time.
class Program : public QObject,
                public core::AppHooks,
                public core::MainwndoHooks,
                public netlink::NetLinkHost,
                public clients::SyncHost,
                public jobs::SpecialwHooks,
                public PrefwinHooks
{
    Q_OBJECT

public:
    struct Services
    {
        platform::Clock& clock;
        platform::Desktop& desktop;
        platform::Dialogs& dialogs;
        platform::TimerFactory& timers;
        storage::FileStore& files;
        platform::AddressBook& contacts;
        platform::Notifier& notifier;
        QString documentsFolder; // where New and Open start
        QString appDir;          // the folder of the executable: style sheet and manual are found from it
    };

    // What lives as long as the main window: the job operations, the client view, rows and notes.
    struct Window
    {
        Window(Program& program, core::Mainwndo& form);

        jobs::FileSources sources;
        clients::ClientView clientView;
        jobs::JobOps jobs;
        jobs::RowOps rowOps;
        jobs::Notes notes;
        jobs::ListBehaviour lists;
        statuswindow strip;
        VLKMenulet menulet;
        budgets::Budgets budgets;
    };

    static constexpr int kOperationsTab = 1;
    static constexpr int kExportTab = 2;
    // The manual, from the program's folder; the build lays out share/ as the install does.
    static inline const QString kManualPath = QStringLiteral("../share/doc/veltrick/manual.html");
    static inline const QString kNoManual = QStringLiteral("The manual is not installed. It should be at %1.");

    explicit Program(Services services);
    ~Program() override;

    // Start-up, then the timesheets named on the command line.
    void start(const QStringList& documents);

    core::App& app() { return m_app; }
    const core::App& app() const { return m_app; }
    storage::Document& document() { return m_document; }
    clients::ClientSync& sync() { return m_sync; }
    platform::EventGate& gate() { return m_gate; }
    budgets::preSetJobsWin& presets() { return m_presets; }
    // The main window's logic while a timesheet is open, else null.
    core::Mainwndo* mainwndo() const { return m_app.existingMainwndo(); }
    Window* window() const { return m_window.get(); }
    bool isQuitting() const { return m_quitting; }

    // Every command's state now. The windows still to come (export, print) stay off.
    core::MenuItems commandState() const;
    // A command from any path. It runs once no other event is under way, and only if the state allows
    // it then; a refused command beeps.
    void command(core::Item item);
    // Events of the main window's controls and of the world outside, through the same gate.
    void runButton();
    // The tray menu's item of that title: start, stop, or the timesheet window to the front.
    void StatusItemHandler(const QString& title);
    // The job-switch menu of the strip.
    void switchJob(int tag);
    // The desktop went from light to dark or back.
    void appearanceChanged() { statusUpDateDark(); }
    // The preset window came to the front: the hours of the open timesheet's jobs are brought up to date.
    void presetsActivated();
    // A key of the main window: true when it is the window's (the event that follows is posted).
    bool keyDown(QChar key);
    void openRequested(const QStringList& paths);
    void post(std::function<void()> event) { m_gate.post(this, std::move(event)); }

    // The preferences window on the given tab, or on the one it was left on (-1).
    void showPrefwin(int tab);
    void exportmenu(core::Mainwndo& w);
    // Net Link on or off as the settings say; the Connect button of the preferences restarts it.
    void restartWeb();
    netlink::Socket1* socket1() const { return m_socket1.get(); }

    // core::AppHooks
    void readPrefs(core::AppPrefs& prefs) override { m_document.readPrefs(prefs); }
    void saveprefs(const core::AppPrefs& prefs) override { m_document.saveprefs(prefs); }
    bool fileExists(const QString& path) const override { return m_s.files.exists(path); }
    void sesame() override { m_document.sesame(); }
    bool operationsFileExists() const override;
    void firstRun() override;
    void exit() override { emit exitRequested(); }
    void quitting() override;
    void locateStyleSheet() override;
    void mainwndoOpened(core::Mainwndo& window) override;

    // core::MainwndoHooks
    platform::Result writeTimesheet(const QString& path, const core::Timesheet& sheet) override
    {
        return m_document.writeTimesheet(path, sheet);
    }
    void saveAs() override { m_document.newSaveAs(); }
    void changedElsewhere() override { m_document.changedElsewhere(); }
    // The budgets are checked here once preset jobs are kept; the check ends in the status.
    void budgetcheck() override;
    void budgetcheck2() override;
    void checkAllBudgets() override;
    void populatelistbox2() override;
    void menuControl() override;
    void statusUpDateDark() override;
    void alertnoactive() override;
    void windowClosing() override { m_socket1.reset(); }

    // netlink::NetLinkHost
    const core::Timesheet& ListBox1() const override;
    bool running() const override;
    const QString& styleSheetTxt() const override { return m_styleSheetTxt; }
    QString& ipnumber() override;
    void setStatus(const QString& datastream) override;
    void startTimer2() override;

    // clients::SyncHost
    bool contactsAccess() const override;
    void setContactsAccess(bool on) override;
    void resetClientList() override;
    void refreshClientList() override;

    // jobs::SpecialwHooks
    void syncaddressbook2() override { m_sync.syncaddressbook2(); }
    QString showAddressadd() override { return m_sync.showAddressadd(); }
    void editOperations() override { showPrefwin(kOperationsTab); }
    void editPresetJobs() override;
    void joblistupdate() override { m_presets.joblistupdate(); }

    // shell::PrefwinHooks
    bool timesheetOpen() const override { return m_app.existingMainwndo() != nullptr; }
    int windScreen() const override { return m_app.windScreen; }
    void netLinkStop() override { m_socket1.reset(); }
    void netLinkListen() override { restartWeb(); }
    void applyListFont(const QString& font, int size) override { emit listFontChanged(font, size); }
    void applyStripes() override { emit stripesChanged(); }
    void showStatusWindow() override;
    void hideStatusWindow() override;
    void setStatusOpacity(double opacity) override;
    void refreshOppsList() override;
    void saveprefs() override { m_document.saveprefs(m_app.prefs); }

signals:
    void windowOpened(core::Mainwndo* form); // the main window's logic is ready for its view
    void windowClosed();
    void commandsChanged(); // the command state may have changed: whatever shows it shows it again
    void listFontChanged(const QString& font, int size);
    void stripesChanged();
    void exitRequested();
    void timesheetWanted(); // "Show Timesheet": the main window comes to the front, restored

private:
    void runCommand(core::Item item);
    // The strip's text and the tray's clock and tool tip, from the selected row.
    void updatestatus();
    void openDocuments(const QStringList& paths);
    void quit();
    void presetDependants();
    void noticeFallback(const QString& text);
    void _webo_Action();
    void helpon2();
    void aboutme();

    Services m_s;
    platform::EventGate m_gate;
    core::App m_app;
    storage::Document m_document;
    storage::PresetJobList m_joblst;
    budgets::preSetJobsWin m_presets;
    bool m_presetsRead = false;
    std::unique_ptr<Window> m_window;
    clients::ClientSync m_sync;
    QString m_styleSheetTxt;
    std::unique_ptr<netlink::Socket1> m_socket1;
    core::Timesheet m_noSheet;
    QString m_noAddress;
    int m_prefTab = 0;
    bool m_quitting = false;
};

} // namespace shell

#pragma once

#include "clients/clientsync.h"
#include "clients/vcardstore.h"
#include "core/app.h"
#include "jobs/jobdialog.h"
#include "jobs/jobops.h"
#include "netlink/netlinkhost.h"
#include "netlink/socket1.h"
#include "platform/clock.h"
#include "platform/qt/qtplatform.h"
#include "shell/prefwin.h"
#include "storage/document.h"
#include "storage/filestore.h"

#include <QObject>
#include <QPointer>

class QMainWindow;
class QMenuBar;

namespace core::ui
{
class MainwndoView;
}

namespace shell::ui
{

// The composition of the running program: the Qt services, the application, the document, the start
// window and the main window's view, and the answers to the core's calls into the subsystems above it.
class Shell : public QObject,
              public core::AppHooks,
              public core::MainwndoHooks,
              public netlink::NetLinkHost,
              public clients::SyncHost,
              public jobs::SpecialwHooks,
              public shell::PrefwinHooks
{
    Q_OBJECT

public:
    inline static const QString kStartNew = QStringLiteral("New Timesheet...");
    inline static const QString kStartOpen = QStringLiteral("Open Timesheet...");

    Shell();
    ~Shell() override;

    // Start-up, then a timesheet named on the command line, if any.
    void start(const QStringList& documents);
    core::App& app() { return m_app; }
    // Another launch asked for these timesheets, or just for the program to come forward.
    void openRequested(const QStringList& paths);

    // core::AppHooks
    void readPrefs(core::AppPrefs& prefs) override { m_document.readPrefs(prefs); }
    void saveprefs(const core::AppPrefs& prefs) override { m_document.saveprefs(prefs); }
    bool fileExists(const QString& path) const override { return m_files.exists(path); }
    void sesame() override { m_document.sesame(); }
    bool operationsFileExists() const override;
    void firstRun() override;
    void exit() override;
    void locateStyleSheet() override;
    void mainwndoOpened(core::Mainwndo& window) override;

    // core::MainwndoHooks
    platform::Result writeTimesheet(const QString& path, const core::Timesheet& sheet) override
    {
        return m_document.writeTimesheet(path, sheet);
    }
    void windowClosing() override;

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

    // core::MainwndoHooks
    void populatelistbox2() override;

    // jobs::SpecialwHooks
    void syncaddressbook2() override { m_sync.syncaddressbook2(); }
    void showAddressadd() override { m_sync.showAddressadd(); }
    void editOperations() override { showPrefwin(kOperationsTab); }

    // shell::PrefwinHooks
    bool timesheetOpen() const override { return m_app.existingMainwndo() != nullptr; }
    int windScreen() const override { return m_app.windScreen; }
    void netLinkStop() override { m_socket1.reset(); }
    void netLinkListen() override { restartWeb(); }
    void applyListFont(const QString& font, int size) override;
    void refreshOppsList() override;
    void saveprefs() override { m_document.saveprefs(m_app.prefs); }

    // The preferences window on the given tab, or on the one it was left on (-1).
    void showPrefwin(int tab);

    // Net Link on or off as the settings say; the Connect button of the preferences restarts it.
    void restartWeb();
    static constexpr int kOperationsTab = 1;
    void _webo_Action();

private:
    void buildStartWindow();
    void openDocuments(const QStringList& paths);
    void fillMenus(QMenuBar* bar, bool documentOpen);
    void showMainwndo(core::Mainwndo* form);
    void quit();

    platform::SystemClock m_clock;
    platform::qt::QtDesktop m_desktop;
    platform::qt::QtDialogs m_dialogs;
    platform::qt::QtTimerFactory m_timers;
    storage::DiskFileStore m_files;
    core::App m_app;
    storage::Document m_document;
    QMainWindow* m_startWindow = nullptr;
    QPointer<core::ui::MainwndoView> m_view;
    QPointer<QWidget> m_pane;
    int m_prefTab = 0;
    // What lives as long as the main window: the job operations, the client view, rows and notes.
    struct Window;
    storage::PresetJobList m_joblst;
    std::unique_ptr<Window> m_window;
    clients::VCardStore m_contacts;
    clients::ClientSync m_sync;
    QString m_styleSheetTxt;
    std::unique_ptr<netlink::Socket1> m_socket1;
    core::Timesheet m_noSheet;
    QString m_noAddress;
    bool m_quitting = false;
};

} // namespace shell::ui

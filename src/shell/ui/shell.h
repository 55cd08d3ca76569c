#pragma once

#include "core/app.h"
#include "netlink/netlinkhost.h"
#include "netlink/socket1.h"
#include "platform/clock.h"
#include "platform/qt/qtplatform.h"
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
class Shell : public QObject, public core::AppHooks, public core::MainwndoHooks, public netlink::NetLinkHost
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

    // Net Link on or off as the settings say; the Connect button of the preferences restarts it.
    void restartWeb();
    void _webo_Action();

private:
    void buildStartWindow();
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
    QString m_styleSheetTxt;
    std::unique_ptr<netlink::Socket1> m_socket1;
    core::Timesheet m_noSheet;
    QString m_noAddress;
    bool m_quitting = false;
};

} // namespace shell::ui

#pragma once

#include "core/appprefs.h"
#include "core/mainwndo.h"

#include <QObject>

#include <memory>

namespace core
{

// What the application object asks of the subsystems above the core; each does nothing until wired.
class AppHooks
{
public:
    virtual ~AppHooks() = default;
    // Reads the settings file into `prefs` when there is one.
    virtual void readPrefs(AppPrefs& prefs) { Q_UNUSED(prefs); }
    virtual void saveprefs(const AppPrefs& prefs) { Q_UNUSED(prefs); }
    virtual bool fileExists(const QString& path) const
    {
        Q_UNUSED(path);
        return false;
    }
    // Reads App::thisdoc into the main window.
    virtual void sesame() {}
    virtual bool operationsFileExists() const { return true; }
    // First run: the welcome note, then the preferences on the operations tab.
    virtual void firstRun() {}
    virtual void locateStyleSheet() {}
    // The main window has just been made: its Net Link, preset window, tray item and strip come up.
    virtual void mainwndoOpened(Mainwndo& window) { Q_UNUSED(window); }
    // Quit was chosen: the preset window and the status strip close, their places are kept.
    virtual void quitting() {}
    virtual void exit() {}
};

// The application: the settings, the open document and the one main window, from start to quit.
class App : public QObject
{
    Q_OBJECT

public:
    inline static const QString kAppWarning = QStringLiteral(
        "WARNING! - Unable to open the recent timesheet file - Perhaps the file has been moved or deleted!");
    inline static const QString kAppLastPath = QStringLiteral("The last known path to the file was: ");
    inline static const QString kScreenMissing = QStringLiteral("Previous display is not available.");
    inline static const QString kWindowMoved =
        QStringLiteral("For your convenience, the Timesheet window has been moved to your main display.");
    inline static const QString kAppUnhandledExecption =
        QStringLiteral("Ooops... I can't do that!  If this is a repeatable program error, please report it");
    inline static const QString kAppReportTo = QStringLiteral(" by sending an email to: ");
    inline static const QString kAppRunWarning = QStringLiteral("Veltrick - WARNING!");
    inline static const QString kAppVersion = QStringLiteral("v.8.0");

    App(Mainwndo::Services services, AppHooks& hooks);
    ~App() override;

    AppPrefs prefs;
    QString thisdoc;
    int mywindowcount = 0;
    int windScreen = 0;

    void Event_Open();
    // The enable procedure of the application's commands.
    void Event_EnableMenuItems(MenuItems& items) const;
    // Every command's state now: the items on by themselves, then the application's procedure, then the
    // main window's while it is open.
    MenuItems menuState() const;
    // The main window, made and opened on first use.
    Mainwndo& mainwndo();
    Mainwndo* existingMainwndo() const { return m_main.get(); }
    void RestoreWindowSize(Mainwndo& window, int left, int top, int width, int height);
    // Closes the document window; false when the user cancelled at the save question.
    bool closeMainwndo();
    bool _FileQuit_Action(); // false: the quit was cancelled
    void Event_Close();
    void Event_OpenDocument(const QString& path);
    void Event_UnhandledException(int code, const QString& what);
    // The error message: where to report it when the build names an address (packagers fill it in),
    // otherwise the version, so that a report says which program it is about.
    static QString unhandledText(int code, const QString& supportAddress);

signals:
    void mainwndoCreated(core::Mainwndo* window);
    void mainwndoClosed();

private:
    void mainwndoEventOpen(Mainwndo& window);

    Mainwndo::Services m_s;
    AppHooks& m_hooks;
    std::unique_ptr<Mainwndo> m_main;
};

} // namespace core

namespace core
{

// The welcome note of a first start: the user adds an operation before anything else.
class Noopps : public platform::ModalForm
{
public:
    inline static const QString FRWinTitle = QStringLiteral("Veltrick - First Run");
    inline static const QString FRWinHeadText = QStringLiteral("Welcome to Veltrick");
    inline static const QString FRWinText =
        QStringLiteral("Before you can start to time your jobs, you must add at least one operation type to the "
                       "operations list.\n\nOperations are the different types of task you perform in your everyday "
                       "work.");
    QString formName() const override { return QStringLiteral("noopps"); }
};

} // namespace core

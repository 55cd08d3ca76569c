#include "clients/vcardstore.h"
#include "platform/qt/dbusnotifier.h"
#include "shell/ui/shell.h"
#include "shell/ui/singleinstance.h"
#include "storage/filestore.h"

#include <QApplication>
#include <QDir>
#include <QIcon>
#include <QStandardPaths>
#include <QTimer>

#include <exception>

namespace
{

// No error ends the program: whatever escapes a handler is reported and the event loop goes on.
// Every event counts as under way while it is handled, so that a tick, an open request or a command that
// arrives while a handler walks the rows or shows a modal window waits until that handler has returned.
class Application : public QApplication
{
public:
    using QApplication::QApplication;
    shell::ui::Shell* shell = nullptr;

    bool notify(QObject* receiver, QEvent* event) override
    {
        if (!shell)
            return QApplication::notify(receiver, event);
        platform::EventGate::Scope handling(shell->gate());
        try {
            return QApplication::notify(receiver, event);
        } catch (const std::exception& error) {
            shell->program().app().Event_UnhandledException(-3, QString::fromLocal8Bit(error.what()));
        } catch (...) {
            shell->program().app().Event_UnhandledException(-3, QString());
        }
        return false;
    }
};

#ifdef VELTRICK_TEST_HOOKS
// Test builds only: VELTRICK_TEST_CLOCK="<origin, ms since the epoch>:<factor>" runs the clock and every
// timer `factor` times faster from the origin, the same for each run of the program, so that a crash
// test lives through hours of timing in minutes and a restarted program finds the time it missed.
struct FastTime
{
    qint64 origin = 0;
    int factor = 1;

    static FastTime fromEnvironment()
    {
        const QStringList parts = qEnvironmentVariable("VELTRICK_TEST_CLOCK").split(QLatin1Char(':'));
        FastTime time;
        if (parts.size() == 2) {
            time.origin = parts[0].toLongLong();
            time.factor = qMax(1, parts[1].toInt());
        }
        return time;
    }
};

class FastClock : public platform::Clock
{
public:
    explicit FastClock(FastTime time) : m_time(time) {}
    QDateTime now() const override
    {
        const qint64 real = QDateTime::currentMSecsSinceEpoch();
        return QDateTime::fromMSecsSinceEpoch(m_time.origin + (real - m_time.origin) * m_time.factor);
    }

private:
    FastTime m_time;
};

class FastTimers : public platform::TimerFactory
{
public:
    explicit FastTimers(FastTime time) : m_time(time) {}
    std::unique_ptr<platform::Timer> create(int periodMs) override
    {
        return std::make_unique<platform::qt::QtTimer>(qMax(1, periodMs / m_time.factor));
    }

private:
    FastTime m_time;
};
#endif

// The window icon: the theme's when the program is installed, the copy compiled in when it runs from the
// build tree. Finding it reads the icon theme's folders and decoding it loads image plugins, neither of
// which the first frame needs, so it is set once the first window has been drawn; Qt hands it then to
// every window open.
class IconOnceShown : public QObject
{
protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Expose && watched->isWindowType()) {
            qApp->removeEventFilter(this);
            QTimer::singleShot(0, qApp, [] {
                QIcon builtIn;
                const QDir sizes(QStringLiteral(":/icons"));
                for (const QString& name : sizes.entryList(QDir::Files))
                    builtIn.addFile(sizes.filePath(name));
                QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("veltrick"), builtIn));
            });
        }
        return false;
    }
};

} // namespace

int main(int argc, char* argv[])
{
    Application application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Veltrick"));
    QApplication::setApplicationVersion(QStringLiteral("8.0"));
    QApplication::setQuitOnLastWindowClosed(false);
    // The desktop file names the program to Wayland and the task bar.
    QGuiApplication::setDesktopFileName(QStringLiteral("veltrick"));
    IconOnceShown icon;
    application.installEventFilter(&icon);
    const QStringList documents = QApplication::arguments().mid(1);
    shell::ui::SingleInstance instance;
    if (!instance.claim(documents))
        return 0; // the program that runs already has the timesheets
#ifdef VELTRICK_TEST_HOOKS
    const FastTime fastTime = FastTime::fromEnvironment();
    FastClock clock(fastTime);
    FastTimers timers(fastTime);
#else
    platform::SystemClock clock;
    platform::qt::QtTimerFactory timers;
#endif
    platform::qt::QtDesktop desktop;
    platform::qt::QtDialogs dialogs;
    storage::DiskFileStore files;
    clients::VCardStore contacts(files);
    platform::qt::DBusNotifier notifier;
    shell::ui::registerViews(dialogs);
    shell::Program program({clock, desktop, dialogs, timers, files, contacts, notifier,
                            QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation),
                            QCoreApplication::applicationDirPath()});
    shell::ui::Shell shell(program);
    application.shell = &shell;
    QObject::connect(&instance, &shell::ui::SingleInstance::openRequested, &shell, &shell::ui::Shell::openRequested);
    shell.start(documents);
    const int code = QApplication::exec();
    application.shell = nullptr; // what the shell's end sends goes past the gate
    return code;
}

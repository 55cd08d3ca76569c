#include "shell/ui/shell.h"
#include "shell/ui/singleinstance.h"

#include <QApplication>

#include <exception>

namespace
{

// No error ends the program: whatever escapes a handler is reported and the event loop goes on.
class Application : public QApplication
{
public:
    using QApplication::QApplication;
    shell::ui::Shell* shell = nullptr;

    bool notify(QObject* receiver, QEvent* event) override
    {
        try {
            return QApplication::notify(receiver, event);
        } catch (const std::exception& error) {
            if (shell)
                shell->app().Event_UnhandledException(-3, QString::fromLocal8Bit(error.what()));
        } catch (...) {
            if (shell)
                shell->app().Event_UnhandledException(-3, QString());
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
    const QStringList documents = QApplication::arguments().mid(1);
    shell::ui::SingleInstance instance;
    if (instance.forwardToRunning(documents))
        return 0;
    shell::ui::Shell shell;
    application.shell = &shell;
    QObject::connect(&instance, &shell::ui::SingleInstance::openRequested, &shell, &shell::ui::Shell::openRequested);
    instance.listen();
    shell.start(documents);
    return QApplication::exec();
}

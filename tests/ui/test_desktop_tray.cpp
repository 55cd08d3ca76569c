// The tray item on a real desktop bus: under Xvfb, with a small StatusNotifier watcher on a private
// session bus, the item registers and its tool tip tells "--:--" with no selection and the job's time
// after a tick.
#include "shell/programrig.h"
#include "shell/ui/shell.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusInterface>
#include <QDBusReply>
#include <QDBusVariant>
#include <QThread>
#include <QtTest>

namespace
{

const QString kWatcherService = QStringLiteral("org.kde.StatusNotifierWatcher");

// The desktop's side of the tray: it takes registrations and says a host is there to show them.
class Watcher : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ hostRegistered)
    Q_PROPERTY(int ProtocolVersion READ protocolVersion)
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ items)

public:
    bool hostRegistered() const { return true; }
    int protocolVersion() const { return 0; }
    QStringList items() const { return m_items; }

public slots:
    void RegisterStatusNotifierItem(const QString& service) { m_items << service; }
    void RegisterStatusNotifierHost(const QString&) {}

signals:
    void StatusNotifierItemRegistered(const QString& service);
    void StatusNotifierHostRegistered();

private:
    QStringList m_items;
};

// The watcher in a thread of its own, on a connection of its own, so that the program's blocking calls
// to it are answered.
class WatcherThread : public QThread
{
public:
    void run() override
    {
        QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("watcher"));
        Watcher watcher;
        bus.registerObject(QStringLiteral("/StatusNotifierWatcher"), &watcher,
                           QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties |
                               QDBusConnection::ExportAllSignals);
        bus.registerService(kWatcherService);
        exec();
        bus.unregisterService(kWatcherService);
        QDBusConnection::disconnectFromBus(QStringLiteral("watcher"));
    }
};

// A property over the bus. The call does not block: the item answering it lives in this very thread,
// so the event loop runs while the answer comes.
QVariant property(const QString& service, const QString& path, const QString& interface, const QString& name)
{
    QDBusMessage get = QDBusMessage::createMethodCall(service, path, QStringLiteral("org.freedesktop.DBus.Properties"),
                                                      QStringLiteral("Get"));
    get << interface << name;
    QDBusPendingCall pending = QDBusConnection::sessionBus().asyncCall(get);
    for (int i = 0; i < 100 && !pending.isFinished(); ++i)
        QTest::qWait(20);
    const QDBusReply<QDBusVariant> reply(pending.reply());
    return reply.isValid() ? reply.value().variant() : QVariant();
}

QStringList registeredItems()
{
    return property(kWatcherService, QStringLiteral("/StatusNotifierWatcher"), kWatcherService,
                    QStringLiteral("RegisteredStatusNotifierItems"))
        .toStringList();
}

// The title inside the item's ToolTip property, a (s a(iiay) s s) structure.
QString toolTipTitle(const QString& service)
{
    const QVariant tip = property(service, QStringLiteral("/StatusNotifierItem"),
                                  QStringLiteral("org.kde.StatusNotifierItem"), QStringLiteral("ToolTip"));
    if (!tip.canConvert<QDBusArgument>())
        return QStringLiteral("(no tool tip)");
    const QDBusArgument arg = tip.value<QDBusArgument>();
    QString icon, title, subTitle;
    arg.beginStructure();
    arg >> icon;
    arg.beginArray();
    while (!arg.atEnd()) {
        int w = 0, h = 0;
        QByteArray pixels;
        arg.beginStructure();
        arg >> w >> h >> pixels;
        arg.endStructure();
    }
    arg.endArray();
    arg >> title >> subTitle;
    arg.endStructure();
    return title;
}

} // namespace

class TestDesktopTray : public QObject
{
    Q_OBJECT

    WatcherThread m_watcher;

private slots:
    void initTestCase()
    {
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        if (QGuiApplication::platformName() != QStringLiteral("xcb") || !QDBusConnection::sessionBus().isConnected())
            QSKIP("needs Xvfb and a session bus (ctest runs this test under xvfb-run and dbus-run-session)");
        m_watcher.start();
        QTRY_VERIFY(QDBusConnection::sessionBus().interface()->isServiceRegistered(kWatcherService));
    }

    void cleanupTestCase()
    {
        m_watcher.quit();
        m_watcher.wait();
    }

    void registersAndShowsTheClock()
    {
        QVERIFY(QSystemTrayIcon::isSystemTrayAvailable());
        testing::ScriptedDialogs dialogs;
        testing::ProgramRig rig(dialogs);
        const QString sheet = QStringLiteral("/docs/a.vlk");
        rig.writeSheet(sheet, {rig.row(QStringLiteral("A100"), 75)});
        rig.make();
        shell::ui::Shell shell(*rig.program);
        rig.program->start({sheet});
        rig.w()->setListIndex(-1);
        QVERIFY(shell.tray());
        QTRY_COMPARE(registeredItems().size(), 1);
        const QString item = registeredItems().first();
        QTRY_COMPARE(toolTipTitle(item), QStringLiteral("--:--\n-- Veltrick \u2022 No Job Selected --"));

        rig.w()->setListIndex(0);
        rig.program->runButton();
        rig.clock.advanceMinutes(2);
        rig.tick();
        QTRY_COMPARE(toolTipTitle(item), QStringLiteral("01:17\nA100 - P A100 - Design - 01:17"));
        QVERIFY2(dialogs.errors.isEmpty(), qPrintable(dialogs.errors.join(QLatin1Char('\n'))));
    }
};

QTEST_MAIN(TestDesktopTray)
#include "test_desktop_tray.moc"

// The idle watch's sources (GNOME's and KDE's bus services, a Wayland compositor) and the bus's notices.
#include "ext-idle-notify-v1-server.h"
#include "platform/qt/dbusnotifier.h"
#include "platform/qt/desktopactivity.h"
#include <QDBusConnection>
#include <QMutex>
#include <QTemporaryDir>
#include <QtTest>
#include <vector>
#include <wayland-server.h>

using Answer = platform::ActivityProbe::Answer;
using platform::qt::DesktopActivity;

namespace
{
// A bus service in a thread of its own, so the program's blocking calls are answered; `object` set while it serves.
template <typename Service> class BusService : public QThread
{
public:
    BusService(QString name, QString path) : m_name(std::move(name)), m_path(std::move(path)) { start(); }
    ~BusService() override
    {
        do
            quit(); // again, should the first come before the loop ran
        while (!wait(50));
    }
    std::atomic<Service*> object = nullptr;

protected:
    void run() override
    {
        {
            QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, m_name);
            Service service;
            bus.registerObject(m_path, &service, QDBusConnection::ExportAllContents);
            bus.registerService(m_name);
            object = &service;
            exec();
            object = nullptr;
        }
        QDBusConnection::disconnectFromBus(m_name);
    }

private:
    QString m_name, m_path;
};
QAtomicInteger<quint64> g_idleMs; // since the last input, as the two services below report it
class MutterIdle : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.gnome.Mutter.IdleMonitor")
public slots:
    quint64 GetIdletime() { return g_idleMs.loadRelaxed(); }
};
class ScreenSaverIdle : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")
public slots:
    uint GetSessionIdleTime() { return uint(g_idleMs.loadRelaxed()); }
};
// The desktop's side of the notices: it numbers them from 41 and logs them and their closing in order.
class NoticeService : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")
public:
    QStringList log() const
    {
        QMutexLocker lock(&m_mutex);
        return m_log;
    }
public slots:
    uint Notify(const QString& app, uint, const QString& icon, const QString& summary, const QString& body,
                const QStringList& actions, const QVariantMap&, int timeout)
    {
        QMutexLocker lock(&m_mutex);
        m_log << QStringList{app, icon, summary, body, actions.join(u','), QString::number(timeout)}.join(u'|');
        return uint(40 + m_log.size());
    }
    void CloseNotification(uint id)
    {
        QMutexLocker lock(&m_mutex);
        m_log << QStringLiteral("closed %1").arg(id);
    }
signals:
    void ActionInvoked(uint id, const QString& action);

private:
    mutable QMutex m_mutex;
    QStringList m_log;
};
// A Wayland compositor with a seat and idle notices, which the test sends when it likes.
class Compositor : public QThread
{
public:
    Compositor()
    {
        start();
        while (!ready)
            msleep(5);
    }
    ~Compositor() override
    {
        m_stop = true;
        wait();
    }
    // Sends every client that asked an idle notice, or a resumed one, and returns once it is on its way.
    void send(bool idled)
    {
        m_notice = idled ? 1 : 2;
        QTRY_COMPARE(m_notice.load(), 0);
    }
    QByteArray socket;
    std::atomic<bool> ready = false;
    std::atomic<unsigned> askedTimeout = 0;

protected:
    void run() override
    {
        wl_display* display = wl_display_create();
        socket = wl_display_add_socket_auto(display);
        wl_global_create(display, &wl_seat_interface, 1, nullptr,
                         [](wl_client* client, void*, uint32_t v, uint32_t id) {
                             wl_resource_create(client, &wl_seat_interface, int(v), id);
                         });
        wl_global_create(display, &ext_idle_notifier_v1_interface, 1, this, bindNotifier);
        ready = true;
        while (!m_stop) {
            wl_event_loop_dispatch(wl_display_get_event_loop(display), 10);
            if (const int notice = m_notice) { // cleared once sent, which the test waits for
                for (wl_resource* r : m_notifications)
                    notice == 1 ? ext_idle_notification_v1_send_idled(r) : ext_idle_notification_v1_send_resumed(r);
                m_notice = 0;
            }
            wl_display_flush_clients(display);
        }
        wl_display_destroy_clients(display);
        wl_display_destroy(display);
    }

private:
    static void destroy(wl_client*, wl_resource* resource) { wl_resource_destroy(resource); }
    static void bindNotifier(wl_client* client, void* self, uint32_t version, uint32_t id)
    {
        static const struct ext_idle_notifier_v1_interface notifier = {destroy, notification};
        wl_resource_set_implementation(wl_resource_create(client, &ext_idle_notifier_v1_interface, int(version), id),
                                       &notifier, self, nullptr);
    }
    static void notification(wl_client* client, wl_resource* notifier, uint32_t id, uint32_t timeout, wl_resource*)
    {
        static const struct ext_idle_notification_v1_interface implementation = {destroy};
        auto* self = static_cast<Compositor*>(wl_resource_get_user_data(notifier));
        wl_resource* r = wl_resource_create(client, &ext_idle_notification_v1_interface, 1, id);
        wl_resource_set_implementation(r, &implementation, self, [](wl_resource* gone) {
            std::erase(static_cast<Compositor*>(wl_resource_get_user_data(gone))->m_notifications, gone);
        });
        self->m_notifications.push_back(r);
        self->askedTimeout = timeout;
    }
    std::vector<wl_resource*> m_notifications;
    std::atomic<bool> m_stop = false;
    std::atomic<int> m_notice = 0; // 1 idled, 2 resumed
};

} // namespace

class TestDesktop : public QObject
{
    Q_OBJECT
private slots:
    // Each bus source: Unknown before its service runs; input when idle is shorter than since the last ask.
    void busSources()
    {
        qint64 now = 0;
        DesktopActivity gnome({DesktopActivity::mutter()}, [&] { return now; });
        DesktopActivity kde({DesktopActivity::screenSaver()}, [&] { return now; });
        const auto ask = [&](Answer answer) {
            QCOMPARE(gnome.inputSinceLastCheck(), answer);
            QCOMPARE(kde.inputSinceLastCheck(), answer);
        };
        QVERIFY(!gnome.available() && !kde.available());
        ask(Answer::Unknown);
        BusService<MutterIdle> mutter("org.gnome.Mutter.IdleMonitor", "/org/gnome/Mutter/IdleMonitor/Core");
        BusService<ScreenSaverIdle> screenSaver("org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver");
        QTRY_VERIFY(mutter.object && screenSaver.object);
        g_idleMs = 2000; // a key 2 s before the question, a minute after the last one
        now += 60000;
        ask(Answer::Input);
        QCOMPARE(gnome.sourceName() + kde.sourceName(), QStringLiteral("GNOMEScreenSaver"));
        g_idleMs = 62000;
        now += 60000;
        ask(Answer::NoInput);
        g_idleMs = 40000; // input 40 s ago, but before the restart 30 s ago
        now += 30000;
        gnome.restart();
        kde.restart();
        now += 30000;
        ask(Answer::NoInput);
    }
    // Still after an idle notice, at work after a resumed one, Unknown once gone; under Wayland X is not asked.
    void waylandNotices()
    {
        qint64 now = 0;
        const auto clock = [&now] { return now; };
        QTemporaryDir runtime;
        if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR"))
            qputenv("XDG_RUNTIME_DIR", runtime.path().toUtf8());
        const auto leave = qScopeGuard([] { qunsetenv("WAYLAND_DISPLAY"); });
        auto compositor = std::make_unique<Compositor>();
        qputenv("WAYLAND_DISPLAY", compositor->socket);
        QVERIFY(!DesktopActivity({DesktopActivity::x11()}, clock).available());
        DesktopActivity probe({DesktopActivity::wayland()}, clock);
        QVERIFY(probe.available() && compositor->askedTimeout == 1000u); // asks for a second
        now += 60000;
        QCOMPARE(probe.inputSinceLastCheck(), Answer::Input); // never idle yet
        compositor->send(true);
        now += 500; // the notice says a second without input
        QCOMPARE(probe.inputSinceLastCheck(), Answer::NoInput);
        compositor->send(false);
        now += 500;
        QCOMPARE(probe.inputSinceLastCheck(), Answer::Input);
        compositor.reset();
        QCOMPARE(probe.inputSinceLastCheck(), Answer::Unknown);
    }
    // No service: key 0 (the status line takes over); else name, icon, the click reported, withdraw closes.
    void notices()
    {
        platform::qt::DBusNotifier notifier;
        QCOMPARE(notifier.notify(QStringLiteral("Budget Information"), QStringLiteral("none listening")), 0u);
        BusService<NoticeService> service("org.freedesktop.Notifications", "/org/freedesktop/Notifications");
        QTRY_VERIFY(service.object);
        QList<unsigned> clicked;
        notifier.activated = [&clicked](unsigned id) { clicked << id; };
        QCOMPARE(notifier.notify(QStringLiteral("Budget Information"), QStringLiteral("Job No. A100")), 41u);
        NoticeService* desktop = service.object;
        for (const auto& [id, action] : {std::pair(41u, "other"), std::pair(40u, "default"), std::pair(41u, "default")})
            QMetaObject::invokeMethod(desktop, [=] { emit desktop->ActionInvoked(id, QString::fromLatin1(action)); });
        QTRY_COMPARE(clicked, (QList<unsigned>{40, 41}));
        notifier.withdraw(41);
        QTRY_COMPARE(desktop->log(),
                     (QStringList{"Veltrick|veltrick|Budget Information|Job No. A100|default,Budget Information|-1",
                                  "closed 41"}));
    }
};

QTEST_MAIN(TestDesktop)
#include "test_desktop_activity.moc"

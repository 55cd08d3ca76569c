// The idle watch on a real desktop: the session bus services of GNOME and of KDE and a Wayland
// compositor's idle notices, each played by a small server in a thread of its own, and the X server's
// counter moved by xdotool.
#include "core/noactivity.h"
#include "platform/qt/desktopactivity.h"
#include "shell/programrig.h"

#include <QAtomicInteger>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

#include "ext-idle-notify-v1-server.h"
#include <wayland-server.h>

#include <atomic>
#include <vector>

using platform::ActivityProbe;
using platform::qt::DesktopActivity;

namespace
{

// Milliseconds since the last input, as the services below report it.
QAtomicInteger<quint64> g_idleMs;

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

// Serves one of the two on a connection of its own, as the desktop would.
template <typename Service> class ServiceThread : public QThread
{
public:
    ServiceThread(QString name, QString path) : m_name(std::move(name)), m_path(std::move(path)) {}
    ~ServiceThread() override
    {
        quit();
        wait();
    }

    void run() override
    {
        const QString connection = QStringLiteral("idle-") + m_name;
        {
            QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, connection);
            Service service;
            bus.registerObject(m_path, &service, QDBusConnection::ExportAllSlots);
            bus.registerService(m_name);
            exec();
            bus.unregisterService(m_name);
        }
        QDBusConnection::disconnectFromBus(connection);
    }

private:
    QString m_name, m_path;
};

// A Wayland compositor with a seat and, if asked, idle notices that the test sends when it likes.
class Compositor : public QThread
{
public:
    explicit Compositor(bool offersNotices) : m_offersNotices(offersNotices) {}
    ~Compositor() override
    {
        m_stop = true;
        wait();
    }

    enum Notice
    {
        None,
        Idled,
        Resumed
    };

    // Sends the notice to every client that asked for notices, and returns once it is on its way.
    void send(Notice notice)
    {
        const int before = m_sent;
        m_notice = notice;
        QTRY_VERIFY(m_sent > before);
    }

    QString socket() const { return m_socket; }
    std::atomic<bool> ready = false;
    std::atomic<unsigned> askedTimeout = 0;

protected:
    void run() override
    {
        wl_display* display = wl_display_create();
        m_socket = QString::fromUtf8(wl_display_add_socket_auto(display));
        wl_global_create(
            display, &wl_seat_interface, 1, nullptr, [](wl_client* client, void*, uint32_t version, uint32_t id) {
                wl_resource_set_implementation(wl_resource_create(client, &wl_seat_interface, int(version), id),
                                               nullptr, nullptr, nullptr);
            });
        if (m_offersNotices)
            wl_global_create(display, &ext_idle_notifier_v1_interface, 1, this, bindNotifier);
        ready = true;
        wl_event_loop* loop = wl_display_get_event_loop(display);
        while (!m_stop) {
            wl_event_loop_dispatch(loop, 10);
            if (const Notice notice = m_notice.exchange(None)) {
                for (wl_resource* r : m_notifications)
                    notice == Idled ? ext_idle_notification_v1_send_idled(r) : ext_idle_notification_v1_send_resumed(r);
                ++m_sent;
            }
            wl_display_flush_clients(display);
        }
        wl_display_destroy_clients(display);
        wl_display_destroy(display);
    }

private:
    static void destroy(wl_client*, wl_resource* resource) { wl_resource_destroy(resource); }

    static void bindNotifier(wl_client* client, void* data, uint32_t version, uint32_t id)
    {
        static const struct ext_idle_notifier_v1_interface notifier
        {
            destroy, getNotification
        };
        wl_resource_set_implementation(wl_resource_create(client, &ext_idle_notifier_v1_interface, int(version), id),
                                       &notifier, data, nullptr);
    }

    static void getNotification(wl_client* client, wl_resource* notifierResource, uint32_t id, uint32_t timeout,
                                wl_resource*)
    {
        static const struct ext_idle_notification_v1_interface notification
        {
            destroy
        };
        auto* self = static_cast<Compositor*>(wl_resource_get_user_data(notifierResource));
        wl_resource* r = wl_resource_create(client, &ext_idle_notification_v1_interface, 1, id);
        wl_resource_set_implementation(r, &notification, self, [](wl_resource* gone) {
            auto& list = static_cast<Compositor*>(wl_resource_get_user_data(gone))->m_notifications;
            list.erase(std::remove(list.begin(), list.end(), gone), list.end());
        });
        self->m_notifications.push_back(r);
        self->askedTimeout = timeout;
    }

    bool m_offersNotices;
    QString m_socket;
    std::vector<wl_resource*> m_notifications;
    std::atomic<bool> m_stop = false;
    std::atomic<Notice> m_notice = None;
    std::atomic<int> m_sent = 0;
};

bool xdotool(const QStringList& arguments)
{
    return QProcess::execute(QStringLiteral("xdotool"), arguments) == 0;
}

} // namespace

class TestDesktopActivity : public QObject
{
    Q_OBJECT

private slots:
    // Each bus source: nothing to tell before its service runs, then input when the idle time is shorter
    // than the time since the last question, and none when it is longer.
    void busSources_data()
    {
        QTest::addColumn<int>("source");
        QTest::newRow("GNOME") << 0;
        QTest::newRow("ScreenSaver") << 1;
    }

    void busSources()
    {
        QFETCH(int, source);
        if (!QDBusConnection::sessionBus().isConnected())
            QSKIP("needs a session bus (ctest runs this test under dbus-run-session)");
        qint64 now = 0;
        DesktopActivity probe({source == 0 ? DesktopActivity::mutter() : DesktopActivity::screenSaver()},
                              [&now] { return now; });
        QVERIFY(!probe.available());
        now += 60000;
        QCOMPARE(probe.inputSinceLastCheck(), ActivityProbe::Answer::Unknown);

        std::unique_ptr<QThread> service;
        if (source == 0)
            service = std::make_unique<ServiceThread<MutterIdle>>(QStringLiteral("org.gnome.Mutter.IdleMonitor"),
                                                                  QStringLiteral("/org/gnome/Mutter/IdleMonitor/Core"));
        else
            service = std::make_unique<ServiceThread<ScreenSaverIdle>>(QStringLiteral("org.freedesktop.ScreenSaver"),
                                                                       QStringLiteral("/org/freedesktop/ScreenSaver"));
        service->start();
        const QString name = source == 0 ? QStringLiteral("org.gnome.Mutter.IdleMonitor")
                                         : QStringLiteral("org.freedesktop.ScreenSaver");
        QTRY_VERIFY(QDBusConnection::sessionBus().interface()->isServiceRegistered(name));
        QVERIFY(probe.available());

        // A key pressed 2 s before the question, a minute after the last one.
        g_idleMs = 2000;
        now += 60000;
        QCOMPARE(probe.inputSinceLastCheck(), ActivityProbe::Answer::Input);
        QCOMPARE(probe.sourceName(), source == 0 ? QStringLiteral("GNOME") : QStringLiteral("ScreenSaver"));
        g_idleMs = 62000; // nothing since
        now += 60000;
        QCOMPARE(probe.inputSinceLastCheck(), ActivityProbe::Answer::NoInput);
        g_idleMs = 122000;
        now += 30000;
        probe.restart(); // a new setting: the watch counts from here
        now += 30000;
        QCOMPARE(probe.inputSinceLastCheck(), ActivityProbe::Answer::NoInput);
    }

    // The first source that answers wins; none answering is no source at all.
    void order()
    {
        DesktopActivity none({{QStringLiteral("silent"), [] { return std::optional<qint64>(); }}});
        QVERIFY(!none.available());
        QCOMPARE(none.inputSinceLastCheck(), ActivityProbe::Answer::Unknown);

        DesktopActivity desktop; // under the test's X server the X11 counter answers first
        QVERIFY(desktop.available());
        QCOMPARE(desktop.sourceName(), QStringLiteral("X11"));
    }

    // The compositor's notices: none outside a Wayland session or from a compositor without them; with
    // them, still after an idle notice and at work again after a resumed one; none once it has gone. In
    // a Wayland session the X server's counter is not asked: it misses input to Wayland windows.
    void waylandNotices()
    {
        QTemporaryDir runtime;
        if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR"))
            qputenv("XDG_RUNTIME_DIR", runtime.path().toUtf8());
        // The session is Wayland only for this test, however it ends.
        struct LeaveSession
        {
            ~LeaveSession() { qunsetenv("WAYLAND_DISPLAY"); }
        } leave;
        qunsetenv("WAYLAND_DISPLAY");
        qint64 now = 0;
        const auto clock = [&now] { return now; };
        QVERIFY(!DesktopActivity({DesktopActivity::wayland()}, clock).available());

        {
            Compositor plain(false);
            plain.start();
            QTRY_VERIFY(plain.ready);
            qputenv("WAYLAND_DISPLAY", plain.socket().toUtf8());
            QVERIFY(!DesktopActivity({DesktopActivity::wayland()}, clock).available());
            DesktopActivity desktop({DesktopActivity::x11(), DesktopActivity::wayland()}, clock);
            QVERIFY(!desktop.available());
        }

        auto compositor = std::make_unique<Compositor>(true);
        compositor->start();
        QTRY_VERIFY(compositor->ready);
        qputenv("WAYLAND_DISPLAY", compositor->socket().toUtf8());
        DesktopActivity probe({DesktopActivity::wayland()}, clock);
        QVERIFY(probe.available());
        QCOMPARE(compositor->askedTimeout.load(), 1000u);
        now += 60000;
        QCOMPARE(probe.inputSinceLastCheck(), ActivityProbe::Answer::Input); // never idle yet
        compositor->send(Compositor::Idled);
        now += 500; // the notice says a second without input
        QCOMPARE(probe.inputSinceLastCheck(), ActivityProbe::Answer::NoInput);
        compositor->send(Compositor::Resumed);
        now += 500;
        QCOMPARE(probe.inputSinceLastCheck(), ActivityProbe::Answer::Input);
        compositor.reset();
        QCOMPARE(probe.inputSinceLastCheck(), ActivityProbe::Answer::Unknown);
    }

    // The program on the X server: a key or a pointer move restarts the count, and four still minutes
    // after the last input bring the warning at 5 minutes. A "minute" is a fifth of a second here.
    void warningOnTheXServer()
    {
        if (QGuiApplication::platformName() != QStringLiteral("xcb"))
            QSKIP("needs an X server (ctest runs this test under xvfb-run)");
        DesktopActivity x11({DesktopActivity::x11()});
        testing::ScriptedDialogs dialogs;
        testing::ProgramRig rig(dialogs);
        rig.desktop.realActivity = &x11;
        const QString sheet = QStringLiteral("/docs/a.vlk");
        rig.writeSheet(sheet, {rig.row(QStringLiteral("A100"), 30)});
        rig.start({sheet});
        rig.program->app().prefs.waittime = 5;
        rig.w()->setListIndex(0);
        rig.program->runButton();

        int warnedAt = 0, now = 0;
        dialogs.expectModal(QStringLiteral("noactivity"), [&](platform::ModalForm& form) {
            warnedAt = now;
            static_cast<core::noactivity&>(form).PushButton2_Action();
        });
        // Still, still, still, a key, still three times, a pointer move, then still until the warning.
        const QString steps = QStringLiteral("SSSKSSSMSSSSSS");
        for (now = 1; now <= steps.size() && warnedAt == 0; ++now) {
            QTest::qWait(200);
            const QChar step = steps[now - 1];
            if (step == QLatin1Char('K'))
                QVERIFY(xdotool({QStringLiteral("key"), QStringLiteral("shift")}));
            if (step == QLatin1Char('M'))
                QVERIFY(xdotool({QStringLiteral("mousemove"), QString::number(100 + now), QStringLiteral("200")}));
            rig.clock.advanceMinutes(1);
            rig.tick();
            testing::ProgramRig::fake(rig.w()->Timer4()).fire();
        }
        QCOMPARE(warnedAt, 12);
        QVERIFY(dialogs.errors.isEmpty());
        QVERIFY(!rig.w()->running);
    }
};

QTEST_MAIN(TestDesktopActivity)
#include "test_desktop_activity.moc"

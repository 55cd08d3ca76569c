// Budget notices on a real session bus: a small notification service in a thread of its own records what
// the program sends, and a click on the notice shows the preset job.
#include "platform/qt/dbusnotifier.h"
#include "shell/programrig.h"
#include "storage/preset_file.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QMutex>
#include <QThread>
#include <QtTest>

namespace
{

const QString kService = QStringLiteral("org.freedesktop.Notifications");
const QString kPath = QStringLiteral("/org/freedesktop/Notifications");

struct Notice
{
    QString appName, icon, summary, body;
    QStringList actions;
    int timeout = 0;
};

// The desktop's side: the server part of the notification interface, numbering notices from 41.
class NoticeService : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    QList<Notice> notices() const
    {
        QMutexLocker lock(&m_mutex);
        return m_notices;
    }
    QList<uint> closed() const
    {
        QMutexLocker lock(&m_mutex);
        return m_closed;
    }

public slots:
    uint Notify(const QString& appName, uint, const QString& icon, const QString& summary, const QString& body,
                const QStringList& actions, const QVariantMap&, int timeout)
    {
        QMutexLocker lock(&m_mutex);
        m_notices.append({appName, icon, summary, body, actions, timeout});
        return uint(40 + m_notices.size());
    }
    void CloseNotification(uint id)
    {
        QMutexLocker lock(&m_mutex);
        m_closed.append(id);
    }
    QStringList GetCapabilities() { return {QStringLiteral("actions"), QStringLiteral("body")}; }

signals:
    void ActionInvoked(uint id, const QString& action);

private:
    mutable QMutex m_mutex;
    QList<Notice> m_notices;
    QList<uint> m_closed;
};

class ServiceThread : public QThread
{
public:
    NoticeService* service = nullptr;

    void run() override
    {
        QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("notices"));
        NoticeService notices;
        bus.registerObject(kPath, &notices, QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals);
        service = &notices;
        bus.registerService(kService);
        exec();
        bus.unregisterService(kService);
        service = nullptr;
        QDBusConnection::disconnectFromBus(QStringLiteral("notices"));
    }

    // A click on notice `id`, as the desktop reports it to every listener.
    void click(uint id, const QString& action)
    {
        QMetaObject::invokeMethod(service, [this, id, action] { emit service->ActionInvoked(id, action); });
    }
};

} // namespace

class TestDesktopNotify : public QObject
{
    Q_OBJECT

    ServiceThread m_thread;

private slots:
    void initTestCase()
    {
        if (!QDBusConnection::sessionBus().isConnected())
            QSKIP("needs a session bus (ctest runs this test under dbus-run-session)");
    }

    void cleanupTestCase()
    {
        m_thread.quit();
        m_thread.wait();
    }

    // With no notification service the notice is not shown, and says so by its key, so the program
    // falls back to its status line; once a service runs, the notice of a job entering its last hour
    // carries the program's name and icon and the texts, the click on it selects the job in the
    // preset window and shows it, and the notice is closed.
    void noticeAndItsClick()
    {
        platform::qt::DBusNotifier notifier;
        QCOMPARE(notifier.notify(QStringLiteral("Budget Information"), QStringLiteral("none listening")), 0u);

        m_thread.start();
        QTRY_VERIFY(QDBusConnection::sessionBus().interface()->isServiceRegistered(kService));
        testing::ScriptedDialogs dialogs;
        testing::ProgramRig rig(dialogs);
        rig.desktopNotifier = &notifier;
        rig.files.files[storage::prefFile(storage::kPresetJobsFileName)] = storage::encodePresetJobs(
            {{QStringLiteral("B2"), QStringLiteral("Other"), QStringLiteral("09"), QStringLiteral("00"), {}, {}, {}},
             {QStringLiteral("A100"), QStringLiteral("Site"), QStringLiteral("02"), QStringLiteral("00"), {}, {}, {}}});
        const QString sheet = QStringLiteral("/docs/a.vlk");
        rig.writeSheet(sheet, {rig.row(QStringLiteral("A100"), 75)});
        rig.start({sheet});

        QTRY_COMPARE(m_thread.service->notices().size(), 1);
        const Notice notice = m_thread.service->notices().first();
        QCOMPARE(notice.appName, QStringLiteral("Veltrick"));
        QCOMPARE(notice.icon, QStringLiteral("veltrick"));
        QCOMPARE(notice.summary, QStringLiteral("Budget Information"));
        QCOMPARE(notice.body, QStringLiteral("Job No. A100 : 45 minutes remaining"));
        QVERIFY(notice.actions.size() == 2 && notice.actions[0] == QStringLiteral("default"));
        QVERIFY(!rig.program->presets().visible);

        // Another action, or the click on somebody else's notice, is not ours.
        m_thread.click(41, QStringLiteral("other"));
        m_thread.click(40, QStringLiteral("default"));
        QTest::qWait(300);
        QVERIFY(!rig.program->presets().visible);
        m_thread.click(41, QStringLiteral("default"));
        QTRY_VERIFY(rig.program->presets().visible);
        QCOMPARE(rig.program->presets().ListIndex, 1);
        QTRY_COMPARE(m_thread.service->closed(), QList<uint>{41});
    }
};

QTEST_GUILESS_MAIN(TestDesktopNotify)
#include "test_desktop_notify.moc"

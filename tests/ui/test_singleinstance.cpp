// One program per user and desktop session: a launch that finds one running hands it its timesheets;
// a socket that nobody answers is replaced; a running program's socket never is.
#include "shell/ui/singleinstance.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using shell::ui::SingleInstance;

class TestSingleInstance : public QObject
{
    Q_OBJECT

    QTemporaryDir runtime;

private slots:
    void init()
    {
        qputenv("XDG_RUNTIME_DIR", runtime.path().toUtf8());
        qputenv("DISPLAY", ":7");
        qunsetenv("WAYLAND_DISPLAY");
    }

    // The second of two launches, in whatever order they reach the socket, does not run: it hands its
    // paths over, and the first keeps its socket. (Two programs would autosave the same file.)
    void secondLaunchHandsOver()
    {
        SingleInstance first;
        QVERIFY(first.claim({}));
        QSignalSpy received(&first, &SingleInstance::openRequested);
        SingleInstance second;
        QVERIFY(!second.claim({QStringLiteral("/docs/a.vlk"), QStringLiteral("b.vlk")}));
        QTRY_COMPARE(received.count(), 1);
        const QStringList paths = received.first().first().toStringList();
        QCOMPARE(paths.first(), QStringLiteral("/docs/a.vlk"));
        QVERIFY(paths.last().endsWith(QStringLiteral("/b.vlk")) && paths.last().startsWith(QLatin1Char('/')));
        SingleInstance third; // the first still answers: nobody took its place
        QVERIFY(!third.claim({}));
        QTRY_COMPARE(received.count(), 2);
    }

    // A socket left by a program that crashed (bound, nobody listening) is taken over.
    void staleSocketIsReplaced()
    {
        const QByteArray path = QFile::encodeName(SingleInstance::serverPath());
        const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, path.constData(), size_t(path.size()));
        QVERIFY(::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0);
        ::close(fd); // the file stays, as after a crash
        QVERIFY(QFileInfo::exists(SingleInstance::serverPath()));
        SingleInstance next;
        QVERIFY(next.claim({}));
        SingleInstance later;
        QVERIFY(!later.claim({}));
    }

    // The key is per user (the runtime folder) and per desktop session (the display).
    void keyPerSession()
    {
        const QString here = SingleInstance::serverPath();
        QVERIFY(here.startsWith(runtime.path() + QLatin1Char('/')));
        qputenv("DISPLAY", ":8");
        QVERIFY(SingleInstance::serverPath() != here);
        qputenv("WAYLAND_DISPLAY", "wayland-0");
        QVERIFY(SingleInstance::serverPath().endsWith(QStringLiteral("veltrick-wayland-0.socket")));
    }
};

QTEST_MAIN(TestSingleInstance)
#include "test_singleinstance.moc"

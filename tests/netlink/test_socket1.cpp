#include "netlink/page.h"
#include "netlink/socket1.h"
#include "support/fakes.h"

#include <QRegularExpression>
#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest>

#include <memory>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace netlink;

namespace
{

// The window as Net Link sees it: a list, a run flag, and a status line that remembers every text.
class FakeHost : public NetLinkHost
{
public:
    const core::Timesheet& ListBox1() const override { return sheet; }
    bool running() const override { return run; }
    const QString& styleSheetTxt() const override { return style; }
    QString& ipnumber() override { return ip; }
    void setStatus(const QString& text) override { statuses << text; }
    void startTimer2() override { ++timer2Starts; }

    core::Timesheet sheet;
    bool run = false;
    QString style = QStringLiteral("td{color:red}");
    QString ip;
    QStringList statuses;
    int timer2Starts = 0;
};

// One browser connection from the test's side.
class Browser
{
public:
    // The system completes the connection even while the server is busy with someone else.
    explicit Browser(quint16 port)
    {
        socket.connectToHost(QHostAddress::LocalHost, port);
        socket.waitForConnected(5000);
    }
    void send(const QByteArray& bytes)
    {
        socket.write(bytes);
        socket.flush();
    }
    bool closedByServer() const { return socket.state() == QAbstractSocket::UnconnectedState; }
    QByteArray received() { return socket.readAll(); }

    QTcpSocket socket;
};

// A browser that sends its request and closes its sending side at once, as command-line clients do,
// then reads until the server closes.
class HalfClosingBrowser
{
public:
    HalfClosingBrowser(quint16 port, const QByteArray& request)
    {
        m_fd = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        m_connected = ::connect(m_fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0 &&
                      ::send(m_fd, request.constData(), size_t(request.size()), 0) == request.size() &&
                      ::shutdown(m_fd, SHUT_WR) == 0;
        ::fcntl(m_fd, F_SETFL, ::fcntl(m_fd, F_GETFL) | O_NONBLOCK);
    }
    ~HalfClosingBrowser() { ::close(m_fd); }
    bool connected() const { return m_connected; }
    // Takes what has arrived; true once the server has closed.
    bool readToEnd()
    {
        char buffer[65536];
        for (;;) {
            const ssize_t n = ::recv(m_fd, buffer, sizeof(buffer), 0);
            if (n > 0)
                received.append(buffer, n);
            else
                return n == 0 || (errno != EAGAIN && errno != EWOULDBLOCK);
        }
    }
    QByteArray received;

private:
    int m_fd = -1;
    bool m_connected = false;
};

const QByteArray kGet = QByteArrayLiteral("GET / HTTP/1.1\r\nHost: 127.0.0.1:2000\r\n\r\n");
const QString kLeft = Socket1::kMWDSTxtError + QString::number(QAbstractSocket::RemoteHostClosedError);

} // namespace

class TestSocket1 : public QObject
{
    Q_OBJECT

private:
    FakeHost host;
    testing::FakeDesktop desktop;
    std::unique_ptr<Socket1> server;

    QByteArray expectedPage() { return buildPage(host.sheet, host.run, host.style, QStringLiteral("127.0.0.1")); }
    QByteArray fetch()
    {
        Browser browser(server->Port());
        browser.send(kGet);
        [&] { QTRY_VERIFY(browser.closedByServer()); }();
        return browser.received();
    }

private slots:
    void init()
    {
        host = FakeHost();
        server = std::make_unique<Socket1>(host, desktop);
        server->setPort(0);
        QVERIFY(server->Listen().ok());
    }
    void cleanup() { server.reset(); }

    // The page goes out once, after the packet that ends the request, whatever came before it, and
    // is the page of the list as it stands.
    void answersAfterTheEndOfTheRequest_data()
    {
        QTest::addColumn<QList<QByteArray>>("packets");
        QTest::addColumn<int>("rows");
        QTest::addColumn<int>("selected");
        QTest::addColumn<bool>("running");
        QTest::addColumn<QByteArray>("expected");
        const QByteArray markup("<td><a href=\"x\">P&amp;</a></td>");
        using Packets = QList<QByteArray>;
        // clang-format off
        QTest::newRow("one packet, empty timesheet") << Packets{kGet} << 0 << -1 << false << QByteArray("</td><td>Notes:</td>\r\n</tr>\r\n</table>");
        QTest::newRow("split in the header, running marker") << Packets{"GET / HT", "TP/1.0\r\nHost: a\r\n", "\r\n"} << 1 << -1 << true << QByteArray("<hr class=\"runstart\"><table ");
        QTest::newRow("split in the end, markup in a cell") << Packets{"GET / HTTP/1.0\r\n\r", "\n"} << 1 << -1 << false << markup;
        QTest::newRow("any method and path, selected in the middle") << Packets{"DELETE /x/../y?z=1 HTTP/9\r\n\r\n"} << 3 << 1 << false << "<tr class=\"roweven\">\r\n<td></td><td></td>" + markup;
        QTest::newRow("binary junk") << Packets{QByteArray("\0\xff\xfe\r\n", 5), "\r\n\r\n"} << 1 << -1 << false << markup;
        // clang-format on
    }
    void answersAfterTheEndOfTheRequest()
    {
        QFETCH(QList<QByteArray>, packets);
        QFETCH(int, rows);
        QFETCH(int, selected);
        QFETCH(bool, running);
        QFETCH(QByteArray, expected);
        for (int r = 0; r < rows; ++r) {
            core::JobRow row;
            row.setCell(core::CellProject, QStringLiteral("<a href=\"x\">P&amp;</a>"));
            host.sheet.AddRow(row);
        }
        host.sheet.ListIndex = selected;
        host.run = running;
        Browser browser(server->Port());
        for (qsizetype i = 0; i < packets.size(); ++i) {
            browser.send(packets[i]);
            if (i + 1 < packets.size()) {
                QTRY_VERIFY(host.statuses.contains(Socket1::kMWDSTxtSending));
                QTest::qWait(50);
                QVERIFY(!browser.closedByServer());
                QVERIFY(browser.socket.bytesAvailable() == 0);
            }
        }
        QTRY_VERIFY(browser.closedByServer());
        const QByteArray page = browser.received();
        QCOMPARE(page, expectedPage());
        QVERIFY2(page.contains(expected), page.constData());
        QCOMPARE(page.count("<tr class=\"hilite\">"), selected >= 0 ? 1 : 0);
        QCOMPARE(host.statuses.first(), Socket1::kMWDSTxtConnected);
        QCOMPARE(host.statuses.mid(1).count(Socket1::kMWDSTxtSending), host.statuses.size() - 1);
        QCOMPARE(host.ip, QStringLiteral("127.0.0.1"));
        QCOMPARE(host.timer2Starts, 1);
        // Re-armed: the reload a minute later is served the same way.
        QCOMPARE(fetch(), expectedPage());
        QCOMPARE(host.timer2Starts, 2);
    }

    // No answer for a request that does not end in an empty line; the client holds the server, and the
    // next browser waits, until the client's time is up.
    void unendedRequestHoldsTheServerUntilItsTimeIsUp_data()
    {
        QTest::addColumn<QByteArray>("request");
        QTest::newRow("nothing at all") << QByteArray();
        QTest::newRow("never ends") << QByteArray("GET / HTTP/1.0\r\nHost: x\r\n");
        QTest::newRow("POST with a body") << QByteArray("POST / HTTP/1.0\r\nContent-Length: 5\r\n\r\nhello");
        QTest::newRow("bare line feeds") << QByteArray("GET /\n\n");
        QTest::newRow("endless header") << QByteArray("GET / HTTP/1.0\r\nX: ") + QByteArray(512 * 1024, 'a');
    }
    void unendedRequestHoldsTheServerUntilItsTimeIsUp()
    {
        QFETCH(QByteArray, request);
        server->setRequestTimeout(1500);
        Browser first(server->Port());
        first.send(request);
        QTRY_VERIFY(host.statuses.contains(Socket1::kMWDSTxtConnected));
        Browser second(server->Port());
        second.send(kGet);
        QTest::qWait(300);
        QCOMPARE(first.socket.bytesAvailable(), 0);
        QVERIFY(!first.closedByServer());
        QVERIFY(server->isServing());
        QCOMPARE(second.socket.bytesAvailable(), 0);
        QCOMPARE(host.timer2Starts, 0);

        QTRY_VERIFY(first.closedByServer());
        QCOMPARE(server->LastErrorCode(), int(QAbstractSocket::SocketTimeoutError));
        QVERIFY(host.statuses.contains(Socket1::errorText(QAbstractSocket::SocketTimeoutError)));
        QTRY_VERIFY(second.closedByServer());
        QCOMPARE(second.received(), expectedPage());
    }

    // The request and the end of the browser's sending side arrive together: the whole page still goes
    // out, a long one too, and the server goes on to the next. Closing before the request ended is
    // leaving.
    void halfClosedBrowser_data()
    {
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<int>("rows");
        QTest::addColumn<bool>("served");
        QTest::newRow("short page") << kGet << 1 << true;
        QTest::newRow("long page") << kGet << 20000 << true;
        QTest::newRow("request not ended") << QByteArray("GET / HTTP/1.0\r\n") << 1 << false;
    }
    void halfClosedBrowser()
    {
        QFETCH(QByteArray, request);
        QFETCH(int, rows);
        QFETCH(bool, served);
        for (int r = 0; r < rows; ++r)
            host.sheet.AddRow(core::JobRow());
        HalfClosingBrowser browser(server->Port(), request);
        QVERIFY(browser.connected());
        QTRY_VERIFY(browser.readToEnd());
        QCOMPARE(browser.received, served ? expectedPage() : QByteArray());
        QCOMPARE(host.statuses.contains(kLeft), !served);
        QCOMPARE(fetch(), expectedPage());
    }

    // A browser that leaves while a long page is being put together gets nothing written to it,
    // and the server goes on to the next.
    void browserLeavesDuringThePage()
    {
        for (int r = 0; r < 200000; ++r)
            host.sheet.AddRow(core::JobRow());
        class LeavingDesktop : public testing::FakeDesktop
        {
        public:
            void processEvents() override
            {
                if (leaver) {
                    leaver->socket.abort();
                    leaver = nullptr;
                    QTest::qWait(100);
                }
            }
            Browser* leaver = nullptr;
        } leaving;
        server = std::make_unique<Socket1>(host, leaving);
        server->setPort(0);
        QVERIFY(server->Listen().ok());
        Browser first(server->Port());
        leaving.leaver = &first;
        first.send(kGet);
        QTRY_VERIFY(host.statuses.contains(kLeft));
        QVERIFY(!leaving.leaver);
        QVERIFY(fetch().endsWith("</html>"));
    }

    void portAlreadyInUse()
    {
        QTcpServer other;
        QVERIFY(other.listen(QHostAddress::Any, 0));
        Socket1 second(host, desktop);
        second.setPort(other.serverPort());
        const platform::Result result = second.Listen();
        QCOMPARE(result.code, int(QAbstractSocket::AddressInUseError));
        QVERIFY(!result.message.isEmpty());
        QVERIFY(!second.isListening());
        QCOMPARE(host.statuses.last(), QStringLiteral("Net Link: Connection error! 8"));
        QCOMPARE(host.timer2Starts, 1);
        const quint16 port = other.serverPort();
        other.close();
        QVERIFY(second.Listen().ok());
        QCOMPARE(second.Port(), port);
    }

    void closeDropsTheClientAndStopsListening()
    {
        Browser browser(server->Port());
        browser.send("GET /");
        QTRY_VERIFY(server->isServing());
        const quint16 port = server->Port();
        server->Close();
        QVERIFY(!server->isListening());
        QTRY_VERIFY(browser.closedByServer());
        QCOMPARE(browser.received(), QByteArray());
        QTcpSocket late;
        late.connectToHost(QHostAddress::LocalHost, port);
        QVERIFY(!late.waitForConnected(2000));
    }
};

QTEST_GUILESS_MAIN(TestSocket1)
#include "test_socket1.moc"

// Net Link: the page of the timesheet, its style sheet, and the server that hands it to browsers.
#include "netlink/apptexts.h"
#include "netlink/page.h"
#include "netlink/socket1.h"
#include "netlink/stylesheet.h"
#include "support/fakes.h"
#include <QRegularExpression>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QtTest>
#include <sys/socket.h>

using namespace netlink;

namespace
{
core::Timesheet sheetOf(int rows, int selected = -1, const QString& project = {})
{
    core::Timesheet sheet;
    for (int r = 0; r < rows; ++r) {
        core::JobRow row;
        row.setCell(core::CellDate, QStringLiteral("11/22/26"));
        row.setCell(core::CellJob, QStringLiteral("J%1").arg(r));
        row.setCell(core::CellProject, project);
        sheet.AddRow(row);
    }
    sheet.ListIndex = selected;
    return sheet;
}
// The window as Net Link sees it; the status line remembers every text.
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
// A browser; it may close its sending side alone, as command-line clients do.
struct Browser : QTcpSocket
{
    explicit Browser(quint16 port)
    {
        connectToHost(QHostAddress::LocalHost, port);
        waitForConnected(5000);
    }
    void send(const QByteArray& bytes, bool thenShutdown = false)
    {
        write(bytes);
        flush();
        if (thenShutdown)
            ::shutdown(int(socketDescriptor()), SHUT_WR);
    }
    // Takes what has arrived; true once the server has closed.
    bool closed()
    {
        got += readAll();
        return state() == UnconnectedState;
    }
    QByteArray got;
};
const QByteArray kGet = QByteArrayLiteral("GET / HTTP/1.1\r\nHost: 127.0.0.1:2000\r\n\r\n");
const QString kLeft = Socket1::kMWDSTxtError + QString::number(QAbstractSocket::RemoteHostClosedError);

} // namespace

class TestNetLink : public QObject
{
    Q_OBJECT
    FakeHost host;
    testing::FakeDesktop desktop;
    std::unique_ptr<Socket1> server;
    QByteArray expectedPage() { return buildPage(host.sheet, host.run, host.style, QStringLiteral("127.0.0.1")); }
private slots:
    void init()
    {
        host = FakeHost();
        desktop = testing::FakeDesktop();
        server = std::make_unique<Socket1>(host, desktop);
        server->setPort(0);
        QVERIFY(server->Listen().ok());
    }
    void cleanup() { server.reset(); }
    // The page byte for byte, stopped and running; the shown cells in order, ASCII, markup or any UTF-8.
    void page_data()
    {
        QTest::addColumn<QString>("text"); // empty: no row
        for (const char* text : {"", "<b>bold</b> &amp; <i>x</i>", "\u00C9cole", "Zurich caf\u00E9", "a\u2009b\r\nc"})
            QTest::newRow(text) << QString::fromUtf8(text);
    }
    void page()
    {
        QFETCH(QString, text);
        QByteArray expected =
            "HTTP/1.0 200 OK\r\n\r\n<html>\r\n<head>\r\n<title>Veltrick @ 10.0.0.7</title>\r\n"
            "<meta charset=\"UTF8\">\r\n<style type=\"text/css\" media=\"screen\"><!--\r\np{x:y}\n--></style>\r\n"
            "<body marginwidth=\"10\" marginheight=\"10\" leftmargin=\"10\" topmargin=\"10\" bottommargin=\"50\">\r\n"
            "<div><h1>Veltrick</h1><hr class=\"runstop\"><table width=\"100%\" border=\"0\" cellspacing=\"2\" "
            "cellpadding=\"5\">\r\n<script>setTimeout(function(){\r\nwindow.location.reload(true);\r\n}, 60000);\r\n"
            "</script>\r\n<tr class=\"header\">\r\n<td width=\"10%\">Date</td><td width=\"10%\">Job No.</td>"
            "<td width=\"20%\">Project</td><td width=\"3%\" align=\"center\">H\xE2\x80\x89</td>"
            "<td width=\"3%\" align=\"center\">\xE2\x80\x89M</td><td width=\"15%\">Operation</td>"
            "<td width=\"15%\">Client</td><td>Notes:</td>\r\n</tr>\r\n";
        core::Timesheet sheet;
        if (!text.isEmpty()) {
            core::JobRow row;
            for (int c = 0; c < core::kColumnCount; ++c) // the sort key and the link are not shown, nor the user
                row.setCell(c, text + QString::number(c));
            row.note = text + QStringLiteral("N");
            row.user = text + QStringLiteral("U");
            sheet.AddRow(row);
            const QByteArray t = text.toUtf8(), c = "</td><td align=\"center\">";
            expected += "<tr class=\"roweven\">\r\n<td>" + t + "0</td><td>" + t + "1</td><td>" + t + "2" + c + t + "3" +
                        c + t + "4</td><td>" + t + "5</td><td>" + t + "6</td><td>" + t + "N</td>\r\n</tr>\r\n";
        }
        expected += "</table>\r\n</div></body>\r\n</html>";
        const QString style = QStringLiteral("p{x:y}\n"), ip = QStringLiteral("10.0.0.7");
        QCOMPARE(buildPage(sheet, false, style, ip), expected);
        QCOMPARE(buildPage(sheet, true, style, ip), expected.replace("runstop", "runstart"));
    }
    // Rows striped (e, o), the selected lit (h); rows changed between rows are followed, never read past the end.
    void stripesAndSelection_data()
    {
        QTest::addColumn<int>("rows");
        QTest::addColumn<int>("selected");
        QTest::addColumn<QString>("change");
        QTest::addColumn<QString>("classes");
        // clang-format off
        QTest::newRow("none selected") << 3 << -1 << "" << "e o e";
        QTest::newRow("middle selected") << 5 << 2 << "" << "e o h o e";
        QTest::newRow("odd row selected") << 4 << 1 << "" << "e h e o";
        QTest::newRow("first selected") << 2 << 0 << "" << "h o";
        QTest::newRow("emptied between rows") << 3 << -1 << "clear" << "e";
        QTest::newRow("row added between rows") << 3 << -1 << "add" << "e o e o";
        QTest::newRow("last selected between rows") << 3 << -1 << "select" << "e o h";
        // clang-format on
    }
    void stripesAndSelection()
    {
        QFETCH(int, rows);
        QFETCH(int, selected);
        QFETCH(QString, change);
        core::Timesheet sheet = sheetOf(rows, selected);
        bool first = true;
        const QByteArray page = buildPage(sheet, false, QString(), QString(), [&] {
            if (!std::exchange(first, false))
                return;
            if (change == QLatin1String("clear"))
                sheet.DeleteAllRows();
            else if (change == QLatin1String("add"))
                sheet.AddRow(sheetOf(4).row(3));
            else if (change == QLatin1String("select"))
                sheet.ListIndex = 2;
        });
        QStringList classes;
        static const QRegularExpression tr(
            QStringLiteral("<tr class=\"(?:row)?(\\w)\\w+\">\r\n<td>11/22/26</td><td>(\\w+)<"));
        for (int r = 0; const auto& m : tr.globalMatch(QString::fromUtf8(page))) {
            classes << m.captured(1);
            QCOMPARE(m.captured(2), QStringLiteral("J%1").arg(r++)); // in list order
        }
        QTEST(classes.join(u' '), "classes");
        QVERIFY(page.endsWith("</table>\r\n</div></body>\r\n</html>"));
    }
    // The sheet is read whole from ../share/veltrick; the shipped one styles every class and closes nothing.
    void styleSheet()
    {
        QTemporaryDir prefix;
        const QString bin = prefix.filePath(QStringLiteral("bin"));
        const auto put = [&](const char* name, int size) {
            QFile file(prefix.filePath(QLatin1String(name)));
            return QDir(prefix.path()).mkpath(QFileInfo(file).path()) && file.open(QIODevice::WriteOnly) &&
                   file.write(QByteArray(size, 'x')) == size;
        };
        QString text = QStringLiteral("stale");
        QVERIFY(put("bin/styleSheet.txt", 10)); // beside the program is not looked at
        QVERIFY(loadStyleSheet(bin, text).message == kAppStyleSheetFailure && text.isEmpty());
        QVERIFY(put("share/veltrick/styleSheet.txt", 100));
        QVERIFY(loadStyleSheet(bin, text).ok() && text == QString(100, u'x'));
        QVERIFY(put("share/veltrick/styleSheet.txt", 2 << 20)); // far too large
        QVERIFY(!loadStyleSheet(bin, text).ok() && text.isEmpty());

        QFile source(qEnvironmentVariable("VELTRICK_SOURCE_DIR") + QStringLiteral("/resources/styleSheet.txt"));
        QVERIFY(source.open(QIODevice::ReadOnly));
        const QString shipped = QString::fromUtf8(source.readAll());
        for (const char* selector : {"tr.header", "tr.hilite", "tr.roweven", "tr.rowodd", "hr.runstart", "hr.runstop"})
            QVERIFY2(shipped.contains(QLatin1String(selector)), selector);
        QVERIFY(!shipped.contains(QLatin1String("-->")) && !shipped.contains(QLatin1String("</")));
        QVERIFY(loadStyleSheet(QCoreApplication::applicationDirPath(), text).ok());
        QCOMPARE(text, shipped);
    }
    // The page goes out once the request ends, even after a half-close; an unended one times out; the next waits.
    void serving()
    {
        const QByteArray markup("<td><a href=\"x\">P&amp;</a></td>"), none; // none: nothing is served
        // packets, closed after them, rows, running, a part of the page
        const std::tuple<QList<QByteArray>, bool, int, bool, QByteArray> cases[] = {
            {{kGet}, false, 0, false, "<td>Notes:</td>\r\n</tr>\r\n</table>"},
            {{"GET / HT", "TP/1.0\r\nHost: a\r\n", "\r\n"}, false, 1, true, "<hr class=\"runstart\"><table "},
            {{"GET / HTTP/1.0\r\n\r", "\n"}, false, 1, false, markup},
            {{"DELETE /x/../y?z=1 HTTP/9\r\n\r\n"}, false, 1, false, markup},
            {{QByteArray("\0\xff\xfe\r\n", 5), "\r\n\r\n"}, false, 1, false, markup},
            {{kGet}, true, 1, false, markup},
            {{kGet}, true, 200000, false, markup}, // a long page
            {{"GET / HTTP/1.0\r\n"}, true, 1, false, none},
            {{}, false, 1, false, none},
            {{"GET / HTTP/1.0\r\nHost: x\r\n"}, false, 1, false, none},
            {{"POST / HTTP/1.0\r\nContent-Length: 5\r\n\r\nhello"}, false, 1, false, none},
            {{"GET /\n\n"}, false, 1, false, none},
            {{"GET / HTTP/1.0\r\nX: " + QByteArray(512 * 1024, 'a')}, false, 1, false, none}};
        for (const auto& [packets, shutdown, rows, running, expected] : cases) {
            init();
            host.sheet = sheetOf(rows, -1, QStringLiteral("<a href=\"x\">P&amp;</a>"));
            host.run = running;
            server->setRequestTimeout(1500);
            Browser browser(server->Port()), next(server->Port());
            next.send(kGet);
            const bool timesOut = expected.isEmpty() && !shutdown;
            for (qsizetype i = 0; i <= packets.size(); ++i) {
                if (i < packets.size())
                    browser.send(packets[i], shutdown && i + 1 == packets.size());
                if (i + 1 < packets.size() || (timesOut && i == packets.size())) {
                    QTRY_VERIFY(host.statuses.contains(i < packets.size() ? Socket1::kMWDSTxtSending
                                                                          : Socket1::kMWDSTxtConnected));
                    QTest::qWait(timesOut ? 300 : 50);
                    QVERIFY(!browser.closed() && browser.got.isEmpty() && !next.closed() && next.got.isEmpty());
                    QVERIFY(server->isServing() && host.timer2Starts == 0);
                }
            }
            QTRY_VERIFY(browser.closed());
            QCOMPARE(browser.got, expected.isEmpty() ? QByteArray() : expectedPage());
            QVERIFY2(browser.got.contains(expected), browser.got.left(2000).constData());
            QCOMPARE(host.statuses.first(), Socket1::kMWDSTxtConnected);
            QCOMPARE(host.ip, QStringLiteral("127.0.0.1"));
            const int error = expected.isEmpty() ? int(shutdown ? QAbstractSocket::RemoteHostClosedError
                                                                : QAbstractSocket::SocketTimeoutError)
                                                 : 0;
            QCOMPARE(server->LastErrorCode(), error);
            QCOMPARE(host.statuses.contains(Socket1::errorText(error)), error != 0);
            QTRY_VERIFY(next.closed());
            QCOMPARE(next.got, expectedPage());
            QCOMPARE(host.timer2Starts, 2);
            cleanup();
        }
    }
    // A browser that leaves while a long page is being put together gets nothing; the next is served.
    void browserLeavesDuringThePage()
    {
        host.sheet = sheetOf(200000);
        Browser leaver(server->Port()), next(server->Port());
        desktop.onYield = [&] {
            if (leaver.state() == QAbstractSocket::ConnectedState) {
                leaver.abort();
                QTest::qWait(100);
            }
        };
        leaver.send(kGet);
        QTRY_VERIFY(host.statuses.contains(kLeft));
        next.send(kGet);
        QTRY_VERIFY(next.closed());
        QCOMPARE(next.got, expectedPage());
    }
    // A port in use is reported until the next Listen; Close drops the client unanswered and stops listening.
    void listenAndClose()
    {
        QTcpServer other;
        QVERIFY(other.listen(QHostAddress::Any, 0));
        Socket1 second(host, desktop);
        second.setPort(other.serverPort());
        const platform::Result result = second.Listen();
        QCOMPARE(result.code, int(QAbstractSocket::AddressInUseError));
        QVERIFY(!result.message.isEmpty() && !second.isListening() && host.timer2Starts == 1);
        QCOMPARE(host.statuses.last(), QStringLiteral("Net Link: Connection error! 8"));
        const quint16 port = other.serverPort();
        other.close();
        QVERIFY(second.Listen().ok());
        QCOMPARE(second.Port(), port);

        Browser browser(port);
        browser.send("GET /");
        QTRY_VERIFY(second.isServing());
        second.Close();
        QVERIFY(!second.isListening());
        QTRY_VERIFY(browser.closed());
        QVERIFY(browser.got.isEmpty());
        QCOMPARE(Browser(port).state(), QAbstractSocket::UnconnectedState);
    }
};

QTEST_GUILESS_MAIN(TestNetLink)
#include "test_netlink.moc"

// Net Link: building the page for long timesheets, and pages served per second to one browser
// asking again and again.
#include "netlink/page.h"
#include "netlink/socket1.h"
#include "platform/yieldgate.h"
#include "support/fakes.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QSemaphore>
#include <QThread>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include <memory>

namespace
{

core::Timesheet sampleSheet(int rows)
{
    core::Timesheet sheet;
    sheet.rows.reserve(static_cast<size_t>(rows));
    for (int r = 0; r < rows; ++r) {
        core::JobRow row;
        row.setCell(core::CellDate, QStringLiteral("11/%1/26").arg(1 + r % 28));
        row.setCell(core::CellJob, QStringLiteral("J%1").arg(1000 + r % 97));
        row.setCell(core::CellProject, QStringLiteral("Kitchen refit, phase %1").arg(r % 5));
        row.setCell(core::CellHours, QStringLiteral("%1").arg(r % 12, 2, 10, QLatin1Char('0')));
        row.setCell(core::CellMinutes, QStringLiteral("%1").arg(r % 60, 2, 10, QLatin1Char('0')));
        row.setCell(core::CellOperation, QStringLiteral("Design"));
        row.setCell(core::CellClient, r % 3 ? QStringLiteral("Acme Ltd") : QStringLiteral("Müller & Söhne"));
        if (r % 4 == 0)
            row.note = QStringLiteral("Called about the worktop; waiting for the quote.");
        sheet.AddRow(row);
    }
    sheet.ListIndex = rows / 2;
    return sheet;
}

const QString kStyle = QStringLiteral("body{font-family:sans-serif}\ntr.hilite td{background:#ffe27a}\n");

void BM_BuildPage(benchmark::State& state)
{
    const core::Timesheet sheet = sampleSheet(static_cast<int>(state.range(0)));
    testing::FakeDesktop desktop;
    for (auto _ : state) {
        platform::YieldGate gate(desktop);
        QByteArray page =
            netlink::buildPage(sheet, true, kStyle, QStringLiteral("192.168.1.20"), [&gate] { gate.step(); });
        benchmark::DoNotOptimize(page.data());
        state.counters["bytes"] = static_cast<double>(page.size());
    }
}
BENCHMARK(BM_BuildPage)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

class BenchHost : public netlink::NetLinkHost
{
public:
    explicit BenchHost(int rows) : m_sheet(sampleSheet(rows)) {}
    const core::Timesheet& ListBox1() const override { return m_sheet; }
    bool running() const override { return true; }
    const QString& styleSheetTxt() const override { return kStyle; }
    QString& ipnumber() override { return m_ip; }
    void setStatus(const QString&) override {}
    void startTimer2() override {}

private:
    core::Timesheet m_sheet;
    QString m_ip;
};

// The server with its own event loop on a second thread, so the benchmark can play a plain
// blocking browser.
class ServerThread
{
public:
    explicit ServerThread(int rows)
    {
        m_thread.reset(QThread::create([this, rows] {
            BenchHost host(rows);
            testing::FakeDesktop desktop;
            netlink::Socket1 socket(host, desktop);
            socket.setPort(0);
            if (socket.Listen().ok())
                m_port = socket.Port();
            QEventLoop loop;
            m_loop = &loop;
            m_ready.release();
            loop.exec();
        }));
        m_thread->start();
        m_ready.acquire();
    }
    ~ServerThread()
    {
        QMetaObject::invokeMethod(m_loop, &QEventLoop::quit, Qt::QueuedConnection);
        m_thread->wait();
    }
    quint16 port() const { return m_port; }

private:
    std::unique_ptr<QThread> m_thread;
    QSemaphore m_ready;
    QEventLoop* m_loop = nullptr;
    quint16 m_port = 0;
};

// One request as a browser makes it; the page ends when the server closes the connection.
qint64 fetchPage(quint16 port)
{
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_port = htons(port);
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    qint64 total = -1;
    if (::connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) == 0) {
        static const char request[] = "GET / HTTP/1.1\r\nHost: 127.0.0.1:2000\r\nAccept: text/html\r\n\r\n";
        if (::send(fd, request, sizeof request - 1, 0) == static_cast<ssize_t>(sizeof request - 1)) {
            total = 0;
            char buffer[65536];
            for (ssize_t n; (n = ::recv(fd, buffer, sizeof buffer, 0)) > 0;)
                total += n;
        }
    }
    ::close(fd);
    return total;
}

void BM_SequentialRequests(benchmark::State& state)
{
    ServerThread server(static_cast<int>(state.range(0)));
    if (server.port() == 0) {
        state.SkipWithError("cannot listen");
        return;
    }
    qint64 bytes = 0;
    for (auto _ : state) {
        const qint64 got = fetchPage(server.port());
        if (got <= 0) {
            state.SkipWithError("no page");
            break;
        }
        bytes += got;
    }
    state.counters["requests/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["page bytes"] = state.iterations() ? static_cast<double>(bytes / state.iterations()) : 0.0;
}
BENCHMARK(BM_SequentialRequests)->Arg(100)->UseRealTime()->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

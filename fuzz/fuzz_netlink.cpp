// Any bytes sent to Net Link by a browser, in pieces of 1 to 16 bytes (the first byte chooses), then the
// browser's sending side closed: no crash; a page comes back if and only if the request ended with its
// blank line somewhere; and the server goes on listening for the next browser.

#include "netlink/socket1.h"
#include "support/fakes.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

class Host : public netlink::NetLinkHost
{
public:
    Host()
    {
        core::JobRow row;
        row.setCell(core::CellJob, QStringLiteral("A100"));
        sheet.rows.push_back(row);
    }
    const core::Timesheet& ListBox1() const override { return sheet; }
    bool running() const override { return true; }
    const QString& styleSheetTxt() const override { return style; }
    QString& ipnumber() override { return ip; }
    void setStatus(const QString&) override {}
    void startTimer2() override {}

    core::Timesheet sheet;
    QString style = QStringLiteral("td{color:red}");
    QString ip;
};

struct Server
{
    Server()
    {
        socket1.setPort(0);
        if (!socket1.Listen().ok())
            std::abort();
    }
    Host host;
    testing::FakeDesktop desktop;
    netlink::Socket1 socket1{host, desktop};
};

void serve(int rounds)
{
    for (int i = 0; i < rounds; ++i)
        QCoreApplication::processEvents(QEventLoop::AllEvents);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static int argc = 1;
    static char name[] = "fuzz_netlink";
    static char* argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);
    static Server server;
    if (size == 0)
        return 0;
    const qsizetype piece = 1 + data[0] % 16;
    const QByteArray request(reinterpret_cast<const char*>(data) + 1, qsizetype(size) - 1);

    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(server.socket1.Port());
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    // Reset rather than close, so that tens of thousands of runs do not use up the local ports.
    const linger reset{1, 0};
    ::setsockopt(fd, SOL_SOCKET, SO_LINGER, &reset, sizeof(reset));
    int connected = ::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address));
    if (connected != 0 && errno == EINTR) {
        // The fuzzer's own timer interrupted the wait; the connection goes on being made.
        pollfd writable{fd, POLLOUT, 0};
        int error = 0;
        socklen_t length = sizeof(error);
        connected = ::poll(&writable, 1, 5000) == 1 && ::getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &length) == 0 &&
                            error == 0
                        ? 0
                        : -1;
    }
    if (connected != 0) {
        std::perror("connect");
        std::abort();
    }
    ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK);
    serve(2);
    for (qsizetype at = 0; at < request.size(); at += piece) {
        const QByteArray chunk = request.mid(at, piece);
        if (::send(fd, chunk.constData(), size_t(chunk.size()), MSG_NOSIGNAL) < 0)
            break; // the server has closed: it answered, or gave up on this browser
        serve(2);
    }
    ::shutdown(fd, SHUT_WR);

    QByteArray received;
    const QDeadlineTimer deadline(5000);
    for (;;) {
        serve(1);
        char buffer[65536];
        const ssize_t n = ::recv(fd, buffer, sizeof(buffer), 0);
        if (n > 0)
            received.append(buffer, n);
        else if (n == 0 || (errno != EAGAIN && errno != EWOULDBLOCK))
            break;
        if (deadline.hasExpired())
            std::abort(); // the server neither answered nor closed
    }
    ::close(fd);
    serve(2);

    const bool ended = request.contains("\r\n\r\n");
    const bool paged = received.startsWith("HTTP/1.0 200 OK\r\n") && received.endsWith("</html>");
    if (!ended && !received.isEmpty())
        std::abort();
    if (request.endsWith("\r\n\r\n") && !paged)
        std::abort();
    if (!server.socket1.isListening())
        std::abort();
    return 0;
}

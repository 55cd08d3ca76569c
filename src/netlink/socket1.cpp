#include "netlink/socket1.h"

#include "netlink/apptexts.h"
#include "netlink/connection.h"
#include "netlink/page.h"
#include "platform/yieldgate.h"

#include <QSocketNotifier>
#include <QTimer>

#include <cerrno>
#include <deque>
#include <functional>

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace netlink
{

namespace
{

// After the system refuses to accept (out of descriptors), wait before trying again.
constexpr int kAcceptRetryMs = 1000;
// Connections the system completes and holds while a page is being served.
constexpr int kBacklog = 50;

const QByteArray kRequestEnd = QByteArrayLiteral("\r\n\r\n");

platform::Result failure(int err)
{
    return platform::Result::failure(socketError(err), qt_error_string(err));
}

} // namespace

// Accepts connections and keeps their descriptors until each one's turn; a browser waiting costs no
// memory here, the system holds what it sends.
class NetLinkServer : public QObject
{
public:
    using QObject::QObject;
    ~NetLinkServer() override { close(); }

    std::function<void()> arrived;
    // Accepting failed, out of descriptors say, and has paused; the argument is the error number.
    std::function<void(int)> acceptFailed;

    // Listens on every interface: IPv6 with IPv4 on the same socket, or IPv4 alone on a system
    // without IPv6. Port 0 takes any free port.
    platform::Result listen(quint16 port);
    bool isListening() const { return m_fd >= 0; }
    quint16 serverPort() const { return isListening() ? m_port : 0; }
    // While paused, new connections wait in the system's queue.
    void pauseAccepting() { setAccepting(false); }
    void resumeAccepting() { setAccepting(true); }
    // Stops listening and drops the waiting connections.
    void close();

    bool hasWaiting() const { return !m_waiting.empty(); }
    int takeWaiting()
    {
        const int descriptor = m_waiting.front();
        m_waiting.pop_front();
        return descriptor;
    }

private:
    void setAccepting(bool on)
    {
        if (m_notifier)
            m_notifier->setEnabled(on);
    }
    void acceptAll();

    int m_fd = -1;
    quint16 m_port = 0;
    QSocketNotifier* m_notifier = nullptr;
    std::deque<int> m_waiting;
};

platform::Result NetLinkServer::listen(quint16 port)
{
    bool v6 = true;
    int fd = ::socket(AF_INET6, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (fd < 0 && errno == EAFNOSUPPORT) {
        v6 = false;
        fd = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    }
    if (fd < 0)
        return failure(errno);
    // A port left in TIME_WAIT by the last run is bound again at once.
    const int on = 1, off = 0;
    ::setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on));
    sockaddr_storage address = {};
    socklen_t length = sizeof(sockaddr_in);
    if (v6) {
        // Some systems default to IPv6 alone; IPv4 browsers arrive here too.
        ::setsockopt(fd, IPPROTO_IPV6, IPV6_V6ONLY, &off, sizeof(off));
        auto& any = reinterpret_cast<sockaddr_in6&>(address);
        any.sin6_family = AF_INET6;
        any.sin6_addr = in6addr_any;
        any.sin6_port = htons(port);
        length = sizeof(sockaddr_in6);
    } else {
        auto& any = reinterpret_cast<sockaddr_in&>(address);
        any.sin_family = AF_INET;
        any.sin_addr.s_addr = htonl(INADDR_ANY);
        any.sin_port = htons(port);
    }
    if (::bind(fd, reinterpret_cast<const sockaddr*>(&address), length) != 0 || ::listen(fd, kBacklog) != 0 ||
        ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        const int err = errno;
        ::close(fd);
        return failure(err);
    }
    m_port = ntohs(v6 ? reinterpret_cast<const sockaddr_in6&>(address).sin6_port
                      : reinterpret_cast<const sockaddr_in&>(address).sin_port);
    m_fd = fd;
    m_notifier = new QSocketNotifier(fd, QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &NetLinkServer::acceptAll);
    return platform::Result::success();
}

void NetLinkServer::close()
{
    if (m_notifier) {
        // Not deleted at once: this may run inside its own signal.
        m_notifier->setEnabled(false);
        m_notifier->deleteLater();
        m_notifier = nullptr;
    }
    if (m_fd >= 0)
        ::close(m_fd);
    m_fd = -1;
    for (int descriptor : m_waiting)
        ::close(descriptor);
    m_waiting.clear();
}

void NetLinkServer::acceptAll()
{
    // Everything the system has queued is taken at once, paused or not, until the server closes.
    while (isListening()) {
        const int descriptor = ::accept4(m_fd, nullptr, nullptr, SOCK_CLOEXEC);
        if (descriptor < 0) {
            const int err = errno;
            if (err == EINTR)
                continue;
            if (err != EAGAIN && err != EWOULDBLOCK) {
                pauseAccepting();
                if (acceptFailed)
                    acceptFailed(socketError(err));
            }
            return;
        }
        m_waiting.push_back(descriptor);
        if (arrived)
            arrived();
    }
}

Socket1::Socket1(NetLinkHost& host, platform::Desktop& desktop, QObject* parent)
    : QObject(parent), m_host(host), m_desktop(desktop), m_server(new NetLinkServer(this))
{
    m_server->arrived = [this] { onNewConnection(); };
    m_server->acceptFailed = [this](int error) {
        m_lastErrorCode = error;
        m_host.setStatus(errorText(error));
        m_host.startTimer2();
        QTimer::singleShot(kAcceptRetryMs, this, [this] {
            if (m_server->isListening() && !m_client)
                listenAgain();
        });
    };
}

Socket1::~Socket1()
{
    Close();
}

quint16 Socket1::Port() const
{
    return m_server->isListening() ? m_server->serverPort() : m_port;
}

bool Socket1::isListening() const
{
    return m_server->isListening();
}

QString Socket1::errorText(int code)
{
    if (code == kErrPermission)
        return kMWDSTxtNoPermission;
    if (code == kErrNoRoute)
        return kMWDSTxtNoRoute;
    return kMWDSTxtError + QString::number(code);
}

QString Socket1::pageUrl() const
{
    // The first IPv4 address of an interface that is up, the loopback aside.
    ifaddrs* interfaces = nullptr;
    if (::getifaddrs(&interfaces) != 0)
        return kWebUrl;
    QString url = kWebUrl;
    for (const ifaddrs* i = interfaces; i; i = i->ifa_next) {
        if (!i->ifa_addr || i->ifa_addr->sa_family != AF_INET || !(i->ifa_flags & IFF_UP))
            continue;
        const in_addr address = reinterpret_cast<const sockaddr_in*>(i->ifa_addr)->sin_addr;
        char text[INET_ADDRSTRLEN] = {};
        if (ntohl(address.s_addr) >> 24 == IN_LOOPBACKNET || !::inet_ntop(AF_INET, &address, text, sizeof(text)))
            continue;
        url = QStringLiteral("http://%1:%2").arg(QLatin1String(text)).arg(Port());
        break;
    }
    ::freeifaddrs(interfaces);
    return url;
}

platform::Result Socket1::Listen()
{
    if (m_server->isListening())
        return platform::Result::success();
    const platform::Result listening = m_server->listen(m_port);
    if (!listening.ok()) {
        // Listening again at once would only fail again; the next Listen (the Connect button) retries.
        m_lastErrorCode = listening.code;
        m_host.setStatus(errorText(m_lastErrorCode));
        m_host.startTimer2();
    }
    return listening;
}

void Socket1::Close()
{
    dropClient(true);
    m_server->close();
}

void Socket1::onNewConnection()
{
    if (!m_client)
        serveNext();
}

void Socket1::serveNext()
{
    if (m_building)
        return; // the page under way ends first; its end looks for the next client
    if (m_client || !m_server->isListening() || !m_server->hasWaiting())
        return;
    // Others wait in the system's queue until this one has been served.
    m_server->pauseAccepting();
    auto* client = new Connection(m_server->takeWaiting(), this);
    m_client = client;
    ++m_serial;
    m_tail.clear();
    m_requestComplete = false;
    m_answered = false;
    connect(client, &Connection::arrived, this, &Socket1::Socket1_DataAvailable);
    connect(client, &Connection::readEnded, this, &Socket1::requestEnded);
    connect(client, &Connection::allWritten, this, &Socket1::Socket1_SendComplete);
    connect(client, &Connection::failed, this, &Socket1::Socket1_Error);
    Socket1_Connected();
    const quint64 serial = m_serial;
    QTimer::singleShot(m_requestTimeoutMs, this, [this, serial] {
        if (m_client && serial == m_serial && !m_requestComplete)
            Socket1_Error(SocketTimeoutError);
    });
}

void Socket1::Socket1_Connected()
{
    m_host.setStatus(kMWDSTxtConnected);
    m_host.ipnumber() = m_client->localAddress();
}

void Socket1::Socket1_DataAvailable(const QByteArray& chunk)
{
    if (!m_client)
        return;
    m_host.setStatus(kMWDSTxtSending);
    // Only the last four bytes of all that arrived decide whether the request has ended, so they are
    // all that is kept: a request that never ends cannot grow without bound.
    m_tail = (m_tail + chunk.right(kRequestEnd.size())).right(kRequestEnd.size());
    if (m_tail == kRequestEnd) {
        m_requestComplete = true;
        answer();
    }
}

void Socket1::requestEnded()
{
    // A browser may close its sending side as soon as its request has ended; the page still goes to
    // it. One that leaves before the end of its request has gone.
    if (!m_requestComplete)
        Socket1_Error(RemoteHostClosedError);
}

void Socket1::answer()
{
    if (m_answered || m_building || !m_client)
        return;
    const bool runningAtStart = m_host.running();
    m_building = true;
    const quint64 serial = m_serial;
    platform::YieldGate gate(m_desktop);
    const QByteArray page = buildPage(m_host.ListBox1(), runningAtStart, m_host.styleSheetTxt(), m_host.ipnumber(),
                                      [&gate] { gate.step(); });
    m_building = false;
    if (m_dropAfterBuild) {
        retire(m_dropAfterBuild, m_dropAbort);
        m_dropAfterBuild = nullptr;
    }
    // The client may have gone, or the server been closed, while the rows were being written.
    if (!m_client || serial != m_serial) {
        if (m_server->isListening())
            QMetaObject::invokeMethod(this, &Socket1::serveNext, Qt::QueuedConnection);
        return;
    }
    m_answered = true;
    m_client->write(page);
}

void Socket1::Socket1_SendComplete()
{
    if (!m_answered)
        return;
    dropClient(false);
    listenAgain();
    m_host.startTimer2();
}

void Socket1::Socket1_Error(int code)
{
    m_lastErrorCode = code;
    m_host.setStatus(errorText(code));
    dropClient(true);
    m_host.startTimer2();
    listenAgain();
}

void Socket1::retire(Connection* client, bool abort)
{
    QObject::disconnect(client, nullptr, this, nullptr);
    abort ? client->abort() : client->finish();
}

void Socket1::dropClient(bool abort)
{
    Connection* client = m_client;
    m_client = nullptr;
    m_tail.clear();
    m_answered = false;
    if (!client)
        return;
    if (m_building) {
        // We are inside this connection's own arrival handler: ending it now would pull the floor away.
        QObject::disconnect(client, nullptr, this, nullptr);
        m_dropAfterBuild = client;
        m_dropAbort = abort;
        return;
    }
    retire(client, abort);
}

void Socket1::listenAgain()
{
    if (!m_server->isListening())
        return; // closed meanwhile: it stays closed until the next Listen
    m_server->resumeAccepting();
    QMetaObject::invokeMethod(this, &Socket1::serveNext, Qt::QueuedConnection);
}

} // namespace netlink

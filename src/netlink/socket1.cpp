#include "netlink/socket1.h"

#include "netlink/connection.h"
#include "netlink/page.h"
#include "platform/yieldgate.h"

#include <QHostAddress>
#include <QTcpServer>
#include <QTimer>

#include <deque>
#include <functional>
#include <unistd.h>

namespace netlink
{

namespace
{

// After the system refuses to accept (out of descriptors), wait before trying again.
constexpr int kAcceptRetryMs = 1000;

const QByteArray kRequestEnd = QByteArrayLiteral("\r\n\r\n");

// The address the browser reached us on, as people write it: an IPv4 client arrives on the
// dual-stack socket as ::ffff:a.b.c.d.
QString addressText(const QHostAddress& address)
{
    bool isV4 = false;
    const quint32 v4 = address.toIPv4Address(&isV4);
    if (isV4)
        return QHostAddress(v4).toString();
    QHostAddress plain(address);
    plain.setScopeId(QString());
    return plain.toString();
}

} // namespace

// Accepts connections and keeps their descriptors until each one's turn; a browser waiting costs no
// memory here, the system holds what it sends.
class NetLinkServer : public QTcpServer
{
public:
    using QTcpServer::QTcpServer;
    ~NetLinkServer() override { dropWaiting(); }

    std::function<void()> arrived;

    bool hasWaiting() const { return !m_waiting.empty(); }
    int takeWaiting()
    {
        const int descriptor = m_waiting.front();
        m_waiting.pop_front();
        return descriptor;
    }
    void dropWaiting()
    {
        for (int descriptor : m_waiting)
            ::close(descriptor);
        m_waiting.clear();
    }

protected:
    void incomingConnection(qintptr descriptor) override
    {
        m_waiting.push_back(int(descriptor));
        if (arrived)
            arrived();
    }

private:
    std::deque<int> m_waiting;
};

Socket1::Socket1(NetLinkHost& host, platform::Desktop& desktop, QObject* parent)
    : QObject(parent), m_host(host), m_desktop(desktop), m_server(new NetLinkServer(this))
{
    m_server->setMaxPendingConnections(1);
    m_server->arrived = [this] { onNewConnection(); };
    connect(m_server, &QTcpServer::acceptError, this, [this](QAbstractSocket::SocketError error) {
        m_lastErrorCode = error;
        m_host.setStatus(errorText(error));
        m_host.startTimer2();
        QTimer::singleShot(kAcceptRetryMs, this, [this] {
            if (m_server->isListening() && !m_client)
                listenAgain();
        });
    });
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

platform::Result Socket1::Listen()
{
    if (m_server->isListening())
        return platform::Result::success();
    if (!m_server->listen(QHostAddress::Any, m_port)) {
        // Listening again at once would only fail again; the next Listen (the Connect button) retries.
        m_lastErrorCode = m_server->serverError();
        m_host.setStatus(errorText(m_lastErrorCode));
        m_host.startTimer2();
        return platform::Result::failure(m_lastErrorCode, m_server->errorString());
    }
    return platform::Result::success();
}

void Socket1::Close()
{
    dropClient(true);
    m_server->close();
    m_server->dropWaiting();
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
            Socket1_Error(QAbstractSocket::SocketTimeoutError);
    });
}

void Socket1::Socket1_Connected()
{
    m_host.setStatus(kMWDSTxtConnected);
    m_host.ipnumber() = addressText(m_client->localAddress());
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
        Socket1_Error(QAbstractSocket::RemoteHostClosedError);
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

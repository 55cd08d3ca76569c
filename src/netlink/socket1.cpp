#include "netlink/socket1.h"

#include "netlink/page.h"
#include "platform/yieldgate.h"

#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <unistd.h>

namespace netlink
{

namespace
{

// The most a connection holds unread. The served client is drained on every arrival; a waiting one
// stops being read at this size, so a client that sends without end costs no more than this.
constexpr qint64 kReadChunk = 64 * 1024;
// How long a closed connection may take to hand its last bytes to a slow reader before it is cut.
constexpr int kLingerMs = 10000;
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

// Lets a finished connection hand over what it still has to send, then goes away.
void retire(QTcpSocket* socket, QObject* owner, bool abort)
{
    QObject::disconnect(socket, nullptr, owner, nullptr);
    if (abort) {
        socket->abort();
    } else {
        socket->readAll();
        socket->disconnectFromHost();
    }
    if (socket->state() == QAbstractSocket::UnconnectedState) {
        socket->deleteLater();
        return;
    }
    QObject::connect(socket, &QAbstractSocket::disconnected, socket, &QObject::deleteLater);
    QTimer::singleShot(kLingerMs, socket, [socket] {
        socket->abort();
        socket->deleteLater();
    });
}

} // namespace

// Accepts connections with a bounded read buffer, so a client waiting its turn cannot fill memory.
class NetLinkServer : public QTcpServer
{
public:
    using QTcpServer::QTcpServer;

protected:
    void incomingConnection(qintptr descriptor) override
    {
        auto* socket = new QTcpSocket(this);
        socket->setReadBufferSize(kReadChunk);
        if (!socket->setSocketDescriptor(descriptor)) {
            delete socket;
            ::close(static_cast<int>(descriptor));
            return;
        }
        addPendingConnection(socket);
    }
};

Socket1::Socket1(NetLinkHost& host, platform::Desktop& desktop, QObject* parent)
    : QObject(parent), m_host(host), m_desktop(desktop), m_server(new NetLinkServer(this))
{
    m_server->setMaxPendingConnections(1);
    connect(m_server, &QTcpServer::newConnection, this, &Socket1::onNewConnection);
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
    while (!m_client && m_server->isListening() && m_server->hasPendingConnections()) {
        QTcpSocket* socket = m_server->nextPendingConnection();
        if (socket->state() != QAbstractSocket::ConnectedState) {
            socket->deleteLater(); // left while it waited
            continue;
        }
        // Others wait in the system's queue until this one has been served.
        m_server->pauseAccepting();
        m_client = socket;
        ++m_serial;
        m_tail.clear();
        m_answered = false;
        connect(socket, &QTcpSocket::readyRead, this, &Socket1::Socket1_DataAvailable);
        connect(socket, &QTcpSocket::bytesWritten, this, &Socket1::onBytesWritten);
        connect(socket, &QTcpSocket::errorOccurred, this, [this, socket](QAbstractSocket::SocketError error) {
            if (socket == m_client)
                Socket1_Error(error);
        });
        Socket1_Connected();
        if (m_client == socket && socket->bytesAvailable() > 0)
            Socket1_DataAvailable();
    }
}

void Socket1::Socket1_Connected()
{
    m_host.setStatus(kMWDSTxtConnected);
    m_host.ipnumber() = addressText(m_client->localAddress());
}

void Socket1::Socket1_DataAvailable()
{
    QTcpSocket* socket = m_client;
    if (!socket)
        return;
    m_host.setStatus(kMWDSTxtSending);
    const bool runningAtStart = m_host.running();

    // Only the last four bytes of all that arrived decide whether the request has ended, so they are
    // all that is kept: a request that never ends cannot grow without bound.
    const QByteArray chunk = socket->readAll();
    if (!chunk.isEmpty())
        m_tail = (m_tail + chunk.right(kRequestEnd.size())).right(kRequestEnd.size());
    if (m_answered || m_building || m_tail != kRequestEnd)
        return;

    m_building = true;
    const quint64 serial = m_serial;
    platform::YieldGate gate(m_desktop);
    const QByteArray page = buildPage(m_host.ListBox1(), runningAtStart, m_host.styleSheetTxt(), m_host.ipnumber(),
                                      [&gate] { gate.step(); });
    m_building = false;
    if (m_dropAfterBuild) {
        retire(m_dropAfterBuild, this, m_dropAbort);
        m_dropAfterBuild = nullptr;
    }
    // The client may have gone, or the server been closed, while the rows were being written.
    if (!m_client || serial != m_serial) {
        if (m_server->isListening())
            QMetaObject::invokeMethod(this, &Socket1::serveNext, Qt::QueuedConnection);
        return;
    }
    m_answered = true;
    socket->write(page);
}

void Socket1::onBytesWritten()
{
    if (m_answered && m_client && m_client->bytesToWrite() == 0)
        Socket1_SendComplete();
}

void Socket1::Socket1_SendComplete()
{
    dropClient(false);
    listenAgain();
    m_host.startTimer2();
}

void Socket1::Socket1_Error(int code)
{
    m_lastErrorCode = code;
    m_host.setStatus(errorText(code));
    dropClient(false);
    m_host.startTimer2();
    listenAgain();
}

void Socket1::dropClient(bool abort)
{
    QTcpSocket* socket = m_client;
    m_client = nullptr;
    m_tail.clear();
    m_answered = false;
    if (!socket)
        return;
    if (m_building) {
        // We are inside this socket's own arrival handler: deleting it now would pull the floor away.
        QObject::disconnect(socket, nullptr, this, nullptr);
        m_dropAfterBuild = socket;
        m_dropAbort = abort;
        return;
    }
    retire(socket, this, abort);
}

void Socket1::listenAgain()
{
    if (!m_server->isListening())
        return; // closed meanwhile: it stays closed until the next Listen
    m_server->resumeAccepting();
    QMetaObject::invokeMethod(this, &Socket1::serveNext, Qt::QueuedConnection);
}

} // namespace netlink

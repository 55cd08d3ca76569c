#pragma once

#include "netlink/netlinkhost.h"
#include "netlink/socketerror.h"
#include "platform/desktop.h"
#include "platform/result.h"

#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <QString>

namespace netlink
{

class Connection;
class NetLinkServer;

// Net Link's one socket: listens on every interface, serves one browser at a time with the page of
// the open timesheet, and reports its progress in the window's status line.
class Socket1 : public QObject
{
    Q_OBJECT

public:
    inline static const QString kMWDSTxtConnected = QStringLiteral("Net Link: Connecting to Browser");
    inline static const QString kMWDSTxtSending = QStringLiteral("Net Link: Sending Data to Browser");
    inline static const QString kMWDSTxtNoPermission = QStringLiteral("Net Link: Permission Denied");
    inline static const QString kMWDSTxtNoRoute = QStringLiteral("Net Link: No Route to Client");
    inline static const QString kMWDSTxtError = QStringLiteral("Net Link: Connection error! ");

    static constexpr quint16 kPort = 2000;
    // An unreachable host or network is a network error, a refused bind or accept an access error.
    static constexpr int kErrPermission = SocketAccessError;
    static constexpr int kErrNoRoute = NetworkError;

    Socket1(NetLinkHost& host, platform::Desktop& desktop, QObject* parent = nullptr);
    ~Socket1() override;

    // A browser sends its request as soon as it has connected. One that has not ended its request in
    // this time (a speculative connection that sends nothing, a scanner, a slow drip) is dropped, so
    // that it cannot hold the one connection served while other browsers wait behind it.
    static constexpr int kRequestTimeoutMs = 10000;

    // The port of the next Listen; 0 takes any free port (Port() then tells which).
    void setPort(quint16 port) { m_port = port; }
    void setRequestTimeout(int ms) { m_requestTimeoutMs = ms; }
    quint16 Port() const;

    // Starts listening. A port that cannot be bound is reported in the status line and in the
    // result, and is not retried until the next Listen.
    platform::Result Listen();
    // Stops listening and drops the client and any waiting connections.
    void Close();

    bool isListening() const;
    // The page's address for another device on the network; this machine's own when it has no other.
    QString pageUrl() const;
    bool isServing() const { return !m_client.isNull(); }
    int LastErrorCode() const { return m_lastErrorCode; }

    // The status line text for an error number.
    static QString errorText(int code);

private:
    void onNewConnection();
    void serveNext();
    void Socket1_Connected();
    void Socket1_DataAvailable(const QByteArray& chunk);
    void requestEnded();
    void answer();
    void Socket1_SendComplete();
    void Socket1_Error(int code);
    void retire(Connection* client, bool abort);
    void dropClient(bool abort);
    void listenAgain();

    NetLinkHost& m_host;
    platform::Desktop& m_desktop;
    NetLinkServer* m_server;
    QPointer<Connection> m_client;
    quint16 m_port = kPort;
    int m_requestTimeoutMs = kRequestTimeoutMs;
    int m_lastErrorCode = 0;
    QByteArray m_tail; // the last bytes received from the client: all that decides a request's end
    bool m_building = false;
    // A client dropped while its page was being built stays alive until the build has returned.
    Connection* m_dropAfterBuild = nullptr;
    bool m_dropAbort = false;
    quint64 m_serial = 0;           // counts connections, to tell the one a page was built for
    bool m_requestComplete = false; // the empty line that ends a request has arrived
    bool m_answered = false;
};

} // namespace netlink

#include "shell/ui/singleinstance.h"

#include <QDir>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>

#include <unistd.h>

namespace shell::ui
{

namespace
{
constexpr int kWaitMs = 500;
constexpr qint64 kMaxMessage = 64 * 1024; // many paths, never an unbounded read
} // namespace

SingleInstance::SingleInstance(QObject* parent) : QObject(parent) {}

QString SingleInstance::serverName()
{
    return QStringLiteral("veltrick-%1").arg(::getuid());
}

bool SingleInstance::forwardToRunning(const QStringList& paths)
{
    QLocalSocket socket;
    socket.connectToServer(serverName());
    if (!socket.waitForConnected(kWaitMs))
        return false;
    QStringList absolute;
    for (const QString& path : paths)
        absolute << QFileInfo(path).absoluteFilePath();
    socket.write(absolute.join(QLatin1Char('\n')).toUtf8() + '\0');
    socket.waitForBytesWritten(kWaitMs);
    socket.disconnectFromServer();
    return true;
}

void SingleInstance::listen()
{
    m_server = new QLocalServer(this);
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!m_server->listen(serverName())) {
        // A socket left by a crashed run: nobody answered on it, so it is ours to replace.
        QLocalServer::removeServer(serverName());
        m_server->listen(serverName());
    }
    connect(m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* client = m_server->nextPendingConnection()) {
            auto buffer = std::make_shared<QByteArray>();
            connect(client, &QLocalSocket::readyRead, client, [this, client, buffer] {
                buffer->append(client->read(kMaxMessage - buffer->size()));
                if (buffer->endsWith('\0') || buffer->size() >= kMaxMessage) {
                    buffer->chop(buffer->endsWith('\0') ? 1 : 0);
                    const QString text = QString::fromUtf8(*buffer);
                    emit openRequested(text.isEmpty() ? QStringList() : text.split(QLatin1Char('\n')));
                    client->disconnectFromServer();
                }
            });
            connect(client, &QLocalSocket::disconnected, client, &QObject::deleteLater);
        }
    });
}

} // namespace shell::ui

#include "shell/ui/singleinstance.h"

#include <QDir>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>
#include <QRegularExpression>
#include <QStandardPaths>

#include <memory>

namespace shell::ui
{

namespace
{
constexpr int kWaitMs = 500;
constexpr int kLockWaitMs = 5000;
constexpr qint64 kMaxMessage = 64 * 1024; // many paths, never an unbounded read
} // namespace

SingleInstance::SingleInstance(QObject* parent) : QObject(parent) {}

QString SingleInstance::serverPath()
{
    // Per user: the runtime folder is the user's own. Per session: the display it shows on.
    QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (folder.isEmpty() || !QFileInfo(folder).isDir())
        folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    QString session = qEnvironmentVariable("WAYLAND_DISPLAY");
    if (session.isEmpty())
        session = qEnvironmentVariable("DISPLAY");
    session.replace(QRegularExpression(QStringLiteral("[^A-Za-z0-9._-]")), QStringLiteral("_"));
    if (session.isEmpty())
        session = QStringLiteral("console");
    return folder + QStringLiteral("/veltrick-") + session + QStringLiteral(".socket");
}

bool SingleInstance::claim(const QStringList& paths)
{
    // Two launches at the same moment take turns here, so that only one of them can find nobody and
    // listen. A lock left by a process that died is taken over.
    QLockFile lock(serverPath() + QStringLiteral(".lock"));
    lock.setStaleLockTime(kLockWaitMs * 2);
    lock.tryLock(kLockWaitMs); // without it (a runtime folder we cannot write) the socket alone decides
    if (forward(paths))
        return false;
    listen();
    return true;
}

bool SingleInstance::forward(const QStringList& paths)
{
    QLocalSocket socket;
    socket.connectToServer(serverPath());
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
    // Nobody answered on the socket (checked under the lock): one that is there was left by a program
    // that ended without removing it, and is ours to replace.
    QLocalServer::removeServer(serverPath());
    m_server->listen(serverPath());
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

#include "shell/ui/singleinstance.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QThread>

#include <memory>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

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
    for (QChar& c : session)
        if (!(c.isLetterOrNumber() && c.unicode() < 128) && c != u'.' && c != u'_' && c != u'-')
            c = u'_';
    if (session.isEmpty())
        session = QStringLiteral("console");
    return folder + QStringLiteral("/veltrick-") + session + QStringLiteral(".socket");
}

bool SingleInstance::claim(const QStringList& paths)
{
    // Two launches at the same moment take turns here, so that only one of them can find nobody and
    // listen. The lock is the kernel's: it goes with the process that holds it, however that ends.
    // Without it (a runtime folder we cannot write) the socket alone decides.
    const QString server = serverPath();
    const int lock =
        ::open(QFile::encodeName(server + QStringLiteral(".lock")).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    const QDeadlineTimer patience(kLockWaitMs);
    while (lock >= 0 && ::flock(lock, LOCK_EX | LOCK_NB) != 0 && !patience.hasExpired())
        QThread::msleep(10);
    const bool first = !forward(server, paths);
    if (first)
        listen(server);
    if (lock >= 0)
        ::close(lock);
    return first;
}

bool SingleInstance::forward(const QString& server, const QStringList& paths)
{
    QLocalSocket socket;
    socket.connectToServer(server);
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

void SingleInstance::listen(const QString& server)
{
    m_server = new QLocalServer(this);
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    // Nobody answered on the socket (checked under the lock): one that is there was left by a program
    // that ended without removing it, and is ours to replace.
    QLocalServer::removeServer(server);
    m_server->listen(server);
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

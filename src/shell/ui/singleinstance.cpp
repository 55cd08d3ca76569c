#include "shell/ui/singleinstance.h"

#include "netlink/connection.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QFileInfo>
#include <QSocketNotifier>
#include <QStandardPaths>
#include <QThread>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace shell::ui
{

namespace
{
constexpr int kWaitMs = 500;
constexpr int kLockWaitMs = 5000;
constexpr qsizetype kMaxMessage = 64 * 1024; // many paths, never an unbounded read
constexpr int kBacklog = 50;

// False when the path is longer than a socket address holds.
bool socketAddress(const QByteArray& path, sockaddr_un& address)
{
    address = {};
    address.sun_family = AF_UNIX;
    if (path.isEmpty() || size_t(path.size()) >= sizeof(address.sun_path))
        return false;
    std::memcpy(address.sun_path, path.constData(), size_t(path.size()));
    return true;
}

} // namespace

SingleInstance::SingleInstance(QObject* parent) : QObject(parent) {}

SingleInstance::~SingleInstance()
{
    stopListening();
}

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
    sockaddr_un address;
    if (!socketAddress(QFile::encodeName(server), address))
        return false;
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return false;
    // Bounds the wait for a listener whose queue is full and for the paths to go out; a socket
    // nobody listens on refuses at once.
    const timeval wait = {kWaitMs / 1000, (kWaitMs % 1000) * 1000};
    ::setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &wait, sizeof(wait));
    if (::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        ::close(fd);
        return false;
    }
    QStringList absolute;
    for (const QString& path : paths)
        absolute << QFileInfo(path).absoluteFilePath();
    const QByteArray message = absolute.join(QLatin1Char('\n')).toUtf8() + '\0';
    const QDeadlineTimer patience(kWaitMs);
    for (qsizetype sent = 0; sent < message.size() && !patience.hasExpired();) {
        const ssize_t n = ::send(fd, message.constData() + sent, size_t(message.size() - sent), MSG_NOSIGNAL);
        if (n < 0 && errno != EINTR)
            break;
        sent += std::max<ssize_t>(n, 0);
    }
    ::close(fd);
    return true;
}

void SingleInstance::listen(const QString& server)
{
    const QByteArray path = QFile::encodeName(server);
    sockaddr_un address;
    if (!socketAddress(path, address))
        return;
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return;
    // The socket file takes the socket's mode: only this user may connect and hand paths over.
    ::fchmod(fd, S_IRWXU);
    // Nobody answered on the socket (checked under the lock): one that is there was left by a program
    // that ended without removing it, and is ours to replace.
    ::unlink(path.constData());
    if (::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        ::close(fd);
        return;
    }
    m_fd = fd;
    m_path = path;
    if (::listen(fd, kBacklog) != 0)
        return stopListening();
    m_notifier = new QSocketNotifier(fd, QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &SingleInstance::acceptLaunches);
}

void SingleInstance::acceptLaunches()
{
    for (;;) {
        const int client = ::accept4(m_fd, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (client < 0) {
            if (errno == EINTR)
                continue;
            // A socket that cannot accept (out of descriptors) would wake us without end.
            if (errno != EAGAIN && errno != EWOULDBLOCK)
                stopListening();
            return;
        }
        // A later launch hands over its paths, ended by a '\0'; the connection is closed before they
        // open, since opening may show a dialog and run events meanwhile.
        auto* launch = new netlink::Connection(client, this);
        auto message = std::make_shared<QByteArray>();
        connect(launch, &netlink::Connection::arrived, this, [this, launch, message](const QByteArray& chunk) {
            message->append(chunk.left(kMaxMessage - message->size()));
            if (!message->endsWith('\0') && message->size() < kMaxMessage)
                return;
            message->chop(message->endsWith('\0') ? 1 : 0);
            launch->abort();
            const QString text = QString::fromUtf8(*message);
            emit openRequested(text.isEmpty() ? QStringList() : text.split(QLatin1Char('\n')));
        });
        // Gone before the end of its paths: nothing to open.
        connect(launch, &netlink::Connection::readEnded, launch, &netlink::Connection::abort);
        connect(launch, &netlink::Connection::failed, launch, &netlink::Connection::abort);
    }
}

void SingleInstance::stopListening()
{
    if (m_fd < 0)
        return;
    if (m_notifier) {
        // Not deleted at once: this may run inside its own signal.
        m_notifier->setEnabled(false);
        m_notifier->deleteLater();
        m_notifier = nullptr;
    }
    ::close(m_fd);
    m_fd = -1;
    ::unlink(m_path.constData());
}

} // namespace shell::ui

#include "netlink/connection.h"

#include "netlink/socketerror.h"

#include <QSocketNotifier>
#include <QTimer>

#include <arpa/inet.h>
#include <cerrno>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace netlink
{

namespace
{
constexpr qsizetype kChunk = 64 * 1024;
// How long a finished connection waits for a slow browser to take the answer and close.
constexpr int kLingerMs = 10000;
} // namespace

Connection::Connection(int descriptor, QObject* parent) : QObject(parent), m_fd(descriptor)
{
    ::fcntl(m_fd, F_SETFL, ::fcntl(m_fd, F_GETFL) | O_NONBLOCK);
    m_read = new QSocketNotifier(m_fd, QSocketNotifier::Read, this);
    m_write = new QSocketNotifier(m_fd, QSocketNotifier::Write, this);
    m_write->setEnabled(false);
    connect(m_read, &QSocketNotifier::activated, this, &Connection::onReadable);
    connect(m_write, &QSocketNotifier::activated, this, &Connection::onWritable);
}

Connection::~Connection()
{
    closeNow();
}

QString Connection::localAddress() const
{
    sockaddr_storage address = {};
    socklen_t length = sizeof(address);
    if (m_fd < 0 || ::getsockname(m_fd, reinterpret_cast<sockaddr*>(&address), &length) != 0)
        return {};
    char text[INET6_ADDRSTRLEN] = {};
    const char* written = nullptr;
    if (address.ss_family == AF_INET) {
        written = ::inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in&>(address).sin_addr, text, sizeof(text));
    } else if (address.ss_family == AF_INET6) {
        const in6_addr& v6 = reinterpret_cast<const sockaddr_in6&>(address).sin6_addr;
        written = IN6_IS_ADDR_V4MAPPED(&v6) ? ::inet_ntop(AF_INET, &v6.s6_addr[12], text, sizeof(text))
                                            : ::inet_ntop(AF_INET6, &v6, text, sizeof(text));
    }
    return written ? QString::fromLatin1(written) : QString();
}

void Connection::write(const QByteArray& bytes)
{
    m_out += bytes;
    onWritable();
}

void Connection::finish()
{
    if (m_fd < 0)
        return;
    m_finishing = true;
    if (m_sent < m_out.size())
        return; // the end follows the last byte
    ::shutdown(m_fd, SHUT_WR);
    // What the browser still sends is read and dropped, so that closing sends no reset that could cost
    // it the end of the page.
    m_read->setEnabled(true);
    QTimer::singleShot(kLingerMs, this, [this] { deleteLater(); });
}

void Connection::abort()
{
    closeNow();
    deleteLater();
}

void Connection::closeNow()
{
    if (m_fd < 0)
        return;
    m_read->setEnabled(false);
    m_write->setEnabled(false);
    ::close(m_fd);
    m_fd = -1;
}

void Connection::fail(int err)
{
    closeNow();
    emit failed(socketError(err));
}

void Connection::onReadable()
{
    char buffer[kChunk];
    const ssize_t n = ::recv(m_fd, buffer, sizeof(buffer), 0);
    if (n > 0) {
        if (!m_finishing)
            emit arrived(QByteArray(buffer, n));
        return;
    }
    if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR))
        return;
    if (n < 0 && !m_finishing)
        return fail(errno);
    // The browser's end. While finishing, that is the signal to go.
    m_read->setEnabled(false);
    if (m_finishing) {
        closeNow();
        deleteLater();
        return;
    }
    emit readEnded();
}

void Connection::onWritable()
{
    while (m_fd >= 0 && m_sent < m_out.size()) {
        const ssize_t n = ::send(m_fd, m_out.constData() + m_sent, size_t(m_out.size() - m_sent), MSG_NOSIGNAL);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            if (errno == EAGAIN || errno == EWOULDBLOCK) {
                m_write->setEnabled(true);
                return;
            }
            return fail(errno);
        }
        m_sent += n;
    }
    if (m_fd < 0)
        return;
    m_write->setEnabled(false);
    if (m_out.isEmpty())
        return;
    m_out.clear();
    m_sent = 0;
    emit allWritten();
    if (m_finishing)
        finish();
}

} // namespace netlink

#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

class QSocketNotifier;

namespace netlink
{

// One browser's connection on its own descriptor. A browser that has sent its request and closed its
// sending side still reads the answer: the connection goes on writing after the end of what it reads,
// where the toolkit's socket would take that end for the browser leaving and drop the page.
class Connection : public QObject
{
    Q_OBJECT

public:
    // Takes the accepted descriptor; it is closed with the connection.
    explicit Connection(int descriptor, QObject* parent = nullptr);
    ~Connection() override;

    // The address the browser reached us on, as people write it: an IPv4 browser arrives on the
    // dual-stack socket as ::ffff:a.b.c.d and shows as a.b.c.d; an IPv6 interface's scope is left out.
    QString localAddress() const;
    // Queues bytes; they go out as the browser takes them.
    void write(const QByteArray& bytes);
    // After what was written: tells the browser the answer is complete and goes once it has taken it, or
    // after a while for a browser that never closes.
    void finish();
    // Ends at once.
    void abort();

signals:
    void arrived(const QByteArray& chunk);
    void readEnded();       // the browser will send nothing more
    void allWritten();      // every byte queued has gone to the system
    void failed(int error); // a netlink::SocketError number

private:
    void onReadable();
    void onWritable();
    void fail(int err);
    void closeNow();

    int m_fd;
    QSocketNotifier* m_read;
    QSocketNotifier* m_write;
    QByteArray m_out;
    qsizetype m_sent = 0;
    bool m_finishing = false;
};

} // namespace netlink

#pragma once

#include <QByteArray>
#include <QObject>
#include <QStringList>

class QSocketNotifier;

namespace shell::ui
{

// One program per user and desktop session: a second launch hands its timesheet paths to the running
// one and ends. The socket lives in the user's runtime folder, named after the session's display.
class SingleInstance : public QObject
{
    Q_OBJECT

public:
    explicit SingleInstance(QObject* parent = nullptr);
    ~SingleInstance() override;

    // Decides, under a lock that launches take in turn, whether this process is the one that runs: when
    // another answers, the paths go to it and the answer is false; otherwise this one listens (replacing
    // a socket that nobody answers) and the answer is true.
    bool claim(const QStringList& paths);

    // The socket's path for this user and session.
    static QString serverPath();

signals:
    void openRequested(const QStringList& paths);

private:
    bool forward(const QString& server, const QStringList& paths);
    void listen(const QString& server);
    void acceptLaunches();
    // Stops answering and removes the socket file, so that the next launch is the one that runs.
    void stopListening();

    int m_fd = -1;
    QSocketNotifier* m_notifier = nullptr;
    QByteArray m_path;
};

} // namespace shell::ui

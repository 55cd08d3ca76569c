#pragma once

#include <QObject>
#include <QStringList>

class QLocalServer;

namespace shell::ui
{

// One program per user: a second launch hands its timesheet paths to the running one and ends.
class SingleInstance : public QObject
{
    Q_OBJECT

public:
    explicit SingleInstance(QObject* parent = nullptr);

    // True when another instance took the paths; this process should then end.
    bool forwardToRunning(const QStringList& paths);
    // Starts listening for later launches.
    void listen();

signals:
    void openRequested(const QStringList& paths);

private:
    static QString serverName();
    QLocalServer* m_server = nullptr;
};

} // namespace shell::ui

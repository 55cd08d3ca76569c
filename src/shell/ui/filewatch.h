#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>

namespace shell::ui
{

// Tells when the open timesheet may have changed on disk: the file itself, and its folder, since sync
// tools put a new version in place by renaming it over the old one, and leave their conflict copies
// beside it. A burst of changes is told of once, when it has been quiet for a moment.
class FileWatch : public QObject
{
    Q_OBJECT

public:
    static constexpr int kQuietMs = 1000;

    explicit FileWatch(QObject* parent);
    // The file to watch from now on; an empty path watches nothing.
    void watch(const QString& path);

signals:
    void changed();

private:
    void noticed();

    QFileSystemWatcher m_watcher;
    QTimer m_quiet;
    QString m_path;
};

} // namespace shell::ui

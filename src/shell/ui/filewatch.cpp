#include "shell/ui/filewatch.h"

#include <QFileInfo>

namespace shell::ui
{

FileWatch::FileWatch(QObject* parent) : QObject(parent)
{
    m_quiet.setSingleShot(true);
    m_quiet.setInterval(kQuietMs);
    connect(&m_quiet, &QTimer::timeout, this, &FileWatch::changed);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &FileWatch::noticed);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &FileWatch::noticed);
}

void FileWatch::watch(const QString& path)
{
    if (path == m_path)
        return;
    if (const QStringList old = m_watcher.files() + m_watcher.directories(); !old.isEmpty())
        m_watcher.removePaths(old);
    m_path = path;
    // A link is watched with the file it leads to, whose folder is where new versions arrive.
    const QString target = QFileInfo(path).canonicalFilePath();
    if (!path.isEmpty())
        m_watcher.addPaths({path, QFileInfo(target.isEmpty() ? path : target).absolutePath()});
}

void FileWatch::noticed()
{
    // A file replaced by a rename is no longer the one watched: the new one is watched again.
    if (!m_path.isEmpty() && !m_watcher.files().contains(m_path) && QFileInfo::exists(m_path))
        m_watcher.addPath(m_path);
    m_quiet.start();
}

} // namespace shell::ui

#include "storage/backups.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace storage
{

Backups::Backups(FileStore& files, QString folder) : m_files(files), m_folder(std::move(folder)) {}

QString Backups::folderOf(const QString& path) const
{
    const QFileInfo info(path);
    const QByteArray hash =
        QCryptographicHash::hash(info.absoluteFilePath().toUtf8(), QCryptographicHash::Sha1).toHex().left(8);
    return m_folder + QLatin1Char('/') + info.completeBaseName() + QLatin1Char('-') + QString::fromLatin1(hash);
}

void Backups::beforeWrite(const QString& path, const QDate& today)
{
    if (m_done.value(path) == today)
        return; // the minute's saves after the first cost a lookup
    QByteArray bytes;
    if (!m_files.read(path, bytes).ok())
        return; // a new file has no earlier version to keep
    // Once a day, kept or not: a failed backup never stops the save, and is not tried again at every
    // minute's save, each a read of the whole file.
    m_done.insert(path, today);
    const QString folder = folderOf(path);
    const QString name = folder + QLatin1Char('/') + today.toString(Qt::ISODate) + QStringLiteral(".vlk");
    if (!m_files.exists(name) && !m_files.write(name, bytes).ok())
        return;
    QStringList days = m_files.list(folder);
    days.removeIf([](const QString& day) { return !QDate::fromString(day.chopped(4), Qt::ISODate).isValid(); });
    std::sort(days.begin(), days.end()); // ISO dates sort by day
    for (qsizetype i = 0; i + kKept < days.size(); ++i)
        m_files.remove(folder + QLatin1Char('/') + days[i]);
}

QString backupFolder()
{
    QString state = qEnvironmentVariable("XDG_STATE_HOME");
    if (state.isEmpty() || !QDir::isAbsolutePath(state))
        state = QDir::homePath() + QStringLiteral("/.local/state");
    return state + QStringLiteral("/Veltrick/backups");
}

} // namespace storage

#pragma once

#include "storage/filestore.h"

#include <QDate>
#include <QHash>
#include <QString>

namespace storage
{

// Yesterday's file, kept: before the first write of each day to a timesheet, the version on disk is
// copied into a folder of that timesheet's own under the backups folder, named by the day; the newest
// kKept days of each timesheet stay. A sync client or a second computer that writes over the file can
// then cost a day's edits at most, never the file.
class Backups
{
public:
    static constexpr int kKept = 14;

    Backups(FileStore& files, QString folder);

    // Called before each write of `path`: copies what is on disk once a day. A backup the day already has,
    // from an earlier run, stays: it holds the file as the day found it.
    void beforeWrite(const QString& path, const QDate& today);
    // The folder of one timesheet's backups: its name, and a short hash of its full path, so that two
    // timesheets of the same name in different folders keep apart.
    QString folderOf(const QString& path) const;

private:
    FileStore& m_files;
    QString m_folder;
    QHash<QString, QDate> m_done; // the day of the last backup of each path, in this run
};

// $XDG_STATE_HOME/Veltrick/backups, by default ~/.local/state/Veltrick/backups.
QString backupFolder();

} // namespace storage

#pragma once

#include "platform/result.h"

#include <QByteArray>
#include <QSet>
#include <QString>
#include <QStringList>

namespace storage
{

// What a file is on disk, without reading it: another program that replaces or rewrites the file changes
// at least one of these. Equal stamps mean the same bytes; different ones need the bytes to tell.
struct FileStamp
{
    qint64 device = 0, inode = 0, size = -1, modifiedNs = 0;

    bool operator==(const FileStamp&) const = default;
};

// Where the program's files go. Writes are atomic and durable: a failed write leaves the old file whole.
class FileStore
{
public:
    virtual ~FileStore() = default;
    virtual platform::Result write(const QString& path, const QByteArray& bytes) = 0;
    // The same, telling what the file is on disk once written; nobody else's write can come between.
    virtual platform::Result write(const QString& path, const QByteArray& bytes, FileStamp& written)
    {
        const platform::Result result = write(path, bytes);
        if (result.ok())
            stamp(path, written);
        return result;
    }
    // False where there is no such file.
    virtual bool stamp(const QString& path, FileStamp& stamp) const = 0;
    // A file that does not exist or cannot be read gives a failure with the reason.
    virtual platform::Result read(const QString& path, QByteArray& bytes) const = 0;
    virtual bool exists(const QString& path) const = 0;
    // The names of the files in a folder; none where it does not exist.
    virtual QStringList list(const QString& folder) const = 0;
    virtual bool remove(const QString& path) = 0;
};

// The real disk: temporary file in the same folder, fsync, rename over the target, fsync of the folder.
class DiskFileStore : public FileStore
{
public:
    platform::Result write(const QString& path, const QByteArray& bytes) override;
    platform::Result write(const QString& path, const QByteArray& bytes, FileStamp& written) override;
    bool stamp(const QString& path, FileStamp& stamp) const override;
    platform::Result read(const QString& path, QByteArray& bytes) const override;
    bool exists(const QString& path) const override;
    QStringList list(const QString& folder) const override;
    bool remove(const QString& path) override;

private:
    // Files whose folder holds no temporary file of theirs left by a crash: a save of the running
    // timesheet, once a minute, need not list the folder again.
    QSet<QString> m_swept;
};

// The settings folder ($XDG_CONFIG_HOME/Veltrick) and a file in it; the folder is made on first write.
QString prefFolder();
QString prefFile(const QString& name);

} // namespace storage

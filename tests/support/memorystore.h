#pragma once

#include "storage/filestore.h"

#include <QHash>

#include <functional>

namespace testing
{

// Files in memory; writes fail on demand, the way a full disk or a read-only folder would.
class MemoryFileStore : public storage::FileStore
{
public:
    using storage::FileStore::write;
    platform::Result write(const QString& path, const QByteArray& bytes) override
    {
        ++writes;
        if (onWrite)
            onWrite();
        if (failWrites)
            return platform::Result::failure(28, QStringLiteral("No space left on device"));
        files[path] = bytes;
        written << path;
        return platform::Result::success();
    }
    platform::Result read(const QString& path, QByteArray& bytes) const override
    {
        if (!files.contains(path))
            return platform::Result::failure(2, QStringLiteral("No such file"));
        bytes = files.value(path);
        return platform::Result::success();
    }
    bool exists(const QString& path) const override { return files.contains(path); }
    // A file in memory is known by its bytes, so that any other writer's change shows, and by its touches.
    bool stamp(const QString& path, storage::FileStamp& stamp) const override
    {
        if (!files.contains(path))
            return false;
        const QByteArray& bytes = files[path];
        stamp = {0, qint64(qHash(bytes)), bytes.size(), touches.value(path)};
        return true;
    }
    QStringList list(const QString& folder) const override
    {
        QStringList names;
        for (const QString& path : files.keys())
            if (path.startsWith(folder + u'/') && !path.mid(folder.size() + 1).contains(u'/'))
                names << path.mid(folder.size() + 1);
        return names;
    }
    bool remove(const QString& path) override { return files.remove(path) > 0; }

    QHash<QString, QByteArray> files;
    QStringList written;            // the paths of the writes that went through, in order
    QHash<QString, qint64> touches; // a new modification time with the same bytes
    bool failWrites = false;
    int writes = 0;
    std::function<void()> onWrite; // a write that takes time: the test moves its clock here
};

} // namespace testing

#pragma once

#include "storage/filestore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

namespace testing
{

// A throwaway address book folder that tests fill with vCard text.
class VCardFolder
{
public:
    QString path() const { return m_dir.path() + QStringLiteral("/contacts"); }

    // Writes the text as it stands; "\n" in the text stays "\n" unless the test spells "\r\n".
    void write(const QString& name, const QByteArray& text) const { put(path() + QLatin1Char('/') + name, text); }

    // Puts a plain file where the folder should be, so that the folder can be neither read nor made.
    void occupyWithFile() const { put(path(), "not a folder"); }

    QByteArray read(const QString& name) const
    {
        QFile in(path() + QLatin1Char('/') + name);
        return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray();
    }

    QStringList files() const { return QDir(path()).entryList(QDir::Files, QDir::Name); }

private:
    static void put(const QString& file, const QByteArray& bytes)
    {
        QDir().mkpath(QFileInfo(file).absolutePath());
        QFile out(file);
        if (out.open(QIODevice::WriteOnly))
            out.write(bytes);
    }
    QTemporaryDir m_dir;
};

// The disk, but writes fail on demand as on a full disk.
class FailingDiskStore : public storage::DiskFileStore
{
public:
    platform::Result write(const QString& path, const QByteArray& bytes) override
    {
        return failWrites ? platform::Result::failure(28, QStringLiteral("No space left on device"))
                          : storage::DiskFileStore::write(path, bytes);
    }
    bool failWrites = false;
};

} // namespace testing

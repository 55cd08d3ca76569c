#include "storage/filestore.h"

#include "storage/hugepages.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace storage
{

namespace
{

platform::Result fromErrno(const QString& what)
{
    const int err = errno;
    return platform::Result::failure(err, what + QStringLiteral(": ") + QString::fromLocal8Bit(std::strerror(err)));
}

bool writeAll(int fd, const char* data, qint64 size)
{
    while (size > 0) {
        const ssize_t n = ::write(fd, data, static_cast<size_t>(size));
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        data += n;
        size -= n;
    }
    return true;
}

// The file a write replaces: a symbolic link is followed, link after link, so that the link stays a
// link and its target takes the bytes, as a write in place would.
QString resolvedTarget(const QString& path)
{
    QFileInfo info(path);
    for (int hops = 0; hops < 40 && info.isSymLink(); ++hops) {
        const QString target = info.symLinkTarget(); // absolute, relative links resolved
        if (target.isEmpty())
            break;
        info = QFileInfo(target);
    }
    return info.absoluteFilePath();
}

// A write cut short by a crash or a power cut leaves its temporary file beside the target. A write that
// succeeds removes such leftovers of the same target, once they are old enough that no other writer can
// still be filling them. True when none is left.
bool removeLeftTemporaries(const QFileInfo& target)
{
    constexpr qint64 kOldEnoughSeconds = 60;
    const QDateTime now = QDateTime::currentDateTime();
    const QString pattern = target.fileName() + QStringLiteral(".??????.tmp");
    const QDir folder = target.absoluteDir();
    bool swept = true;
    for (const QFileInfo& left : folder.entryInfoList({pattern}, QDir::Files | QDir::Hidden | QDir::System)) {
        if (left.lastModified().secsTo(now) >= kOldEnoughSeconds)
            ::unlink(QFile::encodeName(left.absoluteFilePath()).constData());
        else
            swept = false;
    }
    return swept;
}

FileStamp stampOf(const struct stat& st)
{
    return {qint64(st.st_dev), qint64(st.st_ino), qint64(st.st_size),
            qint64(st.st_mtim.tv_sec) * 1'000'000'000 + st.st_mtim.tv_nsec};
}

} // namespace

platform::Result DiskFileStore::write(const QString& path, const QByteArray& bytes)
{
    FileStamp written;
    return write(path, bytes, written);
}

bool DiskFileStore::stamp(const QString& path, FileStamp& stamp) const
{
    struct stat st = {};
    if (::stat(QFile::encodeName(path).constData(), &st) != 0 || !S_ISREG(st.st_mode))
        return false;
    stamp = stampOf(st);
    return true;
}

platform::Result DiskFileStore::write(const QString& path, const QByteArray& bytes, FileStamp& written)
{
    const QFileInfo info(resolvedTarget(path));
    const QString folder = info.absolutePath();
    if (!QDir().mkpath(folder))
        return platform::Result::failure(EACCES, QStringLiteral("cannot create folder ") + folder);

    const QByteArray target = QFile::encodeName(info.absoluteFilePath());
    struct stat old = {};
    const bool replacing = ::stat(target.constData(), &old) == 0;
    if (replacing) {
        // A file the user may not write stays as it is, as it would for a write in place. A file with no
        // write permission at all counts as protected even for the administrator.
        if ((old.st_mode & 0222) == 0 || (::geteuid() != 0 && ::access(target.constData(), W_OK) != 0)) {
            errno = EACCES;
            return fromErrno(QStringLiteral("cannot write ") + path);
        }
        if (S_ISDIR(old.st_mode)) {
            errno = EISDIR;
            return fromErrno(QStringLiteral("cannot write ") + path);
        }
    }
    QByteArray temp = target + ".XXXXXX.tmp";
    const int fd = ::mkstemps(temp.data(), 4);
    if (fd < 0)
        return fromErrno(QStringLiteral("cannot create ") + path);

    // The new file keeps the mode and the group of the one it replaces, or the usual 0644.
    ::fchmod(fd, replacing ? (old.st_mode & 07777) : 0644);
    // Where the user is not in the group of a shared file, the group cannot be kept; the write goes on.
    if (replacing && ::fchown(fd, static_cast<uid_t>(-1), old.st_gid) != 0)
        errno = 0;

    struct stat done = {};
    if (!writeAll(fd, bytes.constData(), bytes.size()) || ::fsync(fd) != 0 || ::fstat(fd, &done) != 0) {
        auto result = fromErrno(QStringLiteral("cannot write ") + path);
        ::close(fd);
        ::unlink(temp.constData());
        return result;
    }
    if (::close(fd) != 0 || ::rename(temp.constData(), target.constData()) != 0) {
        auto result = fromErrno(QStringLiteral("cannot replace ") + path);
        ::unlink(temp.constData());
        return result;
    }
    // The rename is only durable once the folder itself is on disk.
    const int dirfd = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY);
    if (dirfd >= 0) {
        ::fsync(dirfd);
        ::close(dirfd);
    }
    // Read from the file before its rename, which changes neither: a write of another program that
    // follows at once still shows as a change.
    written = stampOf(done);
    // Leftovers come from crashes of earlier runs (a failed write here removes its own): once a target's
    // are gone, its saves stop listing the folder.
    if (!m_swept.contains(info.absoluteFilePath()) && removeLeftTemporaries(info))
        m_swept.insert(info.absoluteFilePath());
    return platform::Result::success();
}

platform::Result DiskFileStore::read(const QString& path, QByteArray& bytes) const
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return platform::Result::failure(ENOENT, file.errorString());
    // One buffer of the file's size, read in one call; what another program appends meanwhile follows.
    bytes = QByteArray(file.size(), Qt::Uninitialized);
    preferHugePages(bytes.constData(), size_t(bytes.size()));
    const qint64 got = file.read(bytes.data(), bytes.size());
    bytes.truncate(std::max<qint64>(got, 0));
    if (got >= 0)
        bytes += file.readAll();
    if (file.error() != QFileDevice::NoError)
        return platform::Result::failure(EIO, file.errorString());
    return platform::Result::success();
}

bool DiskFileStore::exists(const QString& path) const
{
    return QFileInfo(path).isFile();
}

QStringList DiskFileStore::list(const QString& folder) const
{
    return QDir(folder).entryList(QDir::Files);
}

bool DiskFileStore::remove(const QString& path)
{
    return QFile::remove(path);
}

QString prefFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + QStringLiteral("/Veltrick");
}

QString prefFile(const QString& name)
{
    return prefFolder() + QLatin1Char('/') + name;
}

} // namespace storage

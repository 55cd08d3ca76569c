#include "storage/filestore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

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

} // namespace

platform::Result DiskFileStore::write(const QString& path, const QByteArray& bytes)
{
    const QFileInfo info(path);
    const QString folder = info.absolutePath();
    if (!QDir().mkpath(folder))
        return platform::Result::failure(EACCES, QStringLiteral("cannot create folder ") + folder);

    const QByteArray target = QFile::encodeName(info.absoluteFilePath());
    QByteArray temp = target + ".XXXXXX.tmp";
    const int fd = ::mkstemps(temp.data(), 4);
    if (fd < 0)
        return fromErrno(QStringLiteral("cannot create ") + path);

    // Keep the permissions of the file being replaced, or the usual 0644 for a new one.
    struct stat st = {};
    ::fchmod(fd, ::stat(target.constData(), &st) == 0 ? (st.st_mode & 07777) : 0644);

    if (!writeAll(fd, bytes.constData(), bytes.size()) || ::fsync(fd) != 0) {
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
    return platform::Result::success();
}

platform::Result DiskFileStore::read(const QString& path, QByteArray& bytes) const
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return platform::Result::failure(ENOENT, file.errorString());
    bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return platform::Result::failure(EIO, file.errorString());
    return platform::Result::success();
}

bool DiskFileStore::exists(const QString& path) const
{
    return QFileInfo(path).isFile();
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

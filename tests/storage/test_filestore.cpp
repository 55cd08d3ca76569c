// The write of every file: atomic and durable, and towards the user's file as a write in place would be:
// a protected file refused, a link followed, the mode and group kept, nothing left behind on failure.
#include "storage/filestore.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <cstdlib>

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList leftovers(const QString& folder)
{
    return QDir(folder).entryList({QStringLiteral("*.tmp")}, QDir::Files | QDir::Hidden);
}

} // namespace

class TestFileStore : public QObject
{
    Q_OBJECT

    QTemporaryDir dir;
    storage::DiskFileStore store;

    QString at(const QString& name) const { return dir.filePath(name); }

private slots:
    // A read-only file (0444) is refused, for the administrator too, and keeps its bytes.
    void protectedFileIsRefused()
    {
        const QString path = at(QStringLiteral("ro.vlk"));
        QVERIFY(store.write(path, "old").ok());
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther));
        const platform::Result result = store.write(path, "new");
        QCOMPARE(result.code, EACCES);
        QCOMPARE(contents(path), QByteArray("old"));
        QVERIFY(leftovers(dir.path()).isEmpty());
    }

    // A link, relative and through a second link, stays a link; its target takes the bytes.
    void linksAreFollowed()
    {
        QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("real")));
        const QString target = at(QStringLiteral("real/sheet.vlk"));
        QVERIFY(store.write(target, "old").ok());
        QVERIFY(::symlink("real/sheet.vlk", QFile::encodeName(at(QStringLiteral("first.vlk"))).constData()) == 0);
        QVERIFY(::symlink("first.vlk", QFile::encodeName(at(QStringLiteral("second.vlk"))).constData()) == 0);
        QVERIFY(store.write(at(QStringLiteral("second.vlk")), "new").ok());
        QVERIFY(QFileInfo(at(QStringLiteral("second.vlk"))).isSymLink());
        QVERIFY(QFileInfo(at(QStringLiteral("first.vlk"))).isSymLink());
        QCOMPARE(contents(target), QByteArray("new"));
        QVERIFY(leftovers(dir.path()).isEmpty() && leftovers(at(QStringLiteral("real"))).isEmpty());
    }

    // The new file keeps the old one's mode and group.
    void modeAndGroupKept()
    {
        const QString path = at(QStringLiteral("shared.vlk"));
        QVERIFY(store.write(path, "old").ok());
        QVERIFY(::chmod(QFile::encodeName(path).constData(), 0640) == 0);
        const gid_t group = ::getegid() == 0 ? 100 : ::getegid(); // "users" where the tests may change it
        QVERIFY(::chown(QFile::encodeName(path).constData(), static_cast<uid_t>(-1), group) == 0);
        QVERIFY(store.write(path, "new").ok());
        struct stat st = {};
        QVERIFY(::stat(QFile::encodeName(path).constData(), &st) == 0);
        QCOMPARE(st.st_mode & 07777, mode_t(0640));
        QCOMPARE(st.st_gid, group);
        QCOMPARE(contents(path), QByteArray("new"));
    }

    // A write that fails leaves no temporary file; many writes leave one file.
    void failureLeavesNothingBehind()
    {
        QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("folder.vlk")));
        QVERIFY(!store.write(at(QStringLiteral("folder.vlk")), "bytes").ok());
        QVERIFY(leftovers(dir.path()).isEmpty());
        QTemporaryDir quiet;
        for (int i = 0; i < 50; ++i)
            QVERIFY(store.write(quiet.filePath(QStringLiteral("a.vlk")), QByteArray::number(i)).ok());
        QCOMPARE(QDir(quiet.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"a.vlk"});
        QCOMPARE(contents(quiet.filePath(QStringLiteral("a.vlk"))), QByteArray("49"));
    }

    // What a write cut short by a crash leaves (its temporary file) goes with the next write of the same
    // file once it is a minute old; a younger one may be another writer's, and other files' are not ours.
    void leftoversOfACrashAreRemoved()
    {
        QTemporaryDir folder;
        const auto left = [&](const QString& name, int secondsOld) {
            QFile file(folder.filePath(name));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write("half");
            QVERIFY(file.flush());
            QVERIFY(
                file.setFileTime(QDateTime::currentDateTime().addSecs(-secondsOld), QFileDevice::FileModificationTime));
        };
        left(QStringLiteral("a.vlk.Ab12Cd.tmp"), 3600);
        left(QStringLiteral("a.vlk.Xy34Zw.tmp"), 5);
        left(QStringLiteral("b.vlk.Ab12Cd.tmp"), 3600);
        QVERIFY(store.write(folder.filePath(QStringLiteral("a.vlk")), "whole").ok());
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden),
                 (QStringList{"a.vlk", "a.vlk.Xy34Zw.tmp", "b.vlk.Ab12Cd.tmp"}));
        // The young one is looked at again by later writes, and goes once it is old.
        left(QStringLiteral("a.vlk.Xy34Zw.tmp"), 120);
        QVERIFY(store.write(folder.filePath(QStringLiteral("a.vlk")), "again").ok());
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), (QStringList{"a.vlk", "b.vlk.Ab12Cd.tmp"}));
    }

    // On a real small disk: a write that does not fit, and one into a folder made read-only, fail with the
    // system's reason and leave the old file whole with nothing beside it; once space is back the same
    // write goes through.
    void fullAndReadOnlyDisk()
    {
        QTemporaryDir mountPoint;
        const QByteArray point = QFile::encodeName(mountPoint.path());
        const QByteArray mount = "mount -t tmpfs -o size=64k veltrick-test " + point + " 2>/dev/null";
        if (::geteuid() != 0 || std::system(mount.constData()) != 0)
            QSKIP("needs a tmpfs mount (root)");
        const auto unmount = qScopeGuard([&] { std::system(("umount " + point).constData()); });
        const QString sheet = mountPoint.filePath(QStringLiteral("sheet.vlk"));
        const QString filler = mountPoint.filePath(QStringLiteral("filler"));
        const QByteArray old(20 * 1024, 'o');
        QVERIFY(store.write(sheet, old).ok());
        {
            QFile fill(filler);
            QVERIFY(fill.open(QIODevice::WriteOnly));
            while (fill.write(QByteArray(4096, 'f')) > 0 && fill.flush()) {
            }
        }
        const QByteArray grown(30 * 1024, 'n');
        platform::Result result = store.write(sheet, grown);
        QCOMPARE(result.code, ENOSPC);
        QVERIFY(!result.message.isEmpty());
        QCOMPARE(contents(sheet), old);
        QVERIFY(leftovers(mountPoint.path()).isEmpty());

        QVERIFY(QFile::remove(filler));
        QVERIFY(store.write(sheet, grown).ok());
        QCOMPARE(contents(sheet), grown);

        QCOMPARE(std::system(("mount -o remount,ro " + point).constData()), 0);
        result = store.write(sheet, old);
        QCOMPARE(result.code, EROFS);
        QCOMPARE(contents(sheet), grown);
        QCOMPARE(std::system(("mount -o remount,rw " + point).constData()), 0);
        QVERIFY(store.write(sheet, old).ok());
        QCOMPARE(contents(sheet), old);
    }
};

QTEST_GUILESS_MAIN(TestFileStore)
#include "test_filestore.moc"

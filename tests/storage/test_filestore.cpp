// The write of every file: atomic and durable, and towards the user's file as a write in place would be:
// a protected file refused, a link followed, the mode and group kept, nothing left behind on failure.
#include "storage/backups.h"
#include "storage/filestore.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <cstdlib>

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

// The program's fsync calls, counted on their way to the system.
static int fsyncs = 0;
extern "C" int fsync(int fd)
{
    ++fsyncs;
    return int(::syscall(SYS_fsync, fd));
}

namespace
{

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestFileStore : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> folder;
    storage::DiskFileStore store;

    QString at(const char* name) const { return folder->filePath(QLatin1String(name)); }
    QByteArray native(const char* name) const { return QFile::encodeName(at(name)); }
    // The folder's files, temporary ones included.
    QStringList listing(const char* sub = ".") const
    {
        return QDir(at(sub)).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }

private slots:
    void init() { folder = std::make_unique<QTemporaryDir>(); }

    // The new file and its folder reach the disk, and it keeps the old one's mode and group. A read-only file
    // is refused, for the administrator too, and so is a folder in the file's place, leaving nothing behind;
    // many writes leave one file.
    void replacing()
    {
        fsyncs = 0;
        QVERIFY(store.write(at("shared.vlk"), "old").ok());
        QCOMPARE(fsyncs, 2);
        QVERIFY(::chmod(native("shared.vlk").constData(), 0640) == 0);
        const gid_t group = ::getegid() == 0 ? 100 : ::getegid(); // "users" where the tests may change it
        QVERIFY(::chown(native("shared.vlk").constData(), static_cast<uid_t>(-1), group) == 0);
        QVERIFY(store.write(at("shared.vlk"), "new").ok());
        struct stat st = {};
        QVERIFY(::stat(native("shared.vlk").constData(), &st) == 0);
        QVERIFY((st.st_mode & 07777) == 0640 && st.st_gid == group);
        QVERIFY(::chmod(native("shared.vlk").constData(), 0444) == 0);
        QCOMPARE(store.write(at("shared.vlk"), "newer").code, EACCES);
        QCOMPARE(contents(at("shared.vlk")), QByteArray("new"));
        QVERIFY(QDir(folder->path()).mkpath(QStringLiteral("folder.vlk")));
        QVERIFY(!store.write(at("folder.vlk"), "bytes").ok());
        for (int i = 0; i < 50; ++i)
            QVERIFY(store.write(at("a.vlk"), QByteArray::number(i)).ok());
        QCOMPARE(contents(at("a.vlk")), QByteArray("49"));
        QCOMPARE(listing(), (QStringList{"a.vlk", "shared.vlk"}));
    }

    // A link, relative and through a second link, stays a link; its target takes the bytes.
    void linksAreFollowed()
    {
        QVERIFY(store.write(at("real/sheet.vlk"), "old").ok());
        QVERIFY(::symlink("real/sheet.vlk", native("first.vlk").constData()) == 0);
        QVERIFY(::symlink("first.vlk", native("second.vlk").constData()) == 0);
        QVERIFY(store.write(at("second.vlk"), "new").ok());
        QVERIFY(QFileInfo(at("second.vlk")).isSymLink() && QFileInfo(at("first.vlk")).isSymLink());
        QCOMPARE(contents(at("real/sheet.vlk")), QByteArray("new"));
        QCOMPARE(listing("real"), QStringList{"sheet.vlk"});
    }

    // What a write cut short by a crash leaves (its temporary file) goes with the next write of the same
    // file once it is a minute old; a younger one may be another writer's, and other files' are not ours.
    // The young one is looked at again by later writes, and goes once it is old.
    void leftoversOfACrashAreRemoved()
    {
        const auto left = [&](const char* name, int secondsOld) {
            QFile file(at(name));
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write("half") == 4 && file.flush());
            QVERIFY(
                file.setFileTime(QDateTime::currentDateTime().addSecs(-secondsOld), QFileDevice::FileModificationTime));
        };
        left("a.vlk.Ab12Cd.tmp", 3600);
        left("a.vlk.Xy34Zw.tmp", 5);
        left("b.vlk.Ab12Cd.tmp", 3600);
        QVERIFY(store.write(at("a.vlk"), "whole").ok());
        QCOMPARE(listing(), (QStringList{"a.vlk", "a.vlk.Xy34Zw.tmp", "b.vlk.Ab12Cd.tmp"}));
        left("a.vlk.Xy34Zw.tmp", 120);
        QVERIFY(store.write(at("a.vlk"), "again").ok());
        QCOMPARE(listing(), (QStringList{"a.vlk", "b.vlk.Ab12Cd.tmp"}));
    }

    // A write tells what its file is on disk; another program's write in place or rename over it tells
    // otherwise; a folder or no file has no stamp.
    void stampsShowOtherWriters()
    {
        storage::FileStamp written, now;
        QVERIFY(store.write(at("a.vlk"), "mine", written).ok());
        QVERIFY(store.stamp(at("a.vlk"), now) && now == written);
        QFile inPlace(at("a.vlk"));
        QVERIFY(inPlace.open(QIODevice::ReadWrite) && inPlace.write("theirs") == 6);
        inPlace.close();
        QVERIFY(store.stamp(at("a.vlk"), now) && now != written && now.inode == written.inode);
        QVERIFY(store.write(at("b.vlk"), "them", written).ok());
        QVERIFY(QFile::rename(at("a.vlk"), at("c.vlk")) && QFile::rename(at("b.vlk"), at("a.vlk")));
        QVERIFY(store.stamp(at("a.vlk"), now) && now.inode == written.inode);
        QVERIFY(!store.stamp(at("b.vlk"), now) && !store.stamp(folder->path(), now));
    }

    // Before the first write of each day the file as the day found it is kept, once, across runs too; the
    // newest fourteen days stay; a timesheet not yet on disk has nothing to keep, and one of the same name
    // in another folder keeps its own.
    void yesterdaysFileIsKept()
    {
        const QString sheet = at("Work.vlk"), backupsAt = at("backups");
        storage::Backups backups(store, backupsAt);
        const QString kept = backups.folderOf(sheet);
        backups.beforeWrite(sheet, QDate(2026, 11, 1));
        QVERIFY(!QDir(kept).exists());
        for (int day = 1; day <= 15; ++day) {
            QVERIFY(store.write(sheet, "day " + QByteArray::number(day)).ok());
            backups.beforeWrite(sheet, QDate(2026, 11, day));
            QVERIFY(store.write(sheet, "later").ok());
            backups.beforeWrite(sheet, QDate(2026, 11, day));
            storage::Backups(store, backupsAt).beforeWrite(sheet, QDate(2026, 11, day)); // a restart
        }
        QCOMPARE(store.list(kept).size(), storage::Backups::kKept);
        QVERIFY(!store.list(kept).contains("2026-11-01.vlk"));
        QCOMPARE(contents(kept + "/2026-11-02.vlk"), QByteArray("day 2"));
        QCOMPARE(contents(kept + "/2026-11-15.vlk"), QByteArray("day 15"));
        QVERIFY(kept.startsWith(backupsAt + "/Work-") && kept != backups.folderOf(at("other/Work.vlk")));
    }

    // On a real small disk: a write that does not fit, and one into a folder made read-only, fail with the
    // system's reason and leave the old file whole with nothing beside it; once space is back the same
    // write goes through.
    void fullAndReadOnlyDisk()
    {
        const QByteArray point = QFile::encodeName(folder->path());
        const auto run = [](const QByteArray& command) { return std::system(command.constData()) == 0; };
        if (::geteuid() != 0 || !run("mount -t tmpfs -o size=64k veltrick-test " + point + " 2>/dev/null"))
            QSKIP("needs a tmpfs mount (root)");
        const auto unmount = qScopeGuard([&] { run("umount " + point); });
        const QByteArray old(20 * 1024, 'o'), grown(30 * 1024, 'n');
        QVERIFY(store.write(at("sheet.vlk"), old).ok());
        {
            QFile fill(at("filler"));
            QVERIFY(fill.open(QIODevice::WriteOnly));
            while (fill.write(QByteArray(4096, 'f')) > 0 && fill.flush()) {
            }
        }
        const platform::Result result = store.write(at("sheet.vlk"), grown);
        QVERIFY(result.code == ENOSPC && !result.message.isEmpty());
        QCOMPARE(contents(at("sheet.vlk")), old);
        QCOMPARE(listing(), (QStringList{"filler", "sheet.vlk"}));
        QVERIFY(QFile::remove(at("filler")) && store.write(at("sheet.vlk"), grown).ok());
        QVERIFY(run("mount -o remount,ro " + point));
        QCOMPARE(store.write(at("sheet.vlk"), old).code, EROFS);
        QCOMPARE(contents(at("sheet.vlk")), grown);
        QVERIFY(run("mount -o remount,rw " + point) && store.write(at("sheet.vlk"), old).ok());
        QCOMPARE(contents(at("sheet.vlk")), old);
    }
};

QTEST_GUILESS_MAIN(TestFileStore)
#include "test_filestore.moc"

#include "clients/addressadd.h"
#include "clients/synchost.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

// The address book as a command-line address book leaves it: contacts made by khard, read by the sync,
// and a contact added by the program read back by khard.
class TestKhard : public QObject
{
    Q_OBJECT

private:
    QString m_khard;
    QTemporaryDir m_dir;

    QString book() const { return m_dir.path() + QStringLiteral("/book"); }
    QString config() const { return m_dir.path() + QStringLiteral("/khard.conf"); }

    // Runs khard with the test's own configuration and home, so the user's address books stay out of it.
    QByteArray khard(const QStringList& arguments, const QByteArray& input = {})
    {
        QProcess process;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"})
            env.insert(QLatin1String(name), m_dir.path());
        process.setProcessEnvironment(env);
        process.start(m_khard, QStringList{QStringLiteral("-c"), config()} + arguments);
        process.write(input);
        process.closeWriteChannel();
        if (!process.waitForFinished(60000)) {
            process.kill();
            process.waitForFinished();
        }
        if (process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0)
            return process.readAllStandardOutput();
        qWarning("khard %s failed: %s", qPrintable(arguments.join(u' ')), process.readAllStandardError().constData());
        return {};
    }

private slots:
    void initTestCase()
    {
        m_khard = QStandardPaths::findExecutable(QStringLiteral("khard"));
        if (m_khard.isEmpty())
            QSKIP("khard is not installed");
        QVERIFY(QDir().mkpath(book()));
        QFile conf(config());
        QVERIFY(conf.open(QIODevice::WriteOnly));
        conf.write("[addressbooks]\n[[book]]\npath = " + book().toUtf8() +
                   "\n\n[general]\neditor = /bin/false\nmerge_editor = /bin/false\n"
                   "[vcard]\npreferred_version = 4.0\n");
    }

    void companiesOfKhardContacts()
    {
        // clang-format off
        struct Person { QByteArray first, last, organisation, categories, version; };
        const QList<Person> people{
            {"Ann", "Lee", "Müller, Söhne; AG", "Veltrick Clients", "4.0"},
            {"Bo", "Ek", "Zed Corp", "[Veltrick Clients, Friends]", "3.0"},
            {"Cy", "Ng", "Zed Corp", "Veltrick Clients", "4.0"},
            {"Di", "Ho", "Outside Ltd", "Friends", "4.0"},
            {"Ed", "Yu", "", "Veltrick Clients", "4.0"},
        };
        // clang-format on
        for (const Person& p : people) {
            QByteArray yaml =
                "First name : " + p.first + "\nLast name : " + p.last + "\nCategories : " + p.categories + "\n";
            if (!p.organisation.isEmpty())
                yaml += "Organisation : \"" + p.organisation + "\"\n";
            QVERIFY(!khard({"new", "-a", "book", "--vcard-version", QString::fromLatin1(p.version)}, yaml).isEmpty());
        }
        QCOMPARE(QDir(book()).entryList(QDir::Files).size(), people.size());

        testing::SyncRig rig(book());
        rig.sync.syncaddressbook2();
        QCOMPARE(rig.dialogs.messages, QStringList());
        QCOMPARE(rig.listFile(), (QStringList{QString::fromUtf8("Müller, Söhne; AG"), QStringLiteral("Zed Corp")}));

        // A client added by the program is a contact khard reads, with its organisation.
        clients::addressadd sheet(rig.book, rig.dialogs, rig.desktop, rig.sync);
        sheet.Open();
        sheet.CheckBox1 = true;
        sheet.CheckBox1_Action();
        sheet.nameOne.Text = QStringLiteral("Flo");
        sheet.nameTwo.Text = QStringLiteral("Ray");
        sheet.nameCompany.Text = QStringLiteral("Acme; Partners");
        sheet.PushButton1_Action();
        QCOMPARE(rig.listFile().size(), 3);
        const QByteArray listed = khard({"list", "-p", "-F", "name,organisations", "Flo"});
        QVERIFY2(listed.contains("Flo Ray") && listed.contains("Acme; Partners"), listed.constData());
    }
};

QTEST_GUILESS_MAIN(TestKhard)
#include "test_khard.moc"

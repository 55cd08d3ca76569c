#include "clients/addressadd.h"
#include "clients/clientlist.h"
#include "clients/clientsync.h"
#include "clients/synchost.h"
#include "clients/texts.h"
#include "clients/vcardfolder.h"
#include "clients/vcardstore.h"
#include "storage/clients_file.h"
#include "support/fakes.h"
#include "support/memorystore.h"

#include <QTest>

using Files = QList<QPair<QString, QByteArray>>;

namespace
{

QByteArray member(const QByteArray& org, const QByteArray& categories = "Veltrick Clients")
{
    return "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Doe;Jo;;;\r\nFN:Jo Doe\r\nORG:" + org +
           ";Dept\r\nCATEGORIES:" + categories + "\r\nEND:VCARD\r\n";
}

const QByteArray kGroupCard =
    "BEGIN:VCARD\r\nVERSION:4.0\r\nKIND:group\r\nFN:Veltrick Clients\r\nUID:g1\r\nEND:VCARD\r\n";

// The folder comes first, so that the rig can be made over it.
struct Folder
{
    testing::VCardFolder folder;
};
struct Rig : Folder, testing::SyncRig
{
    Rig() : SyncRig(folder.path()) {}
};

} // namespace

class TestClientSync : public QObject
{
    Q_OBJECT

private slots:
    void clientNames_data()
    {
        QTest::addColumn<Files>("files");
        QTest::addColumn<QStringList>("expected");

        const QByteArray noOrg(
            "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Smith;Kim;;;\r\nCATEGORIES:Veltrick Clients\r\nEND:VCARD\r\n");
        const QByteArray qpOrg("BEGIN:VCARD\r\nVERSION:2.1\r\nN:Lee;Ann\r\nORG;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:"
                               "=C3=89tude =\r\nS.A.\r\nCATEGORIES:Veltrick Clients\r\nEND:VCARD\r\n");
        // clang-format off
        QTest::newRow("one client per name whatever the case, first spelling kept")
            << Files{{"a.vcf", member("Acme")}, {"b.vcf", member("ACME")}, {"c.vcf", member("acme")}} << QStringList{"Acme"};
        QTest::newRow("no company, missing value, non-members")
            << Files{{"a.vcf", member("")}, {"b.vcf", member("Missing Value")}, {"c.vcf", member("Outsider", "Friends")},
                     {"d.vcf", member("Real Ltd")}, {"e.vcf", noOrg}} << QStringList{"Real Ltd"};
        QTest::newRow("sorted ascending, case does not separate")
            << Files{{"a.vcf", member("zeta")}, {"b.vcf", member("Alpha")}, {"c.vcf", member("beta")}} << QStringList{"Alpha", "beta", "zeta"};
        QTest::newRow("2.1 card with quoted-printable company, group card spelled in another case")
            << Files{{"g.vcf", QByteArray(kGroupCard).replace("FN:Veltrick Clients", "FN:VELTRICK clients")}, {"m.vcf", qpOrg}}
            << QStringList{QString::fromUtf8("Étude S.A.")};
        // clang-format on
    }

    void clientNames()
    {
        QFETCH(Files, files);
        QFETCH(QStringList, expected);
        Rig rig;
        for (const auto& [name, text] : files)
            rig.folder.write(name, text);
        rig.sync.syncaddressbook2();
        QCOMPARE(rig.dialogs.messages, QStringList());
        QCOMPARE(rig.listFile(), expected);
        QVERIFY(rig.host.access);
        QCOMPARE(rig.host.resets, 1);
    }

    void firstRunCreatesTheGroup()
    {
        Rig rig;
        rig.sync.syncaddressbook2();
        QCOMPARE(rig.dialogs.messages, QStringList{Tr::MWNewBookContacts + "\n\n" + Tr::MWNewBookContactsTxt + "\n\n" +
                                                   Tr::MWNewBookExtraTxt});
        QCOMPARE(rig.desktop.beeps, 1);
        QCOMPARE(rig.prefs.files.value(Rig::kListFile), QByteArray(2, '\0'));
        QVERIFY(rig.host.access);
        // The second run finds the group it made and says nothing.
        rig.sync.syncaddressbook2();
        QCOMPARE(rig.dialogs.messages.size(), 1);
        QCOMPARE(rig.folder.files().size(), 1);
    }

    void refusedAccessWritesNothing()
    {
        Rig rig;
        rig.folder.occupyWithFile();
        rig.sync.syncaddressbook2();
        QCOMPARE(rig.dialogs.messages, QStringList{Tr::MWAddressBookNoAccess + "\n\n" + Tr::MWAddressBookNoAccessTxt});
        QCOMPARE(rig.desktop.beeps, 1);
        QCOMPARE(rig.prefs.writes, 0);
        QCOMPARE(rig.host.resets, 0);
        QVERIFY(!rig.host.access);
        rig.sync.addClient(); // without access no sheet opens; an unexpected one would be an error
        QCOMPARE(rig.dialogs.errors, QStringList());
        QCOMPARE(rig.dialogs.modalsShown, QStringList());
    }

    void duplicateGroupsStopTheSync_data()
    {
        QTest::addColumn<bool>("accessBefore");
        QTest::newRow("never synced") << false;
        QTest::newRow("synced before") << true;
    }

    void duplicateGroupsStopTheSync()
    {
        QFETCH(bool, accessBefore);
        Rig rig;
        rig.folder.write(QStringLiteral("g1.vcf"), kGroupCard);
        rig.folder.write(
            QStringLiteral("g2.vcf"),
            QByteArray(kGroupCard).replace("Veltrick Clients", "veltrick CLIENTS").replace("UID:g1", "UID:g2"));
        rig.folder.write(QStringLiteral("m.vcf"), member("Acme"));
        rig.host.access = accessBefore;
        rig.sync._syncAddressBook_Action();
        QCOMPARE(rig.dialogs.messages,
                 QStringList{"WARNING: You have 2 groups in your Contacts named Veltrick Clients.\n\nContacts have not "
                             "been synced.\n\nTo sync your contacts, please remove the extra groups named Veltrick "
                             "Clients."});
        QCOMPARE(rig.desktop.beeps, 1);
        QCOMPARE(rig.prefs.writes, 0);
        QCOMPARE(rig.host.access, accessBefore);
        // The menu command reports in the status line all the same.
        QCOMPARE(rig.host.status, QStringList{Tr::MWUpdatedListTxt});
        QCOMPARE(rig.host.timer2Starts, 1);
    }

    void listFileWriteFailureIsReported()
    {
        Rig rig;
        rig.folder.write(QStringLiteral("m.vcf"), member("Acme"));
        rig.prefs.failWrites = true;
        rig.sync.syncaddressbook2();
        QCOMPARE(rig.dialogs.messages.size(), 1);
        QVERIFY(rig.dialogs.messages.first().startsWith(clients::ClientSync::kClientListWriteFail));
    }

    void addressaddRefuses_data()
    {
        QTest::addColumn<bool>("withNames");
        QTest::addColumn<QStringList>("fields"); // first, last, company
        QTest::addColumn<QString>("message");
        using A = clients::addressadd;
        // clang-format off
        QTest::newRow("all empty, names asked") << true << QStringList{"", "", ""} << A::kAAAddFirstNameTxt;
        QTest::newRow("last name missing") << true << QStringList{"Ann", "", "Acme"} << A::kAAAddLastNameTxt;
        QTest::newRow("company missing, names asked") << true << QStringList{"Ann", "Lee", ""} << A::kAAAddCompanyTxt;
        QTest::newRow("company missing") << false << QStringList{"", "", ""} << A::kAAAddCompanyTxt;
        // clang-format on
    }

    void addressaddRefuses()
    {
        QFETCH(bool, withNames);
        QFETCH(QStringList, fields);
        QFETCH(QString, message);
        Rig rig;
        rig.folder.write(QStringLiteral("g.vcf"), kGroupCard);
        clients::addressadd sheet(rig.book, rig.dialogs, rig.desktop, rig.sync);
        sheet.Open();
        sheet.CheckBox1 = withNames;
        sheet.CheckBox1_Action();
        sheet.nameOne.Text = fields[0];
        sheet.nameTwo.Text = fields[1];
        sheet.nameCompany.Text = fields[2];
        sheet.PushButton1_Action();
        QCOMPARE(rig.dialogs.messages, QStringList{message});
        QCOMPARE(rig.desktop.beeps, 1);
        QVERIFY(sheet.Visible);
        QCOMPARE(rig.folder.files(), QStringList{"g.vcf"});
    }

    void addClientThroughTheSheet()
    {
        Rig rig;
        rig.folder.write(QStringLiteral("g.vcf"), kGroupCard);
        rig.folder.write(QStringLiteral("m.vcf"), member("Zebra Co"));
        rig.dialogs.expectModal(clients::addressadd::kFormName, [](platform::ModalForm& form) {
            auto& sheet = static_cast<clients::addressadd&>(form);
            QCOMPARE(sheet.groupInfo, clients::addressadd::kAATitleTxtML);
            QCOMPARE(sheet.groupnumber, 0);
            QVERIFY(!sheet.nameOne.Enabled && sheet.nameCompany.Enabled);
            sheet.CheckBox1 = true;
            sheet.CheckBox1_Action();
            sheet.nameOne.Text = QStringLiteral("Ann");
            sheet.CheckBox1 = false; // unticking empties and locks the names again
            sheet.CheckBox1_Action();
            QVERIFY(sheet.nameOne.Text.isEmpty() && !sheet.nameOne.Enabled);
            sheet.nameCompany.Text = QStringLiteral("Acme, Inc.");
            sheet.PushButton1_Action();
            QVERIFY(!sheet.Visible);
        });
        rig.sync.addClient();
        QVERIFY(rig.dialogs.scriptDone());
        QCOMPARE(rig.dialogs.errors, QStringList());
        QCOMPARE(rig.listFile(), (QStringList{"Acme, Inc.", "Zebra Co"}));
        QCOMPARE(rig.host.refreshes, 1);
        QVERIFY(rig.folder.read(QStringLiteral("g.vcf")).contains("MEMBER:urn:uuid:"));
    }
};

QTEST_GUILESS_MAIN(TestClientSync)
#include "test_clientsync.moc"

#include "clients/vcard.h"
#include "clients/vcardfolder.h"
#include "clients/vcardstore.h"

#include <QTest>

#include <unistd.h>

using Files = QList<QPair<QString, QByteArray>>;
using platform::AddressBookContact;
using platform::AddressBookGroup;

namespace
{

QByteArray contact(const QByteArray& uid, const QByteArray& org, const QByteArray& extra = {})
{
    return "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:" + uid + "\r\nN:Doe;Jo;;;\r\nFN:Jo Doe\r\nORG:" + org + "\r\n" + extra +
           "END:VCARD\r\n";
}

const QByteArray kAppleGroup = "BEGIN:VCARD\r\nVERSION:3.0\r\nPRODID:-//Apple Inc.//AddressBook//EN\r\n"
                               "N:Veltrick Clients\r\nFN:Veltrick Clients\r\nX-ADDRESSBOOKSERVER-KIND:group\r\n"
                               "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:a1b2c3d4-0000-4000-8000-00000000000a-ABSPlugin\r\n"
                               "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:A1B2C3D4-0000-4000-8000-00000000000B\r\n"
                               "UID:0E1C0000-AAAA-4BBB-8CCC-DDDDDDDDDDDD\r\nEND:VCARD\r\n";
const QByteArray kV4Group = "BEGIN:VCARD\r\nVERSION:4.0\r\nKIND:group\r\nFN:Veltrick Clients\r\n"
                            "UID:urn:uuid:99999999-0000-4000-8000-000000000001\r\n"
                            "MEMBER:urn:uuid:A1B2C3D4-0000-4000-8000-00000000000A\r\nEND:VCARD\r\n";

QString companies(const QList<AddressBookContact>& contacts)
{
    QStringList names;
    std::transform(contacts.begin(), contacts.end(), std::back_inserter(names),
                   [](const auto& c) { return c.CompanyName; });
    return names.join(QLatin1Char('|'));
}

} // namespace

class TestVCardStore : public QObject
{
    Q_OBJECT

private slots:
    void groupsAndMembers_data()
    {
        QTest::addColumn<Files>("files");
        QTest::addColumn<QStringList>("groups");
        QTest::addColumn<QString>("members"); // companies of the group "Veltrick Clients", folder order

        const Files people{{"a.vcf", contact("A1B2C3D4-0000-4000-8000-00000000000A", "Acme")},
                           {"b.vcf", contact("a1b2c3d4-0000-4000-8000-00000000000b", "Beta")},
                           {"c.vcf", contact("C", "Not a member")}};
        const auto member = [](const char* uid, const char* org, const char* category = "Veltrick Clients") {
            return contact(uid, org, QByteArray("CATEGORIES:") + category + "\r\n");
        };
        // clang-format off
        QTest::newRow("Apple group, member with suffix, UIDs in either case")
            << (Files{{"group.vcf", kAppleGroup}} + people) << QStringList{"Veltrick Clients"} << "Acme|Beta";
        QTest::newRow("vCard 4 group") << (Files{{"g.vcf", kV4Group}} + people) << QStringList{"Veltrick Clients"} << "Acme";
        QTest::newRow("categories, one group per name whatever the case")
            << Files{{"a.vcf", member("1", "One", "Veltrick Clients,Friends")}, {"b.vcf", member("2", "Two", "friends")},
                     {"c.vcf", member("3", "Three", "VELTRICK CLIENTS")}}
            << QStringList{"Veltrick Clients", "Friends"} << "One|Three";
        QTest::newRow("group card and category of the same name are one group")
            << (Files{{"g.vcf", kV4Group}, {"d.vcf", member("D", "Delta", "veltrick clients")}} + people)
            << QStringList{"Veltrick Clients"} << "Acme|Delta";
        QTest::newRow("two group cards of the same name stay two")
            << Files{{"g1.vcf", kV4Group}, {"g2.vcf", kAppleGroup}} << QStringList{"Veltrick Clients", "Veltrick Clients"} << "";
        QTest::newRow("subfolders read; temporary and extensionless files passed over")
            << Files{{"book/sub/x.vcf", member("1", "Deep")}, {"y.vcf.tmp", member("2", "Temp")},
                     {"README", member("3", "NoExt")}, {"z.vcard", member("4", "Other extension")}}
            << QStringList{"Veltrick Clients"} << "Deep|Other extension";
        // clang-format on
    }

    void groupsAndMembers()
    {
        QFETCH(Files, files);
        QFETCH(QStringList, groups);
        QFETCH(QString, members);
        testing::VCardFolder folder;
        for (const auto& [name, text] : files)
            folder.write(name, text);
        storage::DiskFileStore disk;
        clients::VCardStore store(disk, folder.path());

        const auto found = store.Groups();
        QStringList names;
        std::transform(found.begin(), found.end(), std::back_inserter(names), [](const auto& g) { return g.Name; });
        QCOMPARE(names, groups);
        QCOMPARE(companies(store.GroupContacts(found.first())), members);
    }

    void newGroupIsAVersion4CardWrittenWhole()
    {
        testing::VCardFolder folder; // the folder itself does not exist yet
        testing::FailingDiskStore disk;
        clients::VCardStore store(disk, folder.path());
        QVERIFY(store.Groups().isEmpty());

        AddressBookGroup group{QStringLiteral("Veltrick Clients"), {}};
        disk.failWrites = true;
        store.Add(group);
        QVERIFY(!store.Save().ok());
        QVERIFY(folder.files().isEmpty());

        disk.failWrites = false;
        store.Add(group);
        QVERIFY(store.Save().ok());
        const QStringList files = folder.files();
        QCOMPARE(files.size(), 1); // no temporary left behind
        const auto cards = clients::parseVCards(folder.read(files.first()));
        QCOMPARE(cards.size(), 1);
        QCOMPARE(cards[0].version, QStringLiteral("4.0"));
        QCOMPARE(cards[0].text(QStringLiteral("KIND")), QStringLiteral("group"));
        QCOMPARE(cards[0].text(QStringLiteral("FN")), QStringLiteral("Veltrick Clients"));
        QVERIFY(cards[0].text(QStringLiteral("UID")).startsWith(QLatin1String("urn:uuid:")));
        QCOMPARE(store.Groups().size(), 1);
    }

    void addedContactJoinsGroupCard_data()
    {
        QTest::addColumn<QByteArray>("groupCard");
        QTest::addColumn<QByteArray>("memberProperty"); // empty: the group is named in CATEGORIES only
        QTest::addColumn<QString>("collection");        // where the group lives; the new card must go there
        QTest::newRow("Apple") << kAppleGroup << QByteArray("X-ADDRESSBOOKSERVER-MEMBER") << QString();
        QTest::newRow("vCard 4, in a collection") << kV4Group << QByteArray("MEMBER") << QStringLiteral("default/");
        QTest::newRow("categories, in a collection")
            << contact("R", "Member", "CATEGORIES:Veltrick Clients\r\n") << QByteArray() << QStringLiteral("default/");
    }

    void addedContactJoinsGroupCard()
    {
        QFETCH(QByteArray, groupCard);
        QFETCH(QByteArray, memberProperty);
        QFETCH(QString, collection);
        // An export with LF line ends: the group card sits between two other cards.
        QByteArray shared = contact("P", "Before") + groupCard + contact("Q", "After");
        shared.replace("\r\n", "\n");
        testing::VCardFolder folder;
        folder.write(collection + QStringLiteral("export.vcf"), shared);
        storage::DiskFileStore disk;
        clients::VCardStore store(disk, folder.path());

        const auto groups = store.Groups();
        QCOMPARE(groups.size(), 1);
        AddressBookContact person{QStringLiteral("Ann"), QStringLiteral("Lee"), QStringLiteral("Lee; Sons, Ltd"), {}};
        store.Add(person);
        store.GroupAdd(groups[0], person);
        QVERIFY(store.Save().ok());

        const QByteArray memberLine = memberProperty + ":urn:uuid:" + person.id.toLatin1() + "\n";
        const qsizetype at = shared.indexOf("END:VCARD", shared.indexOf("KIND:group"));
        QCOMPARE(folder.read(collection + QStringLiteral("export.vcf")),
                 memberProperty.isEmpty() ? shared : QByteArray(shared).insert(at, memberLine));

        const auto cards = clients::parseVCards(folder.read(collection + person.id + QStringLiteral(".vcf")));
        QCOMPARE(cards.size(), 1);
        QCOMPARE(cards[0].version, QStringLiteral("4.0"));
        QCOMPARE(cards[0].components(QStringLiteral("N")).mid(0, 2), (QStringList{"Lee", "Ann"}));
        QCOMPARE(cards[0].text(QStringLiteral("FN")), QStringLiteral("Ann Lee"));
        QCOMPARE(cards[0].listValues(QStringLiteral("CATEGORIES")), QStringList{"Veltrick Clients"});
        const QString members = companies(store.GroupContacts(store.Groups().value(0)));
        QVERIFY(members.split(QLatin1Char('|')).contains(QStringLiteral("Lee; Sons, Ltd")));
    }

    void unreadableFolder()
    {
        if (::geteuid() == 0)
            QSKIP("root reads a folder whatever its permissions");
        testing::VCardFolder folder;
        folder.write(QStringLiteral("a.vcf"), contact("1", "Acme", "CATEGORIES:Veltrick Clients\r\n"));
        QFile::setPermissions(folder.path(), QFileDevice::Permissions());
        storage::DiskFileStore disk;
        clients::VCardStore store(disk, folder.path());
        const bool empty = store.Groups().isEmpty();
        AddressBookGroup group{QStringLiteral("Veltrick Clients"), {}};
        store.Add(group);
        const bool saved = store.Save().ok();
        QFile::setPermissions(folder.path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        QVERIFY(empty);
        QVERIFY(!saved);
    }
};

QTEST_GUILESS_MAIN(TestVCardStore)
#include "test_vcardstore.moc"

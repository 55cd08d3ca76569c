// vCards, the address book folder, the client list synced from its group, and the single-client view.
#include "clients/addressadd.h"
#include "clients/clientlist.h"
#include "clients/clientsync.h"
#include "clients/texts.h"
#include "clients/vcard.h"
#include "clients/vcardstore.h"
#include "support/listfixture.h"
#include "support/syncrig.h"

#include <QTemporaryDir>
#include <QTest>

using namespace core;
using Files = QList<QPair<QString, QByteArray>>;
using platform::AddressBookContact;
using platform::AddressBookGroup;
using testing::ListFixture;

namespace
{
QByteArray card(const QByteArray& version, const QByteArray& body)
{
    return "BEGIN:VCARD\r\nVERSION:" + version + "\r\n" + body + "\r\nEND:VCARD\r\n";
}

QByteArray contact(const QByteArray& uid, const QByteArray& org, const QByteArray& extra = {})
{
    return card("3.0", "UID:" + uid + "\r\nN:Doe;Jo;;;\r\nFN:Jo Doe\r\nORG:" + org + extra);
}

// A contact in the group "Veltrick Clients", or in the categories given, of this company.
QByteArray member(const QByteArray& org, const QByteArray& categories = "Veltrick Clients")
{
    return contact(org, org + ";Dept", "\r\nCATEGORIES:" + categories);
}

const QByteArray kAppleGroup = "BEGIN:VCARD\r\nVERSION:3.0\r\nPRODID:-//Apple Inc.//AddressBook//EN\r\n"
                               "N:Veltrick Clients\r\nFN:Veltrick Clients\r\nX-ADDRESSBOOKSERVER-KIND:group\r\n"
                               "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:a1b2c3d4-0000-4000-8000-00000000000a-ABSPlugin\r\n"
                               "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:A1B2C3D4-0000-4000-8000-00000000000B\r\n"
                               "UID:0E1C0000-AAAA-4BBB-8CCC-DDDDDDDDDDDD\r\nEND:VCARD\r\n";
const QByteArray kV4Group = "BEGIN:VCARD\r\nVERSION:4.0\r\nKIND:group\r\nFN:Veltrick Clients\r\n"
                            "UID:urn:uuid:99999999-0000-4000-8000-000000000001\r\n"
                            "MEMBER:urn:uuid:A1B2C3D4-0000-4000-8000-00000000000A\r\nEND:VCARD\r\n";
const QByteArray kGroupCard = card("4.0", "KIND:group\r\nFN:Veltrick Clients\r\nUID:g1");

QString companies(const QList<AddressBookContact>& contacts)
{
    QStringList names;
    for (const AddressBookContact& c : contacts)
        names << c.CompanyName;
    return names.join(QLatin1Char('|'));
}

// An address book folder of its own, and a sync of it into a client list file in memory.
struct Rig : QTemporaryDir, testing::SyncRig
{
    Rig() : SyncRig(path()) {}
    QString path(const QString& name = {}) const
    {
        return QTemporaryDir::path() + "/contacts" + (name.isEmpty() ? "" : "/" + name);
    }
    void write(const Files& files) const
    {
        for (const auto& [name, text] : files) {
            QDir().mkpath(QFileInfo(path(name)).absolutePath());
            QFile out(path(name));
            QVERIFY(out.open(QIODevice::WriteOnly) && out.write(text) == text.size());
        }
    }
    QByteArray read(const QString& name) const
    {
        QFile in(path(name));
        return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray();
    }
    // The sheet of a new client, filled and saved: names asked when either is given.
    void addClient(const QString& first, const QString& last, const QString& company)
    {
        clients::addressadd sheet(book, dialogs, desktop, sync);
        sheet.Open();
        sheet.CheckBox1 = !first.isEmpty() || !last.isEmpty();
        sheet.CheckBox1_Action();
        std::tie(sheet.nameOne.Text, sheet.nameTwo.Text, sheet.nameCompany.Text) = std::tie(first, last, company);
        sheet.PushButton1_Action();
        sheetVisible = sheet.Visible;
    }
    bool sheetVisible = false;
};
} // namespace

class TestClients : public QObject
{
    Q_OBJECT

    std::unique_ptr<ListFixture> f;

    void threeClients()
    {
        f = std::make_unique<ListFixture>();
        f->writeClients({QStringLiteral("Zed"), QStringLiteral("Acme"), QStringLiteral("Bolt & Nut")});
        f->add(f->day(), QStringLiteral("J0"), QStringLiteral("Bolt & Nut"), 60);
        f->add(f->day(), QStringLiteral("J1"), QStringLiteral("acme"), 30, QStringLiteral("n1")).budget = kBudgetOver;
        f->add(f->day(-3), QStringLiteral("J2"), QStringLiteral("Other"), 15);
        f->add(f->day(-2), QStringLiteral("J3"), QStringLiteral("ACME"), 45);
        f->w.setListIndex(2);
        f->pickClient(QStringLiteral("Acme"));
    }

private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }

    void values_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("property");
        QTest::addColumn<QString>("expected"); // the first ';' component; CATEGORIES: the list joined by '|'
        auto row = [](const char* tag, const QByteArray& bytes, const char* property, const char* expected) {
            QTest::newRow(tag) << bytes << QString::fromLatin1(property) << QString::fromUtf8(expected);
        };
        // clang-format off
        row("folded with blank, LF ends", QByteArray("BEGIN:VCARD\nVERSION:3.0\nORG:Very Long Company Na\n me Ltd\nEND:VCARD\n"), "ORG", "Very Long Company Name Ltd");
        row("folded with tab, twice", card("4.0", "ORG:Nor\r\n\tth\r\n  Star"), "ORG", "North Star");
        row("fold inside a UTF-8 character", card("4.0", "ORG:M\xC3\r\n \xBCller"), "ORG", "Müller");
        row("escaped comma and semicolon stay in the first component", card("4.0", "ORG:Smith\\, Jones\\; Co;Sales"), "ORG", "Smith, Jones; Co");
        row("escaped backslash before separator", card("3.0", "ORG:Back\\\\;Unit"), "ORG", "Back\\");
        row("newline escape", card("3.0", "ORG:Line\\nTwo"), "ORG", "Line\nTwo");
        row("2.1 quoted-printable Latin-1 with soft breaks", card("2.1", "N:Lee;Ann\r\nORG;CHARSET=ISO-8859-1;ENCODING=QUOTED-PRINTABLE:M=FCller =\r\nGmb=\r\nH;Sales"), "ORG", "Müller GmbH");
        row("2.1 bare QUOTED-PRINTABLE, UTF-8", card("2.1", "ORG;CHARSET=UTF-8;QUOTED-PRINTABLE:Caf=C3=A9 Noir"), "ORG", "Café Noir");
        row("2.1 raw bytes in the declared charset", card("2.1", "ORG;CHARSET=ISO-8859-1:Sch\xF6n AG"), "ORG", "Schön AG");
        row("2.1 keeps a backslash that escapes nothing", card("2.1", "ORG:C:\\new\\; ltd"), "ORG", "C:\\new; ltd");
        row("undeclared Windows charset is not turned into replacement marks", card("3.0", "ORG:Caf\xE9 \x93Quoted\x94"), "ORG", "Café “Quoted”");
        row("quoted parameter holding colon and semicolon", card("4.0", "ORG;X-LABEL=\"a:b;c\":Acme"), "ORG", "Acme");
        row("property group prefix, lower-case name", card("3.0", "item1.org:acme"), "ORG", "acme");
        row("CR line ends", QByteArray("BEGIN:VCARD\rVERSION:3.0\rORG:Old Mac\rEND:VCARD\r"), "ORG", "Old Mac");
        row("categories, escaped comma, two lines", card("3.0", "CATEGORIES:Veltrick Clients,Friends\\, Old\r\nCATEGORIES:Work"), "CATEGORIES", "Veltrick Clients|Friends, Old|Work");
        // clang-format on
        const QString text = QString::fromUtf8(card("3.0", "ORG:Ångström"));
        row("UTF-16 file with byte order mark",
            "\xFF\xFE" + QByteArray(reinterpret_cast<const char*>(text.utf16()), text.size() * 2), "ORG", "Ångström");
        // Half a surrogate pair from a wide charset would turn into something else at every write.
        QTest::newRow("UTF-16 charset over bytes not of it")
            << card("2.1", QByteArray("ORG;CHARSET=UTF-16BE:\xD8\x00\x41\x42", 25)) << "ORG"
            << QStringLiteral("?\u4142");
    }
    void values()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, property);
        QFETCH(QString, expected);
        const auto cards = clients::parseVCards(bytes);
        QCOMPARE(cards.size(), 1);
        QCOMPARE(property == QLatin1String("CATEGORIES") ? cards[0].listValues(property).join(QLatin1Char('|'))
                                                         : cards[0].components(property).value(0),
                 expected);
    }
    // A written line escapes what would split it, folds at 75 octets without cutting a character, reads back.
    void writtenLinesReadBack()
    {
        QCOMPARE(clients::escapeValue(QStringLiteral("A, B; C\\D\r\nE\n")), QStringLiteral("A\\, B\\; C\\\\D\\nE\\n"));
        for (const QString& text : {QStringLiteral("Acme"), QStringLiteral("A, B; C\\D\nE"),
                                    QString::fromUtf8("Ünïcødé Straße 😀 ").repeated(12)}) {
            const QByteArray line = clients::foldedLine("ORG:" + clients::escapeValue(text) + ";Dept");
            for (const QByteArray& physical : line.split('\n'))
                QVERIFY2(physical.size() <= 76, physical.constData()); // 75 octets and the CR
            const auto cards = clients::parseVCards("BEGIN:VCARD\r\nVERSION:4.0\r\n" + line + "END:VCARD\r\n");
            QCOMPARE(cards.value(0).components(QStringLiteral("ORG")), (QStringList{text, QStringLiteral("Dept")}));
        }
    }
    void groupsAndMembers_data()
    {
        QTest::addColumn<Files>("files");
        QTest::addColumn<QStringList>("groups");
        QTest::addColumn<QString>("members"); // companies of the first group, folder order
        const Files people{{"a.vcf", contact("A1B2C3D4-0000-4000-8000-00000000000A", "Acme")},
                           {"b.vcf", contact("a1b2c3d4-0000-4000-8000-00000000000b", "Beta")},
                           {"c.vcf", contact("C", "Not a member")}};
        const QStringList one{"Veltrick Clients"};
        // clang-format off
        QTest::newRow("Apple group, member with suffix, UIDs in either case") << (Files{{"group.vcf", kAppleGroup}} + people) << one << "Acme|Beta";
        QTest::newRow("vCard 4 group") << (Files{{"g.vcf", kV4Group}} + people) << one << "Acme";
        QTest::newRow("categories, one group per name whatever the case")
            << Files{{"a.vcf", member("One", "Veltrick Clients,Friends")}, {"b.vcf", member("Two", "friends")},
                     {"c.vcf", member("Three", "VELTRICK CLIENTS")}} << QStringList{"Veltrick Clients", "Friends"} << "One|Three";
        QTest::newRow("group card and category of the same name are one group")
            << (Files{{"g.vcf", kV4Group}, {"d.vcf", member("Delta", "veltrick clients")}} + people) << one << "Acme|Delta";
        QTest::newRow("subfolders read; temporary and extensionless files passed over")
            << Files{{"book/sub/x.vcf", member("Deep")}, {"y.vcf.tmp", member("Temp")},
                     {"README", member("NoExt")}, {"z.vcard", member("Other extension")}} << one << "Deep|Other extension";
        // clang-format on
    }
    void groupsAndMembers()
    {
        QFETCH(Files, files);
        QFETCH(QStringList, groups);
        QFETCH(QString, members);
        Rig rig;
        rig.write(files);
        const auto found = rig.book.Groups();
        QStringList names;
        for (const auto& g : found)
            names << g.Name;
        QCOMPARE(names, groups);
        QCOMPARE(companies(rig.book.GroupContacts(found.first())), members);
    }
    // A new contact is a card beside its group; a group card gets a member line and its file no other change.
    void addedContactJoinsGroupCard_data()
    {
        QTest::addColumn<QByteArray>("groupCard");
        QTest::addColumn<QByteArray>("memberProperty"); // empty: the group is named in CATEGORIES only
        QTest::addColumn<QString>("collection");
        QTest::newRow("Apple") << kAppleGroup << QByteArray("X-ADDRESSBOOKSERVER-MEMBER") << QString();
        QTest::newRow("vCard 4, in a collection") << kV4Group << QByteArray("MEMBER") << QStringLiteral("default/");
        QTest::newRow("categories, in a collection") << member("Member") << QByteArray() << QStringLiteral("default/");
    }
    void addedContactJoinsGroupCard()
    {
        QFETCH(QByteArray, groupCard);
        QFETCH(QByteArray, memberProperty);
        QFETCH(QString, collection);
        QByteArray shared = contact("P", "Before") + groupCard + contact("Q", "After");
        shared.replace("\r\n", "\n");
        Rig rig;
        rig.write({{collection + "export.vcf", shared}});
        const auto groups = rig.book.Groups();
        QCOMPARE(groups.size(), 1);
        AddressBookContact person{QStringLiteral("Ann"), QStringLiteral("Lee"), QStringLiteral("Lee; Sons, Ltd"), {}};
        rig.book.Add(person);
        rig.book.GroupAdd(groups[0], person);
        QVERIFY(rig.book.Save().ok());
        const QByteArray memberLine = memberProperty + ":urn:uuid:" + person.id.toLatin1() + "\n";
        const qsizetype at = shared.indexOf("END:VCARD", shared.indexOf("KIND:group"));
        QCOMPARE(rig.read(collection + "export.vcf"),
                 memberProperty.isEmpty() ? shared : QByteArray(shared).insert(at, memberLine));
        const auto cards = clients::parseVCards(rig.read(collection + person.id + ".vcf"));
        QCOMPARE(cards.size(), 1);
        QCOMPARE(cards[0].version + cards[0].text(QStringLiteral("FN")), QStringLiteral("4.0Ann Lee"));
        QCOMPARE(cards[0].components(QStringLiteral("N")).mid(0, 2), (QStringList{"Lee", "Ann"}));
        QCOMPARE(cards[0].listValues(QStringLiteral("CATEGORIES")), QStringList{"Veltrick Clients"});
        QVERIFY(companies(rig.book.GroupContacts(rig.book.Groups().value(0))).split(u'|').contains("Lee; Sons, Ltd"));
    }
    // One client per company name in any case, first spelling kept, only of group members, sorted caselessly.
    void clientNames_data()
    {
        QTest::addColumn<Files>("files");
        QTest::addColumn<QStringList>("expected");
        const QByteArray noOrg = card("3.0", "N:Smith;Kim;;;\r\nCATEGORIES:Veltrick Clients");
        const QByteArray qpOrg = card("2.1", "N:Lee;Ann\r\nORG;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:=C3=89tude =\r\n"
                                             "S.A.\r\nCATEGORIES:Veltrick Clients");
        // clang-format off
        QTest::newRow("one per name") << Files{{"a.vcf", member("Acme")}, {"b.vcf", member("ACME")}, {"c.vcf", member("acme")}} << QStringList{"Acme"};
        QTest::newRow("no company, missing value, non-members")
            << Files{{"a.vcf", member("")}, {"b.vcf", member("Missing Value")}, {"c.vcf", member("Outsider", "Friends")},
                     {"d.vcf", member("Real Ltd")}, {"e.vcf", noOrg}} << QStringList{"Real Ltd"};
        QTest::newRow("sorted") << Files{{"a.vcf", member("zeta")}, {"b.vcf", member("Alpha")}, {"c.vcf", member("beta")}} << QStringList{"Alpha", "beta", "zeta"};
        QTest::newRow("2.1 quoted-printable company, group card in another case")
            << Files{{"g.vcf", QByteArray(kGroupCard).replace("FN:Veltrick Clients", "FN:VELTRICK clients")}, {"m.vcf", qpOrg}}
            << QStringList{QString::fromUtf8("Étude S.A.")};
        // clang-format on
    }
    void clientNames()
    {
        QFETCH(Files, files);
        QFETCH(QStringList, expected);
        Rig rig;
        rig.write(files);
        rig.sync.syncaddressbook2();
        QCOMPARE(rig.dialogs.messages, QStringList());
        QCOMPARE(rig.listFile(), expected);
        QVERIFY(rig.host.access && rig.host.resets == 1);
    }
    // The first sync makes the group and says so; the next finds it, and says only that the list was not written.
    void firstSyncCreatesTheGroup()
    {
        Rig rig;
        rig.sync.syncaddressbook2();
        QCOMPARE(rig.dialogs.messages, QStringList{Tr::MWNewBookContacts + "\n\n" + Tr::MWNewBookContactsTxt + "\n\n" +
                                                   Tr::MWNewBookExtraTxt});
        QVERIFY(rig.desktop.beeps == 1 && rig.host.access);
        QCOMPARE(rig.prefs.files.value(Rig::kListFile), QByteArray(2, '\0'));
        rig.prefs.failWrites = true;
        rig.sync.syncaddressbook2();
        QCOMPARE(rig.dialogs.messages.size(), 2);
        QVERIFY(rig.dialogs.messages.last().startsWith(clients::ClientSync::kClientListWriteFail));
        QCOMPARE(QDir(rig.path()).entryList(QDir::Files).size(), 1);
    }
    // A folder that can be neither read nor made: said, nothing written, and no sheet to add a client.
    void refusedAccessWritesNothing()
    {
        Rig rig;
        rig.write({{"", "not a folder"}}); // a plain file where the folder should be
        rig.sync.addClient();              // an unexpected sheet would be an error of the dialogs
        QCOMPARE(rig.dialogs.messages, QStringList{Tr::MWAddressBookNoAccess + "\n\n" + Tr::MWAddressBookNoAccessTxt});
        QVERIFY(rig.desktop.beeps == 1 && rig.prefs.writes == 0 && rig.host.resets == 0 && !rig.host.access);
        QCOMPARE(rig.dialogs.errors + rig.dialogs.modalsShown, QStringList());
    }
    // Two groups of the name stop the sync before it grants access; the menu command still reports.
    void duplicateGroupsStopTheSync()
    {
        Rig rig;
        rig.write(
            {{"g1.vcf", kGroupCard},
             {"g2.vcf", QByteArray(kGroupCard).replace("Veltrick Clients", "veltrick CLIENTS").replace("g1", "g2")},
             {"m.vcf", member("Acme")}});
        rig.sync._syncAddressBook_Action();
        QCOMPARE(rig.dialogs.messages.size(), 1);
        QVERIFY(rig.dialogs.messages[0].startsWith("WARNING: You have 2 groups in your Contacts named Veltrick"));
        QVERIFY(rig.desktop.beeps == 1 && rig.prefs.writes == 0 && !rig.host.access);
        QCOMPARE(rig.host.status.join(u'|') + QString::number(rig.host.timer2Starts), Tr::MWUpdatedListTxt + "1");
    }
    // The sheet refuses a missing field and stays; a new client is in the group, the list file and the menu.
    void addressadd_data()
    {
        QTest::addColumn<QStringList>("fields"); // first, last, company
        QTest::addColumn<QString>("message");
        using A = clients::addressadd;
        QTest::newRow("first name missing") << QStringList{"", "Lee", ""} << A::kAAAddFirstNameTxt;
        QTest::newRow("last name missing") << QStringList{"Ann", "", "Acme"} << A::kAAAddLastNameTxt;
        QTest::newRow("company missing, names given") << QStringList{"Ann", "Lee", ""} << A::kAAAddCompanyTxt;
        QTest::newRow("company missing") << QStringList{"", "", ""} << A::kAAAddCompanyTxt;
        QTest::newRow("added") << QStringList{"", "", "Acme, Inc."} << QString();
    }
    void addressadd()
    {
        QFETCH(QStringList, fields);
        QFETCH(QString, message);
        Rig rig;
        rig.write({{"g.vcf", kGroupCard}, {"m.vcf", member("Zebra Co")}});
        rig.addClient(fields[0], fields[1], fields[2]);
        const bool added = message.isEmpty();
        QCOMPARE(rig.dialogs.messages, added ? QStringList{} : QStringList{message});
        QVERIFY(rig.desktop.beeps == !added && rig.sheetVisible == !added && rig.host.refreshes == added);
        QCOMPARE(rig.listFile().join(u'|'), added ? "Acme, Inc.|Zebra Co" : "");
        QCOMPARE(rig.read(QStringLiteral("g.vcf")).contains("MEMBER:urn:uuid:"), added);
    }
    // A client's rows alone, any case, linked to the whole list; selections follow; a new client, its first row.
    void pickingAClientShowsItsRowsAlone()
    {
        threeClients();
        QStringList picker;
        for (int r = 0; r < f->view.clientlist2RowCount(); ++r)
            picker << f->view.clientlist2Row(r);
        QCOMPARE(picker, (QStringList{Tr::MWClientListf, "Zed", "Acme", "Bolt & Nut"})); // the file's order
        QCOMPARE(f->w.LB2ClientName, QStringLiteral("Acme"));
        QCOMPARE(ListFixture::jobs(f->w.ListBox2), (QStringList{"J1", "J3"}));
        const JobRow& copy = f->w.ListBox2.row(0);
        QCOMPARE(copy.cell(CellLink) + copy.note + copy.budget, QStringLiteral("1n1")); // the mark worked out again
        for (int i = 0; i < f->w.ListBox1.ListCount(); ++i)
            QCOMPARE(f->w.ListBox1.Cell(i, CellLink), QString::number(i));
        QVERIFY(f->w.ListBox2Ctl.visible && f->w.ListBox2Ctl.enabled && !f->w.ListBox1Ctl.enabled);
        QVERIFY(f->w.listboxGray && f->w.toplist && f->view.dragbarVisible() && f->w.runButton.enabled);
        QCOMPARE(std::pair(f->w.ListBox2.ListIndex, f->w.ListBox1.ListIndex), std::pair(0, 1));
        QVERIFY(f->hooks.budgetcheck2s >= 2); // every row of the view was visited
        QCOMPARE(f->w.runtotal, QStringLiteral("List Totals - Time: 01:15, Today: 00:30, Entries: 02"));
        f->view.setListBox2Index(1);
        QCOMPARE(f->w.ListBox1.ListIndex, 3);
        f->w.ListBox1.row(3).setCell(CellProject, QStringLiteral("changed")); // as the job dialog writes it
        f->view.rebuildKeepingIndex();
        QCOMPARE(std::pair(f->w.ListBox2.ListIndex, f->w.ListBox1.ListIndex), std::pair(1, 3));
        QCOMPARE(f->w.ListBox2.row(1).cell(CellProject), QStringLiteral("changed"));
        f->view.setListBox2Index(-1);
        QVERIFY(f->w.ListBox1.ListIndex == -1 && !f->w.runButton.enabled);
        std::swap(f->w.ListBox1.row(2), f->w.ListBox1.row(3)); // rows moved under the view keep their links
        f->view.setListBox2Index(1);
        QCOMPARE(f->w.ListBox1.ListIndex, 2);
        f->pickClient(QStringLiteral("Bolt & Nut"));
        QCOMPARE(ListFixture::jobs(f->w.ListBox2), QStringList{"J0"});
        QCOMPARE(std::pair(f->w.ListBox2.ListIndex, f->w.ListBox1.ListIndex), std::pair(0, 0));
        f->pickClient(QStringLiteral("Zed")); // nobody's rows
        QVERIFY(f->w.ListBox2.ListCount() == 0 && f->w.ListBox1.ListIndex == -1 && !f->w.runButton.enabled);
    }
    // Back on "All Clients" by a pick, a close or a sync, the view ends, but only for a timesheet with a file.
    void allClientsRestoresTheWholeList()
    {
        for (const QString how : {"pick", "collapse", "sync", "unsaved"}) {
            threeClients();
            f->w.xpath = how == "unsaved" ? QString() : QStringLiteral("/docs/a.vlk");
            if (how == "collapse")
                f->view.clientlist2_CollapseRow();
            else if (how == "sync")
                f->view.clientlist2_Open();
            else
                f->view.setClientlist2Index(0);
            QCOMPARE((QList<bool>{f->w.ListBox2Ctl.visible, f->w.toplist, f->view.dragbarVisible(), f->w.listboxGray}),
                     QList<bool>(4, how == "unsaved"));
            if (how == "unsaved")
                continue;
            QVERIFY(f->w.ListBox1Ctl.enabled && f->w.ListBox1ScrollBar);
            QCOMPARE(f->w.ListBox1.ListIndex, 0);
            QVERIFY(f->w.runtotal.endsWith(QStringLiteral("Entries: 04")));
            QCOMPARE(std::pair(f->view.clientlist2ListIndex(), f->view.clientlist2RowCount()),
                     std::pair(0, how == "pick" ? 4 : 1));
        }
    }
};

QTEST_GUILESS_MAIN(TestClients)
#include "test_clients.moc"

#include "clients/vcard.h"

#include <QTest>

using clients::parseVCards;

namespace
{
QByteArray card(const QByteArray& version, const QByteArray& body)
{
    return "BEGIN:VCARD\r\nVERSION:" + version + "\r\n" + body + "\r\nEND:VCARD\r\n";
}
} // namespace

class TestVCard : public QObject
{
    Q_OBJECT

private slots:
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
        const QString utf16Text =
            QStringLiteral("BEGIN:VCARD\r\nVERSION:3.0\r\nORG:\u00C5ngstr\u00F6m\r\nEND:VCARD\r\n");
        QByteArray utf16("\xFF\xFE");
        utf16.append(reinterpret_cast<const char*>(utf16Text.utf16()), utf16Text.size() * 2);
        QTest::newRow("UTF-16 file with byte order mark") << utf16 << "ORG" << QString::fromUtf8("Ångström");
        // Half a surrogate pair from a wide charset would turn into something else at every write.
        const QByteArray halfPair("ORG;CHARSET=UTF-16BE:\xD8\x00\x41\x42", 25);
        QTest::newRow("UTF-16 charset over bytes not of it")
            << card("2.1", halfPair) << "ORG" << QStringLiteral("?\u4142");
    }

    void values()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, property);
        QFETCH(QString, expected);
        const auto cards = parseVCards(bytes);
        QCOMPARE(cards.size(), 1);
        if (property == QLatin1String("CATEGORIES"))
            QCOMPARE(cards[0].listValues(property).join(QLatin1Char('|')), expected);
        else
            QCOMPARE(cards[0].components(property).value(0), expected);
    }

    void severalCardsInOneFile()
    {
        const QByteArray bytes = "garbage before\r\n" + card("3.0", "ORG:First") +
                                 card("2.1", "ORG:Second\r\nAGENT:\r\nBEGIN:VCARD\r\nVERSION:2.1\r\nORG:Inner\r\n"
                                             "END:VCARD") +
                                 "BEGIN:VCARD\r\nVERSION:4.0\r\nORG:Cut short\r\n";
        const auto cards = parseVCards(bytes);
        QCOMPARE(cards.size(), 3);
        QCOMPARE(cards[0].text(QStringLiteral("ORG")), QStringLiteral("First"));
        QCOMPARE(cards[1].text(QStringLiteral("ORG")), QStringLiteral("Second")); // the agent's card stays inside
        QCOMPARE(cards[1].version, QStringLiteral("2.1"));
        QCOMPARE(cards[2].text(QStringLiteral("ORG")), QStringLiteral("Cut short"));
        QCOMPARE(cards[2].endLine, qsizetype(-1));
        QVERIFY(bytes.mid(cards[0].begin).startsWith("BEGIN:VCARD\r\nVERSION:3.0"));
        QVERIFY(bytes.mid(cards[1].endLine).startsWith("END:VCARD\r\nBEGIN:VCARD\r\nVERSION:4.0"));
    }

    void writtenLinesReadBack_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("short") << QStringLiteral("Acme");
        QTest::newRow("separators and line end") << QStringLiteral("A, B; C\\D\nE");
        QTest::newRow("long multibyte") << QString::fromUtf8("Ünïcødé Straße 😀 ").repeated(12);
    }

    void writtenLinesReadBack()
    {
        QFETCH(QString, text);
        const QByteArray line =
            clients::foldedLine(QStringLiteral("ORG:") + clients::escapeValue(text) + QStringLiteral(";Dept"));
        for (const QByteArray& physical : line.split('\n'))
            QVERIFY2(physical.size() <= 76, physical.constData()); // 75 octets and the CR
        const auto cards = parseVCards("BEGIN:VCARD\r\nVERSION:4.0\r\n" + line + "END:VCARD\r\n");
        QCOMPARE(cards.size(), 1);
        QCOMPARE(cards[0].components(QStringLiteral("ORG")), (QStringList{text, QStringLiteral("Dept")}));
    }
};

QTEST_GUILESS_MAIN(TestVCard)
#include "test_vcard.moc"

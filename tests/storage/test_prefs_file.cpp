#include "storage/prefs_file.h"

#include <QTest>

using core::AppPrefs;

namespace
{

// Text lengths of a file written from the defaults.
const QList<int> kDefaultLengths = {7, 19, 12, 0, 0, 0};

// Byte offset of the I16 field `number` (1-based) in a file whose six texts have the given lengths.
int offsetOf(int number, const QList<int>& textLengths = kDefaultLengths)
{
    static const QList<int> texts = {2, 4, 5, 17, 19, 21};
    int offset = 0;
    for (int field = 1, text = 0; field < number; ++field)
        offset += texts.contains(field) ? 1 + textLengths[text++] : 2;
    return offset;
}

void setI16(QByteArray& bytes, int offset, int value)
{
    bytes[offset] = char(quint16(value) >> 8);
    bytes[offset + 1] = char(value & 0xff);
}

int i16At(const QByteArray& bytes, int offset)
{
    return qint16(quint16(quint8(bytes[offset]) << 8 | quint8(bytes[offset + 1])));
}

AppPrefs changedPrefs()
{
    AppPrefs p;
    // clang-format off
    p.fontsize = 14; p.chosefont = QStringLiteral("DejaVu Sans"); p.dateon = false;
    p.iam = QStringLiteral("Gedruckt am – Überblick"); p.usrname = QStringLiteral("Zoë Müller");
    p.wintop = -20; p.expbr = true; p.expnt = false; p.red = 0;
    p.rmteops = QStringLiteral("/srv/team/VK8 Opps List"); p.nteon = true; p.netlook = true;
    p.lastdoc = QStringLiteral("/home/zoë/Week 47.vlk"); p.autopen = true; p.waittime = 15;
    p.statusquo = false; p.statusleft = -300; p.howmanyscreens = 2; p.statustrans = 20; p.dokflash = 0;
    p.killQuit = 0; p.presetwinWidth = 1200; p.exportFormat = QStringLiteral("txt"); p.updatetime = 3;
    p.xprtEncoding = 2;
    // clang-format on
    return p;
}

} // namespace

class TestPrefsFile : public QObject
{
    Q_OBJECT

private slots:
    void roundTrip_data()
    {
        QTest::addColumn<AppPrefs>("prefs");
        QTest::newRow("defaults") << AppPrefs();
        QTest::newRow("every kind changed") << changedPrefs();
    }
    void roundTrip()
    {
        QFETCH(AppPrefs, prefs);
        int fields = 0;
        // Read over other defaults, so that a field the reader skips cannot pass unnoticed.
        AppPrefs other = changedPrefs();
        other.fontsize = 99;
        other.usrname = QStringLiteral("someone else");
        const AppPrefs read =
            storage::decodePrefs(storage::encodePrefs(prefs), prefs == AppPrefs() ? other : AppPrefs(), &fields);
        QCOMPARE(fields, storage::kPrefsFieldCount);
        QCOMPARE(read, prefs);
    }

    void layoutKeepsReservedFields()
    {
        AppPrefs prefs;
        prefs.howmanyscreens = 7;
        prefs.xprtEncoding = 3;
        const QByteArray bytes = storage::encodePrefs(prefs);
        QCOMPARE(bytes.size(), offsetOf(44));
        QCOMPARE(bytes.mid(offsetOf(2), 8), QByteArray("\x07Verdana"));
        QCOMPARE(i16At(bytes, offsetOf(27)), 501); // statusleft, after reserved field 19
        QCOMPARE(i16At(bytes, offsetOf(29)), 7);   // howmanyscreens, after reserved field 28
        QCOMPARE(i16At(bytes, offsetOf(34)), 400); // winheight
        QCOMPARE(i16At(bytes, offsetOf(40)), 1);   // exportFormat "xls"
        QCOMPARE(i16At(bytes, offsetOf(42)), 3);   // xprtEncoding
        QCOMPARE(i16At(bytes, offsetOf(43)), 0);   // reserved, the last field
    }

    // Booleans are true only when stored as 1; exportFormat is "xls" only when stored as 1.
    void storedFlags_data()
    {
        QTest::addColumn<int>("stored");
        for (const int stored : {1, 0, 2, -1, 257})
            QTest::addRow("%d", stored) << stored;
    }
    void storedFlags()
    {
        QFETCH(int, stored);
        const bool one = stored == 1;
        QByteArray bytes = storage::encodePrefs(AppPrefs());
        for (const int field : {3, 22, 40}) // dateon (default true), autopen (default false), exportFormat
            setI16(bytes, offsetOf(field), stored);
        const AppPrefs read = storage::decodePrefs(bytes, AppPrefs());
        QCOMPARE(read.dateon, one);
        QCOMPARE(read.autopen, one);
        QCOMPARE(read.exportFormat, one ? QStringLiteral("xls") : QStringLiteral("txt"));
        const QByteArray rewritten = storage::encodePrefs(read);
        for (const int field : {3, 40})
            QCOMPARE(i16At(rewritten, offsetOf(field)), one ? 1 : 0);
    }

    void userNameIsMacRoman()
    {
        AppPrefs prefs;
        prefs.usrname = QStringLiteral("Zoë Ж");
        const QByteArray bytes = storage::encodePrefs(prefs);
        const int at = offsetOf(5, {7, 19, 0, 0, 0, 0});
        QCOMPARE(bytes.mid(at, 6), QByteArray("\x05Zo\x91 ?"));
        QCOMPARE(storage::decodePrefs(bytes, AppPrefs()).usrname, QStringLiteral("Zoë ?"));
    }

    void overlongTextIsStoredEmpty()
    {
        AppPrefs prefs;
        prefs.lastdoc = QStringLiteral("/home/") + QString(300, u'x') + QStringLiteral(".vlk");
        prefs.autopen = true;
        prefs.statustrans = 55;
        const AppPrefs read = storage::decodePrefs(storage::encodePrefs(prefs), AppPrefs());
        QVERIFY(read.lastdoc.isEmpty());
        QVERIFY(read.autopen);
        QCOMPARE(read.statustrans, 55);
    }

    void shortFileKeepsDefaultsForMissingFields()
    {
        const AppPrefs changed = changedPrefs();
        const QByteArray bytes = storage::encodePrefs(changed);
        int lastFields = 0;
        for (qsizetype length = 0; length <= bytes.size(); ++length) {
            int fields = -1;
            const AppPrefs read = storage::decodePrefs(bytes.left(length), AppPrefs(), &fields);
            QVERIFY(fields >= lastFields);
            lastFields = fields;
            QCOMPARE(read.fontsize, length >= 2 ? changed.fontsize : AppPrefs().fontsize);
            QCOMPARE(read.xprtEncoding, fields >= 42 ? changed.xprtEncoding : AppPrefs().xprtEncoding);
            // A text cut short is not taken in part.
            QVERIFY(read.chosefont == changed.chosefont || read.chosefont == AppPrefs().chosefont);
        }
        QCOMPARE(lastFields, storage::kPrefsFieldCount);
    }
};

QTEST_GUILESS_MAIN(TestPrefsFile)
#include "test_prefs_file.moc"

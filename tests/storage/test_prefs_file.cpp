#include "storage/prefs_file.h"

#include <QTest>

using core::AppPrefs;

namespace
{

// Byte offset of the I16 field `number` (1-based) in a file whose six texts have the given lengths.
int offsetOf(int number, const QList<int>& textLengths)
{
    static const QList<int> texts = {2, 4, 5, 17, 19, 21};
    int offset = 0;
    int text = 0;
    for (int field = 1; field < number; ++field) {
        if (texts.contains(field))
            offset += 1 + textLengths[text++];
        else
            offset += 2;
    }
    return offset;
}

// Text lengths of a file written from the defaults.
const QList<int> kDefaultLengths = {7, 19, 12, 0, 0, 0};

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
    p.fontsize = 14;
    p.chosefont = QStringLiteral("DejaVu Sans");
    p.dateon = false;
    p.iam = QStringLiteral("Gedruckt am – Überblick");
    p.usrname = QStringLiteral("Zoë Müller");
    p.wintop = -20;
    p.expbr = true;
    p.expnt = false;
    p.red = 0;
    p.rmteops = QStringLiteral("/srv/team/VK8 Opps List");
    p.nteon = true;
    p.netlook = true;
    p.lastdoc = QStringLiteral("/home/zoë/Week 47.vlk");
    p.autopen = true;
    p.waittime = 15;
    p.statusquo = false;
    p.statusleft = -300;
    p.howmanyscreens = 2;
    p.statustrans = 20;
    p.dokflash = 0;
    p.killQuit = 0;
    p.presetwinWidth = 1200;
    p.exportFormat = QStringLiteral("txt");
    p.updatetime = 3;
    p.xprtEncoding = 2;
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
        const QList<int>& lengths = kDefaultLengths;
        QCOMPARE(bytes.size(), offsetOf(44, lengths));
        QCOMPARE(bytes.mid(offsetOf(2, lengths), 8), QByteArray("\x07Verdana"));
        QCOMPARE(i16At(bytes, offsetOf(27, lengths)), 501); // statusleft, after reserved field 19
        QCOMPARE(i16At(bytes, offsetOf(29, lengths)), 7);   // howmanyscreens, after reserved field 28
        QCOMPARE(i16At(bytes, offsetOf(34, lengths)), 400); // winheight
        QCOMPARE(i16At(bytes, offsetOf(40, lengths)), 1);   // exportFormat "xls"
        QCOMPARE(i16At(bytes, offsetOf(42, lengths)), 3);   // xprtEncoding
        QCOMPARE(i16At(bytes, offsetOf(43, lengths)), 0);   // reserved, the last field
    }

    void storedBooleans_data()
    {
        QTest::addColumn<int>("stored");
        QTest::addColumn<bool>("expected");
        QTest::newRow("1 is true") << 1 << true;
        QTest::newRow("0 is false") << 0 << false;
        QTest::newRow("2 is false") << 2 << false;
        QTest::newRow("-1 is false") << -1 << false;
        QTest::newRow("257 is false") << 257 << false;
    }
    void storedBooleans()
    {
        QFETCH(int, stored);
        QFETCH(bool, expected);
        QByteArray bytes = storage::encodePrefs(AppPrefs());
        for (const int field : {3, 22}) // dateon (default true), autopen (default false)
            setI16(bytes, offsetOf(field, kDefaultLengths), stored);
        const AppPrefs read = storage::decodePrefs(bytes, AppPrefs());
        QCOMPARE(read.dateon, expected);
        QCOMPARE(read.autopen, expected);
        const QByteArray rewritten = storage::encodePrefs(read);
        QCOMPARE(i16At(rewritten, offsetOf(3, kDefaultLengths)), expected ? 1 : 0);
    }

    void exportFormat_data()
    {
        QTest::addColumn<int>("stored");
        QTest::addColumn<QString>("expected");
        QTest::newRow("1 is xls") << 1 << "xls";
        QTest::newRow("0 is txt") << 0 << "txt";
        QTest::newRow("2 is txt") << 2 << "txt";
    }
    void exportFormat()
    {
        QFETCH(int, stored);
        QFETCH(QString, expected);
        QByteArray bytes = storage::encodePrefs(AppPrefs());
        setI16(bytes, offsetOf(40, kDefaultLengths), stored);
        const AppPrefs read = storage::decodePrefs(bytes, AppPrefs());
        QCOMPARE(read.exportFormat, expected);
        QCOMPARE(i16At(storage::encodePrefs(read), offsetOf(40, kDefaultLengths)), stored == 1 ? 1 : 0);
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

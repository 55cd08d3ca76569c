// The files' formats: the timesheet, the settings, and the small lists of the preferences folder.
#include "storage/clients_file.h"
#include "storage/operations_file.h"
#include "storage/prefs_file.h"
#include "storage/preset_file.h"
#include "storage/timesheet_file.h"

#include <QRandomGenerator>
#include <QTest>

using namespace storage;
using core::AppPrefs;
using core::JobRow;
using core::Timesheet;

namespace
{

JobRow makeRow(const QStringList& cells, const QString& run = {}, const QString& note = {}, const QString& user = {},
               const QString& budget = {})
{
    JobRow row;
    for (int i = 0; i < cells.size(); ++i)
        row.setCell(i, cells[i]);
    std::tie(row.run, row.note, row.user, row.budget) = std::tie(run, note, user, budget);
    return row;
}

Timesheet sampleSheet(int rows)
{
    Timesheet sheet;
    for (int i = 0; i < rows; ++i)
        sheet.AddRow(makeRow(
            {"22/11/26", QStringLiteral("J%1").arg(i), "Project", "01", QString::number(i % 60), "Design", "Acme"},
            i % 2 ? "**" : "", QStringLiteral("note %1").arg(i), "Default User"));
    sheet.starthrs = "09";
    sheet.startmin = "41";
    return sheet;
}

PresetJob preset(const QString& job, const QString& project, const QString& budget = {}, const QString& closed = {},
                 const QString& tag = {})
{
    return {job, project, budget, closed, tag, {}, {}};
}

// Byte offset of the settings' 16-bit field `number` (1-based) in a file whose six texts have these lengths.
int offsetOf(int number, const QList<int>& textLengths = {7, 19, 12, 0, 0, 0})
{
    static const QList<int> texts = {2, 4, 5, 17, 19, 21};
    int offset = 0;
    for (int field = 1, text = 0; field < number; ++field)
        offset += texts.contains(field) ? 1 + textLengths[text++] : 2;
    return offset;
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

class TestFormats : public QObject
{
    Q_OBJECT

private slots:
    // A timesheet reads back as written, with its count in either byte order.
    void timesheetRoundTrip_data()
    {
        QTest::addColumn<Timesheet>("sheet");
        QTest::newRow("empty") << Timesheet();
        Timesheet texts;
        texts.AddRow(makeRow({"22.11.2026", "Ä-17", "Café \"Zürich\"", "125", "07", "Entwurf\tPläne", "日本語 🙂"},
                             "**", "line one\r\nline two\nthree\ttab \"q\" 'q'", "Zoë", "over"));
        texts.AddRow(makeRow({"1/2/26"}));
        texts.AddRow(makeRow({"1/2/26", "x"}, "*"));
        texts.starthrs = "23";
        texts.startmin = "59";
        QTest::newRow("texts and run tags") << texts;
        Timesheet longest;
        longest.AddRow(makeRow({QString(186, u'n')}, {}, QString(62, u'€')));
        QTest::newRow("fields at the byte bound") << longest;
        QTest::newRow("many rows") << sampleSheet(500); // the high bit in the first byte of the swapped count
        // Little-endian 65,536 reads 256 in the other order, which would fit the file too.
        QTest::newRow("65,536 rows") << sampleSheet(65536);
    }
    void timesheetRoundTrip()
    {
        QFETCH(Timesheet, sheet);
        int cut = -1;
        QByteArray bytes = encodeTimesheet(sheet, &cut);
        const ReadResult read = decodeTimesheet(bytes);
        QVERIFY(cut == 0 && read.complete && read.error.isEmpty());
        QCOMPARE(read.sheet, sheet);
        std::reverse(bytes.begin(), bytes.begin() + 4);
        const ReadResult swapped = decodeTimesheet(bytes);
        QVERIFY(swapped.complete);
        QCOMPARE(swapped.sheet, sheet);
    }

    // The bytes themselves, field by field, and base64 lines of 76 characters with CR LF between them.
    void timesheetBytes()
    {
        QCOMPARE(encodeTimesheet(Timesheet()), QByteArray("\0\0\0\0\0\0", 6));
        Timesheet sheet;
        sheet.AddRow(makeRow({"1/2/26", "A", "", "07", "05"}, "**", "", "Al"));
        sheet.starthrs = "09";
        const QByteArray expected = QByteArray("\0\0\0\1", 4) + "\x08MS8yLzI2" + "\x04QQ==" + '\0' +
                                    "\x04MDc=" + "\x04MDU=" + '\0' + '\0' + "\x04Kio=" + '\0' + "\x04QWw=" + '\0' +
                                    "\x04MDk=" + '\0';
        QCOMPARE(encodeTimesheet(sheet), expected);
        const std::pair<int, int> lines[] = {{57, 76}, {58, 76 + 2 + 4}, {186, 248 + 3 * 2}}; // UTF-8 bytes, stored
        for (const auto& [utf8Bytes, stored] : lines) {
            Timesheet one;
            one.AddRow(makeRow({QString(utf8Bytes, u'a')}));
            const QByteArray field = encodeTimesheet(one).mid(4, stored + 1);
            QCOMPARE(quint8(field[0]), quint8(stored));
            for (int line = 1; line * 78 - 2 < stored; ++line)
                QCOMPARE(field.mid(line * 78 - 1, 2), QByteArray("\r\n"));
            QCOMPARE(field.count('\r'), (stored - 1) / 78);
        }
    }

    // A text too long for its field is cut at a character boundary, and the cut is counted.
    void timesheetLongTextIsCut()
    {
        QVERIFY(fitsTimesheetField(QString(186, u'x')));
        const std::pair<QString, int> cases[] = {{QString(200, u'é'), 186},
                                                 {QStringLiteral("a") + QString(100, u'€'), 184},
                                                 {QStringLiteral("ab") + QStringLiteral("🙂").repeated(60), 186},
                                                 {QString(187, u'x'), 186}};
        for (const auto& [text, keptBytes] : cases) {
            QVERIFY(!fitsTimesheetField(text));
            Timesheet sheet;
            sheet.AddRow(makeRow({"d"}, {}, text));
            int cut = 0;
            const ReadResult read = decodeTimesheet(encodeTimesheet(sheet, &cut));
            QVERIFY(cut == 1 && read.complete);
            const QString note = read.sheet.rows.at(0).note;
            QCOMPARE(note.toUtf8().size(), keptBytes);
            QVERIFY(text.startsWith(note) && !note.contains(QChar::ReplacementCharacter));
        }
    }

    // A damaged timesheet gives the rows read before the damage and never more than its bytes can hold.
    void damagedTimesheets()
    {
        // Cut anywhere: every row but a broken last one is whole; that one keeps its date, job and project.
        const Timesheet sheet = sampleSheet(3);
        QByteArray bytes = encodeTimesheet(sheet);
        for (qsizetype length = 0; length < bytes.size(); ++length) {
            const ReadResult read = decodeTimesheet(bytes.left(length));
            QVERIFY2(!read.complete && !read.error.isEmpty(), qPrintable(QString::number(length)));
            const size_t rows = read.sheet.rows.size();
            QVERIFY(rows <= 3);
            for (size_t i = 0; i + 1 < rows; ++i)
                QCOMPARE(read.sheet.rows[i], sheet.rows[i]);
            for (int cell = 0; rows > 0 && cell < 3; ++cell)
                QCOMPARE(read.sheet.rows[rows - 1].cell(cell), sheet.rows[rows - 1].cell(cell));
        }
        const std::pair<QByteArray, int> damaged[] = {
            {QByteArray(), 0},
            {QByteArray("\x7f\xff\xff\xff\x01\x41\x00\x00", 8), 1}, // a huge count
            {QByteArray("\x7f\xff\xff\x7f\x00\x00\x00", 7), 1},     // huge in both orders
            {QByteArray::fromHex("00000001 ff 616263"), 0},         // a length past the end
            {QByteArray("\0\0\0\1", 4) + QByteArray(11, '\x03').replace('\x03', "\x03!!!"), 1}}; // not base64
        for (const auto& [damage, maxRows] : damaged) {
            const ReadResult read = decodeTimesheet(damage);
            QVERIFY(!read.complete && !read.error.isEmpty());
            QVERIFY(read.sheet.ListCount() <= maxRows && read.sheet.rows.capacity() <= 16);
        }
        // A negative count is a list without rows; a larger one keeps the rows there are and takes the last
        // two strings as the start time, not as a row.
        for (const auto& [count, rows] : {std::pair{-2, 0}, std::pair{5, 2}}) {
            const Timesheet few = sampleSheet(rows);
            bytes = encodeTimesheet(few);
            for (int i = 0; i < 4; ++i)
                bytes[i] = char(quint32(count) >> (24 - 8 * i));
            const ReadResult read = decodeTimesheet(bytes);
            QCOMPARE(read.complete, count < 0);
            QCOMPARE(read.sheet.rows, few.rows);
            QCOMPARE(read.sheet.starthrs + read.sheet.startmin, QStringLiteral("0941"));
        }
        QRandomGenerator random(20261122);
        for (int round = 0; round < 2000; ++round) {
            QByteArray noise(random.bounded(64), Qt::Uninitialized);
            for (char& b : noise)
                b = char(random.bounded(256));
            QVERIFY(decodeTimesheet(noise).sheet.ListCount() <= noise.size() / kFieldsPerRow + 1);
        }
    }

    // The settings read back over defaults that differ, so that a field the reader skips cannot pass; the
    // reserved fields keep every later one in its place.
    void prefsLayout()
    {
        AppPrefs other = changedPrefs();
        other.fontsize = 99;
        other.usrname = QStringLiteral("someone else");
        for (const AppPrefs& prefs : {AppPrefs(), changedPrefs()}) {
            int fields = 0;
            QCOMPARE(decodePrefs(encodePrefs(prefs), prefs == AppPrefs() ? other : AppPrefs(), &fields), prefs);
            QCOMPARE(fields, kPrefsFieldCount);
        }
        AppPrefs prefs;
        prefs.howmanyscreens = 7;
        prefs.xprtEncoding = 3;
        const QByteArray bytes = encodePrefs(prefs);
        QCOMPARE(bytes.size(), offsetOf(44));
        QCOMPARE(bytes.mid(offsetOf(2), 8), QByteArray("\x07Verdana"));
        QCOMPARE(i16At(bytes, offsetOf(27)), 501); // statusleft, after reserved field 19
        QCOMPARE(i16At(bytes, offsetOf(29)), 7);   // howmanyscreens, after reserved field 28
        QCOMPARE(i16At(bytes, offsetOf(34)), 400); // winheight
        QCOMPARE(i16At(bytes, offsetOf(40)), 1);   // exportFormat "xls"
        QCOMPARE(i16At(bytes, offsetOf(42)), 3);   // xprtEncoding
        QCOMPARE(i16At(bytes, offsetOf(43)), 0);   // reserved, the last field
    }

    // Booleans are true only when stored as 1, and the export format is "xls" only then; both are written
    // back as 1 or 0.
    void prefsStoredFlags()
    {
        for (const int stored : {1, 0, 2, -1, 257}) {
            QByteArray bytes = encodePrefs(AppPrefs());
            for (const int field : {3, 22, 40}) { // dateon (default true), autopen (default false), exportFormat
                bytes[offsetOf(field)] = char(quint16(stored) >> 8);
                bytes[offsetOf(field) + 1] = char(stored & 0xff);
            }
            const AppPrefs read = decodePrefs(bytes, AppPrefs());
            QCOMPARE(read.dateon, stored == 1);
            QCOMPARE(read.autopen, stored == 1);
            QCOMPARE(read.exportFormat, stored == 1 ? QStringLiteral("xls") : QStringLiteral("txt"));
            const QByteArray rewritten = encodePrefs(read);
            QCOMPARE(i16At(rewritten, offsetOf(3)) + i16At(rewritten, offsetOf(40)), stored == 1 ? 2 : 0);
        }
    }

    // The user's name is MacRoman; a text too long for its length byte is stored empty, the fields after it
    // in place; a short file keeps the defaults of the fields it lacks and takes no text in part.
    void prefsTexts()
    {
        AppPrefs prefs;
        prefs.usrname = QStringLiteral("Zoë Ж");
        QByteArray bytes = encodePrefs(prefs);
        QCOMPARE(bytes.mid(offsetOf(5, {7, 19, 0, 0, 0, 0}), 6), QByteArray("\x05Zo\x91 ?"));
        QCOMPARE(decodePrefs(bytes, AppPrefs()).usrname, QStringLiteral("Zoë ?"));

        prefs.lastdoc = QStringLiteral("/home/") + QString(300, u'x') + QStringLiteral(".vlk");
        prefs.autopen = true;
        prefs.statustrans = 55;
        const AppPrefs read = decodePrefs(encodePrefs(prefs), AppPrefs());
        QVERIFY(read.lastdoc.isEmpty() && read.autopen);
        QCOMPARE(read.statustrans, 55);

        const AppPrefs changed = changedPrefs();
        bytes = encodePrefs(changed);
        int lastFields = 0;
        for (qsizetype length = 0; length <= bytes.size(); ++length) {
            int fields = -1;
            const AppPrefs part = decodePrefs(bytes.left(length), AppPrefs(), &fields);
            QVERIFY(fields >= lastFields);
            lastFields = fields;
            QCOMPARE(part.fontsize, length >= 2 ? changed.fontsize : AppPrefs().fontsize);
            QCOMPARE(part.xprtEncoding, fields >= 42 ? changed.xprtEncoding : AppPrefs().xprtEncoding);
            QVERIFY(part.chosefont == changed.chosefont || part.chosefont == AppPrefs().chosefont);
        }
        QCOMPARE(lastFields, kPrefsFieldCount);
    }

    // The lists read back as written; the first bytes show the count and the first text. The preset export
    // reads back as an import.
    void listRoundTrips()
    {
        const OperationList ops = {{"Design", ""}, {"Überprüfung", "R&D – review"}, {"", "only a description"}};
        QByteArray bytes = encodeOperations(ops);
        QCOMPARE(bytes.left(9), QByteArray::fromHex("03 06 44657369676e 00")); // count, "Design", no description
        bool complete = false;
        QCOMPARE(decodeOperations(bytes, &complete), ops);
        QVERIFY(complete);

        const PresetJobList jobs = {preset("A100", "Ärger & Co", "40", "12", "35"), preset("B:7", "", "00", "00")};
        bytes = encodePresetJobs(jobs);
        QCOMPARE(bytes.left(9), QByteArray::fromHex("00000002 04 41313030")); // count, "A100"
        complete = false;
        QCOMPARE(decodePresetJobs(bytes, &complete), jobs);
        QVERIFY(complete);
        QCOMPARE(encodePresetJobs({}), QByteArray("\0\0\0\0", 4));
        const PresetJobList exported = {preset("A1", "Café", "10", "02"), preset("B2", "", "00", "00")};
        QCOMPARE(parsePresetImport(formatPresetExport(exported)).jobs, exported);

        const QStringList names = {"Acme", "Bäckerei Groß", ""};
        bytes = encodeClientList(names);
        QCOMPARE(bytes.left(7), QByteArray::fromHex("0003 04 41636d65")); // count, "Acme"
        QCOMPARE(decodeClientList(bytes), names);
        QCOMPARE(encodeClientList({}), QByteArray("\0\0", 2));
    }

    // The operations hold at most 127; long texts are cut at a character boundary; the older preset file
    // has four fields a job.
    void listLimits()
    {
        OperationList many;
        for (int i = 0; i < 130; ++i)
            many.append({QStringLiteral("op%1").arg(i), QString()});
        QByteArray bytes = encodeOperations(many);
        QCOMPARE(quint8(bytes[0]), quint8(kMaxOperations));
        QCOMPARE(decodeOperations(bytes).size(), kMaxOperations);
        QCOMPARE(decodeOperations(bytes).last().name, QStringLiteral("op126"));

        const QString longText = QStringLiteral("a") + QString(100, u'€'); // 301 bytes; 85 characters are 253
        int cut = 0;
        const OperationList ops = decodeOperations(encodeOperations({{longText, QStringLiteral("d")}}, &cut));
        QCOMPARE(cut, 1);
        QCOMPARE(ops.at(0), (Operation{longText.left(85), QStringLiteral("d")}));
        QCOMPARE(decodeClientList(encodeClientList({longText, "B"})), QStringList({longText.left(85), "B"}));
        const PresetJobList jobs = decodePresetJobs(encodePresetJobs({preset("J", longText)}, &cut));
        QCOMPARE(cut, 1);
        QCOMPARE(jobs.at(0).project, longText.left(85));

        // "J1" "P" "10" "03", then "J2" "" "05" "00"
        bytes = QByteArray::fromHex("00000002 024a31 0150 023130 023033 024a32 00 023035 023030");
        bool complete = false;
        QCOMPARE(decodeOldPresetJobs(bytes, &complete),
                 (PresetJobList{preset("J1", "P", "10", "03"), preset("J2", "", "05", "00")}));
        QVERIFY(complete);
    }

    // A preset import: one job a line in any line end, tab-separated fields in cell order, a wider line
    // widening the list.
    void presetImport_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("rows");
        QTest::addColumn<QStringList>("lastRow"); // cells 0 to 4, then the extra cells
        // clang-format off
        QTest::newRow("LF") << QByteArray("A1\tProj\t10\t02\nB2\tOther\t05\t00\n") << 2 << QStringList{"B2", "Other", "05", "00", ""};
        QTest::newRow("CR LF, no end") << QByteArray("A1\tP\r\nB2\tQ") << 2 << QStringList{"B2", "Q", "", "", ""};
        QTest::newRow("old CR") << QByteArray("A1\r\rB2\tQ\r") << 2 << QStringList{"B2", "Q", "", "", ""};
        QTest::newRow("one field") << QByteArray("\xef\xbb\xbfZ9\n") << 1 << QStringList{"Z9", "", "", "", ""};
        QTest::newRow("wider than the list") << QByteArray("A\tB\tC\tD\tE\tF\tG\n") << 1 << QStringList{"A", "B", "C", "D", "E", "F", "G"};
        QTest::newRow("empty fields kept") << QByteArray("\tP\t\t07") << 1 << QStringList{"", "P", "", "07", ""};
        QTest::newRow("UTF-8") << QByteArray("J\xc3\xa9\tCaf\xc3\xa9") << 1 << QStringList{"Jé", "Café", "", "", ""};
        // clang-format on
    }
    void presetImport()
    {
        QFETCH(QByteArray, text);
        QFETCH(QStringList, lastRow);
        const PresetImport import = parsePresetImport(text);
        QTEST(int(import.jobs.size()), "rows");
        QCOMPARE(import.columnCount, qMax(5, int(lastRow.size())));
        const PresetJob& job = import.jobs.last();
        QCOMPARE((QStringList{job.job, job.project, job.budget, job.closed, job.active} + job.extra), lastRow);
    }

    // Every list reader, given a cut or lying file, returns what it could read and no more.
    void damagedLists()
    {
        const struct
        {
            char kind;
            const char* hex;
            int items;
            bool complete;
        } cases[] = {{'o', "05 01 41 00 01 42", 1, false},
                     {'o', "80 01 41 00", 0, true},
                     {'o', "", 0, false},
                     {'p', "7fffffff 01 41 00000000", 1, false},
                     {'p', "ffffffff 01 41", 0, true},
                     {'p', "00000001 ff 41", 0, false},
                     {'5', "00000002 000000000000", 1, false},
                     {'c', "7fff 01 41 01 42", 2, true},
                     {'c', "8000 01 41", 0, true},
                     {'c', "01", 0, true}};
        for (const auto& c : cases) {
            const QByteArray bytes = QByteArray::fromHex(c.hex);
            bool complete = true;
            const qsizetype read = c.kind == 'o'   ? decodeOperations(bytes, &complete).size()
                                   : c.kind == 'p' ? decodePresetJobs(bytes, &complete).size()
                                   : c.kind == '5' ? decodeOldPresetJobs(bytes, &complete).size()
                                                   : decodeClientList(bytes).size();
            QVERIFY2(read == c.items && complete == c.complete, c.hex);
        }
    }
};

QTEST_GUILESS_MAIN(TestFormats)
#include "test_formats.moc"

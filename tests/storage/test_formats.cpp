// The files' formats: the timesheet, the settings, and the small lists of the preferences folder.
#include "storage/clients_file.h"
#include "storage/operations_file.h"
#include "storage/prefs_file.h"
#include "storage/preset_file.h"
#include "storage/timesheet_file.h"
#include <QRandomGenerator>
#include <QTest>

using namespace storage;
using namespace Qt::StringLiterals;
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
        sheet.AddRow(makeRow({"22/11/26", u"J%1"_s.arg(i), "Project", "01", QString::number(i % 60), "Design", "Acme"},
                             i % 2 ? "**" : "", u"note %1"_s.arg(i), "Default User"));
    std::tie(sheet.starthrs, sheet.startmin) = std::tuple(u"09"_s, u"41"_s);
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
    p.fontsize = 14; p.chosefont = u"DejaVu Sans"_s; p.dateon = false; p.iam = u"Gedruckt am – Überblick"_s;
    p.usrname = u"Zoë Müller"_s; p.wintop = -20; p.expbr = true; p.expnt = false; p.red = 0;
    p.rmteops = u"/srv/team/VK8 Opps List"_s; p.nteon = true; p.netlook = true; p.lastdoc = u"/home/zoë/W 47.vlk"_s;
    p.autopen = true; p.waittime = 15; p.statusquo = false; p.statusleft = -300; p.howmanyscreens = 2;
    p.statustrans = 20; p.dokflash = 0; p.killQuit = 0; p.presetwinWidth = 1200; p.exportFormat = u"txt"_s;
    p.updatetime = 3; p.xprtEncoding = 2;
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
        std::tie(texts.starthrs, texts.startmin) = std::tuple(u"23"_s, u"59"_s);
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
        QVERIFY(cut == 0);
        for (int swapped = 0; swapped < 2; ++swapped, std::reverse(bytes.begin(), bytes.begin() + 4)) {
            const ReadResult read = decodeTimesheet(bytes);
            QVERIFY(read.complete && read.error.isEmpty());
            QCOMPARE(read.sheet, sheet);
        }
    }
    // The bytes field by field; base64 lines of 76 with CR LF; a long text cut at a character, the cut counted.
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
        QVERIFY(fitsTimesheetField(QString(186, u'x')));
        const std::pair<QString, int> cuts[] = {{QString(200, u'é'), 186},
                                                {"a" + QString(100, u'€'), 184},
                                                {"ab" + u"🙂"_s.repeated(60), 186},
                                                {QString(187, u'x'), 186}};
        for (const auto& [text, keptBytes] : cuts) {
            QVERIFY(!fitsTimesheetField(text));
            Timesheet one;
            one.AddRow(makeRow({"d"}, {}, text));
            int cut = 0;
            const ReadResult read = decodeTimesheet(encodeTimesheet(one, &cut));
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
        // A negative count: no rows; a larger one keeps the rows there are, the last two strings the start time.
        for (const auto& [count, rows] : {std::pair{-2, 0}, std::pair{5, 2}}) {
            const Timesheet few = sampleSheet(rows);
            bytes = encodeTimesheet(few);
            for (int i = 0; i < 4; ++i)
                bytes[i] = char(quint32(count) >> (24 - 8 * i));
            const ReadResult read = decodeTimesheet(bytes);
            QVERIFY(read.complete == (count < 0) && read.sheet.rows == few.rows);
            QCOMPARE(read.sheet.starthrs + read.sheet.startmin, u"0941"_s);
        }
        QRandomGenerator random(20261122);
        for (int round = 0; round < 2000; ++round) {
            QByteArray noise(random.bounded(64), Qt::Uninitialized);
            for (char& b : noise)
                b = char(random.bounded(256));
            QVERIFY(decodeTimesheet(noise).sheet.ListCount() <= noise.size() / kFieldsPerRow + 1);
        }
    }
    // Settings read back over differing defaults; reserved fields hold places; booleans and "xls" are only 1.
    void prefsLayout()
    {
        AppPrefs other = changedPrefs();
        std::tie(other.fontsize, other.usrname) = std::tuple(99, u"someone else"_s);
        for (const AppPrefs& prefs : {AppPrefs(), changedPrefs()}) {
            int fields = 0;
            QCOMPARE(decodePrefs(encodePrefs(prefs), prefs == AppPrefs() ? other : AppPrefs(), &fields), prefs);
            QCOMPARE(fields, kPrefsFieldCount);
        }
        AppPrefs prefs;
        std::tie(prefs.howmanyscreens, prefs.xprtEncoding) = std::tuple(7, 3);
        const QByteArray bytes = encodePrefs(prefs);
        QCOMPARE(bytes.size(), offsetOf(44));
        QCOMPARE(bytes.mid(offsetOf(2), 8), QByteArray("\x07Verdana"));
        // statusleft after reserved field 19, howmanyscreens after 28, winheight, "xls", xprtEncoding, reserved
        const int fields[][2] = {{27, 501}, {29, 7}, {34, 400}, {40, 1}, {42, 3}, {43, 0}};
        for (const auto& [field, value] : fields)
            QCOMPARE(i16At(bytes, offsetOf(field)), value);

        for (const int stored : {1, 0, 2, -1, 257}) {
            QByteArray flags = encodePrefs(AppPrefs());
            for (const int field : {3, 22, 40}) { // dateon (default true), autopen (default false), exportFormat
                flags[offsetOf(field)] = char(quint16(stored) >> 8);
                flags[offsetOf(field) + 1] = char(stored & 0xff);
            }
            const AppPrefs read = decodePrefs(flags, AppPrefs());
            QVERIFY(read.dateon == (stored == 1) && read.autopen == (stored == 1));
            QCOMPARE(read.exportFormat, stored == 1 ? u"xls"_s : u"txt"_s);
            const QByteArray rewritten = encodePrefs(read); // written back as 1 or 0
            QCOMPARE(i16At(rewritten, offsetOf(3)) + i16At(rewritten, offsetOf(40)), stored == 1 ? 2 : 0);
        }
    }
    // The name is MacRoman; a too long text is stored empty; a short file keeps defaults, no text in part.
    void prefsTexts()
    {
        AppPrefs prefs;
        prefs.usrname = u"Zoë Ж"_s;
        QByteArray bytes = encodePrefs(prefs);
        QCOMPARE(bytes.mid(offsetOf(5, {7, 19, 0, 0, 0, 0}), 6), QByteArray("\x05Zo\x91 ?"));
        QCOMPARE(decodePrefs(bytes, AppPrefs()).usrname, u"Zoë ?"_s);
        std::tie(prefs.lastdoc, prefs.autopen, prefs.statustrans) = std::tuple("/" + QString(300, u'x'), true, 55);
        const AppPrefs read = decodePrefs(encodePrefs(prefs), AppPrefs());
        QVERIFY(read.lastdoc.isEmpty() && read.autopen && read.statustrans == 55);

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
    // The lists round-trip (count and first text checked); at most 127 operations; long texts cut; old presets.
    void lists()
    {
        const OperationList ops = {{"Design", ""}, {"Überprüfung", "R&D – review"}, {"", "only a description"}};
        QByteArray bytes = encodeOperations(ops);
        QCOMPARE(bytes.left(9), QByteArray::fromHex("03 06 44657369676e 00")); // count, "Design", no description
        bool complete = false;
        QVERIFY(decodeOperations(bytes, &complete) == ops && complete);
        const PresetJobList jobs = {preset("A100", "Ärger & Co", "40", "12", "35"), preset("B:7", "", "00", "00")};
        bytes = encodePresetJobs(jobs);
        QCOMPARE(bytes.left(9), QByteArray::fromHex("00000002 04 41313030")); // count, "A100"
        QVERIFY(decodePresetJobs(bytes, &complete) == jobs && complete);
        QCOMPARE(encodePresetJobs({}), QByteArray("\0\0\0\0", 4));
        QCOMPARE(parsePresetImport(formatPresetExport(jobs)).jobs,
                 (PresetJobList{preset("A100", "Ärger & Co", "40", "12"), jobs[1]}));
        const QStringList names = {"Acme", "Bäckerei Groß", ""};
        bytes = encodeClientList(names);
        QCOMPARE(bytes.left(7), QByteArray::fromHex("0003 04 41636d65")); // count, "Acme"
        QCOMPARE(decodeClientList(bytes), names);
        QCOMPARE(encodeClientList({}), QByteArray("\0\0", 2));

        OperationList many;
        for (int i = 0; i < 130; ++i)
            many.append({u"op%1"_s.arg(i), QString()});
        bytes = encodeOperations(many);
        QCOMPARE(quint8(bytes[0]), quint8(kMaxOperations));
        QCOMPARE(decodeOperations(bytes).last().name, u"op126"_s);
        const QString longText = "a" + QString(100, u'€'); // 301 bytes; 85 characters are 253
        int cut = 0;
        QCOMPARE(decodeOperations(encodeOperations({{longText, "d"}}, &cut)).at(0),
                 (Operation{longText.left(85), "d"}));
        QCOMPARE(cut, 1);
        QCOMPARE(decodeClientList(encodeClientList({longText, "B"})), QStringList({longText.left(85), "B"}));
        QCOMPARE(decodePresetJobs(encodePresetJobs({preset("J", longText)}, &cut)).at(0).project, longText.left(85));
        QCOMPARE(cut, 1);
        // "J1" "P" "10" "03", then "J2" "" "05" "00"
        bytes = QByteArray::fromHex("00000002 024a31 0150 023130 023033 024a32 00 023035 023030");
        QCOMPARE(decodeOldPresetJobs(bytes, &complete),
                 (PresetJobList{preset("J1", "P", "10", "03"), preset("J2", "", "05", "00")}));
        QVERIFY(complete);
    }
    // A preset import: a job a line in any line end, tab-separated cells; a wider line widens the list.
    void presetImport()
    {
        const std::tuple<QByteArray, int, QStringList> cases[] = {
            {"A1\tProj\t10\t02\nB2\tOther\t05\t00\n", 2, {"B2", "Other", "05", "00", ""}},
            {"A1\tP\r\nB2\tQ", 2, {"B2", "Q", "", "", ""}},  // CR LF, no line end at the end
            {"A1\r\rB2\tQ\r", 2, {"B2", "Q", "", "", ""}},   // old CR, an empty line
            {"\xef\xbb\xbfZ9\n", 1, {"Z9", "", "", "", ""}}, // a byte order mark
            {"A\tB\tC\tD\tE\tF\tG\n", 1, {"A", "B", "C", "D", "E", "F", "G"}},
            {"\tP\t\t07", 1, {"", "P", "", "07", ""}},
            {"J\xc3\xa9\tCaf\xc3\xa9", 1, {"Jé", "Café", "", "", ""}}};
        for (const auto& [text, rows, lastRow] : cases) {
            const PresetImport import = parsePresetImport(text);
            QVERIFY(import.jobs.size() == rows && import.columnCount == qMax(5, int(lastRow.size())));
            const PresetJob& job = import.jobs.last();
            QCOMPARE((QStringList{job.job, job.project, job.budget, job.closed, job.active} + job.extra), lastRow);
        }
    }
    // Every list reader, given a cut or lying file, returns what it could read and no more.
    void damagedLists()
    {
        // clang-format off
        const std::tuple<char, const char*, int, bool> cases[] = { // operations, presets, the old presets, clients
            {'o', "05 01 41 00 01 42", 1, false}, {'o', "80 01 41 00", 0, true}, {'o', "", 0, false},
            {'p', "7fffffff 01 41 00000000", 1, false}, {'p', "ffffffff 01 41", 0, true}, {'c', "8000 01 41", 0, true},
            {'p', "00000001 ff 41", 0, false}, {'5', "00000002 000000000000", 1, false}, {'c', "01", 0, true},
            {'c', "7fff 01 41 01 42", 2, true}};
        // clang-format on
        for (const auto& [kind, hex, items, whole] : cases) {
            const QByteArray bytes = QByteArray::fromHex(hex);
            bool complete = true;
            const qsizetype read = kind == 'o'   ? decodeOperations(bytes, &complete).size()
                                   : kind == 'p' ? decodePresetJobs(bytes, &complete).size()
                                   : kind == '5' ? decodeOldPresetJobs(bytes, &complete).size()
                                                 : decodeClientList(bytes).size();
            QVERIFY2(read == items && complete == whole, hex);
        }
    }
};

QTEST_GUILESS_MAIN(TestFormats)
#include "test_formats.moc"

#include "storage/timesheet_file.h"

#include <QRandomGenerator>
#include <QTest>

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
    row.run = run;
    row.note = note;
    row.user = user;
    row.budget = budget;
    return row;
}

Timesheet sampleSheet(int rows)
{
    Timesheet sheet;
    for (int i = 0; i < rows; ++i)
        sheet.AddRow(makeRow(
            {"22/11/26", QStringLiteral("J%1").arg(i), "Project", "01", QString::number(i % 60), "Design", "Acme"},
            i % 2 ? "**" : "", QStringLiteral("note %1").arg(i), "Default User", ""));
    sheet.starthrs = "09";
    sheet.startmin = "41";
    return sheet;
}

QByteArray swappedCount(QByteArray bytes)
{
    std::swap(bytes[0], bytes[3]);
    std::swap(bytes[1], bytes[2]);
    return bytes;
}

} // namespace

class TestTimesheetFile : public QObject
{
    Q_OBJECT

private slots:
    void roundTrip_data()
    {
        QTest::addColumn<Timesheet>("sheet");
        QTest::newRow("empty") << Timesheet();
        Timesheet texts;
        // clang-format off
        texts.AddRow(makeRow({"22.11.2026", "Ä-17", "Café \"Zürich\"", "125", "07", "Entwurf\tPläne", "日本語 🙂"}, "**",
                             "line one\r\nline two\nthree\ttab \"q\" 'q'", "Zoë", "over"));
        // clang-format on
        texts.AddRow(makeRow({"1/2/26"}));
        texts.AddRow(makeRow({"1/2/26", "x"}, "*"));
        texts.starthrs = "23";
        texts.startmin = "59";
        QTest::newRow("texts and run tags") << texts;
        Timesheet longest;
        longest.AddRow(makeRow({QString(186, u'n')}, {}, QString(62, u'€')));
        QTest::newRow("fields at the byte bound") << longest;
        QTest::newRow("many rows") << sampleSheet(500);
        // Little-endian 65,536 reads 256 in the other order, which would fit the file too.
        QTest::newRow("65,536 rows") << sampleSheet(65536);
    }
    void roundTrip()
    {
        QFETCH(Timesheet, sheet);
        int cut = -1;
        const storage::ReadResult read = storage::decodeTimesheet(storage::encodeTimesheet(sheet, &cut));
        QCOMPARE(cut, 0);
        QVERIFY(read.complete);
        QVERIFY(read.error.isEmpty());
        QCOMPARE(read.sheet, sheet);
        // A count written little-endian reads the same; 500 rows put the high bit in its first byte.
        const storage::ReadResult swapped = storage::decodeTimesheet(swappedCount(storage::encodeTimesheet(sheet)));
        QVERIFY(swapped.complete);
        QCOMPARE(swapped.sheet, sheet);
    }

    void exactBytes()
    {
        QCOMPARE(storage::encodeTimesheet(Timesheet()), QByteArray("\0\0\0\0\0\0", 6));

        Timesheet sheet;
        sheet.AddRow(makeRow({"1/2/26", "A", "", "07", "05"}, "**", "", "Al"));
        sheet.starthrs = "09";
        const QByteArray expected = QByteArray("\0\0\0\1", 4) + "\x08MS8yLzI2" + "\x04QQ==" + '\0' +
                                    "\x04MDc=" + "\x04MDU=" + '\0' + '\0' + "\x04Kio=" + '\0' + "\x04QWw=" + '\0' +
                                    "\x04MDk=" + '\0';
        QCOMPARE(storage::encodeTimesheet(sheet), expected);
    }

    void base64LineEnds_data()
    {
        QTest::addColumn<int>("utf8Bytes");
        QTest::addColumn<int>("stored");
        QTest::newRow("one full line, no line end") << 57 << 76;
        QTest::newRow("a second line") << 58 << 76 + 2 + 4;
        QTest::newRow("longest field") << 186 << 248 + 3 * 2;
    }
    void base64LineEnds()
    {
        QFETCH(int, utf8Bytes);
        QFETCH(int, stored);
        Timesheet sheet;
        sheet.AddRow(makeRow({QString(utf8Bytes, u'a')}));
        const QByteArray bytes = storage::encodeTimesheet(sheet);
        QCOMPARE(quint8(bytes[4]), quint8(stored));
        const QByteArray field = bytes.mid(5, stored);
        for (int line = 1; line * 78 - 2 < stored; ++line)
            QCOMPARE(field.mid(line * 78 - 2, 2), QByteArray("\r\n"));
        QCOMPARE(field.count('\r'), (stored - 1) / 78);
    }

    void longTextIsCutAtCharacterBoundary_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("keptBytes");
        QTest::newRow("two-byte characters") << QString(200, u'é') << 186;
        QTest::newRow("three-byte characters") << (QStringLiteral("a") + QString(100, u'€')) << 184;
        QTest::newRow("surrogate pairs") << QStringLiteral("ab").append(QString::fromUtf8("🙂").repeated(60)) << 186;
        QTest::newRow("one byte too many") << QString(187, u'x') << 186;
    }
    void longTextIsCutAtCharacterBoundary()
    {
        QFETCH(QString, text);
        QFETCH(int, keptBytes);
        QVERIFY(!storage::fitsTimesheetField(text));
        Timesheet sheet;
        sheet.AddRow(makeRow({"d"}, {}, text));
        int cut = 0;
        const QByteArray bytes = storage::encodeTimesheet(sheet, &cut);
        QCOMPARE(cut, 1);
        const storage::ReadResult read = storage::decodeTimesheet(bytes);
        QVERIFY(read.complete);
        const QString note = read.sheet.rows.at(0).note;
        QCOMPARE(note.toUtf8().size(), keptBytes);
        QVERIFY(text.startsWith(note));
        QVERIFY(!note.contains(QChar::ReplacementCharacter));
    }

    void truncatedFileGivesRowsReadSoFar()
    {
        const Timesheet sheet = sampleSheet(3);
        const QByteArray bytes = storage::encodeTimesheet(sheet);
        for (qsizetype length = 0; length < bytes.size(); ++length) {
            const storage::ReadResult read = storage::decodeTimesheet(bytes.left(length));
            QVERIFY2(!read.complete, qPrintable(QString::number(length)));
            QVERIFY(!read.error.isEmpty());
            QVERIFY(read.sheet.rows.size() <= sheet.rows.size());
            // Every row but a last, broken one is whole; the broken one keeps its date, job and project.
            for (size_t i = 0; i + 1 < read.sheet.rows.size(); ++i)
                QCOMPARE(read.sheet.rows[i], sheet.rows[i]);
            if (const size_t last = read.sheet.rows.size(); last > 0)
                for (int cell = 0; cell < 3; ++cell)
                    QCOMPARE(read.sheet.rows[last - 1].cells[size_t(cell)], sheet.rows[last - 1].cells[size_t(cell)]);
        }
    }

    void damagedFiles_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("maxRows");
        QTest::newRow("nothing") << QByteArray() << 0;
        QTest::newRow("huge count") << QByteArray("\x7f\xff\xff\xff\x01\x41\x00\x00", 8) << 1;
        QTest::newRow("huge count in both orders") << QByteArray("\x7f\xff\xff\x7f\x00\x00\x00", 7) << 1;
        QTest::newRow("length past the end") << QByteArray::fromHex("00000001 ff 616263") << 0;
        QTest::newRow("not base64") << (QByteArray("\0\0\0\1", 4) + QByteArray(11, '\x03').replace('\x03', "\x03!!!"))
                                    << 1;
    }
    void damagedFiles()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, maxRows);
        const storage::ReadResult read = storage::decodeTimesheet(bytes);
        QVERIFY(!read.complete);
        QVERIFY(!read.error.isEmpty());
        QVERIFY(read.sheet.ListCount() <= maxRows);
        QVERIFY(read.sheet.rows.capacity() <= 16);
    }

    // A count that does not match the rows: a negative one is a list without rows; a larger one keeps the
    // rows there are and takes the last two strings as the start time, not as a row.
    void countsThatDoNotMatch_data()
    {
        QTest::addColumn<qint32>("count");
        QTest::addColumn<int>("rows");
        QTest::addColumn<bool>("complete");
        QTest::newRow("negative") << qint32(-2) << 0 << true;
        QTest::newRow("larger than the rows") << qint32(5) << 2 << false;
    }
    void countsThatDoNotMatch()
    {
        QFETCH(qint32, count);
        QFETCH(int, rows);
        Timesheet sheet = sampleSheet(rows);
        QByteArray bytes = storage::encodeTimesheet(sheet);
        for (int i = 0; i < 4; ++i)
            bytes[i] = char(quint32(count) >> (24 - 8 * i));
        const storage::ReadResult read = storage::decodeTimesheet(bytes);
        QTEST(read.complete, "complete");
        QCOMPARE(read.sheet.rows, sheet.rows);
        QCOMPARE(read.sheet.starthrs + read.sheet.startmin, QStringLiteral("0941"));
    }

    void randomBytesDoNotCrash()
    {
        QRandomGenerator random(20261122);
        for (int round = 0; round < 2000; ++round) {
            QByteArray bytes(random.bounded(64), Qt::Uninitialized);
            for (char& b : bytes)
                b = char(random.bounded(256));
            const storage::ReadResult read = storage::decodeTimesheet(bytes);
            QVERIFY(read.sheet.ListCount() <= bytes.size() / storage::kFieldsPerRow + 1);
        }
    }
};

QTEST_GUILESS_MAIN(TestTimesheetFile)
#include "test_timesheet_file.moc"

#include "storage/clients_file.h"
#include "storage/operations_file.h"
#include "storage/preset_file.h"

#include <QTest>

using storage::Operation;
using storage::OperationList;
using storage::PresetJob;
using storage::PresetJobList;

namespace
{
PresetJob preset(const QString& job, const QString& project, const QString& budget = {}, const QString& closed = {},
                 const QString& tag = {})
{
    return {job, project, budget, closed, tag, {}, {}};
}
} // namespace

// The small list files of the preferences folder: operations, preset jobs, clients.
class TestListFiles : public QObject
{
    Q_OBJECT

private slots:
    void operationsHoldAtMost127()
    {
        OperationList list;
        for (int i = 0; i < 130; ++i)
            list.append({QStringLiteral("op%1").arg(i), QString()});
        const QByteArray bytes = storage::encodeOperations(list);
        QCOMPARE(quint8(bytes[0]), quint8(storage::kMaxOperations));
        const OperationList read = storage::decodeOperations(bytes);
        QCOMPARE(read.size(), storage::kMaxOperations);
        QCOMPARE(read.last().name, QStringLiteral("op126"));
    }

    void longTextsAreCutAtCharacterBoundary()
    {
        const QString longText = QStringLiteral("a") + QString(100, u'€'); // 301 bytes
        int cut = 0;
        const OperationList ops =
            storage::decodeOperations(storage::encodeOperations({{longText, QStringLiteral("d")}}, &cut));
        QCOMPARE(cut, 1);
        QCOMPARE(ops.at(0).name, longText.left(85)); // 1 + 84 * 3 = 253 bytes
        QCOMPARE(ops.at(0).description, QStringLiteral("d"));

        const QStringList clients =
            storage::decodeClientList(storage::encodeClientList({longText, QStringLiteral("B")}));
        QCOMPARE(clients, QStringList({longText.left(85), QStringLiteral("B")}));

        const PresetJobList jobs =
            storage::decodePresetJobs(storage::encodePresetJobs({preset(QStringLiteral("J"), longText)}, &cut));
        QCOMPARE(cut, 1);
        QCOMPARE(jobs.at(0).project, longText.left(85));
    }

    void oldPresetJobsHaveFourFields()
    {
        // "J1" "P" "10" "03", then "J2" "" "05" "00"
        const QByteArray bytes = QByteArray::fromHex("00000002 024a31 0150 023130 023033 024a32 00 023035 023030");
        bool complete = false;
        const PresetJobList jobs = storage::decodeOldPresetJobs(bytes, &complete);
        QVERIFY(complete);
        QCOMPARE(jobs, (PresetJobList{preset("J1", "P", "10", "03"), preset("J2", "", "05", "00")}));
    }

    void presetImport_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("rows");
        QTest::addColumn<int>("columns");
        QTest::addColumn<QStringList>("lastRow"); // cells 0 to 4, then the extra cells
        // clang-format off
        QTest::newRow("LF") << QByteArray("A1\tProj\t10\t02\nB2\tOther\t05\t00\n") << 2 << 5 << QStringList{"B2", "Other", "05", "00", ""};
        QTest::newRow("CR LF, no end") << QByteArray("A1\tP\r\nB2\tQ") << 2 << 5 << QStringList{"B2", "Q", "", "", ""};
        QTest::newRow("old CR") << QByteArray("A1\r\rB2\tQ\r") << 2 << 5 << QStringList{"B2", "Q", "", "", ""};
        QTest::newRow("one field") << QByteArray("\xef\xbb\xbfZ9\n") << 1 << 5 << QStringList{"Z9", "", "", "", ""};
        QTest::newRow("wider than the list") << QByteArray("A\tB\tC\tD\tE\tF\tG\n") << 1 << 7 << QStringList{"A", "B", "C", "D", "E", "F", "G"};
        QTest::newRow("empty fields kept") << QByteArray("\tP\t\t07") << 1 << 5 << QStringList{"", "P", "", "07", ""};
        QTest::newRow("UTF-8") << QByteArray("J\xc3\xa9\tCaf\xc3\xa9") << 1 << 5 << QStringList{"Jé", "Café", "", "", ""};
        // clang-format on
    }
    void presetImport()
    {
        QFETCH(QByteArray, text);
        QFETCH(int, rows);
        QFETCH(int, columns);
        QFETCH(QStringList, lastRow);
        const storage::PresetImport import = storage::parsePresetImport(text);
        QCOMPARE(import.jobs.size(), rows);
        QCOMPARE(import.columnCount, columns);
        const PresetJob& job = import.jobs.last();
        QCOMPARE((QStringList{job.job, job.project, job.budget, job.closed, job.active} + job.extra), lastRow);
    }

    void exportReadsBackAsImport()
    {
        const PresetJobList jobs = {preset("A1", "Café", "10", "02"), preset("B2", "", "00", "00")};
        QCOMPARE(storage::parsePresetImport(storage::formatPresetExport(jobs)).jobs, jobs);
    }

    // Each list reads back as written; the first bytes show the count and the first text.
    void roundTrips()
    {
        const OperationList ops = {{"Design", ""}, {"Überprüfung", "R&D – review"}, {"", "only a description"}};
        QByteArray bytes = storage::encodeOperations(ops);
        QCOMPARE(bytes.left(9), QByteArray::fromHex("03 06 44657369676e 00")); // count, "Design", no description
        bool complete = false;
        QCOMPARE(storage::decodeOperations(bytes, &complete), ops);
        QVERIFY(complete);

        const PresetJobList jobs = {preset("A100", "Ärger & Co", "40", "12", "35"), preset("B:7", "", "00", "00")};
        bytes = storage::encodePresetJobs(jobs);
        QCOMPARE(bytes.left(9), QByteArray::fromHex("00000002 04 41313030")); // count, "A100"
        complete = false;
        QCOMPARE(storage::decodePresetJobs(bytes, &complete), jobs);
        QVERIFY(complete);
        QCOMPARE(storage::encodePresetJobs({}), QByteArray("\0\0\0\0", 4));

        const QStringList names = {"Acme", "Bäckerei Groß", ""};
        bytes = storage::encodeClientList(names);
        QCOMPARE(bytes.left(7), QByteArray::fromHex("0003 04 41636d65")); // count, "Acme"
        QCOMPARE(storage::decodeClientList(bytes), names);
        QCOMPARE(storage::encodeClientList({}), QByteArray("\0\0", 2));
    }

    // Every reader, given a cut or lying file, returns what it could read and no more.
    void damagedFiles_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("items");
        auto row = [](const char* tag, const char* kind, const char* hex, int items) {
            QTest::newRow(tag) << QString::fromLatin1(kind) << QByteArray::fromHex(hex) << items;
        };
        row("operations: cut", "ops", "05 01 41 00 01 42", 1);
        row("operations: negative count", "ops", "80 01 41 00", 0);
        row("operations: empty file", "ops", "", 0);
        row("presets: huge count", "presets", "7fffffff 01 41 00000000", 1);
        row("presets: negative count", "presets", "ffffffff 01 41", 0);
        row("presets: length past end", "presets", "00000001 ff 41", 0);
        row("old presets: cut", "old", "00000002 000000000000", 1);
        row("clients: huge count", "clients", "7fff 01 41 01 42", 2);
        row("clients: negative count", "clients", "8000 01 41", 0);
        row("clients: one byte", "clients", "01", 0);
    }
    void damagedFiles()
    {
        QFETCH(QString, kind);
        QFETCH(QByteArray, bytes);
        QFETCH(int, items);
        bool complete = true;
        qsizetype read = -1;
        if (kind == QLatin1String("ops"))
            read = storage::decodeOperations(bytes, &complete).size();
        else if (kind == QLatin1String("presets"))
            read = storage::decodePresetJobs(bytes, &complete).size();
        else if (kind == QLatin1String("old"))
            read = storage::decodeOldPresetJobs(bytes, &complete).size();
        else
            read = storage::decodeClientList(bytes).size();
        QCOMPARE(read, items);
        if (kind != QLatin1String("clients") && !QByteArray(QTest::currentDataTag()).contains("negative"))
            QVERIFY(!complete);
    }
};

QTEST_GUILESS_MAIN(TestListFiles)
#include "test_list_files.moc"

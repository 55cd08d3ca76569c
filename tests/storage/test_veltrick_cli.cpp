#include "core/timetext.h"
#include "storage/timesheet_file.h"

#include <QDate>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace
{

struct Run
{
    int exitCode = -1;
    QByteArray out, err;
};

// VELTRICK_CLI, the path of the built program, is set by the build.
Run runCli(const QStringList& args, const QByteArray& input = {})
{
    QProcess process;
    process.start(QStringLiteral(VELTRICK_CLI), args);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(30000))
        return {};
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1, process.readAllStandardOutput(),
            process.readAllStandardError()};
}

bool writeFile(const QString& path, const QByteArray& bytes)
{
    QFile out(path);
    return out.open(QIODevice::WriteOnly) && out.write(bytes) == bytes.size();
}

} // namespace

class TestVeltrickCli : public QObject
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(m_dir.isValid()); }

    void writeThenDumpKeepsEveryText()
    {
        const QString today = core::shortDate(QDate::currentDate());
        const QByteArray input =
            QStringLiteral(
                "{\"starthrs\": \"23\", \"startmin\": \"05\", \"rows\": ["
                "{\"date\": \"%1\", \"job\": \"A1\", \"project\": \"Café \\\"Q\\\"\", \"hours\": \"125\","
                " \"minutes\": \"07\", \"operation\": \"Plan\\tung\", \"client\": \"Acme\", \"run\": \"*\","
                " \"note\": \"one\\r\\ntwo \\\\ ✓\", \"user\": \"Zoë\", \"budget\": \"over\"},"
                "{\"date\": \"%1\", \"job\": \"a1\", \"hours\": \"01\", \"minutes\": \"30\", \"run\": \"**\"},"
                "{\"date\": \"1/1/99\", \"job\": \"B\", \"hours\": \"00\", \"minutes\": \"45\", \"run\": \"\"}]}")
                .arg(today)
                .toUtf8();
        const QString file = m_dir.filePath(QStringLiteral("week.vlk"));
        QCOMPARE(runCli({QStringLiteral("write"), file}, input).exitCode, 0);

        const Run dumped = runCli({QStringLiteral("dump"), file});
        QCOMPARE(dumped.exitCode, 0);
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(dumped.out, &error);
        QCOMPARE(error.error, QJsonParseError::NoError);
        QJsonObject expected = QJsonDocument::fromJson(input).object();
        QJsonArray rows = expected.value(QStringLiteral("rows")).toArray();
        // Keys left out of the input come back as empty texts.
        for (qsizetype i = 0; i < rows.size(); ++i) {
            QJsonObject row = rows[i].toObject();
            for (const char* key : {"project", "operation", "client", "note", "user", "budget"})
                if (!row.contains(QLatin1String(key)))
                    row.insert(QLatin1String(key), QString());
            rows[i] = row;
        }
        expected.insert(QStringLiteral("rows"), rows);
        QCOMPARE(document.object(), expected);

        const Run totals = runCli({QStringLiteral("totals"), file});
        QCOMPARE(totals.exitCode, 0);
        const QString text = QString::fromUtf8(totals.out);
        QVERIFY2(text.contains(QStringLiteral("List total: 127:22")), qPrintable(text));
        QVERIFY2(text.contains(QStringLiteral("): 126:37\n")), qPrintable(text)); // today's two rows
        QVERIFY2(text.contains(QStringLiteral("\nA1\t126:37\n")), qPrintable(text));
        QVERIFY2(text.contains(QStringLiteral("\nB\t00:45\n")), qPrintable(text));
    }

    void exitCodes_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QByteArray>("fileBytes");
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<int>("exitCode");
        const QByteArray whole = storage::encodeTimesheet(core::Timesheet());
        const auto row = [](const char* tag, const QStringList& args, const QByteArray& file, const QByteArray& input,
                            int exitCode) { QTest::newRow(tag) << args << file << input << exitCode; };
        // clang-format off
        row("help", {"--help"}, {}, {}, 0);
        row("no arguments", {}, {}, {}, 2);
        row("unknown command", {"print", "@"}, whole, {}, 2);
        row("no file named", {"dump"}, {}, {}, 2);
        row("missing file", {"totals", "@missing"}, {}, {}, 1);
        row("damaged file", {"dump", "@"}, QByteArray("\0\0\0\5\0\0", 6), {}, 1);
        row("damaged totals", {"totals", "@"}, QByteArray("\0\0", 2), {}, 1);
        row("not JSON", {"write", "@"}, whole, "{rows", 1);
        row("number for a text", {"write", "@"}, whole, "{\"rows\": [{\"hours\": 5}]}", 1);
        row("empty list", {"write", "@"}, whole, "{}", 0);
        // clang-format on
    }
    void exitCodes()
    {
        QFETCH(QStringList, args);
        QFETCH(QByteArray, fileBytes);
        QFETCH(QByteArray, input);
        QFETCH(int, exitCode);
        const QString file = m_dir.filePath(QStringLiteral("case.vlk"));
        QFile::remove(file);
        if (!fileBytes.isEmpty())
            QVERIFY(writeFile(file, fileBytes));
        for (QString& arg : args)
            arg.replace(u'@', file);
        const Run run = runCli(args, input);
        QCOMPARE(run.exitCode, exitCode);
        if (exitCode != 0)
            QVERIFY(!run.err.isEmpty());
        // A write that fails leaves the file as it was.
        if (exitCode != 0 && args.value(0) == QLatin1String("write")) {
            QFile in(file);
            QVERIFY(in.open(QIODevice::ReadOnly));
            QCOMPARE(in.readAll(), fileBytes);
        }
    }

    void damagedFileStillShowsRowsRead()
    {
        core::Timesheet sheet;
        for (int i = 0; i < 3; ++i) {
            core::JobRow row;
            row.setCell(core::CellJob, QStringLiteral("J%1").arg(i));
            sheet.AddRow(row);
        }
        const QByteArray bytes = storage::encodeTimesheet(sheet);
        const QString file = m_dir.filePath(QStringLiteral("cut.vlk"));
        QVERIFY(writeFile(file, bytes.left(bytes.size() - 3)));
        const Run run = runCli({QStringLiteral("dump"), file});
        QCOMPARE(run.exitCode, 1);
        const QJsonArray rows = QJsonDocument::fromJson(run.out).object().value(QStringLiteral("rows")).toArray();
        QCOMPARE(rows.size(), 3);
        QCOMPARE(rows[2].toObject().value(QStringLiteral("job")).toString(), QStringLiteral("J2"));
    }

private:
    QTemporaryDir m_dir;
};

QTEST_GUILESS_MAIN(TestVeltrickCli)
#include "test_veltrick_cli.moc"

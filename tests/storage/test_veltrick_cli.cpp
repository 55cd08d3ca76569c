// veltrick-cli, the built program (VELTRICK_CLI, set by the build), on files in a temporary folder.
#include "core/timetext.h"
#include "storage/timesheet_file.h"

#include <QDate>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class TestVeltrickCli : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_file = m_dir.filePath(u"week.vlk"_s);
    int m_exitCode = -1;
    QByteArray m_out, m_err;

    // Runs the program with `@` in the arguments standing for the file, and `fileBytes` (unless empty) in it.
    void run(QStringList args, const QByteArray& input = {}, const QByteArray& fileBytes = {})
    {
        QFile::remove(m_file);
        QFile file(m_file);
        QVERIFY(fileBytes.isEmpty() || (file.open(QIODevice::WriteOnly) && file.write(fileBytes) == fileBytes.size()));
        file.close();
        for (QString& arg : args)
            arg.replace(u'@', m_file);
        QProcess process;
        process.start(QStringLiteral(VELTRICK_CLI), args);
        process.write(input);
        process.closeWriteChannel();
        QVERIFY(process.waitForFinished(30000) && process.exitStatus() == QProcess::NormalExit);
        m_exitCode = process.exitCode();
        m_out = process.readAllStandardOutput();
        m_err = process.readAllStandardError();
    }

private slots:
    // Every text written comes back from dump as it was, keys left out as empty texts; totals add the list,
    // today's rows and each job number ignoring case.
    void writeDumpAndTotals()
    {
        const QByteArray input =
            QStringLiteral(
                "{\"starthrs\": \"23\", \"startmin\": \"05\", \"rows\": ["
                "{\"date\": \"%1\", \"job\": \"A1\", \"project\": \"Café \\\"Q\\\"\", \"hours\": \"125\","
                " \"minutes\": \"07\", \"operation\": \"Plan\\tung\", \"client\": \"Acme\", \"run\": \"*\","
                " \"note\": \"one\\r\\ntwo \\\\ ✓\", \"user\": \"Zoë\", \"budget\": \"over\"},"
                "{\"date\": \"%1\", \"job\": \"a1\", \"hours\": \"01\", \"minutes\": \"30\", \"run\": \"**\"},"
                "{\"date\": \"1/1/99\", \"job\": \"B\", \"hours\": \"00\", \"minutes\": \"45\", \"run\": \"\"}]}")
                .arg(core::shortDate(QDate::currentDate()))
                .toUtf8();
        run({u"write"_s, u"@"_s}, input);
        QFile file(m_file);
        QVERIFY(m_exitCode == 0 && file.open(QIODevice::ReadOnly));
        const QByteArray written = file.readAll();
        run({u"dump"_s, u"@"_s}, {}, written);
        QCOMPARE(m_exitCode, 0);
        QJsonObject expected = QJsonDocument::fromJson(input).object();
        QJsonArray rows = expected.value(u"rows"_s).toArray();
        for (auto row : rows) {
            QJsonObject object = row.toObject();
            for (const char* key : {"project", "operation", "client", "note", "user", "budget"})
                if (!object.contains(QLatin1String(key)))
                    object.insert(QLatin1String(key), QString());
            row = object;
        }
        expected.insert(u"rows"_s, rows);
        QJsonObject dumped = QJsonDocument::fromJson(m_out).object();
        QVERIFY(dumped.take(u"read"_s).toString().size() == 40);
        QCOMPARE(dumped, expected);

        run({u"totals"_s, u"@"_s}, {}, written);
        QCOMPARE(m_exitCode, 0);
        for (const char* line : {"List total: 127:22", "): 126:37\n", "\nA1\t126:37\n", "\nB\t00:45\n"})
            QVERIFY2(m_out.contains(line), m_out.constData());
    }

    // The exit codes, with a message on stderr for every failure; a write that fails leaves the file as it
    // was, and a damaged file still dumps the rows that could be read.
    void exitCodes()
    {
        const QByteArray whole = storage::encodeTimesheet(core::Timesheet());
        core::Timesheet three;
        three.rows.resize(3);
        three.rows[2].setCell(core::CellJob, u"J2"_s);
        const std::tuple<QStringList, QByteArray, QByteArray, int> cases[] = {
            {{"--help"}, {}, {}, 0},
            {{}, {}, {}, 2},
            {{"print", "@"}, whole, {}, 2},
            {{"dump"}, {}, {}, 2},
            {{"totals", "@missing"}, {}, {}, 1},
            {{"dump", "@"}, storage::encodeTimesheet(three).chopped(3), {}, 1}, // damaged
            {{"totals", "@"}, QByteArray("\0\0", 2), {}, 1},
            {{"write", "@"}, whole, "{rows", 1},
            {{"write", "@"}, whole, "{\"rows\": [{\"hours\": 5}]}", 1}, // a number for a text
            {{"write", "@"}, whole, "{}", 0}};
        for (const auto& [args, fileBytes, input, exitCode] : cases) {
            run(args, input, fileBytes);
            QVERIFY2(m_exitCode == exitCode && m_err.isEmpty() == (exitCode == 0), qPrintable(args.join(' ')));
            QFile file(m_file);
            if (exitCode != 0 && args.value(0) == u"write"_s)
                QVERIFY(file.open(QIODevice::ReadOnly) && file.readAll() == fileBytes);
        }
        // A dump's list goes back into the file it came from, but not over what another program wrote since.
        run({u"dump"_s, u"@"_s}, {}, storage::encodeTimesheet(three));
        const QByteArray dumped = m_out;
        run({u"write"_s, u"@"_s}, dumped, storage::encodeTimesheet(three));
        QCOMPARE(m_exitCode, 0);
        run({u"write"_s, u"@"_s}, dumped, whole);
        QVERIFY(m_exitCode == 1 && m_err.contains("was changed by another program"));
        QFile untouched(m_file);
        QVERIFY(untouched.open(QIODevice::ReadOnly) && untouched.readAll() == whole);
        run({u"dump"_s, u"@"_s}, {}, storage::encodeTimesheet(three).chopped(3));
        const QJsonArray read = QJsonDocument::fromJson(m_out).object().value(u"rows"_s).toArray();
        QVERIFY(read.size() == 3 && read[2].toObject().value(u"job"_s).toString() == u"J2"_s);
    }
};

QTEST_GUILESS_MAIN(TestVeltrickCli)
#include "test_veltrick_cli.moc"

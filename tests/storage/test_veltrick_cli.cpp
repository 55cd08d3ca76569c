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

class TestVeltrickCli : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_file = m_dir.filePath(QStringLiteral("week.vlk"));
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
        run({QStringLiteral("write"), QStringLiteral("@")}, input);
        QCOMPARE(m_exitCode, 0);
        QFile file(m_file);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray written = file.readAll();

        run({QStringLiteral("dump"), QStringLiteral("@")}, {}, written);
        QCOMPARE(m_exitCode, 0);
        QJsonObject expected = QJsonDocument::fromJson(input).object();
        QJsonArray rows = expected.value(QStringLiteral("rows")).toArray();
        for (auto row : rows) {
            QJsonObject object = row.toObject();
            for (const char* key : {"project", "operation", "client", "note", "user", "budget"})
                if (!object.contains(QLatin1String(key)))
                    object.insert(QLatin1String(key), QString());
            row = object;
        }
        expected.insert(QStringLiteral("rows"), rows);
        QCOMPARE(QJsonDocument::fromJson(m_out).object(), expected);

        run({QStringLiteral("totals"), QStringLiteral("@")}, {}, written);
        QCOMPARE(m_exitCode, 0);
        for (const char* line : {"List total: 127:22", "): 126:37\n", "\nA1\t126:37\n", "\nB\t00:45\n"})
            QVERIFY2(m_out.contains(line), m_out.constData());
    }

    // The exit codes, with a message on stderr for every failure; a write that fails leaves the file as it
    // was, and a damaged file still dumps the rows that could be read.
    void exitCodes_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QByteArray>("fileBytes");
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<int>("exitCode");
        const QByteArray whole = storage::encodeTimesheet(core::Timesheet());
        core::Timesheet three;
        three.rows.resize(3);
        three.rows[2].setCell(core::CellJob, QStringLiteral("J2"));
        const QByteArray cut = storage::encodeTimesheet(three).chopped(3);
        // clang-format off
        QTest::newRow("help") << QStringList{"--help"} << QByteArray() << QByteArray() << 0;
        QTest::newRow("no arguments") << QStringList{} << QByteArray() << QByteArray() << 2;
        QTest::newRow("unknown command") << QStringList{"print", "@"} << whole << QByteArray() << 2;
        QTest::newRow("no file named") << QStringList{"dump"} << QByteArray() << QByteArray() << 2;
        QTest::newRow("missing file") << QStringList{"totals", "@missing"} << QByteArray() << QByteArray() << 1;
        QTest::newRow("damaged file") << QStringList{"dump", "@"} << cut << QByteArray() << 1;
        QTest::newRow("damaged totals") << QStringList{"totals", "@"} << QByteArray("\0\0", 2) << QByteArray() << 1;
        QTest::newRow("not JSON") << QStringList{"write", "@"} << whole << QByteArray("{rows") << 1;
        QTest::newRow("number for a text") << QStringList{"write", "@"} << whole << QByteArray("{\"rows\": [{\"hours\": 5}]}") << 1;
        QTest::newRow("empty list") << QStringList{"write", "@"} << whole << QByteArray("{}") << 0;
        // clang-format on
    }
    void exitCodes()
    {
        QFETCH(QStringList, args);
        QFETCH(QByteArray, fileBytes);
        QFETCH(QByteArray, input);
        run(args, input, fileBytes);
        QTEST(m_exitCode, "exitCode");
        QCOMPARE(m_err.isEmpty(), m_exitCode == 0);
        QFile file(m_file);
        if (m_exitCode != 0 && args.value(0) == QLatin1String("write"))
            QVERIFY(file.open(QIODevice::ReadOnly) && file.readAll() == fileBytes);
        if (QTest::currentDataTag() == QByteArray("damaged file")) {
            const QJsonArray rows = QJsonDocument::fromJson(m_out).object().value(QStringLiteral("rows")).toArray();
            QCOMPARE(rows.size(), 3);
            QCOMPARE(rows[2].toObject().value(QStringLiteral("job")).toString(), QStringLiteral("J2"));
        }
    }
};

QTEST_GUILESS_MAIN(TestVeltrickCli)
#include "test_veltrick_cli.moc"

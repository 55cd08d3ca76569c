// The exports as a spreadsheet reads them: 1,000 rows in each encoding and both forms, converted to
// CSV by LibreOffice Calc, give back every cell of the rows, one cell per field.
#include "shell/export.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <numeric>

using namespace core;
using namespace shell;

namespace
{

// LibreOffice's numbers for the text encodings of its text import.
struct Form
{
    Encoding encoding;
    QString name;
    int librecode;
};
const QList<Form> kForms = {{Encoding::MacRoman, QStringLiteral("macroman"), 2},
                            {Encoding::Utf8, QStringLiteral("utf8"), 76},
                            {Encoding::Utf16, QStringLiteral("utf16"), 65535},
                            {Encoding::WindowsAnsi, QStringLiteral("ansi"), 1}};

// The CSV that Calc writes: commas, double quotes around a cell with a comma, quote or line end.
QList<QStringList> parseCsv(const QString& text)
{
    QList<QStringList> rows;
    QStringList row;
    QString cell;
    bool quoted = false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (quoted) {
            if (c == QLatin1Char('"') && i + 1 < text.size() && text[i + 1] == QLatin1Char('"'))
                cell += text[++i];
            else if (c == QLatin1Char('"'))
                quoted = false;
            else
                cell += c;
        } else if (c == QLatin1Char('"')) {
            quoted = true;
        } else if (c == QLatin1Char(',')) {
            row << cell;
            cell.clear();
        } else if (c == QLatin1Char('\n')) {
            row << cell;
            rows << row;
            row.clear();
            cell.clear();
        } else if (c != QLatin1Char('\r')) {
            cell += c;
        }
    }
    if (!row.isEmpty() || !cell.isEmpty())
        rows << (row << cell);
    return rows;
}

} // namespace

class TestSpreadsheets : public QObject
{
    Q_OBJECT

    QString m_soffice;

private slots:
    void initTestCase()
    {
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        m_soffice = QStandardPaths::findExecutable(QStringLiteral("soffice"));
        if (m_soffice.isEmpty()) {
            if (qEnvironmentVariableIsSet("CI"))
                QFAIL("soffice is missing (make installs libreoffice-calc-nogui)");
            QSKIP("needs LibreOffice Calc (libreoffice-calc-nogui)");
        }
    }

    void sameCellsInCalc()
    {
        Timesheet list;
        const QStringList clients = {QStringLiteral("Zo\u00eb & S\u00f8n \u2013 caf\u00e9"),
                                     QStringLiteral("Acme, Inc."), QStringLiteral("\"Quoted\" <b>bold</b>")};
        for (int i = 0; i < 1000; ++i) {
            JobRow row;
            row.cells = {QStringLiteral("Week %1").arg(i % 52),
                         QStringLiteral("J%1").arg(i % 37),
                         QStringLiteral("Project %1 \u00e9t\u00e9").arg(i),
                         {},
                         {},
                         QStringLiteral("Design"),
                         clients[i % clients.size()]};
            row.setMinutes(i * 7 % 600);
            row.note = i % 5 == 0 ? QStringLiteral("Note %1; caf\u00e9").arg(i) : QString();
            list.rows.push_back(row);
        }
        std::vector<int> all(1000);
        std::iota(all.begin(), all.end(), 0);

        QTemporaryDir dir;
        const QString profile =
            QStringLiteral("-env:UserInstallation=file://") + dir.filePath(QStringLiteral("profile"));
        const auto convert = [&](const QStringList& files, const QString& infilter) {
            QStringList args{profile, QStringLiteral("--headless"), QStringLiteral("--norestore")};
            if (!infilter.isEmpty())
                args << QStringLiteral("--infilter=") + infilter;
            args << QStringLiteral("--convert-to") << QStringLiteral("csv:Text - txt - csv (StarCalc):44,34,76,1")
                 << QStringLiteral("--outdir") << dir.filePath(QStringLiteral("csv")) << files;
            QProcess soffice;
            soffice.start(m_soffice, args);
            QVERIFY(soffice.waitForFinished(180000));
            QCOMPARE(soffice.exitCode(), 0);
        };

        ExportOptions o; // date, headings, notes and total, as the settings start
        QStringList xlsFiles;
        for (const Form& form : kForms) {
            o.encoding = form.encoding;
            for (bool xls : {true, false}) {
                o.xls = xls;
                QFile out(dir.filePath(form.name + (xls ? QStringLiteral("-sheet.xls") : QStringLiteral("-text.txt"))));
                QVERIFY(out.open(QIODevice::WriteOnly));
                out.write(exportBytes(list, all, o, QStringLiteral("11/23/26")));
                out.close();
                if (xls)
                    xlsFiles << out.fileName();
                else // the text import asks for the encoding, as Calc's dialog does
                    convert({out.fileName()},
                            QStringLiteral("Text - txt - csv (StarCalc):9,34,%1,1").arg(form.librecode));
            }
        }
        convert(xlsFiles, {});

        o.xls = false;
        o.encoding = Encoding::Utf8;
        QList<QStringList> expected;
        for (const QString& line : QString::fromUtf8(exportBytes(list, all, o, QStringLiteral("11/23/26")))
                                       .split(QStringLiteral("\r\n"), Qt::SkipEmptyParts)) {
            QStringList cells = line.split(QLatin1Char('\t'));
            while (!cells.isEmpty() && cells.last().isEmpty())
                cells.removeLast(); // Calc leaves trailing empty cells out of a row
            expected << cells;
        }
        QCOMPARE(expected.size(), 1000 + 3);

        for (const Form& form : kForms) {
            for (const QString& kind : {QStringLiteral("-sheet"), QStringLiteral("-text")}) {
                QFile csv(dir.filePath(QStringLiteral("csv/") + form.name + kind + QStringLiteral(".csv")));
                QVERIFY2(csv.open(QIODevice::ReadOnly), qPrintable(csv.fileName()));
                QList<QStringList> cells = parseCsv(QString::fromUtf8(csv.readAll()));
                for (QStringList& row : cells)
                    while (!row.isEmpty() && row.last().isEmpty())
                        row.removeLast();
                QCOMPARE(cells.size(), expected.size());
                for (int r = 0; r < expected.size(); ++r)
                    QVERIFY2(cells[r] == expected[r], qPrintable(form.name + kind + QStringLiteral(" row %1: ").arg(r) +
                                                                 cells[r].join(QLatin1Char('|'))));
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestSpreadsheets)
#include "test_spreadsheets.moc"

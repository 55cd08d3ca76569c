// The printed report on PDF pages, read back with pdftotext: every page has its foot, page 1 its title,
// the last the total, and no row is cut from its note by a page break.
#include "platform/qt/reportprinter.h"
#include "shell/export.h"

#include <QPrinter>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <numeric>

class TestReport : public QObject
{
    Q_OBJECT

private slots:
    void twoHundredRows()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("pdftotext")).isEmpty()) {
            if (qEnvironmentVariableIsSet("CI"))
                QFAIL("pdftotext is missing (make installs poppler-utils)");
            QSKIP("needs pdftotext (poppler-utils)");
        }
        core::Timesheet list;
        for (int i = 0; i < 200; ++i) {
            core::JobRow row;
            row.cells = {QStringLiteral("11/%1/26").arg(1 + i % 28),
                         QStringLiteral("J%1").arg(i, 3, 10, QLatin1Char('0')),
                         i % 9 == 0
                             ? QStringLiteral("A project with a long name that has to wrap in its column %1").arg(i)
                             : QStringLiteral("Project %1").arg(i),
                         {},
                         {},
                         QStringLiteral("Design"),
                         QStringLiteral("Zo\u00eb & S\u00f8n")};
            row.setMinutes(i % 90);
            if (i % 4 == 0)
                row.note = QStringLiteral("Note of J%1: ").arg(i, 3, 10, QLatin1Char('0')) +
                           QStringLiteral("words that go on ").repeated(i % 3 == 0 ? 12 : 1) + QStringLiteral("end");
            list.rows.push_back(row);
        }
        std::vector<int> all(200);
        std::iota(all.begin(), all.end(), 0);
        core::AppPrefs prefs;
        prefs.usrname = QStringLiteral("Ann");
        const platform::Report report = shell::buildReport(list, all, prefs, QStringLiteral("23 November 2026"));

        QTemporaryDir dir;
        const QString pdf = qEnvironmentVariable("VELTRICK_REPORT_PDF", dir.filePath(QStringLiteral("report.pdf")));
        QPrinter printer(QPrinter::HighResolution);
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(pdf);
        printer.setPageSize(QPageSize(QPageSize::A4));
        const int pages = platform::qt::paintReport(printer, report);

        QProcess text;
        text.start(QStringLiteral("pdftotext"), {QStringLiteral("-raw"), pdf, QStringLiteral("-")});
        QVERIFY(text.waitForFinished(30000));
        QStringList pageTexts = QString::fromUtf8(text.readAllStandardOutput()).split(QLatin1Char('\f'));
        if (pageTexts.last().trimmed().isEmpty())
            pageTexts.removeLast();
        QCOMPARE(pageTexts.size(), pages);
        QVERIFY(pages >= 4);
        QVERIFY(pageTexts.first().contains(QStringLiteral("Veltrick printed on 23 November 2026")));
        QVERIFY(pageTexts.last().contains(QStringLiteral("Total Time: ") + report.total.section(QLatin1Char(' '), 2)));
        int rowsFound = 0;
        for (int p = 0; p < pages; ++p) {
            const QString& page = pageTexts[p];
            QVERIFY2(page.contains(QStringLiteral("User: Ann")), qPrintable(QString::number(p)));
            QVERIFY(page.contains(QStringLiteral("Page: %1").arg(p + 1)));
            QVERIFY(page.contains(QStringLiteral("Time")));
            for (int i = 0; i < 200; ++i) {
                const QString job = QStringLiteral("J%1").arg(i, 3, 10, QLatin1Char('0'));
                if (!page.contains(job + QLatin1Char(' ')) && !page.contains(job + QLatin1Char('\n')))
                    continue;
                ++rowsFound;
                // The row and the end of its note on one page.
                if (i % 4 == 0)
                    QVERIFY2(page.contains(QStringLiteral("Note of ") + job) &&
                                 page.indexOf(QStringLiteral("end"), page.indexOf(QStringLiteral("Note of ") + job)) >
                                     0,
                             qPrintable(job));
            }
        }
        QVERIFY(rowsFound >= 200); // every row once, and its note's mention of it on the same page
    }
};

QTEST_MAIN(TestReport)
#include "test_report.moc"

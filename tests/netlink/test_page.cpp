#include "netlink/apptexts.h"
#include "netlink/page.h"
#include "netlink/stylesheet.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

using namespace netlink;

namespace
{

core::JobRow jobRow(const QString& job)
{
    core::JobRow row;
    row.setCell(core::CellDate, QStringLiteral("11/22/26"));
    row.setCell(core::CellJob, job);
    return row;
}

core::Timesheet sheetOf(int rows, int selected = -1)
{
    core::Timesheet sheet;
    for (int r = 0; r < rows; ++r)
        sheet.AddRow(jobRow(QStringLiteral("J%1").arg(r)));
    sheet.ListIndex = selected;
    return sheet;
}

QStringList rowClasses(const QByteArray& page)
{
    QStringList classes;
    static const QRegularExpression tr(QStringLiteral("<tr class=\"(\\w+)\">"));
    for (const auto& m : tr.globalMatch(QString::fromUtf8(page)))
        if (m.captured(1) != QLatin1String("header"))
            classes << m.captured(1);
    return classes;
}

void writeFile(const QString& path, const QByteArray& bytes)
{
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

} // namespace

class TestPage : public QObject
{
    Q_OBJECT

private slots:
    void emptySheetIsTheWholeFixedPage()
    {
        const QByteArray expected =
            "HTTP/1.0 200 OK\r\n\r\n<html>\r\n<head>\r\n<title>Veltrick @ 10.0.0.7</title>\r\n"
            "<meta charset=\"UTF8\">\r\n<style type=\"text/css\" media=\"screen\"><!--\r\n"
            "p{x:y}\n--></style>\r\n"
            "<body marginwidth=\"10\" marginheight=\"10\" leftmargin=\"10\" topmargin=\"10\" "
            "bottommargin=\"50\">\r\n"
            "<div><h1>Veltrick</h1><hr class=\"runstop\"><table width=\"100%\" border=\"0\" "
            "cellspacing=\"2\" cellpadding=\"5\">\r\n"
            "<script>setTimeout(function(){\r\nwindow.location.reload(true);\r\n}, 60000);\r\n"
            "</script>\r\n<tr class=\"header\">\r\n"
            "<td width=\"10%\">Date</td><td width=\"10%\">Job No.</td>"
            "<td width=\"20%\">Project</td><td width=\"3%\" align=\"center\">H\xE2\x80\x89</td>"
            "<td width=\"3%\" align=\"center\">\xE2\x80\x89M</td><td width=\"15%\">Operation</td>"
            "<td width=\"15%\">Client</td><td>Notes:</td>\r\n</tr>\r\n"
            "</table>\r\n</div></body>\r\n</html>";
        QCOMPARE(buildPage(core::Timesheet(), false, QStringLiteral("p{x:y}\n"), QStringLiteral("10.0.0.7")), expected);
    }

    // Every cell of a row, in column order, byte for byte: ASCII, markup, and text the fast path
    // must hand to the UTF-8 encoder wherever the first non-ASCII character falls.
    void rowBlock_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("markup") << QStringLiteral("<b>bold</b> &amp; <i>x</i>");
        QTest::newRow("accent first") << QStringLiteral("\u00C9cole");
        QTest::newRow("accent last") << QStringLiteral("Zurich caf\u00E9");
        QTest::newRow("thin space and line end") << QStringLiteral("a\u2009b\r\nc");
    }
    void rowBlock()
    {
        QFETCH(QString, text);
        core::Timesheet sheet;
        core::JobRow row;
        for (int c = 0; c <= core::CellClient; ++c)
            row.setCell(c, text + QString::number(c));
        row.setCell(core::CellSortKey, QStringLiteral("hidden8"));
        row.setCell(core::CellLink, QStringLiteral("hidden9"));
        row.note = text + QStringLiteral("N");
        row.user = QStringLiteral("hiddenUser");
        sheet.AddRow(row);

        const QByteArray t = text.toUtf8();
        const QByteArray expected = "<tr class=\"roweven\">\r\n<td>" + t + "0</td><td>" + t + "1</td><td>" + t +
                                    "2</td><td align=\"center\">" + t + "3</td><td align=\"center\">" + t +
                                    "4</td><td>" + t + "5</td><td>" + t + "6</td><td>" + t +
                                    "N</td>\r\n</tr>\r\n</table>\r\n</div></body>\r\n</html>";
        const QByteArray page = buildPage(sheet, false, QString(), QString());
        QVERIFY2(page.endsWith(expected), page.right(expected.size() + 40).constData());
        QVERIFY(!page.contains("hidden"));
    }

    // Rows are striped with the selected one lit. Between rows the window runs: rows may go, come or be
    // selected, and the page follows the list as it is at each row without reading past its end.
    void stripesAndSelection_data()
    {
        QTest::addColumn<int>("rows");
        QTest::addColumn<int>("selected");
        QTest::addColumn<QString>("change");
        QTest::addColumn<QStringList>("classes");
        QTest::addColumn<QStringList>("jobs");
        // clang-format off
        QTest::newRow("none selected") << 3 << -1 << "" << QStringList{"roweven", "rowodd", "roweven"} << QStringList{"J0", "J1", "J2"};
        QTest::newRow("middle selected") << 5 << 2 << "" << QStringList{"roweven", "rowodd", "hilite", "rowodd", "roweven"} << QStringList{"J0", "J1", "J2", "J3", "J4"};
        QTest::newRow("odd row selected") << 4 << 1 << "" << QStringList{"roweven", "hilite", "roweven", "rowodd"} << QStringList{"J0", "J1", "J2", "J3"};
        QTest::newRow("first selected") << 2 << 0 << "" << QStringList{"hilite", "rowodd"} << QStringList{"J0", "J1"};
        QTest::newRow("emptied between rows") << 3 << -1 << "clear" << QStringList{"roweven"} << QStringList{"J0"};
        QTest::newRow("row added between rows") << 3 << -1 << "add" << QStringList{"roweven", "rowodd", "roweven", "rowodd"} << QStringList{"J0", "J1", "J2", "NEW"};
        QTest::newRow("last selected between rows") << 3 << -1 << "select" << QStringList{"roweven", "rowodd", "hilite"} << QStringList{"J0", "J1", "J2"};
        // clang-format on
    }
    void stripesAndSelection()
    {
        QFETCH(int, rows);
        QFETCH(int, selected);
        QFETCH(QString, change);
        QFETCH(QStringList, classes);
        QFETCH(QStringList, jobs);
        core::Timesheet sheet = sheetOf(rows, selected);
        bool first = true;
        const QByteArray page = buildPage(sheet, false, QString(), QString(), [&] {
            if (!std::exchange(first, false))
                return;
            if (change == QLatin1String("clear"))
                sheet.DeleteAllRows();
            else if (change == QLatin1String("add"))
                sheet.AddRow(jobRow(QStringLiteral("NEW")));
            else if (change == QLatin1String("select"))
                sheet.ListIndex = 2;
        });
        QStringList shown;
        static const QRegularExpression job(QStringLiteral("<td>11/22/26</td><td>(\\w+)</td>"));
        for (const auto& m : job.globalMatch(QString::fromUtf8(page)))
            shown << m.captured(1);
        QCOMPARE(shown, jobs);
        QCOMPARE(rowClasses(page), classes);
        QVERIFY(page.endsWith("</table>\r\n</div></body>\r\n</html>"));
    }

    void loadStyleSheet_data()
    {
        // Relative to a prefix whose bin/ is the program's folder; a sheet found reads as the name of its file.
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QString>("found");
        QTest::newRow("installed") << QStringList{"share/veltrick/styleSheet.txt"} << "share/veltrick/styleSheet.txt";
        QTest::newRow("beside the program is not looked at") << QStringList{"bin/styleSheet.txt"} << QString();
        QTest::newRow("far too large") << QStringList{"share/veltrick/styleSheet.txt=huge"} << QString();
    }
    void loadStyleSheet()
    {
        QFETCH(QStringList, files);
        QFETCH(QString, found);
        QTemporaryDir prefix;
        const QString appDir = prefix.filePath(QStringLiteral("bin"));
        for (const QString& spec : files) {
            const QString name = spec.section(QLatin1Char('='), 0, 0);
            writeFile(prefix.filePath(name),
                      spec.endsWith(QLatin1String("=huge")) ? QByteArray(2 << 20, 'x') : name.toUtf8());
        }
        QString loaded = QStringLiteral("stale");
        const platform::Result result = netlink::loadStyleSheet(appDir, loaded);
        QCOMPARE(result.ok(), !found.isEmpty());
        QCOMPARE(loaded, found);
        if (!result.ok())
            QCOMPARE(result.message, kAppStyleSheetFailure);
    }

    void shippedStyleSheetStylesEveryClassAndIsLaidOutForThePrograms()
    {
        QFile source(qEnvironmentVariable("VELTRICK_SOURCE_DIR") + QStringLiteral("/resources/styleSheet.txt"));
        QVERIFY(source.open(QIODevice::ReadOnly));
        const QString sheet = QString::fromUtf8(source.readAll());
        for (const char* selector : {"tr.header", "tr.hilite", "tr.roweven", "tr.rowodd", "hr.runstart", "hr.runstop"})
            QVERIFY2(sheet.contains(QLatin1String(selector)), selector);
        // Inside the page's style element these would end the sheet early.
        QVERIFY(!sheet.contains(QLatin1String("-->")));
        QVERIFY(!sheet.contains(QLatin1String("</"), Qt::CaseInsensitive));

        QString copied;
        QVERIFY(netlink::loadStyleSheet(QCoreApplication::applicationDirPath(), copied).ok());
        QCOMPARE(copied, sheet);
    }
};

QTEST_GUILESS_MAIN(TestPage)
#include "test_page.moc"

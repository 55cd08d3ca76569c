// Print and export: which rows each choice takes, the bytes of the export in each encoding and form, the
// options of the settings, the report, and the windows as the menus open them.
#include "programrig.h"
#include "shell/export.h"
#include "shell/printforms.h"

#include <QtTest>

using namespace core;
using namespace shell;
using testing::ProgramRig;

namespace
{

const QString kSheet = QStringLiteral("/docs/Week 47.vlk");
const QString kMixed = QStringLiteral("Zo\u00eb & S\u00f8n \u2013 caf\u00e9");

} // namespace

Q_DECLARE_METATYPE(shell::Scope)
Q_DECLARE_METATYPE(shell::Encoding)

class TestExport : public QObject
{
    Q_OBJECT

    testing::ScriptedDialogs dialogs;
    std::unique_ptr<ProgramRig> rig;

    Mainwndo& w() { return *rig->w(); }

    // Four rows: A100 twice (once typed a100), on two days and for two clients (Acme once typed ACME);
    // a note on the first.
    void openSheet()
    {
        std::vector<JobRow> rows{rig->row(QStringLiteral("A100"), 75), rig->row(QStringLiteral("B200"), 30),
                                 rig->row(QStringLiteral("a100"), 20, -1), rig->row(QStringLiteral("C300"), 5, -1)};
        rows[0].note = QStringLiteral("first\nline two");
        rows[1].setCell(CellClient, kMixed);
        rows[2].setCell(CellClient, QStringLiteral("Bolt"));
        rows[3].setCell(CellClient, QStringLiteral("ACME"));
        rig->writeSheet(kSheet, rows);
        rig->program->openRequested({kSheet});
    }

    // The export of the rows as text lines, with the given options over the settings' defaults.
    QStringList lines(const std::vector<int>& rows, ExportOptions o)
    {
        o.xls = false;
        const QString text = QString::fromUtf8(exportBytes(w().ListBox1, rows, o, QStringLiteral("11/23/26")));
        QStringList out = text.split(QStringLiteral("\r\n"));
        if (out.last().isEmpty())
            out.removeLast();
        return out;
    }

private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }

    void init()
    {
        dialogs = testing::ScriptedDialogs();
        rig = std::make_unique<ProgramRig>(dialogs);
        rig->clock.set(2026, 11, 23, 10, 0);
        rig->start();
        openSheet();
    }

    void cleanup()
    {
        QVERIFY2(dialogs.errors.isEmpty(), qPrintable(dialogs.errors.join(QLatin1Char('\n'))));
        QVERIFY(dialogs.scriptDone());
    }

    // Each choice of rows, in both windows' terms; one that needs a selected row says so without one, and
    // a custom one with nothing ticked says so too.
    void scopes_data()
    {
        QTest::addColumn<int>("selected");
        QTest::addColumn<Scope>("scope");
        QTest::addColumn<QList<int>>("ticked");
        QTest::addColumn<QString>("jobs"); // the report's rows, "refused", or "" for no report
        QTest::newRow("all") << -1 << Scope::All << QList<int>{} << "A100 B200 a100 C300";
        QTest::newRow("job number") << 2 << Scope::JobNumber << QList<int>{} << "A100 a100";
        QTest::newRow("date") << 1 << Scope::Date << QList<int>{} << "A100 B200";
        QTest::newRow("client") << 0 << Scope::Client << QList<int>{} << "A100 C300";
        QTest::newRow("custom, in list order") << -1 << Scope::Custom << QList<int>{3, 1, 9} << "B200 C300";
        QTest::newRow("custom, nothing ticked") << -1 << Scope::Custom << QList<int>{9} << "";
        QTest::newRow("job number without a selected row") << -1 << Scope::JobNumber << QList<int>{} << "refused";
    }

    void scopes()
    {
        QFETCH(int, selected);
        QFETCH(Scope, scope);
        QFETCH(QList<int>, ticked);
        QFETCH(QString, jobs);
        w().setListIndex(selected);
        rig->program->app().prefs.usrname = QStringLiteral("Ann");
        dialogs.expectModal(QStringLiteral("pntops"), [&](platform::ModalForm& form) {
            auto& p = static_cast<pntops&>(form);
            for (int row : ticked)
                p.tick(row, true);
            p.RadioButton_Action(scope);
            p.PushButton1_Action();
        });
        rig->program->command(Item::printit);
        if (jobs.isEmpty()) { // said, and no empty report
            QCOMPARE(dialogs.messages, QStringList{RowChoice::kPWTickRow});
            QVERIFY(dialogs.printed.isEmpty());
            return;
        }
        QCOMPARE(dialogs.printed.size(), 1);
        const platform::Report& report = dialogs.printed.first();
        if (jobs == QLatin1String("refused")) {
            QCOMPARE(dialogs.messages, QStringList{RowChoice::kPWSelectRow});
            QCOMPARE(report.rows.size(), 4); // the choice stayed on all rows
            return;
        }
        QStringList printed;
        qint64 minutes = 0;
        for (const platform::Report::Row& row : report.rows) {
            printed << row.cells[1];
            const QStringList hm = row.cells[3].split(QLatin1Char(':'));
            minutes += hm[0].toInt() * 60 + hm[1].toInt();
        }
        QCOMPARE(printed.join(QLatin1Char(' ')), jobs);
        QCOMPARE(report.total, QStringLiteral("Total Time: ") + hhmm(minutes));
        QCOMPARE(report.title, QStringLiteral("Veltrick printed on Monday, November 23, 2026"));
        QCOMPARE(report.footer, QStringLiteral("User: Ann"));
        QCOMPARE(report.headings.at(3), QStringLiteral("Time"));
    }

    // "Zoë & Søn – café" in each encoding and both forms; what an encoding cannot hold becomes "?".
    void encodings_data()
    {
        QTest::addColumn<Encoding>("encoding");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("charset");
        QTest::addColumn<int>("replaced"); // of "Ω ≠ 😀"
        QTest::newRow("MacRoman") << Encoding::MacRoman << QByteArray("Zo\x91 & S\xbfn \xd0 caf\x8e") << "macintosh"
                                  << 1;
        QTest::newRow("UTF-8") << Encoding::Utf8 << QByteArray("Zo\xc3\xab & S\xc3\xb8n \xe2\x80\x93 caf\xc3\xa9")
                               << "utf-8" << 0;
        QTest::newRow("UTF-16") << Encoding::Utf16
                                << QByteArray("Z\0o\0\xeb\0 \0&\0 \0S\0\xf8\0n\0 \0\x13\x20 \0c\0a\0f\0\xe9\0", 32)
                                << "utf-16" << 0;
        QTest::newRow("Windows ANSI") << Encoding::WindowsAnsi << QByteArray("Zo\xeb & S\xf8n \x96 caf\xe9")
                                      << "windows-1252" << 3;
    }

    void encodings()
    {
        QFETCH(Encoding, encoding);
        QFETCH(QByteArray, bytes);
        QFETCH(QString, charset);
        QFETCH(int, replaced);
        Timesheet list;
        list.rows = {rig->row(QStringLiteral("A100"), 5)};
        list.row(0).setCell(CellClient, kMixed);
        ExportOptions o;
        o.encoding = encoding;
        o.reportDate = o.headings = o.notes = o.total = false;
        o.xls = false;
        const QByteArray txt = exportBytes(list, {0}, o, {});
        QVERIFY(txt.contains(bytes));
        QCOMPARE(txt.startsWith("\xff\xfe"), encoding == Encoding::Utf16);
        const QByteArray lineEnd = encoding == Encoding::Utf16 ? QByteArray("\r\0\n\0", 4) : QByteArray("\r\n");
        QVERIFY(txt.endsWith(bytes + lineEnd));

        o.xls = true;
        const QByteArray xls = exportBytes(list, {0}, o, {});
        QByteArray amp = bytes;
        amp.replace(encoding == Encoding::Utf16 ? QByteArray("&\0", 2) : QByteArray("&"),
                    encoding == Encoding::Utf16 ? QByteArray("&\0a\0m\0p\0;\0", 10) : QByteArray("&amp;"));
        QVERIFY(xls.contains(amp));
        const QString declared =
            encoding == Encoding::Utf16
                ? QString::fromUtf16(reinterpret_cast<const char16_t*>(xls.constData() + 2), (xls.size() - 2) / 2)
                : QString::fromLatin1(xls);
        QVERIFY(declared.contains(QStringLiteral("<meta charset=\"%1\">").arg(charset)));

        int count = -1;
        list.row(0).setCell(CellClient, QStringLiteral("\u03a9 \u2260 \U0001F600"));
        exportBytes(list, {0}, o, {}, &count);
        QCOMPARE(count, replaced);
    }

    // Every option of the settings, one at a time over none, in the text form.
    void options()
    {
        ExportOptions none;
        none.reportDate = none.headings = none.notes = none.total = false;
        const QString row0 = QStringLiteral("11/23/26\tA100\tP A100\t1\t15\tDesign\tAcme");
        QCOMPARE(lines({0}, none), QStringList{row0});

        ExportOptions o = none;
        o.reportDate = true;
        QCOMPARE(lines({0}, o), (QStringList{"Report Date: 11/23/26\t\t\t\t\t\t", row0}));
        o = none;
        o.headings = true;
        QCOMPARE(lines({0}, o).first(), QStringLiteral("Date\tJob No.\tProject\tHours\tMinutes\tOperation\tClient"));
        o = none;
        o.notes = true; // the note's line end would start a row: it becomes a space
        QCOMPARE(lines({0}, o), QStringList{row0 + QStringLiteral("\tfirst line two")});
        o = none;
        o.total = true;
        QCOMPARE(lines({0, 1}, o).last(), QStringLiteral("Total Time:\t\t\t1\t45\t\t"));
        o.blankRow = true;
        QCOMPARE(lines({0, 1}, o).mid(2), (QStringList{"\t\t\t\t\t\t", "Total Time:\t\t\t1\t45\t\t"}));
        o = none;
        o.blankColumn = true;
        QCOMPARE(lines({0}, o), QStringList{QLatin1Char('\t') + row0});
    }

    // The export window: opened on all rows with the settings' encoding, a change there is for this
    // export only; the file gets its suggested name, and the status line counts what was replaced.
    // With Alt the item opens the Export Options tab instead.
    void exportWindow()
    {
        AppPrefs& prefs = rig->program->app().prefs;
        prefs.xprtEncoding = 1;
        prefs.exportFormat = QStringLiteral("txt");
        dialogs.expectModal(QStringLiteral("xpops"), [&](platform::ModalForm& form) {
            auto& x = static_cast<xpops&>(form);
            QCOMPARE(x.scope, Scope::All);
            QCOMPARE(x.formatMenu, 1);
            x.RadioButton_Action(Scope::Custom);
            x.PushButton1_Action(); // nothing ticked: said before a file is asked for, and the window stays
            QVERIFY(x.ButtonPressed.isEmpty() && dialogs.messages == QStringList{RowChoice::kPWTickRow});
            x.RadioButton_Action(Scope::All);
            x.formatMenu_Change(3);
            x.PushButton1_Action();
            QCOMPARE(x.ButtonPressed, xpops::kXPButtonExport);
        });
        dialogs.expectFile(QStringLiteral("/docs/out.txt"));
        w().ListBox1.row(3).setCell(CellProject, QStringLiteral("Smile \U0001F600"));
        rig->program->command(Item::exportmenu);
        QCOMPARE(prefs.xprtEncoding, 1);
        const QByteArray out = rig->files.files.value(QStringLiteral("/docs/out.txt"));
        QVERIFY(out.contains("Zo\xeb & S\xf8n \x96 caf\xe9"));
        QCOMPARE(w().datastream, xpops::kXPReplaced + QStringLiteral("1"));

        // A full disk: the message, and the window stays for another try.
        rig->files.failWrites = true;
        dialogs.expectModal(QStringLiteral("xpops"), [&](platform::ModalForm& form) {
            auto& x = static_cast<xpops&>(form);
            x.PushButton1_Action();
            QVERIFY(x.ButtonPressed.isEmpty());
            x.PushButton2_Action();
        });
        dialogs.expectFile(QStringLiteral("/docs/out2.txt"));
        rig->program->command(Item::exportmenu);
        QVERIFY(dialogs.messages.last().startsWith(xpops::kXPWriteFailed));

        rig->desktop.alt = true;
        dialogs.expectModal(QStringLiteral("prefwin"),
                            [](platform::ModalForm& form) { QCOMPARE(static_cast<prefwin&>(form).TabPanel1, 2); });
        rig->program->command(Item::exportmenu);
    }

    // Print Options: the title and the date switch reach the settings only by Save.
    void printOptions()
    {
        AppPrefs& prefs = rig->program->app().prefs;
        dialogs.expectModal(QStringLiteral("printsetup"), [](platform::ModalForm& form) {
            auto& p = static_cast<printsetup&>(form);
            QCOMPARE(p.shetitle, printsetup::kPSWinDefaultTxt);
            p.shetitle = QStringLiteral("Hours for Acme");
            p.Checkdate = false;
        });
        rig->program->command(Item::FilePrintLayout);
        QCOMPARE(prefs.iam, printsetup::kPSWinDefaultTxt);
        dialogs.expectModal(QStringLiteral("printsetup"), [](platform::ModalForm& form) {
            auto& p = static_cast<printsetup&>(form);
            p.shetitle = QStringLiteral("Hours for Acme");
            p.Checkdate = false;
            p.saveme_Action();
        });
        rig->program->command(Item::FilePrintLayout);
        QVERIFY(prefs.iam == QStringLiteral("Hours for Acme") && !prefs.dateon);
    }
};

QTEST_GUILESS_MAIN(TestExport)
#include "test_export.moc"

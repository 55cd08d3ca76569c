// The program over fakes: the one command state, the idle warning, print and export, the preferences.
#include "core/noactivity.h"
#include "programrig.h"
#include "shell/export.h"
#include "shell/printforms.h"

#include <QtTest>

using namespace core;
using namespace Qt::StringLiterals;
using namespace shell;
using storage::OperationList;

namespace
{

const QString kSheet = QStringLiteral("/docs/a.vlk");
const QString kMixed = QStringLiteral("Zo\u00eb & S\u00f8n \u2013 caf\u00e9");
const QString kOps = storage::prefFile(storage::kOperationsFileName);
// The idle warning's three answers.
const char* const kButtons[] = {"Continue", "Reset", "New"};
// The answer of that name, pressed. (A table of member pointers read in a lambda trips GCC 12's bounds check.)
void press(noactivity& warning, int button)
{
    button == 0   ? warning.PushButton1_Action()
    : button == 1 ? warning.PushButton2_Action()
                  : warning.PushButton3_Action();
}

} // namespace

Q_DECLARE_METATYPE(shell::Scope)
Q_DECLARE_METATYPE(shell::Encoding)

class TestProgram : public QObject
{
    Q_OBJECT

    testing::ScriptedDialogs dialogs;
    std::unique_ptr<testing::ProgramRig> rig;

    Mainwndo& w() { return *rig->w(); }
    AppPrefs& prefs() { return rig->program->app().prefs; }
    JobRow row(const char* job, int minutes, int day = 0) { return rig->row(QString::fromLatin1(job), minutes, day); }
    JobRow saved(int index) { return storage::decodeTimesheet(rig->files.files.value(kSheet)).sheet.row(index); }
    template <typename Form> void expect(const QString& name, std::function<void(Form&)> user)
    {
        dialogs.expectModal(name, [user](platform::ModalForm& form) { user(static_cast<Form&>(form)); });
    }

    void open(const std::vector<JobRow>& rows, int selected = 0)
    {
        rig->writeSheet(kSheet, rows);
        rig->program->openRequested({kSheet});
        w().setListIndex(selected);
    }
    void openTwo(int selected = 0, int minutes = 30) { open({row("A100", minutes), row("B200", 0)}, selected); }

    // A100 twice (once typed a100) on two days, three clients (Acme once typed ACME), a note on the first;
    // C300's project is that of a100, which a choice by job number must not take.
    Timesheet sample()
    {
        Timesheet list;
        list.rows = {row("A100", 75), row("B200", 30), row("a100", 20, -1), row("C300", 5, -1)};
        list.row(0).note = QStringLiteral("first\r\nline\ttwo");
        list.row(1).setCell(CellClient, kMixed);
        list.row(2).setCell(CellClient, QStringLiteral("Bolt"));
        list.row(3).setCell(CellClient, QStringLiteral("ACME"));
        list.row(3).setCell(CellProject, QStringLiteral("P a100"));
        return list;
    }

    // A minute passes: the count's tick, then the idle check, as the two timers come in.
    void minute(bool input = false)
    {
        rig->clock.advanceMinutes(1);
        rig->tick();
        rig->desktop.probe.input = input;
        testing::ProgramRig::fake(w().Timer4()).fire();
    }

private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }

    void init()
    {
        dialogs = testing::ScriptedDialogs();
        rig = std::make_unique<testing::ProgramRig>(dialogs);
        rig->clock.set(2026, 11, 23, 10, 0);
        rig->start();
    }

    void cleanup()
    {
        QVERIFY2(dialogs.errors.isEmpty(), qPrintable(dialogs.errors.join(QLatin1Char('\n'))));
        QVERIFY(dialogs.scriptDone());
    }

    // Start on the running row measures before it restarts the count: the minute crossed is not lost.
    void startOnTheRunningRowLosesNoMinute()
    {
        rig->clock.set(2026, 11, 22, 10, 0, 50);
        openTwo(1);
        rig->program->command(Item::statusStart);
        rig->clock.set(2026, 11, 22, 10, 1, 10);
        rig->program->command(Item::statusStart);
        rig->clock.set(2026, 11, 22, 10, 2, 0);
        rig->program->command(Item::statusStop);
        QCOMPARE(w().ListBox1.row(1).minutes(), qint64(2));
    }

    // The application's procedure, then the window's, in the state the row names (Net Link on where it says
    // so, and while timing). Print stays on while a job runs; export needs a file and a stopped job.
    void enableProcedures_data()
    {
        QTest::addColumn<QString>("on");
        const QString app = QStringLiteral(" helpon2 aboutme nineprefs");
        const QString doc = QStringLiteral("saveAs presetJobs FileQuit FileAddNewClient syncAddressBook "
                                           "FilePrintLayout printit shwnts ");
        const QString rows = QStringLiteral("nujobmenu2 duplicate edjobmenu notey zerorow clearjb2 totaltime2 "
                                            "totaldy2 statusStart clozeit switchit exportmenu");
        // clang-format off
        QTest::newRow("no timesheet") << "nusheet open openOld FileQuit" + app;
        QTest::newRow("no timesheet, Net Link on") << "nusheet open openOld FileQuit webo" + app;
        QTest::newRow("new, no file yet") << doc + "exportmenu nujobmenu2" + app;
        QTest::newRow("clean file") << doc + rows + app;
        QTest::newRow("dirty file") << "save " + doc + rows + app;
        QTest::newRow("no row selected") << doc + "nujobmenu2 clozeit switchit exportmenu" + app;
        QTest::newRow("timing") << "clozeit switchit saveAs presetJobs FileQuit FilePrintLayout printit shwnts webo statusStop" + app;
        QTest::newRow("stopped after a quiet rollover") << doc + "clozeit switchit notey zerorow clearjb2 statusStart" + app;
        // clang-format on
    }
    void enableProcedures()
    {
        QFETCH(QString, on);
        const QByteArray state = QTest::currentDataTag();
        const bool rollover = state.startsWith("stopped");
        prefs().netlook = state.contains("Net Link") || state == "timing";
        rig->program->netLinkStop(); // the setting alone: no server in a test
        prefs().warningsign = !rollover;
        if (rollover)
            rig->clock.set(2026, 11, 21, 23, 58);
        if (state == "new, no file yet") {
            dialogs.expectFile(QString()); // the save dialog of New, cancelled
            rig->program->command(Item::nusheet);
        } else if (!state.startsWith("no timesheet")) {
            openTwo(state == "no row selected" ? -1 : 0);
            if (state == "dirty file")
                w().markChanged();
            if (state == "timing" || rollover)
                rig->program->runButton();
        }
        if (rollover) {
            rig->clock.set(2026, 11, 22, 0, 2);
            rig->tick();
            QVERIFY(w().dateschanged && w().running);
            rig->program->runButton();
        }
        const MenuItems items = rig->program->commandState();
        QStringList enabled, expected = on.split(QLatin1Char(' '));
        for (int i = 0; i < kItemCount; ++i)
            if (items.enabled(Item(i)))
                enabled << itemName(Item(i));
        enabled.sort();
        expected.sort();
        QCOMPARE(enabled, expected);
    }

    // Which still tick brings the idle warning, and the job's time it shows as the moment activity stopped.
    void idleWarningComes_data()
    {
        QTest::addColumn<int>("waittime");
        QTest::addColumn<int>("rowMinutes");
        QTest::addColumn<QList<int>>("inputAt"); // minutes with keyboard or pointer input
        QTest::addColumn<int>("warnedAt");       // 0: never within 30 minutes
        QTest::addColumn<QString>("stoppedAt");
        QTest::newRow("fourth still tick at 5") << 5 << 30 << QList<int>{} << 4 << "00:29";
        QTest::newRow("ninth at 10") << 10 << 100 << QList<int>{} << 9 << "01:39";
        QTest::newRow("input restarts the count") << 5 << 30 << QList<int>{3} << 7 << "00:32";
        QTest::newRow("typing every other minute")
            << 5 << 30 << QList<int>{2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30} << 0 << "";
        QTest::newRow("job younger than the idle span") << 5 << 0 << QList<int>{} << 4 << "00:00";
        QTest::newRow("off") << 0 << 30 << QList<int>{} << 0 << "";
        QTest::newRow("no desktop source") << 5 << 30 << QList<int>{} << 0 << "";
    }
    void idleWarningComes()
    {
        QFETCH(int, waittime);
        QFETCH(int, rowMinutes);
        QFETCH(QList<int>, inputAt);
        QFETCH(int, warnedAt);
        QFETCH(QString, stoppedAt);
        rig->desktop.probe.canTell = QTest::currentDataTag() != QByteArray("no desktop source");
        openTwo(0, rowMinutes);
        prefs().waittime = waittime;
        rig->program->runButton();
        int shownAt = 0, now = 0;
        if (warnedAt > 0)
            expect<noactivity>(QStringLiteral("noactivity"), [&](noactivity& warning) {
                shownAt = now;
                QCOMPARE(warning.alrthr + QLatin1Char(':') + warning.alrtmn, stoppedAt);
                QCOMPARE(warning.inacH + warning.inacM, QStringLiteral("00") + fmt00(waittime));
                QCOMPARE(w().Timer4().mode(), platform::Timer::Off);
                warning.PushButton2_Action();
            });
        const int beeps = rig->desktop.beeps;
        for (now = 1; now <= 30 && shownAt == 0; ++now)
            minute(inputAt.contains(now));
        QCOMPARE(shownAt, warnedAt);
        QCOMPARE(rig->desktop.beeps - beeps, warnedAt > 0 ? 1 : 0);
        QVERIFY(waittime > 0 || rig->desktop.probe.checks == 0); // off asks nothing
    }

    // The warning's answers by day and over midnight. Behind it the job counts on and reaches the file;
    // Continue keeps the idle time, Reset and New take it out and stop the job, New offers it to a job of
    // today. A new day waits for the answer, and every minute is on one row.
    void idleAnswers_data()
    {
        QTest::addColumn<int>("button");
        QTest::addColumn<bool>("midnight");
        for (bool midnight : {false, true})
            for (int button : {0, 1, 2})
                QTest::addRow("%s%s", kButtons[button], midnight ? " over midnight" : "") << button << midnight;
    }
    void idleAnswers()
    {
        QFETCH(int, button);
        QFETCH(bool, midnight);
        const int start = midnight ? 60 : 30, idle = midnight ? 13 : 3; // to 00:07 over midnight
        rig->clock.set(2026, 11, 23, midnight ? 23 : 10, 50);
        openTwo(0, start);
        prefs().waittime = 5;
        rig->program->runButton();
        expect<noactivity>(QStringLiteral("noactivity"), [&](noactivity& warning) {
            for (int i = 0; i < idle; ++i) { // the warning's own timer; the count's tick waits behind it
                rig->clock.advanceMinutes(1);
                rig->tick();
                rig->timers.made.back()->fire();
            }
            QCOMPARE(warning.inacH + warning.inacM, QStringLiteral("00") + fmt00(idle + 5));
            QCOMPARE(w().ListBox1.row(0).minutes(), start + (midnight ? 9 : 7)); // over midnight, to its day's end
            QCOMPARE(saved(0).minutes(), start + (midnight ? 9 : 7));
            press(warning, button);
        });
        if (button == 0 && midnight)
            expect<Dupitwndo>(QStringLiteral("dupitwndo"), [](Dupitwndo& d) { d.dupeit_Action(); });
        if (button == 2)
            expect<jobs::specialw>(jobs::specialw::kFormName, [&](jobs::specialw& d) {
                QCOMPARE(d.sphrs + d.spmin, QStringLiteral("00") + fmt00(idle + 5));
                QCOMPARE(d.dateField, shortDate(rig->clock.now().date()));
                d.enterjob = QStringLiteral("Lunch");
                d.enterclient = QStringLiteral("Away");
                d.popup_Action(3);
                midnight ? d.canceljob_Action() : d.okjob_Action();
            });
        for (int i = 0; i < (midnight ? 8 : 4); ++i)
            minute(i >= 4); // the fourth brings the warning
        const Timesheet& list = w().ListBox1;
        const JobRow& a100 = list.row(button == 2 && !midnight ? 1 : 0); // a new row goes on top
        if (midnight) {
            int total = 0;
            for (const JobRow& r : list.rows)
                total += r.minutes();
            // Continue: the old row to the answer and today's row from it, 60 + 17 + 4 minutes on the two.
            QCOMPARE(total, button == 0 ? 60 + 17 + 4 : 59);
            QCOMPARE(list.ListCount(), button == 0 ? 3 : 2);
            QCOMPARE(list.row(0).cell(CellDate), button == 0 ? QStringLiteral("11/24/26") : QStringLiteral("11/23/26"));
            QVERIFY(w().running == (button == 0) && list.ListIndex == 0);
        } else if (button == 0) {
            QVERIFY(a100.minutes() == 37 && w().running);
            expect<noactivity>(QStringLiteral("noactivity"), [](noactivity& warning) { warning.PushButton2_Action(); });
            minute();
        } else {
            minute(); // stopped: neither a count nor a warning
            QCOMPARE(a100.cell(CellHours) + a100.cell(CellMinutes), QStringLiteral("0029"));
            QVERIFY(a100.run == kRunStopped && !w().running && w().Timer3().mode() == platform::Timer::Off);
            QCOMPARE(saved(0).minutes(), 29);
            if (button == 2)
                QVERIFY(list.row(0).cell(CellJob) == QStringLiteral("LUNCH") && list.row(0).minutes() == 8);
        }
    }

    // Each choice of rows, with the report of them: one that needs a selected row says so without one and
    // stays on all rows; a custom one with nothing ticked says so and prints nothing.
    void printChoice_data()
    {
        QTest::addColumn<int>("selected");
        QTest::addColumn<Scope>("scope");
        QTest::addColumn<QList<int>>("ticked"); // then row 0 unticked
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("jobs"); // the report's rows, "" for no report
        const QString all = QStringLiteral("A100 B200 a100 C300");
        // clang-format off
        QTest::newRow("all") << -1 << Scope::All << QList<int>{} << "" << all;
        QTest::newRow("job number") << 2 << Scope::JobNumber << QList<int>{} << "" << "A100 a100";
        QTest::newRow("date") << 1 << Scope::Date << QList<int>{} << "" << "A100 B200";
        QTest::newRow("client") << 0 << Scope::Client << QList<int>{} << "" << "A100 C300";
        QTest::newRow("custom, in list order") << -1 << Scope::Custom << QList<int>{3, 0, 1, 9} << "" << "B200 C300";
        QTest::newRow("custom, nothing ticked") << -1 << Scope::Custom << QList<int>{0, 9} << RowChoice::kPWTickRow << "";
        QTest::newRow("job number, no row") << -1 << Scope::JobNumber << QList<int>{} << RowChoice::kPWSelectRow << all;
        // clang-format on
    }
    void printChoice()
    {
        QFETCH(int, selected);
        QFETCH(Scope, scope);
        QFETCH(QList<int>, ticked);
        QFETCH(QString, message);
        QFETCH(QString, jobs);
        open(sample().rows, selected);
        prefs().usrname = QStringLiteral("Ann");
        expect<pntops>(QStringLiteral("pntops"), [&](pntops& p) {
            for (int row : ticked)
                p.tick(row, true);
            p.tick(0, false);
            p.RadioButton_Action(scope);
            p.PushButton1_Action();
        });
        rig->program->command(Item::printit);
        QCOMPARE(dialogs.messages, message.isEmpty() ? QStringList() : QStringList{message});
        QCOMPARE(dialogs.printed.size(), jobs.isEmpty() ? 0 : 1);
        QStringList printed;
        qint64 minutes = 0;
        for (const platform::Report& report : dialogs.printed) {
            for (const platform::Report::Row& row : report.rows) {
                printed << row.cells[1];
                minutes += row.cells[3].left(2).toInt() * 60 + row.cells[3].right(2).toInt();
            }
            QCOMPARE(report.total, QStringLiteral("Total Time: ") + hhmm(minutes));
            QCOMPARE(report.title + report.footer,
                     QStringLiteral("Veltrick printed on Monday, November 23, 2026User: Ann"));
        }
        QCOMPARE(printed.join(QLatin1Char(' ')), jobs);
    }

    // "Zoë & Søn – café" in each encoding and both forms; what an encoding cannot hold becomes "?".
    void exportEncodings_data()
    {
        QTest::addColumn<Encoding>("encoding");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("charset");
        QTest::addColumn<int>("replaced"); // of "Ω ≠ 😀"
        // clang-format off
        QTest::newRow("MacRoman") << Encoding::MacRoman << QByteArray("Zo\x91 & S\xbfn \xd0 caf\x8e") << "macintosh" << 1;
        QTest::newRow("UTF-8") << Encoding::Utf8 << QByteArray("Zo\xc3\xab & S\xc3\xb8n \xe2\x80\x93 caf\xc3\xa9") << "utf-8" << 0;
        QTest::newRow("UTF-16") << Encoding::Utf16 << QByteArray("Z\0o\0\xeb\0 \0&\0 \0S\0\xf8\0n\0 \0\x13\x20 \0c\0a\0f\0\xe9\0", 32) << "utf-16" << 0;
        QTest::newRow("Windows ANSI") << Encoding::WindowsAnsi << QByteArray("Zo\xeb & S\xf8n \x96 caf\xe9") << "windows-1252" << 3;
        // clang-format on
    }
    void exportEncodings()
    {
        QFETCH(Encoding, encoding);
        QFETCH(QByteArray, bytes);
        QFETCH(QString, charset);
        const bool utf16 = encoding == Encoding::Utf16;
        Timesheet list = sample();
        ExportOptions o;
        o.encoding = encoding;
        o.reportDate = o.headings = o.notes = o.total = o.xls = false;
        const QByteArray txt = exportBytes(list, {1}, o, {});
        QCOMPARE(txt.startsWith("\xff\xfe"), utf16);
        QVERIFY(txt.endsWith(bytes + (utf16 ? QByteArray("\r\0\n\0", 4) : QByteArray("\r\n"))));
        o.xls = true;
        const QByteArray xls = exportBytes(list, {1}, o, {});
        QVERIFY(xls.contains(
            bytes.replace(utf16 ? QByteArray("&\0", 2) : "&", utf16 ? QByteArray("&\0a\0m\0p\0;\0", 10) : "&amp;")));
        const QString declared =
            utf16 ? QString::fromUtf16(reinterpret_cast<const char16_t*>(xls.constData() + 2), (xls.size() - 2) / 2)
                  : QString::fromLatin1(xls);
        QVERIFY(declared.contains(QStringLiteral("<meta charset=\"%1\">").arg(charset)));
        int count = -1;
        list.row(1).setCell(CellClient, QStringLiteral("\u03a9 \u2260 \U0001F600"));
        exportBytes(list, {1}, o, {}, &count);
        QTEST(count, "replaced");
    }

    // Every option of the settings, one at a time over none, in the text form.
    void exportOptions()
    {
        const auto lines = [this](const std::vector<int>& rows, auto set) {
            ExportOptions o;
            o.reportDate = o.headings = o.notes = o.total = o.xls = false;
            set(o);
            return QString::fromUtf8(exportBytes(sample(), rows, o, QStringLiteral("11/23/26")))
                .split(QStringLiteral("\r\n"), Qt::SkipEmptyParts);
        };
        const QString row0 = QStringLiteral("11/23/26\tA100\tP A100\t1\t15\tDesign\tAcme");
        QCOMPARE(lines({0}, [](ExportOptions&) {}), QStringList{row0});
        QCOMPARE(lines({0}, [](ExportOptions& o) { o.reportDate = true; }),
                 (QStringList{"Report Date: 11/23/26\t\t\t\t\t\t", row0}));
        QCOMPARE(lines({0}, [](ExportOptions& o) { o.headings = true; })[0],
                 QStringLiteral("Date\tJob No.\tProject\tHours\tMinutes\tOperation\tClient"));
        // A line end or a tab in the note would start a row or a cell: each becomes a space.
        QCOMPARE(lines({0}, [](ExportOptions& o) { o.notes = true; }), QStringList{row0 + "\tfirst line two"});
        QCOMPARE(lines({0, 1}, [](ExportOptions& o) { o.total = o.blankRow = true; }).mid(2),
                 (QStringList{"\t\t\t\t\t\t", "Total Time:\t\t\t1\t45\t\t"}));
        QCOMPARE(lines({0}, [](ExportOptions& o) { o.blankColumn = true; }), QStringList{'\t' + row0});
    }

    // Without an operation the window does not close; the last one removed leaves a file that counts none.
    // Operations are stored as typed, "-" dropped, cut at 20 and 90; the 128th is refused and kept typed. A
    // group's list is shown read-only, never written. The user name is kept in MacRoman: Ω but no CJK.
    void operationsList()
    {
        const OperationList group{{QStringLiteral("Audit"), QStringLiteral("Team")}};
        rig->files.files[QStringLiteral("/shared/ops")] = storage::encodeOperations(group);
        rig->files.files[kOps] = storage::encodeOperations({{QStringLiteral("Design"), QStringLiteral("Drawing")}});
        OperationList ops;
        expect<prefwin>(QStringLiteral("prefwin"), [&](prefwin& p) {
            const auto add = [&p](const QString& name, const QString& description = QString()) {
                p.newopp_TextChange(name);
                p.newdesc_TextChange(description);
                p.addnew_Action();
            };
            p.Event_Open({});
            p.opplistnow_Change(0);
            QVERIFY(p.addnew.Caption == prefwin::kPrefAddChange && p.newdesc.Text == QStringLiteral("Drawing"));
            p.killthis_Action();
            QCOMPARE(rig->files.files.value(kOps), QByteArray(1, '\0'));
            p.TabPanel1_Change(0);
            p.Saveprefa_Action();
            QVERIFY(!p.closed() && p.TabPanel1 == 1);
            for (int i = 0; i < storage::kMaxOperations - 2; ++i)
                add(ops.emplaceBack(QStringLiteral("Op%1").arg(i), QString()).name);
            add(QStringLiteral("Pre-press"), QStringLiteral("Gr\u00f6\u00dfe \u6771 & bench"));
            add(QString(30, u'n'), QString(100, u'd'));
            add(QStringLiteral("One too many"));
            QCOMPARE(dialogs.messages, (QStringList{prefwin::kPrefAddOperation, prefwin::kPrefListFull}));
            QCOMPARE(p.newopp.Text, QStringLiteral("One too many"));
            p.opplistnow_Change(124);
            p.newopp_TextChange(QStringLiteral("Last"));
            p.addnew_Action();
            dialogs.expectFile(QStringLiteral("/shared/ops"));
            p.Canvas1_Action(1);
            add(QStringLiteral("Sneaked in"));
            QCOMPARE(p.opplistnow, group);
            p.EditField1_TextChange(QStringLiteral("Zo\u00eb \u6771\u4eac \u03a9"));
            p.Saveprefa_Action();
            QVERIFY(p.closed());
        });
        rig->program->command(Item::nineprefs);
        QVERIFY(prefs().usrname == QStringLiteral("Zo\u00eb  \u03a9") &&
                prefs().rmteops == QStringLiteral("/shared/ops"));
        ops[124].name = QStringLiteral("Last");
        ops.append({QStringLiteral("Prepress"), QStringLiteral("Gr\u00f6\u00dfe \u6771 & bench")});
        ops.append({QString(20, u'n'), QString(90, u'd')});
        QCOMPARE(storage::decodeOperations(rig->files.files.value(kOps)), ops);
    }

    // Another computer's version reaches the file between two saves, while a job runs or with an edit not
    // yet saved. It is never written over; at the question both versions are on disk (a kill then loses
    // nothing); each answer leaves every row of both versions in some file and every minute timed here.
    void changedElsewhere_data()
    {
        QTest::addColumn<bool>("running");
        QTest::addColumn<bool>("rowGoneThere");
        QTest::addColumn<int>("answer");
        const int theirs = int(platform::Answer::Action), mine = int(platform::Answer::Alternate),
                  mineAs = int(platform::Answer::Cancel);
        QTest::newRow("running, open theirs") << true << false << theirs;
        QTest::newRow("running, open theirs without the row") << true << true << theirs;
        QTest::newRow("running, open theirs timing it too") << true << false << theirs;
        QTest::newRow("running, keep mine") << true << false << mine;
        QTest::newRow("running, save mine as") << true << false << mineAs;
        QTest::newRow("edited, open theirs") << false << false << theirs;
        QTest::newRow("edited, keep mine") << false << true << mine;
    }
    void changedElsewhere()
    {
        QFETCH(bool, running);
        QFETCH(bool, rowGoneThere);
        QFETCH(int, answer);
        const auto onDisk = [this] {
            std::vector<JobRow> rows;
            for (auto [path, bytes] : rig->files.files.asKeyValueRange())
                if (path.startsWith(u"/docs/"))
                    for (const JobRow& row : storage::decodeTimesheet(bytes).sheet.rows)
                        rows.push_back(row);
            return rows;
        };
        // A row of that day, job, project and operation, with that note and at least its minutes.
        const auto kept = [](const std::vector<JobRow>& rows, const JobRow& wanted) {
            return std::ranges::any_of(rows, [&](const JobRow& row) {
                return row.cell(CellJob) == wanted.cell(CellJob) && row.cell(CellDate) == wanted.cell(CellDate) &&
                       row.note == wanted.note && row.minutes() >= wanted.minutes();
            });
        };
        openTwo(0);
        if (running) {
            rig->program->runButton();
            rig->clock.set(2026, 11, 23, 10, 1);
            rig->tick();
        } else {
            w().ListBox1.row(1).note = QStringLiteral("typed here");
            w().markChanged();
        }
        Timesheet theirs = storage::decodeTimesheet(rig->files.files.value(kSheet)).sheet;
        if (rowGoneThere)
            theirs.RemoveRow(0);
        // Another computer timing the job since 9:00: nothing of that is charged here.
        if (QByteArray(QTest::currentDataTag()).endsWith("too"))
            theirs.starthrs = QStringLiteral("09");
        theirs.AddRow(row("C300", 15));
        rig->files.files[kSheet] = storage::encodeTimesheet(theirs);

        std::vector<JobRow> atQuestion;
        QByteArray fileAtQuestion;
        dialogs.whileAsking = [&] {
            atQuestion = onDisk();
            fileAtQuestion = rig->files.files.value(kSheet);
        };
        dialogs.expectAnswer(platform::Answer(answer));
        if (answer == int(platform::Answer::Cancel))
            dialogs.expectFile(QStringLiteral("/docs/mine.vlk"));
        rig->clock.set(2026, 11, 23, 10, 3);
        if (running)
            rig->tick();
        else
            rig->program->post([this] { rig->program->document().checkDisk(); });
        QCOMPARE(dialogs.questions.size(), 1);
        QCOMPARE(dialogs.questions[0].message, storage::Document::kChangedQuestion.arg(u"a.vlk"_s));

        // At the question: theirs untouched in the file, this list beside it.
        QCOMPARE(fileAtQuestion, storage::encodeTimesheet(theirs));
        for (const JobRow& row : theirs.rows)
            QVERIFY(kept(atQuestion, row));
        const int timed = running ? 33 : 30;
        QVERIFY(kept(atQuestion, row("A100", timed)));
        QVERIFY(kept(atQuestion, [&] {
            JobRow r = row("B200", 0);
            r.note = running ? QString() : QStringLiteral("typed here");
            return r;
        }()));

        // After the answer: both versions' rows on disk, and the minutes timed here in the open file.
        const std::vector<JobRow> after = onDisk();
        for (const JobRow& row : theirs.rows)
            QVERIFY(kept(after, row));
        QVERIFY(kept(after, row("A100", timed)));
        const Timesheet open = storage::decodeTimesheet(rig->files.files.value(w().xpath)).sheet;
        qint64 a100 = 0;
        for (const JobRow& r : open.rows)
            a100 += r.cell(CellJob) == u"A100"_s ? r.minutes() : 0;
        QCOMPARE(a100, answer == int(platform::Answer::Action) && rowGoneThere ? timed - 31 : timed);
        QCOMPARE(w().xpath, answer == int(platform::Answer::Cancel) ? u"/docs/mine.vlk"_s : kSheet);
        QCOMPARE(w().running, running && answer != int(platform::Answer::Action));
        const QStringList beside = rig->files.list(u"/docs"_s).filter(u"changed elsewhere"_s);
        QCOMPARE(beside.size(), answer == int(platform::Answer::Alternate) ? 1 : 0);
        // The copy of this list beside the file stays only where the file read lacks some of its rows.
        const bool mineKept = answer == int(platform::Answer::Action) && (rowGoneThere || !running);
        QCOMPARE(rig->files.list(u"/docs"_s).filter(u"(mine "_s).size(), mineKept ? 1 : 0);
        // Once chosen, the next minute's save goes through without asking again.
        if (w().running) {
            rig->clock.set(2026, 11, 23, 10, 4);
            rig->tick();
            QVERIFY(!w().boxchange);
        }
        QCOMPARE(dialogs.questions.size(), 1);
    }

    // Open Theirs reads the file as it is when answered: a version newer still, come in while the question
    // was open, is the one opened, with the minutes carried onto it.
    void changedAgainDuringTheQuestion()
    {
        openTwo(0);
        rig->program->runButton();
        rig->clock.set(2026, 11, 23, 10, 1);
        rig->tick();
        Timesheet theirs{{saved(0), saved(1), row("C300", 15)}};
        rig->files.files[kSheet] = storage::encodeTimesheet(theirs);
        theirs.AddRow(row("D400", 5));
        dialogs.whileAsking = [&] {
            rig->files.files[kSheet] = storage::encodeTimesheet(theirs);
            dialogs.whileAsking = nullptr;
        };
        dialogs.expectAnswer(platform::Answer::Action);
        rig->clock.set(2026, 11, 23, 10, 3);
        rig->tick();
        QCOMPARE(dialogs.questions.size(), 1);
        QVERIFY(saved(0).minutes() == 33 && saved(3).cell(CellJob) == u"D400"_s);
    }

    // Idle minutes taken off with the warning's Reset while saves were refused are not carried to theirs.
    void changedElsewhereAfterIdleReset()
    {
        openTwo(0);
        rig->program->runButton();
        rig->clock.set(2026, 11, 23, 10, 1);
        rig->tick();
        rig->files.files[kSheet] = storage::encodeTimesheet(Timesheet{{saved(0), row("C300", 15)}});
        rig->clock.set(2026, 11, 23, 10, 3);
        noactivity warning(w(), prefs(), rig->timers);
        warning.alrthr = QStringLiteral("00");
        warning.alrtmn = QStringLiteral("32"); // away since 10:02
        dialogs.expectAnswer(platform::Answer::Action);
        rig->program->post([&] { press(warning, 1); });
        QCOMPARE(saved(0).minutes(), qint64(32));
        QCOMPARE(saved(1).cell(CellJob), u"C300"_s);
    }

    // With no room for this list beside the file, Open Theirs does not drop the rows the file lacks; Keep
    // Mine, once there is room, saves them and keeps theirs beside.
    void openTheirsWithNoRoomBeside()
    {
        openTwo(0);
        w().ListBox1.row(1).note = QStringLiteral("typed here");
        w().markChanged();
        const QByteArray theirs = storage::encodeTimesheet(Timesheet{{row("C300", 15)}});
        rig->files.files[kSheet] = theirs;
        rig->files.failWrites = true;
        dialogs.expectAnswer(platform::Answer::Action);
        rig->program->post([this] { rig->program->document().checkDisk(); });
        QVERIFY(dialogs.messages.last().startsWith(storage::Document::kMineNotKept.left(40)));
        QVERIFY(rig->files.files.value(kSheet) == theirs && w().ListBox1.row(1).note == u"typed here"_s);
        rig->files.failWrites = false;
        dialogs.expectAnswer(platform::Answer::Alternate);
        rig->program->post([this] { rig->program->document().checkDisk(); });
        QCOMPARE(saved(1).note, u"typed here"_s);
        const QStringList beside = rig->files.list(u"/docs"_s).filter(u"changed elsewhere"_s);
        QVERIFY(beside.size() == 1 && rig->files.files.value(u"/docs/"_s + beside[0]) == theirs);
    }

    // A clean, stopped timesheet changed on disk is read again without a question, and another computer's
    // running job in it is not timed here; a sync tool's conflict copy beside it is told of once, and File >
    // Open starts on it.
    void changedElsewhereWhileClean()
    {
        openTwo(0);
        Timesheet theirs = storage::decodeTimesheet(rig->files.files.value(kSheet)).sheet;
        theirs.AddRow(row("C300", 15));
        theirs.rows.back().run = kRunRunning; // timed on the other computer since 9:00, not here
        theirs.starthrs = QStringLiteral("09");
        theirs.startmin = QStringLiteral("00");
        ++rig->files.touches[kSheet]; // the same bytes, touched: nothing to read again
        rig->program->post([this] { rig->program->document().checkDisk(); });
        QVERIFY(w().datastream.isEmpty() && w().ListBox1.ListCount() == 2);
        const QString copy = u"/docs/a (Ann's conflicted copy 2026-11-23).vlk"_s;
        rig->files.files[copy] = storage::encodeTimesheet(theirs);
        rig->files.files[kSheet] = storage::encodeTimesheet(theirs);
        rig->program->post([this] { rig->program->document().checkDisk(); });
        QVERIFY(dialogs.questions.isEmpty() && dialogs.messages.isEmpty() && !w().running);
        QCOMPARE(w().ListBox1.ListCount(), 3);
        QCOMPARE(w().datastream, storage::Document::kConflictCopy.arg(u"a (Ann's conflicted copy 2026-11-23).vlk"_s));
        rig->program->post([this] { rig->program->document().checkDisk(); });
        QCOMPARE(w().datastream, storage::Document::kConflictCopy.arg(u"a (Ann's conflicted copy 2026-11-23).vlk"_s));
        w().Timer2_Action();
        rig->program->post([this] { rig->program->document().checkDisk(); });
        QVERIFY(w().datastream.isEmpty());
        rig->program->command(Item::clozeit);
        dialogs.expectFile(QString());
        rig->program->command(Item::open);
        QCOMPARE(dialogs.openedIn, copy);
        for (const char* name :
             {"a (conflicted copy 2026-11-23 101500).vlk", "a.sync-conflict-20261123-101500-ABC.vlk"})
            QVERIFY(storage::isConflictCopy(u"a.vlk"_s, QString::fromUtf8(name)));
        for (const char* name : {"a.vlk", "ab (conflicted copy).vlk", "a (changed elsewhere 2026-11-23 10.15).vlk"})
            QVERIFY(!storage::isConflictCopy(u"a.vlk"_s, QString::fromUtf8(name)));
    }
};

QTEST_GUILESS_MAIN(TestProgram)
#include "test_program.moc"

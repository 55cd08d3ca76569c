// Hours against budgets: the thresholds of the notice and the mark, the once-per-run rule, the client's
// view, the closing of totals, the preset window's edit row and imports, and the one-pass walk that
// must leave exactly what a walk of the selection over every row leaves.
#include "core/timetext.h"
#include "shell/programrig.h"

#include <QtTest>

#include <random>

using namespace core;
using testing::ProgramRig;

namespace
{

const QString kSheet = QStringLiteral("/docs/a.vlk");

storage::PresetJob preset(const QString& job, const QString& budget, const QString& closed)
{
    return {job, QStringLiteral("P ") + job, budget, closed, {}, {}, {}};
}

} // namespace

class TestBudgets : public QObject
{
    Q_OBJECT

    testing::ScriptedDialogs dialogs;
    std::unique_ptr<ProgramRig> rig;

    budgets::Budgets& budgets() { return rig->program->window()->budgets; }
    budgets::preSetJobsWin& presets() { return rig->program->presets(); }

    // A timesheet of the given rows, opened with presets in the settings folder.
    void open(const std::vector<JobRow>& rows, const storage::PresetJobList& jobs)
    {
        rig->files.files[storage::prefFile(storage::kPresetJobsFileName)] = storage::encodePresetJobs(jobs);
        rig->writeSheet(kSheet, rows);
        rig->start({kSheet});
    }

    void setMinutes(int row, qint64 minutes)
    {
        rig->w()->ListBox1.row(row).setMinutes(minutes);
        budgets().budgetcheck();
    }

private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }

    void init()
    {
        dialogs = testing::ScriptedDialogs();
        rig = std::make_unique<ProgramRig>(dialogs);
    }

    void cleanup()
    {
        QVERIFY2(dialogs.errors.isEmpty(), qPrintable(dialogs.errors.join(QLatin1Char('\n'))));
        QVERIFY(dialogs.scriptDone());
    }

    // The notice falls in the hour that ends at the budget; the mark from the full hour on; a jump over
    // the last hour gives only the mark; a total back under the budget loses it.
    void thresholds_data()
    {
        QTest::addColumn<QString>("budget");
        QTest::addColumn<QString>("closed");
        QTest::addColumn<QList<int>>("steps");    // the job's active minutes, one check after each
        QTest::addColumn<QStringList>("notices"); // what was shown, in order
        QTest::addColumn<QList<bool>>("over");    // the mark after each step
        QTest::newRow("1 h budget, nothing closed")
            << "01"
            << "00" << QList<int>{0, 59, 60} << QStringList{"Job No. A100 : 60 minutes remaining"}
            << QList<bool>{false, false, true};
        QTest::newRow("10 h with 3 closed")
            << "10"
            << "03" << QList<int>{359, 360, 419, 420} << QStringList{"Job No. A100 : 60 minutes remaining"}
            << QList<bool>{false, false, false, true};
        QTest::newRow("a jump over the last hour")
            << "10"
            << "03" << QList<int>{330, 430, 300} << QStringList{} << QList<bool>{false, true, false};
        QTest::newRow("no budget, no tracking")
            << "00"
            << "00" << QList<int>{59, 600} << QStringList{} << QList<bool>{false, false};
    }

    void thresholds()
    {
        QFETCH(QString, budget);
        QFETCH(QString, closed);
        QFETCH(QList<int>, steps);
        QFETCH(QStringList, notices);
        QFETCH(QList<bool>, over);
        open({rig->row(QStringLiteral("A100"), 0), rig->row(QStringLiteral("a100"), 0),
              rig->row(QStringLiteral("B2"), 5)},
             {preset(QStringLiteral("A100"), budget, closed)});
        rig->w()->setListIndex(0);
        for (int i = 0; i < steps.size(); ++i) {
            setMinutes(0, steps[i]);
            for (int r : {0, 1}) // both spellings of the job carry the mark
                QCOMPARE(rig->w()->ListBox1.row(r).budget == kBudgetOver, over[i]);
            QCOMPARE(rig->w()->ListBox1.row(2).budget, QString());
        }
        QStringList shown;
        for (const QString& notice : rig->notifier.shown)
            shown << notice.section(QLatin1Char('|'), 1);
        QCOMPARE(shown, notices);
        QCOMPARE(presets().joblst[0].active, fmt00(steps.last() / 60));
        QCOMPARE(presets().joblst[0].closedTag, QString::number(steps.last() % 60));
    }

    // One notice per job and run, whatever the selection does; a changed budget may warn again. A change
    // of the budget of the selected row's job shows on its rows at once.
    void noticeOncePerRun()
    {
        open({rig->row(QStringLiteral("A100"), 60), rig->row(QStringLiteral("B2"), 5)},
             {preset(QStringLiteral("A100"), QStringLiteral("02"), QStringLiteral("00"))});
        QCOMPARE(rig->notifier.shown.size(), 1); // the load checks every job
        rig->w()->setListIndex(1);
        rig->w()->setListIndex(0);
        QCOMPARE(rig->notifier.shown.size(), 1);
        for (const char* budget : {"01", "02"}) {
            presets().joblst_Change(0);
            presets().EditField4_TextChange(QString::fromLatin1(budget));
            presets().addjob_Action();
            QCOMPARE(rig->w()->ListBox1.row(0).budget == kBudgetOver, budget == QByteArray("01"));
        }
        QCOMPARE(rig->notifier.shown.size(), 2);
        QCOMPARE(rig->w()->trackListindex, (QStringList{"A100", "A100"}));
    }

    // Without a notice service the text goes to the status line and stays in the tray's tool tip.
    void noticeWithoutAService()
    {
        rig->notifier.available = false;
        open({rig->row(QStringLiteral("A100"), 75)},
             {preset(QStringLiteral("A100"), QStringLiteral("02"), QStringLiteral("00"))});
        QCOMPARE(rig->w()->datastream, QStringLiteral("Job No. A100 : 45 minutes remaining"));
        rig->w()->setListIndex(0);
        QVERIFY(rig->program->window()->menulet.trayToolTip().endsWith(
            QStringLiteral("\nJob No. A100 : 45 minutes remaining")));
    }

    // A click on a notice shows the preset window on its job; in a client's view it explains instead.
    void clickOnANotice_data()
    {
        QTest::addColumn<bool>("clientView");
        QTest::newRow("all clients") << false;
        QTest::newRow("a client's view") << true;
    }

    void clickOnANotice()
    {
        QFETCH(bool, clientView);
        open({rig->row(QStringLiteral("A100"), 60)},
             {preset(QStringLiteral("B2"), QStringLiteral("05"), QStringLiteral("00")),
              preset(QStringLiteral("A100"), QStringLiteral("02"), QStringLiteral("00"))});
        QCOMPARE(rig->notifier.shown.size(), 1);
        if (clientView) {
            rig->program->window()->clientView.clientlist2_ExpandRow();
            rig->program->window()->clientView.setClientlist2Index(1);
        }
        rig->notifier.activated(1);
        QCOMPARE(presets().visible, !clientView);
        QCOMPARE(presets().ListIndex, clientView ? -1 : 1);
        QCOMPARE(rig->notifier.withdrawn, clientView ? QList<unsigned>{} : QList<unsigned>{1});
        if (clientView)
            QVERIFY(dialogs.messages.last().endsWith(budgets::kNSUNotifiAlertMsg));
    }

    // In a client's view only that client's rows count: the same job for another client is left out.
    void clientViewCountsItsOwnRows()
    {
        JobRow other = rig->row(QStringLiteral("A100"), 120);
        other.setCell(CellClient, QStringLiteral("Bolt"));
        open({rig->row(QStringLiteral("A100"), 60), other},
             {preset(QStringLiteral("A100"), QStringLiteral("09"), QStringLiteral("00"))});
        QCOMPARE(presets().joblst[0].active, QStringLiteral("03"));
        rig->program->window()->clientView.clientlist2_ExpandRow();
        rig->program->window()->clientView.setClientlist2Index(1); // "Acme"
        QCOMPARE(presets().joblst[0].active, QStringLiteral("01"));
    }

    // Closing the hours: whole hours into the closed totals, twice when done twice; Cancel changes nothing.
    void totalizer()
    {
        open({rig->row(QStringLiteral("A100"), 150)},
             {preset(QStringLiteral("A100"), QStringLiteral("20"), QStringLiteral("03"))});
        dialogs.expectAnswer(platform::Answer::Cancel);
        rig->program->command(Item::switchit);
        QCOMPARE(presets().joblst[0].closed, QStringLiteral("03"));
        QVERIFY(rig->w());
        presets().ExpImp_Action(budgets::preSetJobsWin::kPSUpdateBudgets);
        QCOMPARE(presets().joblst[0].closed, QStringLiteral("05"));
        dialogs.expectAnswer(platform::Answer::Action);
        rig->program->command(Item::switchit);
        QVERIFY(!rig->w());
        const storage::PresetJobList stored =
            storage::decodePresetJobs(rig->files.files.value(storage::prefFile(storage::kPresetJobsFileName)));
        QCOMPARE(stored[0].closed, QStringLiteral("07"));
    }

    // The edit row: a job number first, Add only with a project, Change for a selected row, ":" refused.
    // A list that cannot be written (a full disk) is said, stays in memory and goes with the next change.
    void editRow()
    {
        open({}, {});
        budgets::preSetJobsWin& p = presets();
        p.EditField3_TextChange(QStringLiteral("Roof"));
        QVERIFY(p.EditField3.Text.isEmpty() && !p.addjobEnabled);
        QVERIFY(p.EditField2_KeyDown(QLatin1Char(':')));
        p.EditField2_TextChange(QStringLiteral("r12"));
        p.EditField3_TextChange(QStringLiteral("Roof"));
        QVERIFY(p.addjobEnabled && p.addjobDefault());
        p.EditField4_TextChange(QStringLiteral("7"));
        p.EditField5_TextChange(QStringLiteral("99")); // a new job has closed nothing yet
        p.addjob_Action();
        QCOMPARE(p.joblst, (storage::PresetJobList{{"R12", "Roof", "07", "00", {}, {}, {}}}));
        p.joblst_Change(0);
        QCOMPARE(p.addjobCaption, budgets::preSetJobsWin::kPSChangeBtn);
        QVERIFY(p.EditField5.Enabled && p.killjobEnabled && p.addjobEnabled);
        p.joblst_DoubleClick();
        QCOMPARE(p.addjobCaption, budgets::preSetJobsWin::kPSAddBtn);
        QVERIFY(p.EditField2.Text.isEmpty() && !p.EditField5.Enabled);
        const QString file = storage::prefFile(storage::kPresetJobsFileName);
        const QByteArray written = rig->files.files.value(file);
        QCOMPARE(storage::decodePresetJobs(written), p.joblst);

        const auto add = [&p](const char* job, const char* project) {
            p.EditField2_TextChange(QString::fromLatin1(job));
            p.EditField3_TextChange(QString::fromLatin1(project));
            p.addjob_Action();
        };
        rig->files.failWrites = true;
        add("S7", "Shed");
        QCOMPARE(dialogs.messages.last(), budgets::preSetJobsWin::kWriteFail);
        QCOMPARE(p.joblst.size(), 2);
        QCOMPARE(rig->files.files.value(file), written);
        rig->files.failWrites = false;
        add("T8", "Tower");
        QCOMPARE(p.joblst.size(), 3);
        QCOMPARE(storage::decodePresetJobs(rig->files.files.value(file)), p.joblst);
    }

    // An import replaces the list; a line of one field is a job alone, a wider line widens the list, and a
    // field too long for the file is cut between characters, said once.
    void import()
    {
        open({}, {preset(QStringLiteral("OLD"), QStringLiteral("01"), QStringLiteral("00"))});
        const QString longProject = QString(200, QChar(0x00E9));
        rig->files.files[QStringLiteral("/in.txt")] =
            (QStringLiteral("J1\nJ2\tRoof\t10\t2\t\textra\n\nJ3\t") + longProject + QStringLiteral("\t5\n")).toUtf8();
        dialogs.expectFile(QStringLiteral("/in.txt"));
        presets().ExpImp_Action(budgets::preSetJobsWin::kPSImportBtn);
        const storage::PresetJobList& list = presets().joblst;
        QCOMPARE(list.size(), 3);
        QCOMPARE(list[0].job + list[0].project, QStringLiteral("J1"));
        QCOMPARE(list[1].extra, QStringList{"extra"});
        QCOMPARE(presets().columnCount, 6);
        QCOMPARE(list[2].project.toUtf8().size(), 254);
        QVERIFY(longProject.startsWith(list[2].project));
        QCOMPARE(dialogs.messages, QStringList{budgets::preSetJobsWin::kFieldsCut});
        QCOMPARE(
            storage::decodePresetJobs(rig->files.files.value(storage::prefFile(storage::kPresetJobsFileName))).size(),
            3);
    }

    // The walk over every job in one pass leaves what moving the selection over every row leaves: the
    // preset list's hours, the marks of the rows, and the notices with their once-per-run record.
    void onePassEqualsTheWalk()
    {
        std::mt19937 random(7);
        const auto pick = [&](int n) { return int(random() % unsigned(n)); };
        for (int round = 0; round < 40; ++round) {
            std::vector<JobRow> rows;
            const int count = 1 + pick(60);
            for (int i = 0; i < count; ++i) {
                JobRow row = rig->row(QStringList{"A1", "a1", "B2", "C3", "D4", "E5"}[pick(6)], pick(900));
                if (pick(5) == 0)
                    row.budget = kBudgetOver; // a stale mark
                rows.push_back(row);
            }
            // Budgets near the jobs' hours, so that notices and marks both come up.
            QHash<QString, qint64> hours;
            for (const JobRow& row : rows)
                hours[row.cell(CellJob).toUpper()] += row.minutes();
            storage::PresetJobList jobs;
            for (const char* name : {"A1", "B2", "C3", "X9", "b2"}) {
                const QString job = QString::fromLatin1(name);
                const qint64 closed = pick(6);
                const qint64 used = hours.value(job.toUpper()) / 60 + closed;
                const qint64 budget = std::max<qint64>(0, used + pick(4) - 1);
                jobs << preset(job, fmt00(budget), fmt00(closed));
            }
            open(rows, {});
            Mainwndo& w = *rig->w();
            const int selected = pick(count + 1) - 1;
            w.setListIndex(selected);
            w.trackListindex = pick(2) ? QStringList{"C3"} : QStringList{};
            const Timesheet before = w.ListBox1;
            const QStringList tracked = w.trackListindex;

            // The walk: every row selected in turn, then the selection back.
            presets().joblst = jobs;
            rig->notifier.shown.clear();
            for (int r = 0; r < count; ++r)
                w.setListIndex(r);
            w.setListIndex(selected);
            const storage::PresetJobList walkedJobs = presets().joblst;
            const Timesheet walked = w.ListBox1;
            const QStringList walkedNotices = rig->notifier.shown;
            const QStringList walkedTrack = w.trackListindex;

            presets().joblst = jobs;
            rig->notifier.shown.clear();
            w.ListBox1 = before;
            w.trackListindex = tracked;
            budgets().checkAll();
            QCOMPARE(presets().joblst, walkedJobs);
            QCOMPARE(w.ListBox1, walked);
            QCOMPARE(rig->notifier.shown, walkedNotices);
            QCOMPARE(w.trackListindex, walkedTrack);
        }
    }
};

QTEST_GUILESS_MAIN(TestBudgets)
#include "test_budgets.moc"

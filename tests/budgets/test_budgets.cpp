// Hours against budgets: the notice and the mark, a client's view, closing the totals, the preset window's
// edit row and import, and the one-pass check that must leave what a walk of the rows leaves.
#include "core/timetext.h"
#include "shell/programrig.h"

#include <QtTest>

#include <random>

using namespace core;

namespace
{
const QString kSheet = QStringLiteral("/docs/a.vlk");

storage::PresetJob preset(const QString& job, const QString& budget, const QString& closed = QStringLiteral("00"))
{
    return {job, QStringLiteral("P ") + job, budget, closed, {}, {}, {}};
}
} // namespace

class TestBudgets : public QObject
{
    Q_OBJECT

    testing::ScriptedDialogs dialogs;
    std::unique_ptr<testing::ProgramRig> rig;

    budgets::preSetJobsWin& presets() { return rig->program->presets(); }
    Mainwndo& w() { return *rig->w(); }
    static QString presetFile() { return storage::prefFile(storage::kPresetJobsFileName); }
    storage::PresetJobList stored() { return storage::decodePresetJobs(rig->files.files.value(presetFile())); }

    // A timesheet of these rows opened by a new run, with these presets in the settings folder.
    void open(const std::vector<JobRow>& rows, const storage::PresetJobList& jobs)
    {
        rig->files.files[presetFile()] = storage::encodePresetJobs(jobs);
        rig->writeSheet(kSheet, rows);
        rig->start({kSheet});
    }
    QStringList notices() const
    {
        QStringList shown;
        for (const QString& notice : rig->notifier.shown)
            shown << notice.section(QLatin1Char('|'), 1);
        return shown;
    }

private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }
    void init()
    {
        dialogs = testing::ScriptedDialogs();
        rig = std::make_unique<testing::ProgramRig>(dialogs);
    }
    void cleanup()
    {
        QVERIFY2(dialogs.errors.isEmpty(), qPrintable(dialogs.errors.join(QLatin1Char('\n'))));
        QVERIFY(dialogs.scriptDone());
    }
    // The notice falls in the hour that ends at the budget, the mark from the full hour on, on every spelling
    // of the job and no other; a jump over the last hour gives only the mark; under it again, none.
    void thresholds_data()
    {
        QTest::addColumn<QString>("budget");
        QTest::addColumn<QString>("closed");
        QTest::addColumn<QList<int>>("steps");    // the job's minutes, one check after each
        QTest::addColumn<QStringList>("notices"); // what was shown, in order
        QTest::addColumn<QList<bool>>("over");    // the mark after each step
        const QStringList hour{"Job No. A100 : 60 minutes remaining"};
        // clang-format off
        QTest::newRow("1 h, nothing closed") << "01" << "00" << QList<int>{0, 59, 60} << hour << QList<bool>{false, false, true};
        QTest::newRow("10 h, 3 closed") << "10" << "03" << QList<int>{359, 360, 419, 420} << hour << QList<bool>{false, false, false, true};
        QTest::newRow("a jump over the last hour") << "10" << "03" << QList<int>{330, 430, 300} << QStringList{} << QList<bool>{false, true, false};
        QTest::newRow("no budget, no tracking") << "00" << "00" << QList<int>{59, 600} << QStringList{} << QList<bool>{false, false};
        // clang-format on
    }
    void thresholds()
    {
        QFETCH(QString, budget);
        QFETCH(QString, closed);
        QFETCH(QList<int>, steps);
        QFETCH(QStringList, notices);
        QFETCH(QList<bool>, over);
        open({rig->row("A100", 0), rig->row("a100", 0), rig->row("B2", 5)}, {preset("A100", budget, closed)});
        w().setListIndex(0);
        for (int i = 0; i < steps.size(); ++i) {
            w().ListBox1.row(0).setMinutes(steps[i]);
            rig->program->window()->budgets.budgetcheck();
            for (int r : {0, 1})
                QCOMPARE(w().ListBox1.row(r).budget == kBudgetOver, over[i]);
            QCOMPARE(w().ListBox1.row(2).budget, QString());
        }
        QCOMPARE(this->notices(), notices);
        QCOMPARE(presets().joblst[0].active + presets().joblst[0].closedTag,
                 fmt00(steps.last() / 60) + QString::number(steps.last() % 60));
    }
    // The load checks every job; a changed budget may warn again, and its mark shows at once.
    void changedBudgetWarnsAgain()
    {
        open({rig->row("A100", 60), rig->row("B2", 5)}, {preset("A100", "02")});
        QCOMPARE(notices().size(), 1);
        for (const QString budget : {"01", "02"}) {
            presets().joblst_Change(0);
            presets().EditField4_TextChange(budget);
            presets().addjob_Action();
            QCOMPARE(w().ListBox1.row(0).budget == kBudgetOver, budget == "01");
        }
        QCOMPARE(notices().size(), 2);
        QCOMPARE(w().trackListindex, (QStringList{"A100", "A100"}));
    }
    // Without a notice service the text goes to the status line and stays in the tray's tool tip.
    void noticeWithoutAService()
    {
        rig->notifier.available = false;
        open({rig->row("A100", 75)}, {preset("A100", "02")});
        QCOMPARE(w().datastream, QStringLiteral("Job No. A100 : 45 minutes remaining"));
        w().setListIndex(0);
        QVERIFY(rig->program->window()->menulet.trayToolTip().endsWith("\nJob No. A100 : 45 minutes remaining"));
    }
    // In a client's view only its rows count, and a click on a notice explains instead of showing the job in
    // the preset window.
    void clientViewAndTheClickOnANotice()
    {
        for (bool clientView : {false, true}) {
            rig = std::make_unique<testing::ProgramRig>(dialogs);
            JobRow other = rig->row("A100", 120);
            other.setCell(CellClient, QStringLiteral("Bolt"));
            open({rig->row("A100", 60), other}, {preset("B2", "05"), preset("A100", "04")});
            QCOMPARE(notices().size(), 1);
            if (clientView) {
                rig->program->window()->clientView.clientlist2_ExpandRow();
                rig->program->window()->clientView.setClientlist2Index(1); // "Acme"
            }
            QCOMPARE(presets().joblst[1].active, clientView ? "01" : "03");
            rig->notifier.activated(1);
            QCOMPARE(std::pair(presets().visible, presets().ListIndex), std::pair(!clientView, clientView ? -1 : 1));
            QCOMPARE(rig->notifier.withdrawn, clientView ? QList<unsigned>{} : QList<unsigned>{1});
            QCOMPARE(dialogs.messages.value(0).endsWith(budgets::kNSUNotifiAlertMsg), clientView);
        }
    }
    // Closing the hours adds the whole hours to the closed totals, again when done again; Cancel at the
    // close changes nothing.
    void totalizer()
    {
        open({rig->row("A100", 150)}, {preset("A100", "20", "03")});
        dialogs.expectAnswer(platform::Answer::Cancel);
        rig->program->command(Item::switchit);
        QVERIFY(rig->w() && presets().joblst[0].closed == QStringLiteral("03"));
        presets().ExpImp_Action(budgets::preSetJobsWin::kPSUpdateBudgets);
        QCOMPARE(presets().joblst[0].closed, QStringLiteral("05"));
        dialogs.expectAnswer(platform::Answer::Action);
        rig->program->command(Item::switchit);
        QVERIFY(!rig->w());
        QCOMPARE(stored()[0].closed, QStringLiteral("07"));
    }
    // The edit row takes a job number first and refuses ":"; a new job has closed nothing. A list the disk
    // refused is said, kept, and written with the next change.
    void editRow()
    {
        open({}, {});
        budgets::preSetJobsWin& p = presets();
        p.EditField3_TextChange(QStringLiteral("Roof"));
        QVERIFY(p.EditField3.Text.isEmpty() && !p.addjobEnabled);
        QVERIFY(p.EditField2_KeyDown(QLatin1Char(':')) && !p.EditField2_KeyDown(QLatin1Char('a')));
        for (const QString job : {"r12", "S7", "T8"}) {
            rig->files.failWrites = job == "S7";
            p.EditField2_TextChange(job);
            p.EditField3_TextChange(QStringLiteral("Roof"));
            p.EditField4_TextChange(QStringLiteral("7"));
            p.EditField5_TextChange(QStringLiteral("99"));
            QVERIFY(p.addjobEnabled && p.addjobDefault());
            p.addjob_Action();
            QCOMPARE(dialogs.messages, job == "r12" ? QStringList{} : QStringList{budgets::preSetJobsWin::kWriteFail});
            QCOMPARE(stored().size(), job == "T8" ? 3 : 1);
        }
        QCOMPARE(p.joblst[0], (storage::PresetJob{"R12", "Roof", "07", "00", {}, {}, {}}));
        QCOMPARE(stored(), p.joblst);
    }
    // An import replaces the list and is stored; a field too long for the file is cut between characters,
    // said once.
    void import()
    {
        open({}, {preset("OLD", "01")});
        const QString longProject(200, QChar(0x00E9));
        rig->files.files["/in.txt"] = ("J1\nJ2\tRoof\t10\t2\t\textra\n\nJ3\t" + longProject + "\t5\n").toUtf8();
        dialogs.expectFile(QStringLiteral("/in.txt"));
        presets().ExpImp_Action(budgets::preSetJobsWin::kPSImportBtn);
        const storage::PresetJobList& list = presets().joblst;
        QCOMPARE(list.size(), 3);
        QCOMPARE(list[0].job + list[0].project + list[1].extra.join(u'|') + QString::number(presets().columnCount),
                 QStringLiteral("J1extra6"));
        QVERIFY(list[2].project.toUtf8().size() == 254 && longProject.startsWith(list[2].project));
        QCOMPARE(dialogs.messages, QStringList{budgets::preSetJobsWin::kFieldsCut});
        QCOMPARE(stored().size(), 3);
    }
    // Checking every job in one pass leaves what moving the selection over every row leaves: the preset
    // list's hours, the marks of the rows, and the notices with their once-per-run record.
    void onePassEqualsTheWalk()
    {
        std::mt19937 random(7);
        const auto pick = [&](int n) { return int(random() % unsigned(n)); };
        for (int round = 0; round < 40; ++round) {
            std::vector<JobRow> rows;
            const int count = 1 + pick(60);
            QHash<QString, qint64> hours;
            for (int i = 0; i < count; ++i) {
                JobRow row = rig->row(QStringList{"A1", "a1", "B2", "C3", "D4", "E5"}[pick(6)], pick(900));
                if (pick(5) == 0)
                    row.budget = kBudgetOver; // a stale mark
                hours[row.cell(CellJob).toUpper()] += row.minutes();
                rows.push_back(row);
            }
            // Budgets near the jobs' hours, so that notices and marks both come up.
            storage::PresetJobList jobs;
            for (const QString job : {"A1", "B2", "C3", "X9", "b2"}) {
                const qint64 closed = pick(6), used = hours.value(job.toUpper()) / 60 + closed;
                jobs << preset(job, fmt00(std::max<qint64>(0, used + pick(4) - 1)), fmt00(closed));
            }
            open(rows, {});
            const int selected = pick(count + 1) - 1;
            w().setListIndex(selected);
            w().trackListindex = pick(2) ? QStringList{"C3"} : QStringList{};
            const Timesheet before = w().ListBox1;
            const QStringList tracked = w().trackListindex;
            presets().joblst = jobs;
            rig->notifier.shown.clear();
            for (int r = 0; r < count; ++r)
                w().setListIndex(r);
            w().setListIndex(selected);
            const auto walked = std::tuple(presets().joblst, w().ListBox1, rig->notifier.shown, w().trackListindex);
            presets().joblst = jobs;
            rig->notifier.shown.clear();
            w().ListBox1 = before;
            w().trackListindex = tracked;
            rig->program->window()->budgets.checkAll();
            QVERIFY(std::tuple(presets().joblst, w().ListBox1, rig->notifier.shown, w().trackListindex) == walked);
        }
    }
};

QTEST_GUILESS_MAIN(TestBudgets)
#include "test_budgets.moc"

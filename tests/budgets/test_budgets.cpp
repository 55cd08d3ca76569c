// Hours against budgets: the notice and the mark, a client's view, closing the totals, the preset window.
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
    // Notice in the hour before the budget, mark from the budget on, on every spelling of the job and no other.
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
        for (QString& notice : notices)
            notice.prepend(budgets::kNSUNotifiTitle + u'|');
        QCOMPARE(rig->notifier.shown, notices);
        QCOMPARE(presets().joblst[0].active + presets().joblst[0].closedTag,
                 fmt00(steps.last() / 60) + QString::number(steps.last() % 60));
    }
    // No notice service: the text goes to status line and tool tip. A changed budget warns again, marks at once.
    void changedBudgetWarnsAgain()
    {
        rig->notifier.available = false;
        open({rig->row("A100", 75), rig->row("B2", 5)}, {preset("A100", "02")});
        QCOMPARE(w().datastream, QStringLiteral("Job No. A100 : 45 minutes remaining"));
        QVERIFY(rig->program->window()->menulet.trayToolTip().endsWith("\nJob No. A100 : 45 minutes remaining"));
        for (const QString budget : {"01", "02"}) {
            presets().joblst_Change(0);
            presets().EditField4_TextChange(budget);
            presets().addjob_Action();
            QCOMPARE(w().ListBox1.row(0).budget == kBudgetOver, budget == "01");
        }
        QCOMPARE(w().trackListindex, (QStringList{"A100", "A100"}));
    }
    // A client's view counts its rows only; a click on a notice shows the job in the presets, or explains why not.
    void clientViewAndTheClickOnANotice()
    {
        for (bool clientView : {false, true}) {
            rig = std::make_unique<testing::ProgramRig>(dialogs);
            JobRow other = rig->row("A100", 120);
            other.setCell(CellClient, QStringLiteral("Bolt"));
            open({rig->row("A100", 60), other}, {preset("B2", "05"), preset("A100", "04")});
            QCOMPARE(rig->notifier.shown.size(), 1);
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
    // Closing adds the whole hours to the closed totals, each time it is done; Cancel at the close changes nothing.
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
    // A job number comes first, ":" is refused, a new job has closed nothing; a list the disk refused is kept.
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
    // Checking every job in one pass leaves the hours, marks and notices that selecting every row in turn leaves.
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
            const int selected = pick(count + 1) - 1;
            const QStringList tracked = pick(2) ? QStringList{"C3"} : QStringList{};
            const auto check = [&](bool walk) {
                open(rows, {});
                w().setListIndex(selected);
                w().trackListindex = tracked;
                presets().joblst = jobs;
                rig->notifier.shown.clear();
                for (int r = 0; walk && r <= count; ++r)
                    w().setListIndex(r < count ? r : selected);
                if (!walk)
                    rig->program->window()->budgets.checkAll();
                return std::tuple(presets().joblst, w().ListBox1, rig->notifier.shown, w().trackListindex);
            };
            QVERIFY2(check(false) == check(true), qPrintable(QStringLiteral("round %1").arg(round)));
        }
    }
};

QTEST_GUILESS_MAIN(TestBudgets)
#include "test_budgets.moc"

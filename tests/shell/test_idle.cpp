// The idle warning: when it comes, what its three answers do to the row, and midnight behind it.
#include "core/noactivity.h"
#include "programrig.h"

#include <QtTest>

using namespace core;
using testing::ProgramRig;

namespace
{

const QString kSheet = QStringLiteral("/docs/a.vlk");
enum class Button
{
    Continue,
    Reset,
    New
};

} // namespace

Q_DECLARE_METATYPE(Button)

class TestIdle : public QObject
{
    Q_OBJECT

    testing::ScriptedDialogs dialogs;
    std::unique_ptr<ProgramRig> rig;

    Mainwndo& w() { return *rig->w(); }
    AppPrefs& prefs() { return rig->program->app().prefs; }

    // A100 with `minutes` on it, started at the clock's time with the warning at `waittime`.
    void startJob(int minutes, int waittime)
    {
        rig->writeSheet(kSheet, {rig->row(QStringLiteral("A100"), minutes), rig->row(QStringLiteral("B200"), 0)});
        rig->program->openRequested({kSheet});
        prefs().waittime = waittime;
        w().setListIndex(0);
        rig->program->runButton();
        QVERIFY(w().running);
    }

    // A minute passes: the count's tick, then the idle check, as the two timers come in.
    void minute(bool input = false)
    {
        rig->clock.advanceMinutes(1);
        rig->tick();
        rig->desktop.probe.input = input;
        ProgramRig::fake(w().Timer4()).fire();
    }

    // The warning's own minute timer, with the clock moving on behind it.
    void inactiveMinutes(int count)
    {
        testing::FakeTimer* inactivTmr = rig->timers.made.back();
        for (int i = 0; i < count; ++i) {
            rig->clock.advanceMinutes(1);
            rig->tick(); // waits behind the window
            inactivTmr->fire();
        }
    }

    // The row as the file holds it.
    JobRow saved(int index) { return storage::decodeTimesheet(rig->files.files.value(kSheet)).sheet.row(index); }

    static void press(noactivity& warning, Button button)
    {
        switch (button) {
        case Button::Continue:
            return warning.PushButton1_Action();
        case Button::Reset:
            return warning.PushButton2_Action();
        case Button::New:
            return warning.PushButton3_Action();
        }
    }

private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }

    void init()
    {
        dialogs = testing::ScriptedDialogs();
        rig = std::make_unique<ProgramRig>(dialogs);
        rig->clock.set(2026, 11, 23, 10, 0);
        rig->start();
    }

    void cleanup()
    {
        QVERIFY2(dialogs.errors.isEmpty(), qPrintable(dialogs.errors.join(QLatin1Char('\n'))));
        QVERIFY(dialogs.scriptDone());
    }

    // Which still tick brings the warning, and the job's time it shows as the moment activity stopped.
    void whenItComes_data()
    {
        QTest::addColumn<int>("waittime");
        QTest::addColumn<int>("rowMinutes");
        QTest::addColumn<QList<int>>("inputAt"); // minutes with keyboard or pointer input
        QTest::addColumn<bool>("canTell");
        QTest::addColumn<int>("warnedAt"); // 0: never within 30 minutes
        QTest::addColumn<QString>("stoppedAt");

        QTest::newRow("fourth still tick at 5") << 5 << 30 << QList<int>{} << true << 4 << "00:29";
        QTest::newRow("ninth at 10") << 10 << 100 << QList<int>{} << true << 9 << "01:39";
        QTest::newRow("input restarts the count") << 5 << 30 << QList<int>{3} << true << 7 << "00:32";
        QTest::newRow("typing every other minute")
            << 5 << 30 << QList<int>{2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30} << true << 0 << "";
        QTest::newRow("job younger than the idle span shows 00:00") << 5 << 0 << QList<int>{} << true << 4 << "00:00";
        QTest::newRow("off") << 0 << 30 << QList<int>{} << true << 0 << "";
        QTest::newRow("no desktop source") << 5 << 30 << QList<int>{} << false << 0 << "";
    }

    void whenItComes()
    {
        QFETCH(int, waittime);
        QFETCH(int, rowMinutes);
        QFETCH(QList<int>, inputAt);
        QFETCH(bool, canTell);
        QFETCH(int, warnedAt);
        QFETCH(QString, stoppedAt);

        rig->desktop.probe.canTell = canTell;
        startJob(rowMinutes, waittime);
        int shownAt = 0;
        int now = 0;
        if (warnedAt > 0)
            dialogs.expectModal(QStringLiteral("noactivity"), [&](platform::ModalForm& form) {
                auto& warning = static_cast<noactivity&>(form);
                shownAt = now;
                QCOMPARE(warning.StaticText1,
                         QStringLiteral("Veltrick is set to notify you when your computer has been idle for more "
                                        "than %1 mins.")
                             .arg(waittime));
                QCOMPARE(warning.alrthr + QLatin1Char(':') + warning.alrtmn, stoppedAt);
                QCOMPARE(warning.inacH + warning.inacM, QStringLiteral("00%1").arg(waittime, 2, 10, QLatin1Char('0')));
                QCOMPARE(w().Timer4().mode(), platform::Timer::Off);
                warning.PushButton2_Action();
            });
        const int beeps = rig->desktop.beeps;
        for (now = 1; now <= 30 && shownAt == 0; ++now)
            minute(inputAt.contains(now));
        QCOMPARE(shownAt, warnedAt);
        QCOMPARE(rig->desktop.beeps - beeps, warnedAt > 0 ? 1 : 0);
        if (waittime == 0)
            QCOMPARE(rig->desktop.probe.checks, 0); // off asks nothing and moves nothing
    }

    // Minutes spent typing in Preferences: the ticks held behind it run as one when it closes, one save
    // and one question to the idle check, so no false warning follows.
    void ticksHeldBehindAWindowRunOnce()
    {
        startJob(30, 5);
        dialogs.expectModal(QStringLiteral("prefwin"), [&](platform::ModalForm&) {
            for (int i = 0; i < 5; ++i)
                minute(true);
        });
        const qsizetype saves = rig->files.written.count(kSheet);
        const int checks = rig->desktop.probe.checks;
        rig->program->command(Item::nineprefs);
        QCOMPARE(rig->files.written.count(kSheet) - saves, 1);
        QCOMPARE(rig->desktop.probe.checks - checks, 1);
        QCOMPARE(w().ListBox1.row(0).minutes(), 35);
    }

    // The answers: the row each leaves behind in the window and in the file, and what comes next.
    void answers_data()
    {
        QTest::addColumn<Button>("button");
        QTest::newRow("Continue") << Button::Continue;
        QTest::newRow("Reset") << Button::Reset;
        QTest::newRow("New") << Button::New;
    }

    void answers()
    {
        QFETCH(Button, button);
        startJob(30, 5);
        dialogs.expectModal(QStringLiteral("noactivity"), [&](platform::ModalForm& form) {
            auto& warning = static_cast<noactivity&>(form);
            inactiveMinutes(3);
            QCOMPARE(warning.inacH + warning.inacM, QStringLiteral("0008"));
            // The job's cells keep growing behind the window, and reach the file.
            QCOMPARE(w().ListBox1.row(0).minutes(), 37);
            QCOMPARE(saved(0).minutes(), 37);
            press(warning, button);
        });
        if (button == Button::New)
            dialogs.expectModal(jobs::specialw::kFormName, [&](platform::ModalForm& form) {
                auto& d = static_cast<jobs::specialw&>(form);
                QCOMPARE(d.sphrs + d.spmin, QStringLiteral("0008"));
                QCOMPARE(d.dateField, shortDate(rig->clock.now().date()));
                d.enterjob = QStringLiteral("Lunch");
                d.enterclient = QStringLiteral("Away");
                d.popup_Action(3);
                d.okjob_Action();
            });
        for (int i = 0; i < 4; ++i)
            minute();
        const int a100 = button == Button::New ? 1 : 0; // a new row goes on top
        const JobRow& row = w().ListBox1.row(a100);
        if (button == Button::Continue) {
            // The idle time stays, the job runs on, and the next still tick warns again.
            QCOMPARE(row.minutes(), 37);
            QVERIFY(w().running);
            dialogs.expectModal(QStringLiteral("noactivity"),
                                [](platform::ModalForm& form) { static_cast<noactivity&>(form).PushButton2_Action(); });
            minute();
            return;
        }
        // Reset and New take the whole idle span out and stop the job, in the file too.
        minute(); // stopped: neither a count nor a warning
        QCOMPARE(row.cell(CellHours) + row.cell(CellMinutes), QStringLiteral("0029"));
        QCOMPARE(row.run, kRunStopped);
        QVERIFY(!w().running);
        QCOMPARE(w().Timer3().mode(), platform::Timer::Off);
        QCOMPARE(saved(0).minutes(), 29); // a new job reaches the file with the next save, as any does
        if (button == Button::New) {
            const JobRow& idle = w().ListBox1.row(0);
            QCOMPARE(idle.cell(CellJob), QStringLiteral("LUNCH"));
            QCOMPARE(idle.minutes(), 8);
        }
    }

    // Midnight passes while the warning is open: the new day waits for the answer, and every minute is
    // on exactly one row.
    void midnightBehindTheWarning_data() { answers_data(); }

    void midnightBehindTheWarning()
    {
        QFETCH(Button, button);
        rig->clock.set(2026, 11, 23, 23, 50);
        startJob(60, 5);
        dialogs.expectModal(QStringLiteral("noactivity"), [&](platform::ModalForm& form) {
            auto& warning = static_cast<noactivity&>(form);
            inactiveMinutes(13); // to 00:07
            QCOMPARE(w().ListBox1.ListCount(), 2);
            QCOMPARE(w().ListBox1.row(0).minutes(), 60 + 9); // counted to the last minute of its day
            press(warning, button);
        });
        if (button == Button::Continue)
            dialogs.expectModal(QStringLiteral("dupitwndo"),
                                [](platform::ModalForm& form) { static_cast<Dupitwndo&>(form).dupeit_Action(); });
        if (button == Button::New)
            dialogs.expectModal(jobs::specialw::kFormName, [&](platform::ModalForm& form) {
                auto& d = static_cast<jobs::specialw&>(form);
                QCOMPARE(d.sphrs + d.spmin, QStringLiteral("0018"));
                QCOMPARE(d.dateField, shortDate(rig->clock.now().date()));
                d.canceljob_Action();
            });
        for (int i = 0; i < 4; ++i)
            minute(); // the fourth brings the warning
        for (int i = 0; i < 4; ++i)
            minute(true);
        QVERIFY(dialogs.scriptDone());

        const Timesheet& list = w().ListBox1;
        int total = 0;
        for (const JobRow& row : list.rows)
            total += row.minutes();
        if (button == Button::Continue) {
            // Old row to the answer, today's row from it: 60 + 17 + 4 minutes on the two.
            QCOMPARE(list.ListCount(), 3);
            QCOMPARE(list.row(0).cell(CellDate), QStringLiteral("11/24/26"));
            QVERIFY(w().running && list.ListIndex == 0);
            QCOMPARE(total, 60 + 17 + 4);
        } else {
            QCOMPARE(list.ListCount(), 2);
            QCOMPARE(list.row(0).cell(CellHours) + list.row(0).cell(CellMinutes), QStringLiteral("0059"));
            QVERIFY(!w().running);
            QCOMPARE(total, 59);
        }
    }
};

QTEST_GUILESS_MAIN(TestIdle)
#include "test_idle.moc"

// The timing engine, the rollover and the totals, driven through a fake clock and scripted answers.
#include "core/mainwndo.h"
#include "core/timetext.h"
#include "support/fakes.h"

#include <QLocale>
#include <QTimeZone>
#include <QtTest>

#include <ctime>

using namespace core;
using testing::FakeClock;

namespace
{

// Records what the window asked of the later subsystems and what it wrote.
class RecordingHooks : public MainwndoHooks
{
public:
    platform::Result writeTimesheet(const QString&, const Timesheet& sheet) override
    {
        ++writes;
        lastWritten = sheet;
        return failWrites ? platform::Result::failure(28, QStringLiteral("disk full")) : platform::Result::success();
    }
    int writes = 0;
    bool failWrites = false;
    Timesheet lastWritten;
};

JobRow makeRow(const QDate& date, const QString& job, const QString& hours, const QString& minutes,
               const QString& run = kRunStopped)
{
    JobRow row;
    row.setCell(CellDate, shortDate(date));
    row.setCell(CellJob, job);
    row.setCell(CellProject, QStringLiteral("Project ") + job);
    row.setCell(CellHours, hours);
    row.setCell(CellMinutes, minutes);
    row.setCell(CellOperation, QStringLiteral("Design"));
    row.setCell(CellClient, QStringLiteral("Acme"));
    row.user = QStringLiteral("Ann");
    row.note = QStringLiteral("keep me on the old day");
    row.run = run;
    return row;
}

} // namespace

class TestEngine : public QObject
{
    Q_OBJECT

    AppPrefs prefs;
    FakeClock clock;
    testing::FakeDesktop desktop;
    testing::ScriptedDialogs dialogs;
    testing::FakeTimers timers;
    platform::EventGate gate;
    RecordingHooks hooks;
    std::unique_ptr<Mainwndo> w;

    testing::FakeTimer& timer3() { return *timers.made[1]; }

    void open(std::vector<JobRow> rows, int selected)
    {
        w->ListBox1.rows = std::move(rows);
        w->xpath = QStringLiteral("/tmp/sheet.vlk");
        w->Windowfilename();
        w->setListIndex(selected);
    }

private slots:
    void initTestCase()
    {
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        // A zone with summer time, so that the clock's changes can be crossed.
        qputenv("TZ", "Europe/London");
        tzset();
    }

    void init()
    {
        prefs = AppPrefs();
        dialogs = testing::ScriptedDialogs();
        timers.made.clear();
        hooks = RecordingHooks();
        w = std::make_unique<Mainwndo>(prefs, Mainwndo::Services{clock, desktop, dialogs, timers, hooks, gate});
    }

    void cleanup()
    {
        QVERIFY2(dialogs.errors.isEmpty(), qPrintable(dialogs.errors.join(QLatin1Char('\n'))));
        QVERIFY(dialogs.scriptDone());
    }

    // A stopped row restarted and stopped later: the clock minutes crossed are added, whatever the
    // days in between, and the run tag and caption end on "" / "Start".
    void measurement_data()
    {
        QTest::addColumn<QDateTime>("start");
        QTest::addColumn<QDateTime>("stop");
        QTest::addColumn<QString>("hours");
        QTest::addColumn<QString>("minutes");
        QTest::addColumn<QString>("expectH");
        QTest::addColumn<QString>("expectM");
        const QDate d(2026, 6, 10);
        auto at = [](QDate date, int h, int m, int s = 0) { return QDateTime(date, QTime(h, m, s)); };
        auto utc = [](QDate date, int h, int m) {
            return QDateTime(date, QTime(h, m), QTimeZone::utc()).toLocalTime();
        };
        // clang-format off
        QTest::newRow("same minute adds nothing") << at(d, 10, 0, 1) << at(d, 10, 0, 59) << "00" << "00" << "00" << "00";
        QTest::newRow("boundary crossed in 3 s") << at(d, 10, 0, 59) << at(d, 10, 1, 2) << "00" << "00" << "00" << "01";
        QTest::newRow("99:59 plus a minute") << at(d, 9, 0) << at(d, 9, 1) << "99" << "59" << "100" << "00";
        QTest::newRow("three-digit hours read back") << at(d, 9, 0) << at(d, 9, 30) << "125" << "45" << "126" << "15";
        QTest::newRow("unreadable cells count 0") << at(d, 9, 0) << at(d, 9, 5) << "x" << "" << "00" << "05";
        QTest::newRow("hours past 32-bit minutes") << at(d, 9, 0) << at(d, 9, 1) << "40000000" << "59" << "40000001" << "00";
        QTest::newRow("autumn change, 01:59 to 01:00") << utc({2026, 10, 25}, 0, 59) << utc({2026, 10, 25}, 1, 0) << "00" << "00" << "00" << "01";
        QTest::newRow("spring change, 00:59 to 02:00") << utc({2026, 3, 29}, 0, 59) << utc({2026, 3, 29}, 1, 0) << "00" << "00" << "00" << "01";
        // clang-format on
    }

    void measurement()
    {
        QFETCH(QDateTime, start);
        QFETCH(QDateTime, stop);
        QFETCH(QString, hours);
        QFETCH(QString, minutes);
        clock.set(start);
        open({makeRow(start.date(), QStringLiteral("A1"), hours, minutes)}, 0);
        QCOMPARE(w->runButton.caption, Tr::MWStartButtonSt);
        w->runButton_Action();
        QVERIFY(w->running);
        QCOMPARE(w->runButton.caption, Tr::MWStartButtonStop);
        clock.set(stop);
        w->runButton_Action();
        QVERIFY(!w->running);
        const JobRow& row = w->ListBox1.row(0);
        QTEST(row.cell(CellHours), "expectH");
        QTEST(row.cell(CellMinutes), "expectM");
        QCOMPARE(row.run, kRunStopped);
        QCOMPARE(w->runButton.caption, Tr::MWStartButtonSt);
        QCOMPARE(hooks.lastWritten.row(0).cell(CellHours), row.cell(CellHours)); // the stop reached the file
    }

    // The charge of a timer left on over days: the stored start and the row's date against now.
    void measurementOverDays_data()
    {
        QTest::addColumn<QDate>("rowDate");
        QTest::addColumn<QString>("start");
        QTest::addColumn<QDateTime>("now");
        QTest::addColumn<int>("added");
        QTest::newRow("23:59 to 00:01") << QDate(2026, 3, 1) << "23:59" << QDateTime(QDate(2026, 3, 2), QTime(0, 1))
                                        << 2;
        QTest::newRow("over the night") << QDate(2026, 3, 1) << "09:00" << QDateTime(QDate(2026, 3, 2), QTime(10, 0))
                                        << 1500;
        QTest::newRow("three days, later in the day")
            << QDate(2026, 3, 1) << "09:00" << QDateTime(QDate(2026, 3, 4), QTime(10, 0)) << 3 * 1440 + 60;
        QTest::newRow("three days, earlier in the day")
            << QDate(2026, 3, 1) << "09:00" << QDateTime(QDate(2026, 3, 4), QTime(8, 0)) << 3 * 1440 - 60;
        QTest::newRow("same clock minute days later")
            << QDate(2026, 3, 1) << "09:00" << QDateTime(QDate(2026, 3, 4), QTime(9, 0)) << 0;
        QTest::newRow("year turn, 23:50 to 00:10")
            << QDate(2026, 12, 31) << "23:50" << QDateTime(QDate(2027, 1, 1), QTime(0, 10)) << 20;
        QTest::newRow("year turn, two nights")
            << QDate(2026, 12, 31) << "09:00" << QDateTime(QDate(2027, 1, 2), QTime(10, 0)) << 2 * 1440 + 60;
        QTest::newRow("same day, earlier clock is next morning")
            << QDate(2026, 3, 1) << "10:00" << QDateTime(QDate(2026, 3, 1), QTime(9, 0)) << 1380;
        QTest::newRow("autumn change, 00:30 to 01:10")
            << QDate(2026, 10, 25) << "00:30"
            << QDateTime(QDate(2026, 10, 25), QTime(1, 10), QTimeZone::utc()).toLocalTime() << 100;
    }

    void measurementOverDays()
    {
        QFETCH(QDate, rowDate);
        QFETCH(QString, start);
        QFETCH(QDateTime, now);
        QFETCH(int, added);
        JobRow row = makeRow(rowDate, QStringLiteral("B2"), QStringLiteral("01"), QStringLiteral("00"));
        clock.set(now);
        open({row}, 0);
        w->ListBox1.starthrs = start.left(2);
        w->ListBox1.startmin = start.right(2);
        w->Allstop();
        QCOMPARE(w->ListBox1.row(0).minutes(), qint64(60 + added));
        QCOMPARE(w->ListBox1.row(0).cell(CellMinutes).size(), 2);
    }

    // A running job crossing midnight, with the question answered OK, Cancel, or turned off.
    void midnightRollover_data()
    {
        QTest::addColumn<bool>("ask");
        QTest::addColumn<QString>("answer");
        QTest::addColumn<bool>("tickDontShow");
        QTest::newRow("OK") << true << Tr::MWButtonOK << false;
        QTest::newRow("OK, never ask again") << true << Tr::MWButtonOK << true;
        QTest::newRow("Cancel") << true << Tr::MWButtonCancel << false;
        QTest::newRow("question turned off") << false << QString() << false;
    }

    void midnightRollover()
    {
        QFETCH(bool, ask);
        QFETCH(QString, answer);
        QFETCH(bool, tickDontShow);
        prefs.warningsign = ask;
        clock.set(2026, 11, 21, 23, 50);
        open({makeRow(QDate(2026, 11, 21), QStringLiteral("J7"), QStringLiteral("02"), QStringLiteral("00")),
              makeRow(QDate(2026, 11, 20), QStringLiteral("K1"), QStringLiteral("01"), QStringLiteral("00"))},
             0);
        w->runButton_Action();
        QCOMPARE(timer3().mode(), platform::Timer::Multiple);
        clock.set(2026, 11, 22, 0, 5);
        if (ask) {
            dialogs.expectModal(QStringLiteral("dupitwndo"), [&](platform::ModalForm& form) {
                auto& d = static_cast<Dupitwndo&>(form);
                QVERIFY(!w->runButton.enabled); // no start or stop while the question is open
                QCOMPARE(timer3().mode(), platform::Timer::Off);
                if (tickDontShow)
                    d.dontshow_Action(true);
                answer == Tr::MWButtonOK ? d.dupeit_Action() : d.Cancel_Action();
            });
        }
        timer3().fire();

        const bool copied = answer != Tr::MWButtonCancel;
        const JobRow& old = w->ListBox1.row(copied ? 1 : 0);
        QCOMPARE(old.cell(CellJob), QStringLiteral("J7"));
        QCOMPARE(hhmm(old.minutes()), QStringLiteral("02:15"));
        QCOMPARE(old.run, kRunStopped);
        QCOMPARE(prefs.warningsign, ask && !tickDontShow);
        QVERIFY(w->runButton.enabled);
        if (!copied) {
            QCOMPARE(w->ListBox1.ListCount(), 2);
            QVERIFY(!w->running);
            QCOMPARE(timer3().mode(), platform::Timer::Off);
            QCOMPARE(w->runButton.caption, Tr::MWStartButtonSt);
            QVERIFY(w->clientlist2.enabled);
            return;
        }
        QCOMPARE(w->ListBox1.ListCount(), 3);
        QCOMPARE(w->ListBox1.ListIndex, 0);
        const JobRow& now = w->ListBox1.row(0);
        QCOMPARE(now.cell(CellDate), shortDate(QDate(2026, 11, 22)));
        QCOMPARE(now.cell(CellJob), QStringLiteral("J7"));
        QCOMPARE(now.user, QStringLiteral("Ann"));
        QVERIFY(now.note.isEmpty());
        QCOMPARE(hhmm(now.minutes()), QStringLiteral("00:00"));
        QCOMPARE(now.run, kRunRunning);
        QVERIFY(w->running);
        QCOMPARE(timer3().mode(), platform::Timer::Multiple);
        QCOMPARE(w->runButton.caption, Tr::MWStartButtonStop);
        clock.set(2026, 11, 22, 0, 9);
        timer3().fire();
        QCOMPARE(hhmm(w->ListBox1.row(0).minutes()), QStringLiteral("00:04"));
        QCOMPARE(hhmm(w->ListBox1.row(1).minutes()), QStringLiteral("02:15"));
        QCOMPARE(hooks.lastWritten.row(0).run, kRunRunning);
    }

    // Starting a stopped row of an earlier day asks; a first start just moves the row to today.
    void staleRowStart()
    {
        clock.set(2026, 11, 22, 14, 0);
        open(
            {makeRow(QDate(2026, 11, 19), QStringLiteral("S1"), QStringLiteral("03"), QStringLiteral("10")),
             makeRow(QDate(2026, 11, 18), QStringLiteral("S2"), QStringLiteral("00"), QStringLiteral("00"), kRunNever)},
            0);
        dialogs.expectModal(QStringLiteral("dupitwndo"),
                            [](platform::ModalForm& f) { static_cast<Dupitwndo&>(f).Cancel_Action(); });
        w->runButton_Action();
        QVERIFY(!w->running);
        QCOMPARE(w->ListBox1.ListCount(), 2);
        QCOMPARE(w->ListBox1.row(0).cell(CellHours), QStringLiteral("03"));

        w->setListIndex(1);
        QCOMPARE(w->runButton.caption, Tr::MWStartButtonFs);
        w->runButton_Action();
        QCOMPARE(w->ListBox1.ListCount(), 2);
        QCOMPARE(w->ListBox1.row(1).cell(CellDate), shortDate(QDate(2026, 11, 22)));
        QCOMPARE(w->ListBox1.row(1).run, kRunRunning);
        QVERIFY(w->running);
        QVERIFY(!w->ListBox1Ctl.enabled && !w->njButton2.enabled);
        QCOMPARE(w->indecator, Mainwndo::kIndecatorRunning);
    }

    // The caption follows the run tag alone; no selection disables the button; space does the same.
    void captions_data()
    {
        QTest::addColumn<QString>("tag");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<bool>("running");
        QTest::newRow("never started") << kRunNever << Tr::MWStartButtonFs << false;
        QTest::newRow("stopped with time") << kRunStopped << Tr::MWStartButtonSt << false;
        QTest::newRow("left running") << kRunRunning << Tr::MWStartButtonStop << true;
    }

    void captions()
    {
        QFETCH(QString, tag);
        open({makeRow(clock.now().date(), QStringLiteral("C1"), QStringLiteral("00"), QStringLiteral("00"), tag)}, 0);
        QTEST(w->runButton.caption, "caption");
        QTEST(w->running, "running");
        QVERIFY(w->runButton.enabled);
        QCOMPARE(w->notebox.caption, QStringLiteral("keep me on the old day"));
        // While a job runs its row stays selected, whoever asks.
        QCOMPARE(w->setListIndex(-1), !w->running);
        if (w->running) {
            QCOMPARE(w->ListBox1.ListIndex, 0);
            return;
        }
        QVERIFY(!w->runButton.enabled);
        QVERIFY(w->notebox.caption.isEmpty());
        QVERIFY(!w->Event_KeyDown(QLatin1Char(' ')));
    }

    // The list total, today's total and the count, in the exact words of the label.
    void runtotal_data()
    {
        QTest::addColumn<int>("rows");
        QTest::addColumn<int>("selected");
        QTest::addColumn<QString>("text");
        QTest::newRow("empty list") << 0 << -1 << "List Totals - Time: 00:00, Today: 00:00, Entries: 00";
        QTest::newRow("no selection") << 3 << -1 << "List Totals - Time: 246:10, Today: 00:00, Entries: 03";
        QTest::newRow("selected, over 99 hours") << 3 << 1 << "List Totals - Time: 246:10, Today: 126:05, Entries: 03";
    }

    void runtotal()
    {
        QFETCH(int, rows);
        QFETCH(int, selected);
        const QDate today = clock.now().date();
        std::vector<JobRow> all{
            makeRow(today, QStringLiteral("A"), QStringLiteral("123"), QStringLiteral("05")),
            makeRow(today.addDays(-1), QStringLiteral("B"), QStringLiteral("120"), QStringLiteral("05")),
            makeRow(today, QStringLiteral("a"), QStringLiteral("03"), QStringLiteral("00"))};
        all.resize(static_cast<size_t>(rows));
        open(all, selected);
        w->Uptotal2(1);
        QTEST(w->runtotal, "text");
        if (selected >= 0) {
            w->setListIndex(0);
            w->totalJobTime(); // job numbers compare ignoring case
            QCOMPARE(w->jobtotal, QStringLiteral("126:05"));
            w->totalSelectedDay();
            QCOMPARE(w->selecteddaytotal, QStringLiteral("126:05"));
        }
    }

    // Totals of rows whose minutes pass 2^31 add up without overflow.
    void longTotalsDoNotOverflow()
    {
        JobRow big = makeRow(clock.now().date(), QStringLiteral("L"), QStringLiteral("30000000"), QStringLiteral("30"));
        open({big, big}, 0);
        w->Uptotal2(1);
        QCOMPARE(w->runtotal, QStringLiteral("List Totals - Time: 60000001:00, Today: 60000001:00, Entries: 02"));
    }

    // A failed write keeps the rows and the dirty mark, tells the user, and the next tick tries again.
    void failedSaveKeepsTiming()
    {
        clock.set(2026, 11, 22, 10, 0);
        open({makeRow(QDate(2026, 11, 22), QStringLiteral("F"), QStringLiteral("00"), QStringLiteral("00"))}, 0);
        w->runButton_Action();
        hooks.failWrites = true;
        clock.set(2026, 11, 22, 10, 1);
        timer3().fire();
        QCOMPARE(dialogs.messages, QStringList{Tr::MWErrorWriteFail});
        QCOMPARE(w->datastream, Tr::MWDSWriteError);
        QVERIFY(w->boxchange);
        QVERIFY(w->running);
        QCOMPARE(timer3().mode(), platform::Timer::Multiple);
        hooks.failWrites = false;
        clock.set(2026, 11, 22, 10, 2);
        timer3().fire();
        QVERIFY(!w->boxchange);
        QCOMPARE(hooks.lastWritten.row(0).cell(CellMinutes), QStringLiteral("02"));
        timers.made[0]->fire(); // Timer2 clears the status line
        QVERIFY(w->datastream.isEmpty());
    }

    void closeAsksToSaveWhenDirty_data()
    {
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("stops");
        QTest::addColumn<int>("writes");
        QTest::newRow("Save") << int(platform::Answer::Action) << false << 1;
        QTest::newRow("Don't Save") << int(platform::Answer::Alternate) << false << 0;
        QTest::newRow("Cancel") << int(platform::Answer::Cancel) << true << 0;
    }

    void closeAsksToSaveWhenDirty()
    {
        QFETCH(int, answer);
        open({makeRow(clock.now().date(), QStringLiteral("Q"), QStringLiteral("01"), QStringLiteral("00"))}, 0);
        QVERIFY(!w->Event_CancelClose()); // clean: no question
        w->markChanged();
        dialogs.expectAnswer(platform::Answer(answer));
        QTEST(w->Event_CancelClose(), "stops");
        QTEST(hooks.writes, "writes");
        QCOMPARE(dialogs.questions.last().message, QStringLiteral("Do you want to save changes to \"sheet.vlk\" "
                                                                  "before closing?"));
    }
};

QTEST_GUILESS_MAIN(TestEngine)
#include "test_engine.moc"

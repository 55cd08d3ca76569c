// The program's start, screens and quit; its timesheet window's timing engine, rollover, totals and close;
// and the document that opens and saves the timesheet, on files in memory, with a fake clock and scripted
// answers.
#include "core/app.h"
#include "core/timetext.h"
#include "storage/document.h"
#include "storage/timesheet_file.h"
#include "support/fakes.h"
#include "support/memorystore.h"

#include <QLocale>
#include <QTimeZone>
#include <QtTest>

#include <ctime>

using namespace core;

namespace
{

const QString kPath = QStringLiteral("/home/ann/Timesheets/week.vlk");
const QDate kDay(2026, 11, 20);

// Answers for the settings and the files; the timesheet is written through the document.
class Hooks : public AppHooks, public MainwndoHooks
{
public:
    void readPrefs(AppPrefs& prefs) override { prefs = stored.value_or(prefs); }
    void saveprefs(const AppPrefs& prefs) override { saved << prefs; }
    bool fileExists(const QString& path) const override { return existing.contains(path); }
    void sesame() override { ++sesames; }
    bool operationsFileExists() const override { return haveOperations; }
    void firstRun() override { ++firstRuns; }
    void exit() override { ++exits; }
    platform::Result writeTimesheet(const QString& path, const Timesheet& sheet) override
    {
        ++writes;
        return document->writeTimesheet(path, sheet);
    }

    storage::Document* document = nullptr;
    std::optional<AppPrefs> stored;
    QList<AppPrefs> saved;
    QStringList existing;
    bool haveOperations = true;
    int sesames = 0, firstRuns = 0, exits = 0, writes = 0;
};

JobRow makeRow(const QDate& date, const QString& job, const QString& hours = QStringLiteral("01"),
               const QString& minutes = QStringLiteral("00"), const QString& run = kRunStopped)
{
    JobRow row;
    row.cells = {shortDate(date),       job, QStringLiteral("Project ") + job, hours, minutes, QStringLiteral("Design"),
                 QStringLiteral("Acme")};
    row.user = QStringLiteral("Ann");
    row.note = QStringLiteral("keep me on the old day");
    row.run = run;
    return row;
}

QString time(const JobRow& row)
{
    return row.cell(CellHours) + QLatin1Char(':') + row.cell(CellMinutes);
}

} // namespace

class TestCore : public QObject
{
    Q_OBJECT

    testing::FakeClock clock;
    testing::FakeDesktop desktop;
    testing::ScriptedDialogs dialogs;
    testing::FakeTimers timers;
    platform::EventGate gate;
    testing::MemoryFileStore files;
    Hooks hooks;
    std::unique_ptr<App> app;
    std::unique_ptr<storage::Document> doc;
    Mainwndo* w = nullptr;

    testing::FakeTimer& timer3() { return *timers.made[1]; }
    void open(std::vector<JobRow> rows, int selected)
    {
        w->ListBox1.rows = std::move(rows);
        w->xpath = QStringLiteral("/tmp/sheet.vlk");
        w->Windowfilename();
        w->setListIndex(selected);
    }
    Timesheet onDisk(const QString& path = QStringLiteral("/tmp/sheet.vlk"))
    {
        return storage::decodeTimesheet(files.files.value(path)).sheet;
    }
    // Stores the rows with the start time and opens them as a document.
    void openFile(std::vector<JobRow> rows, const QString& start)
    {
        Timesheet sheet;
        sheet.rows = std::move(rows);
        sheet.starthrs = start.left(2);
        sheet.startmin = start.mid(3);
        files.files[kPath] = storage::encodeTimesheet(sheet);
        app->thisdoc = kPath;
        doc->sesame();
    }

private slots:
    void initTestCase()
    {
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        qputenv("TZ", "Europe/London"); // a zone with summer time, so that the clock's changes can be crossed
        tzset();
    }

    void init()
    {
        desktop = testing::FakeDesktop();
        dialogs = testing::ScriptedDialogs();
        timers.made.clear();
        files = testing::MemoryFileStore();
        hooks = Hooks();
        app = std::make_unique<App>(Mainwndo::Services{clock, desktop, dialogs, timers, hooks, gate}, hooks);
        doc = std::make_unique<storage::Document>(*app, files, dialogs, desktop, QStringLiteral("/home/ann"));
        hooks.document = doc.get();
        w = &app->mainwndo();
    }

    void cleanup()
    {
        QVERIFY2(dialogs.errors.isEmpty(), qPrintable(dialogs.errors.join(QLatin1Char('\n'))));
        QVERIFY(dialogs.scriptDone());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // a closed window
    }

    // A stopped row continued and stopped later adds the clock minutes crossed, whatever the days between;
    // a start read from a file (no offset known) is taken at the offset of its day. A tick that waited
    // behind the stop, and a Continue at once stopped, add nothing.
    void measurement_data()
    {
        QTest::addColumn<QDateTime>("start");
        QTest::addColumn<QDateTime>("stop");
        QTest::addColumn<QString>("hours");
        QTest::addColumn<QString>("minutes");
        QTest::addColumn<bool>("fromFile");
        QTest::addColumn<QString>("expected");
        const QDate d(2026, 6, 10), mar1(2026, 3, 1), dec31(2026, 12, 31);
        const auto at = [](QDate date, int h, int m, int s = 0) { return QDateTime(date, QTime(h, m, s)); };
        const auto utc = [](QDate date, int h, int m) {
            return QDateTime(date, QTime(h, m), QTimeZone::utc()).toLocalTime();
        };
        const auto row = [](const char* tag, const QDateTime& start, const QDateTime& stop, const char* expected,
                            const char* hours = "01", const char* minutes = "00", bool fromFile = false) {
            QTest::newRow(tag) << start << stop << hours << minutes << fromFile << expected;
        };
        // clang-format off
        row("same minute adds nothing", at(d, 10, 0, 1), at(d, 10, 0, 59), "01:00");
        row("boundary crossed in 3 s", at(d, 10, 0, 59), at(d, 10, 1, 2), "01:01");
        row("99:59 plus a minute", at(d, 9, 0), at(d, 9, 1), "100:00", "99", "59");
        row("unreadable cells count 0", at(d, 9, 0), at(d, 9, 5), "00:05", "x", "");
        row("hours past 32-bit minutes", at(d, 9, 0), at(d, 9, 1), "40000001:00", "40000000", "59");
        row("autumn change, 01:59 to 01:00", utc({2026, 10, 25}, 0, 59), utc({2026, 10, 25}, 1, 0), "01:01");
        row("spring change, 00:59 to 02:00", utc({2026, 3, 29}, 0, 59), utc({2026, 3, 29}, 1, 0), "01:01");
        row("23:59 to 00:01", at(mar1, 23, 59), at(mar1.addDays(1), 0, 1), "01:02");
        row("over the night", at(mar1, 9, 0), at(mar1.addDays(1), 10, 0), "26:00");
        row("three days, earlier in the day", at(mar1, 9, 0), at(mar1.addDays(3), 8, 0), "72:00");
        row("same clock minute days later", at(mar1, 9, 0), at(mar1.addDays(3), 9, 0), "01:00");
        row("year turn, two nights", at(dec31, 9, 0), at(dec31.addDays(2), 10, 0), "50:00");
        row("same day, earlier clock is next morning", at(mar1, 10, 0), at(mar1, 9, 0), "24:00");
        row("from a file, autumn change", at({2026, 10, 25}, 0, 30), utc({2026, 10, 25}, 1, 10), "02:40", "01", "00", true);
        // clang-format on
    }

    void measurement()
    {
        QFETCH(QDateTime, start);
        QFETCH(QDateTime, stop);
        QFETCH(QString, hours);
        QFETCH(QString, minutes);
        QFETCH(bool, fromFile);
        clock.set(start);
        open({makeRow(start.date(), QStringLiteral("A1"), hours, minutes)}, 0);
        if (fromFile) {
            w->ListBox1.starthrs = start.toString(QStringLiteral("HH"));
            w->ListBox1.startmin = start.toString(QStringLiteral("mm"));
            clock.set(stop);
            w->Allstop();
        } else {
            QCOMPARE(w->runButton.caption, Tr::MWStartButtonSt);
            w->runButton_Action();
            QVERIFY(w->running && w->runButton.caption == Tr::MWStartButtonStop);
            clock.set(stop);
            platform::EventGate::Scope walk(gate);
            timer3().fire();
            w->runButton_Action();
        }
        const JobRow& row = w->ListBox1.row(0);
        QTEST(time(row), "expected");
        QVERIFY(!w->running && row.run == kRunStopped && w->runButton.caption == Tr::MWStartButtonSt);
        QCOMPARE(time(onDisk().row(0)), time(row)); // the stop reached the file
        clock.set(stop.addSecs(300));
        if (w->selectedIsToday()) {
            w->runButton_Action();
            w->runButton_Action();
            QTEST(time(row), "expected");
        }
    }

    // A running job crossing midnight, the question answered OK, Cancel, or turned off: yesterday's row is
    // charged to the tick and stopped; OK makes today's row (no note, no time yet) and goes on there.
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
        app->prefs.warningsign = ask;
        clock.set(2026, 11, 21, 23, 50);
        const JobRow k1 = makeRow(QDate(2026, 11, 20), "K1");
        open({makeRow(QDate(2026, 11, 21), "J7", "02"), k1}, 0);
        w->runButton_Action();
        clock.set(2026, 11, 22, 0, 5);
        if (ask) {
            dialogs.expectModal(QStringLiteral("dupitwndo"), [&](platform::ModalForm& form) {
                auto& d = static_cast<Dupitwndo&>(form);
                // No start, stop or tick while the question is open.
                QVERIFY(!w->runButton.enabled && timer3().mode() == platform::Timer::Off);
                if (tickDontShow)
                    d.dontshow_Action(true);
                answer == Tr::MWButtonOK ? d.dupeit_Action() : d.Cancel_Action();
            });
        }
        timer3().fire();
        const bool copied = answer != Tr::MWButtonCancel;
        JobRow today = makeRow(QDate(2026, 11, 22), "J7", "00", "00", kRunRunning);
        today.note.clear();
        const JobRow old = makeRow(QDate(2026, 11, 21), "J7", "02", "15");
        QCOMPARE(w->ListBox1.rows, (copied ? std::vector{today, old, k1} : std::vector{old, k1}));
        QCOMPARE(w->ListBox1.ListIndex, 0);
        QCOMPARE(app->prefs.warningsign, ask && !tickDontShow);
        QVERIFY(w->runButton.enabled);
        QCOMPARE(w->running, copied);
        QCOMPARE(w->runButton.caption, copied ? Tr::MWStartButtonStop : Tr::MWStartButtonSt);
        QCOMPARE(w->clientlist2.enabled, !copied);
        clock.set(2026, 11, 22, 0, 9);
        timer3().fire();
        QCOMPARE(time(w->ListBox1.row(0)), copied ? QStringLiteral("00:04") : QStringLiteral("02:15"));
    }

    // Continuing a row of an earlier day asks (Cancel changes nothing); a first start moves the row to
    // today and runs it, and while it runs its row stays selected.
    void staleRowStart()
    {
        clock.set(2026, 11, 22, 14, 0);
        const std::vector rows{makeRow(QDate(2026, 11, 19), "S1", "03", "10"),
                               makeRow(QDate(2026, 11, 18), "S2", "00", "00", kRunNever)};
        open(rows, 0);
        dialogs.expectModal(QStringLiteral("dupitwndo"),
                            [](platform::ModalForm& f) { static_cast<Dupitwndo&>(f).Cancel_Action(); });
        w->runButton_Action();
        QVERIFY(!w->running);
        QCOMPARE(w->ListBox1.rows, rows);
        w->setListIndex(1);
        QCOMPARE(w->runButton.caption, Tr::MWStartButtonFs);
        w->runButton_Action();
        QCOMPARE(w->ListBox1.row(1).cell(CellDate) + w->ListBox1.row(1).run, shortDate(clock.now().date()) + "*");
        QVERIFY(w->running && !w->ListBox1Ctl.enabled && !w->njButton2.enabled);
        QCOMPARE(w->indecator, Mainwndo::kIndecatorRunning);
        QVERIFY(!w->setListIndex(0) && w->ListBox1.ListIndex == 1);
    }

    // The label's list total, today's total and count; the job's and the day's totals (job numbers compare
    // ignoring case), past 99 hours and past 2^31 minutes. With no row selected Today is 00:00, and the run
    // button, the note and space are off.
    void totals()
    {
        const QDate today = clock.now().date();
        open(
            {makeRow(today, "A", "123", "05"), makeRow(today.addDays(-1), "B", "120", "05"), makeRow(today, "a", "03")},
            -1);
        w->Uptotal2(1);
        QCOMPARE(w->runtotal, QStringLiteral("List Totals - Time: 246:10, Today: 00:00, Entries: 03"));
        QVERIFY(!w->runButton.enabled && w->notebox.caption.isEmpty() && !w->Event_KeyDown(QLatin1Char(' ')));
        w->setListIndex(0);
        w->Uptotal2(1);
        w->totalJobTime();
        w->totalSelectedDay();
        QCOMPARE(w->runtotal, QStringLiteral("List Totals - Time: 246:10, Today: 126:05, Entries: 03"));
        QCOMPARE(w->jobtotal + w->selecteddaytotal + w->notebox.caption, "126:05126:05keep me on the old day");
        const JobRow big = makeRow(today, "L", "30000000", "30");
        open({big, big}, 0);
        w->Uptotal2(1);
        QCOMPARE(w->runtotal, QStringLiteral("List Totals - Time: 60000001:00, Today: 60000001:00, Entries: 02"));
    }

    // A failed write keeps the rows and the dirty mark, tells the user, and the next tick tries again.
    void failedSaveKeepsTiming()
    {
        clock.set(2026, 11, 22, 10, 0);
        open({makeRow(QDate(2026, 11, 22), QStringLiteral("F"), QStringLiteral("00"))}, 0);
        w->runButton_Action();
        files.failWrites = true;
        clock.set(2026, 11, 22, 10, 1);
        timer3().fire();
        QCOMPARE(dialogs.messages, QStringList{Tr::MWErrorWriteFail});
        QVERIFY(w->datastream == Tr::MWDSWriteError && w->boxchange && w->running);
        files.failWrites = false;
        clock.set(2026, 11, 22, 10, 2);
        timer3().fire();
        QVERIFY(!w->boxchange);
        QCOMPARE(time(onDisk().row(0)), QStringLiteral("00:02"));
        timers.made[0]->fire(); // Timer2 clears the status line
        QVERIFY(w->datastream.isEmpty());
    }

    // Quit saves the settings and asks about unsaved changes. A save that did not happen (no file to write,
    // the disk refused) or a Cancel keeps the window and the program; the last settings have its place.
    void quitAsksToSave_data()
    {
        QTest::addColumn<int>("answer");
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("refused");
        QTest::addColumn<bool>("quits");
        QTest::addColumn<int>("writes");
        const int save = int(platform::Answer::Action);
        QTest::newRow("Save") << save << "/tmp/sheet.vlk" << false << true << 1;
        QTest::newRow("Save, the disk refuses") << save << "/tmp/sheet.vlk" << true << false << 1;
        QTest::newRow("Save, no file") << save << "" << false << false << 0;
        QTest::newRow("Don't Save") << int(platform::Answer::Alternate) << "/tmp/sheet.vlk" << false << true << 0;
        QTest::newRow("Cancel") << int(platform::Answer::Cancel) << "/tmp/sheet.vlk" << false << false << 0;
    }

    void quitAsksToSave()
    {
        QFETCH(int, answer);
        QFETCH(QString, path);
        QFETCH(bool, quits);
        open({makeRow(clock.now().date(), QStringLiteral("Q"))}, 0);
        w->xpath = path;
        w->Windowfilename();
        w->geometry = QRect(40, 60, 700, 500);
        QVERIFY(!w->Event_CancelClose()); // clean: no question
        QFETCH(bool, refused);
        files.failWrites = refused;
        w->markChanged();
        if (path.isEmpty())
            QVERIFY(!w->autosave() && w->boxchange); // with no file the rows stay unsaved
        dialogs.expectAnswer(platform::Answer(answer));
        QCOMPARE(app->_FileQuit_Action(), quits);
        QTEST(hooks.writes, "writes");
        QCOMPARE(dialogs.questions.last().message,
                 QStringLiteral("Do you want to save changes to \"%1\" before "
                                "closing?")
                     .arg(path.isEmpty() ? Mainwndo::kUntitled : QStringLiteral("sheet.vlk")));
        QVERIFY(hooks.exits == int(quits) && (app->existingMainwndo() == nullptr) == quits);
        QCOMPARE(hooks.saved.size(), quits ? 2 : 1);
        QCOMPARE(QPoint(hooks.saved.last().winwidth, hooks.saved.last().wintop),
                 quits ? QPoint(700, 60) : QPoint(501, 50));
    }

    // The start: the settings read over the defaults, the mouse's place kept, the recent timesheet opened or
    // reported missing (its path stays in the settings), and a first run welcomed.
    void start_data()
    {
        QTest::addColumn<bool>("exists");
        QTest::addColumn<bool>("autopen");
        QTest::addColumn<bool>("firstRun");
        QTest::newRow("opens") << true << true << false;
        QTest::newRow("moved away") << false << true << false;
        QTest::newRow("auto-open off") << true << false << false;
        QTest::newRow("first run, no settings") << false << true << true;
    }

    void start()
    {
        QFETCH(bool, exists);
        QFETCH(bool, autopen);
        QFETCH(bool, firstRun);
        const QString path = QStringLiteral("/home/ann/Week 47.vlk");
        AppPrefs stored;
        stored.lastdoc = path;
        stored.autopen = autopen;
        stored.fontsize = 14;
        if (!firstRun)
            hooks.stored = stored;
        if (exists)
            hooks.existing << path;
        hooks.haveOperations = !firstRun;
        desktop.mouse = QPoint(321, 123);
        app->prefs.fontsize = 99;
        app->Event_Open();
        const bool opens = exists && autopen && !firstRun;
        QCOMPARE(hooks.sesames, opens ? 1 : 0);
        QCOMPARE(app->thisdoc, opens ? path : QString());
        QCOMPARE(hooks.firstRuns, firstRun ? 1 : 0);
        QCOMPARE(app->prefs.fontsize, firstRun ? AppPrefs().fontsize : 14);
        QCOMPARE(app->prefs.lastdoc, firstRun ? QString() : path);
        QCOMPARE(QPoint(app->prefs.positionx, app->prefs.positiony), desktop.mouse);
        const QString missing =
            QStringLiteral("Veltrick - Error [-2]\n\nWARNING! - Unable to open the recent timesheet "
                           "file - Perhaps the file has been moved or deleted!\nThe last known "
                           "path to the file was: /home/ann/Week 47.vlk");
        QCOMPARE(dialogs.messages, !exists && !firstRun ? QStringList{missing} : QStringList());
    }

    // A window position is on a screen when it lies inside its area, edges included.
    void restoreWindowSize()
    {
        desktop.screenList = {QRect(0, 0, 1920, 1080), QRect(1921, 0, 1280, 1024)};
        const QString moved = QStringLiteral("Previous display is not available.\n\nFor your convenience, the "
                                             "Timesheet window has been moved to your main display.");
        const std::pair<QPoint, int> cases[] = {
            {{10, 50}, 0}, {{1920, 1080}, 0}, {{2000, 100}, 1}, {{-3000, 100}, -1}}; // -1: the display is gone
        for (const auto& [topLeft, screen] : cases) {
            dialogs.messages.clear();
            app->windScreen = 7;
            app->RestoreWindowSize(*w, topLeft.x(), topLeft.y(), 600, 420);
            QCOMPARE(dialogs.messages, screen < 0 ? QStringList{moved} : QStringList());
            QCOMPARE(app->windScreen, screen < 0 ? 7 : screen);
            QCOMPARE(w->geometry, screen < 0 ? QRect() : QRect(topLeft, QSize(600, 420)));
        }
    }

    // An unexpected error is told, with the address to report it to or, without one, the version.
    void errorsAreReportedNotFatal()
    {
        app->Event_UnhandledException(-3, QStringLiteral("bad_alloc"));
        QCOMPARE(desktop.beeps, 1);
        QVERIFY(dialogs.messages.first().startsWith(QStringLiteral("Veltrick - Error [-3]\n\nOoops... I can't do")));
        QVERIFY(App::unhandledText(2, QString()).endsWith(QStringLiteral("please report it. (Veltrick v.8.0)")));
        QVERIFY(App::unhandledText(2, QStringLiteral("bugs@example.org"))
                    .endsWith(QStringLiteral("please report it by sending an email to: bugs@example.org")));
    }

    // A timer left running when the program ended: the closed time is charged and the job runs on from the
    // minute the charge reached, even when saving the charge takes the clock past a minute; on a later day
    // the rollover takes over. With no start time to count from, the row is stopped as it stands.
    void leftOverTimer_data()
    {
        QTest::addColumn<QString>("start");
        QTest::addColumn<QDateTime>("now");
        QTest::addColumn<int>("saveSeconds");
        QTest::addColumn<QString>("charged");
        QTest::newRow("same day, later") << "09:15" << QDateTime(kDay, QTime(11, 0)) << 0 << "02:45";
        QTest::newRow("save crosses a minute") << "09:15" << QDateTime(kDay, QTime(11, 0, 50)) << 20 << "02:45";
        QTest::newRow("over midnight") << "23:50" << QDateTime(kDay.addDays(1), QTime(0, 10)) << 0 << "01:20";
        QTest::newRow("next day, later clock") << "09:00" << QDateTime(kDay.addDays(1), QTime(10, 0)) << 0 << "26:00";
        QTest::newRow("no start time") << "" << QDateTime(kDay, QTime(11, 0)) << 0 << "01:00";
    }

    void leftOverTimer()
    {
        QFETCH(QString, start);
        QFETCH(QDateTime, now);
        QFETCH(int, saveSeconds);
        clock.set(now);
        files.onWrite = [this, saveSeconds] { clock.set(clock.now().addSecs(saveSeconds)); };
        const bool nextDay = now.date() != kDay;
        if (nextDay)
            dialogs.expectModal(QStringLiteral("dupitwndo"),
                                [](platform::ModalForm& f) { static_cast<Dupitwndo&>(f).dupeit_Action(); });
        openFile({makeRow(kDay, "R1", "01", "00", kRunRunning)}, start);
        const JobRow& charged = w->ListBox1.row(nextDay ? 1 : 0);
        QTEST(hhmm(charged.minutes()), "charged");
        QCOMPARE(w->running, !start.isEmpty());
        QCOMPARE(w->ListBox1.selected().run, start.isEmpty() ? kRunStopped : kRunRunning);
        QCOMPARE(dialogs.messages.isEmpty(), start.isEmpty());
        if (start.isEmpty())
            return;
        QCOMPARE(dialogs.messages, QStringList{QStringLiteral(
                                       "Veltrick - WARNING!\n\nThe timer was not stopped for the Job in Row 1. The "
                                       "time elapsed while Veltrick was closed will be added to this jobs total.")});
        QCOMPARE(w->ListBox1.selected().cell(CellDate), shortDate(now.date()));
        // What is on disk agrees: the charge and the running row both reached the file.
        const Timesheet disk = onDisk(kPath);
        QCOMPARE(disk.ListCount(), w->ListBox1.ListCount());
        QCOMPARE(disk.row(nextDay ? 1 : 0).minutes(), charged.minutes());
        QCOMPARE(disk.starthrs + QLatin1Char(':') + disk.startmin, now.toString(QStringLiteral("HH:mm")));
    }

    // Of two rows left running only the last is charged and goes on, selected; the other is stopped, so
    // that selecting it later cannot put the window into a running state without a timer.
    void twoRunningRowsChargeTheLast()
    {
        clock.set(QDateTime(kDay, QTime(12, 0)));
        openFile({makeRow(kDay, "A", "00", "10", kRunRunning), makeRow(kDay, "B", "00", "20", kRunNever),
                  makeRow(kDay, "C", "00", "30", kRunRunning)},
                 QStringLiteral("11:00"));
        QCOMPARE(dialogs.messages.size(), 2);
        QVERIFY(dialogs.messages[0].contains(QStringLiteral("Row 1.")) &&
                dialogs.messages[1].contains(QStringLiteral("Row 3.")));
        QCOMPARE(w->ListBox1.ListIndex, 2);
        QCOMPARE(hhmm(w->ListBox1.row(2).minutes()) + hhmm(w->ListBox1.row(0).minutes()), QStringLiteral("01:3000:10"));
        QCOMPARE(w->ListBox1.row(0).run, kRunStopped);
        w->Allstop();
        QVERIFY(w->setListIndex(0) && !w->running);
        QCOMPARE(w->runButton.caption, Tr::MWStartButtonSt);
    }

    // A damaged file, opened or converted, gives the load's message and shows what could be read, a row
    // left running stopped (its start time was cut off). The file is never written over, and the rows stay
    // dirty until they are kept with Save As.
    void damagedFileKeepsWhatWasRead()
    {
        for (const bool convert : {false, true}) {
            init();
            Timesheet sheet;
            sheet.rows = {makeRow(kDay, "A", "01", "00", kRunRunning)};
            const qsizetype rowA = storage::encodeTimesheet(sheet).size() - 2;
            sheet.rows.push_back(makeRow(kDay, "B"));
            sheet.starthrs = QStringLiteral("09");
            const QByteArray cut = storage::encodeTimesheet(sheet).left(rowA); // B and the start time cut off
            files.files[kPath] = cut;
            app->prefs.lastdoc = QStringLiteral("/home/ann/other.vlk");
            if (convert) {
                dialogs.expectAnswer(platform::Answer::Action);
                dialogs.expectFile(kPath);
                doc->openOld();
            } else {
                app->thisdoc = kPath;
                doc->sesame();
            }
            QCOMPARE(dialogs.messages, QStringList{QStringLiteral("Veltrick - Error [-2]\r\rVeltrick - WARNING!\rThe "
                                                                  "last known path to the file was: ") +
                                                   kPath});
            QCOMPARE(w->ListBox1.ListCount(), 1);
            QVERIFY(w->setListIndex(0) && !w->running);
            QVERIFY(w->xpath.isEmpty() && w->boxchange);
            w->autosave();
            QVERIFY(w->boxchange);
            QCOMPARE(files.files[kPath], cut);
            cleanup();
        }
    }

    // Save As to a place that refuses the file leaves the document where it was; a place that takes it
    // becomes the document's, with the suffix added.
    void saveAsRefused()
    {
        openFile({makeRow(kDay, "A")}, {});
        files.failWrites = true;
        dialogs.expectFile(QStringLiteral("/readonly/copy"));
        doc->newSaveAs();
        QCOMPARE(dialogs.messages.last(), QStringLiteral("Error [28] Access denied!\n\nSorry, I can't write your "
                                                         "Timesheet file in that location."));
        QCOMPARE(w->xpath, kPath);

        files.failWrites = false;
        dialogs.expectFile(QStringLiteral("/home/ann/copy"));
        doc->newSaveAs();
        const QString copy = QStringLiteral("/home/ann/copy.vlk");
        QCOMPARE(w->xpath + app->prefs.lastdoc, copy + copy);
        QCOMPARE(onDisk(copy).ListCount(), 1);
    }
};

QTEST_GUILESS_MAIN(TestCore)
#include "test_core.moc"

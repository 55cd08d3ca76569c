// The program, its timesheet window and the document behind it, over files in memory and a fake clock.
#include "core/app.h"
#include "core/screenfit.h"
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
using namespace Qt::StringLiterals;

namespace
{
const QString kPath = u"/home/ann/Timesheets/week.vlk"_s;
const QDate kDay(2026, 11, 20);
// Answers for the settings and the files; the timesheet is written through the document.
class Hooks : public AppHooks, public MainwndoHooks
{
public:
    void readPrefs(AppPrefs& prefs) override { prefs = stored.value_or(prefs); }
    void saveprefs(const AppPrefs& prefs) override { saved << prefs; }
    bool fileExists(const QString& path) const override { return path == existing; }
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
    QString existing;
    bool haveOperations = true;
    int sesames = 0, firstRuns = 0, exits = 0, writes = 0;
};
JobRow makeRow(const QDate& date, const QString& job, const QString& hours = u"01"_s, const QString& minutes = u"00"_s,
               const QString& run = kRunStopped)
{
    JobRow row;
    row.cells = {shortDate(date), job, "Project " + job, hours, minutes, u"Design"_s, u"Acme"_s};
    std::tie(row.user, row.note, row.run) = std::tuple(u"Ann"_s, u"keep me on the old day"_s, run);
    return row;
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
    static QString time(const JobRow& row) { return row.cell(CellHours) + ':' + row.cell(CellMinutes); }
    static Dupitwndo& dupit(platform::ModalForm& form) { return static_cast<Dupitwndo&>(form); }
    Timesheet onDisk(const QString& path = kPath) { return storage::decodeTimesheet(files.files.value(path)).sheet; }
    // Stores the rows with the start time and opens them as the document.
    void open(std::vector<JobRow> rows, const QString& start = {})
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
        doc = std::make_unique<storage::Document>(*app, files, dialogs, desktop, clock, u"/home/ann"_s);
        hooks.document = doc.get();
        w = &app->mainwndo();
    }
    void cleanup()
    {
        QVERIFY2(dialogs.errors.isEmpty(), qPrintable(dialogs.errors.join('\n')));
        QVERIFY(dialogs.scriptDone());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // a closed window
    }
    // Start/stop adds the clock minutes crossed over any days; a tick behind the stop or Continue+Stop adds none.
    void measurement_data()
    {
        QTest::addColumn<QDateTime>("start");
        QTest::addColumn<QDateTime>("stop");
        QTest::addColumn<QString>("before"); // hours:minutes
        QTest::addColumn<bool>("fromFile");
        QTest::addColumn<QString>("expected");
        const QDate d(2026, 6, 10), mar1(2026, 3, 1), dec31(2026, 12, 31), autumn(2026, 10, 25);
        const auto at = [](QDate date, int h, int m, int s = 0) { return QDateTime(date, QTime(h, m, s)); };
        const auto utc = [](QDate date, int h, int m) { return QDateTime(date, QTime(h, m), QTimeZone::utc()); };
        const auto row = [](const char* tag, const QDateTime& start, const QDateTime& stop, const char* expected,
                            const char* before = "01:00", bool fromFile = false) {
            QTest::newRow(tag) << start.toLocalTime() << stop.toLocalTime() << before << fromFile << expected;
        };
        row("same minute adds nothing", at(d, 10, 0, 1), at(d, 10, 0, 59), "01:00");
        row("boundary crossed in 3 s", at(d, 10, 0, 59), at(d, 10, 1, 2), "01:01");
        row("99:59 plus a minute", at(d, 9, 0), at(d, 9, 1), "100:00", "99:59");
        row("unreadable cells count 0", at(d, 9, 0), at(d, 9, 5), "00:05", "x:");
        row("hours past 32-bit minutes", at(d, 9, 0), at(d, 9, 1), "40000001:00", "40000000:59");
        row("autumn change, 01:59 to 01:00", utc(autumn, 0, 59), utc(autumn, 1, 0), "01:01");
        row("spring change, 00:59 to 02:00", utc({2026, 3, 29}, 0, 59), utc({2026, 3, 29}, 1, 0), "01:01");
        row("23:59 to 00:01", at(mar1, 23, 59), at(mar1.addDays(1), 0, 1), "01:02");
        row("over the night", at(mar1, 9, 0), at(mar1.addDays(1), 10, 0), "26:00");
        row("three days, earlier in the day", at(mar1, 9, 0), at(mar1.addDays(3), 8, 0), "72:00");
        row("same clock minute days later", at(mar1, 9, 0), at(mar1.addDays(3), 9, 0), "01:00");
        row("year turn, two nights", at(dec31, 9, 0), at(dec31.addDays(2), 10, 0), "50:00");
        row("same day, earlier clock is next morning", at(mar1, 10, 0), at(mar1, 9, 0), "24:00");
        row("from a file, autumn change", at(autumn, 0, 30), utc(autumn, 1, 10), "02:40", "01:00", true);
    }
    void measurement()
    {
        QFETCH(QDateTime, start);
        QFETCH(QDateTime, stop);
        QFETCH(QString, before);
        QFETCH(bool, fromFile);
        clock.set(start);
        open({makeRow(start.date(), u"A1"_s, before.section(':', 0, 0), before.section(':', 1))});
        if (fromFile) {
            std::tie(w->ListBox1.starthrs, w->ListBox1.startmin) =
                std::tuple(start.toString("HH"), start.toString("mm"));
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
    // Midnight while running: yesterday's row charged and stopped; OK goes on in a new row for today.
    void midnightRollover()
    {
        // OK, OK and never ask again, Cancel, the question turned off
        for (const auto& [ask, answer, tickDontShow] :
             {std::tuple(true, Tr::MWButtonOK, false), std::tuple(true, Tr::MWButtonOK, true),
              std::tuple(true, Tr::MWButtonCancel, false), std::tuple(false, QString(), false)}) {
            init();
            app->prefs.warningsign = ask;
            clock.set(2026, 11, 21, 23, 50);
            const JobRow k1 = makeRow(kDay, u"K1"_s);
            open({makeRow(kDay.addDays(1), u"J7"_s, u"02"_s), k1});
            w->runButton_Action();
            clock.set(2026, 11, 22, 0, 5);
            if (ask) {
                dialogs.expectModal(u"dupitwndo"_s, [&](platform::ModalForm& form) {
                    QVERIFY(!w->runButton.enabled && timer3().mode() == platform::Timer::Off);
                    if (tickDontShow)
                        dupit(form).dontshow_Action(true);
                    answer == Tr::MWButtonOK ? dupit(form).dupeit_Action() : dupit(form).Cancel_Action();
                });
            }
            timer3().fire();
            const bool copied = answer != Tr::MWButtonCancel;
            JobRow today = makeRow(kDay.addDays(2), u"J7"_s, u"00"_s, u"00"_s, kRunRunning);
            today.note.clear();
            const JobRow old = makeRow(kDay.addDays(1), u"J7"_s, u"02"_s, u"15"_s);
            QCOMPARE(w->ListBox1.rows, (copied ? std::vector{today, old, k1} : std::vector{old, k1}));
            QVERIFY(w->ListBox1.ListIndex == 0 && w->runButton.enabled && w->running == copied);
            QCOMPARE(app->prefs.warningsign, ask && !tickDontShow);
            QCOMPARE(w->runButton.caption, copied ? Tr::MWStartButtonStop : Tr::MWStartButtonSt);
            QCOMPARE(w->clientlist2.enabled, !copied);
            clock.set(2026, 11, 22, 0, 9);
            timer3().fire();
            QCOMPARE(time(w->ListBox1.row(0)), copied ? u"00:04"_s : u"02:15"_s);
            cleanup();
        }
    }
    // Continuing an old row asks (Cancel: no change); a first start moves it to today, held selected.
    void staleRowStart()
    {
        clock.set(2026, 11, 22, 14, 0);
        const std::vector rows{makeRow(kDay, u"S1"_s, u"03"_s, u"10"_s),
                               makeRow(kDay, u"S2"_s, u"00"_s, u"00"_s, kRunNever)};
        open(rows);
        dialogs.expectModal(u"dupitwndo"_s, [](platform::ModalForm& f) { dupit(f).Cancel_Action(); });
        w->runButton_Action();
        QVERIFY(!w->running && w->ListBox1.rows == rows);
        w->setListIndex(1);
        QCOMPARE(w->runButton.caption, Tr::MWStartButtonFs);
        w->runButton_Action();
        QCOMPARE(w->ListBox1.row(1).cell(CellDate) + w->ListBox1.row(1).run, shortDate(clock.now().date()) + "*");
        QVERIFY(w->running && !w->ListBox1Ctl.enabled && w->indecator == Mainwndo::kIndecatorRunning);
        QVERIFY(!w->njButton2.enabled && !w->setListIndex(0) && w->ListBox1.ListIndex == 1);
    }
    // List, today's, job's (any case) and day's totals past 2^31 minutes; no selection turns run and note off.
    void totals()
    {
        const QDate today = clock.now().date();
        open({makeRow(today, u"A"_s, u"123"_s, u"05"_s), makeRow(today.addDays(-1), u"B"_s, u"120"_s, u"05"_s),
              makeRow(today, u"a"_s, u"03"_s)});
        w->setListIndex(-1);
        w->Uptotal2(1);
        QCOMPARE(w->runtotal, u"List Totals - Time: 246:10, Today: 00:00, Entries: 03"_s);
        QVERIFY(!w->runButton.enabled && w->notebox.caption.isEmpty() && !w->Event_KeyDown(' '));
        w->setListIndex(0);
        w->Uptotal2(1);
        w->totalJobTime();
        w->totalSelectedDay();
        QCOMPARE(w->runtotal, u"List Totals - Time: 246:10, Today: 126:05, Entries: 03"_s);
        QCOMPARE(w->jobtotal + w->selecteddaytotal + w->notebox.caption, "126:05126:05keep me on the old day");
        const JobRow big = makeRow(today, u"L"_s, u"30000000"_s, u"30"_s);
        open({big, big});
        QCOMPARE(w->runtotal, u"List Totals - Time: 60000001:00, Today: 60000001:00, Entries: 02"_s);
    }
    // A failed write keeps the rows and the dirty mark, tells the user, and the next tick tries again.
    void failedSaveKeepsTiming()
    {
        clock.set(QDateTime(kDay, QTime(10, 0)));
        open({makeRow(kDay, u"F"_s, u"00"_s)});
        w->runButton_Action();
        files.failWrites = true;
        clock.advanceMinutes(1);
        timer3().fire();
        QCOMPARE(dialogs.messages, QStringList{Tr::MWErrorWriteFail});
        QVERIFY(w->datastream == Tr::MWDSWriteError && w->boxchange && w->running);
        files.failWrites = false;
        clock.advanceMinutes(1);
        timer3().fire();
        QVERIFY(!w->boxchange && time(onDisk().row(0)) == u"00:02"_s);
        timers.made[0]->fire(); // Timer2 clears the status line
        QVERIFY(w->datastream.isEmpty());
    }
    // Quit asks to save; a save that did not happen or Cancel keeps the window; settings keep its place.
    void quitAsksToSave()
    {
        const platform::Answer save = platform::Answer::Action, no = platform::Answer::Alternate;
        // answer, untitled, refused, quits, writes: Save; the disk refuses; no file; Don't Save; Cancel
        for (const auto& [answer, untitled, refused, quits, writes] :
             {std::tuple(save, false, false, true, 1), std::tuple(save, false, true, false, 1),
              std::tuple(save, true, false, false, 0), std::tuple(no, false, false, true, 0),
              std::tuple(platform::Answer::Cancel, false, false, false, 0)}) {
            init();
            open({makeRow(kDay, u"Q"_s)});
            QVERIFY(!w->Event_CancelClose()); // clean: no question
            if (untitled)
                w->xpath.clear();
            w->Windowfilename();
            w->geometry = QRect(40, 60, 700, 500);
            files.failWrites = refused;
            w->markChanged();
            QVERIFY(!untitled || (!w->autosave() && w->boxchange)); // with no file the rows stay unsaved
            dialogs.expectAnswer(answer);
            QCOMPARE(app->_FileQuit_Action(), quits);
            QCOMPARE(hooks.writes, writes);
            QCOMPARE(dialogs.questions.last().message, u"Do you want to save changes to \"%1\" before closing?"_s.arg(
                                                           untitled ? Mainwndo::kUntitled : u"week.vlk"_s));
            QVERIFY(hooks.exits == int(quits) && (app->existingMainwndo() == nullptr) == quits);
            QCOMPARE(hooks.saved.size(), quits ? 2 : 1);
            QCOMPARE(QPoint(hooks.saved.last().winwidth, hooks.saved.last().wintop),
                     quits ? QPoint(700, 60) : QPoint(501, 50));
            cleanup();
        }
    }
    // The start reads the settings, opens the recent timesheet or tells it is gone, and welcomes a first run.
    void start()
    {
        const QString path = u"/home/ann/Week 47.vlk"_s;
        const QString gone =
            u"Veltrick - Error [-2]\n\nWARNING! - Unable to open the recent timesheet file - Perhaps the "
            "file has been moved or deleted!\nThe last known path to the file was: "_s;
        // opens, moved away, auto-open off, first run without settings
        for (const auto& [exists, autopen, firstRun] :
             {std::tuple(true, true, false), std::tuple(false, true, false), std::tuple(true, false, false),
              std::tuple(false, true, true)}) {
            init();
            AppPrefs stored;
            std::tie(stored.lastdoc, stored.autopen, stored.fontsize) = std::tuple(path, autopen, 14);
            hooks.stored = firstRun ? std::nullopt : std::optional(stored);
            hooks.existing = exists ? path : QString();
            hooks.haveOperations = !firstRun;
            desktop.mouse = QPoint(321, 123);
            app->prefs.fontsize = 99;
            app->Event_Open();
            const bool opens = exists && autopen && !firstRun;
            QVERIFY(hooks.sesames == int(opens) && app->thisdoc == (opens ? path : QString()));
            QCOMPARE(hooks.firstRuns, int(firstRun));
            QCOMPARE(app->prefs.fontsize, firstRun ? AppPrefs().fontsize : 14);
            QCOMPARE(app->prefs.lastdoc, firstRun ? QString() : path);
            QCOMPARE(QPoint(app->prefs.positionx, app->prefs.positiony), desktop.mouse);
            QCOMPARE(dialogs.messages, !exists && !firstRun ? QStringList{gone + path} : QStringList());
            cleanup();
        }
    }
    // A window position is on a screen when it lies inside its area, edges included.
    void restoreWindowSize()
    {
        desktop.screenList = {QRect(0, 0, 1920, 1080), QRect(1921, 0, 1280, 1024)};
        const QString moved = u"Previous display is not available.\n\nFor your convenience, the Timesheet window "
                              "has been moved to your main display."_s;
        const std::pair<QPoint, int> cases[] = {
            {{10, 50}, 0}, {{1920, 1080}, 0}, {{2000, 100}, 1}, {{-3000, 100}, -1}, {{100, 3000}, -1}}; // -1: gone
        for (const auto& [topLeft, screen] : cases) {
            dialogs.messages.clear();
            app->windScreen = 7;
            app->RestoreWindowSize(*w, topLeft.x(), topLeft.y(), 600, 420);
            QCOMPARE(dialogs.messages, screen < 0 ? QStringList{moved} : QStringList());
            QCOMPARE(app->windScreen, screen < 0 ? 7 : screen);
            // A window whose display is gone comes onto the main one, at the edge nearest its old place.
            const QPoint back = topLeft.x() < 0 ? QPoint(0, 100) : QPoint(100, 1080 - 420);
            QCOMPARE(w->geometry, QRect(screen < 0 ? back : topLeft, QSize(600, 420)));
        }
    }
    // A place the screens of now do not show whole comes onto the one that shows most of it, or the
    // nearest, shrunk to it where it is larger; a place shown whole stays.
    void windowsComeBackOnScreen()
    {
        const QRect wide(0, 0, 1920, 1080), right(1920, 0, 1280, 1024), small(0, 30, 800, 570);
        const struct
        {
            QRect wanted;
            QList<QRect> screens;
            QRect placed;
        } cases[] = {
            {{10, 50, 600, 420}, {wide, right}, {10, 50, 600, 420}},
            {{10, 50, 1000, 600}, {small}, {0, 30, 800, 570}},             // stored on a larger screen
            {{700, 100, 300, 200}, {small}, {500, 100, 300, 200}},         // over the right edge
            {{1800, 100, 400, 300}, {wide, right}, {1920, 100, 400, 300}}, // most of it on the right screen
            {{2500, 200, 600, 400}, {wide}, {1320, 200, 600, 400}},        // its monitor unplugged
            {{-900, -700, 300, 200}, {wide, right}, {0, 0, 300, 200}},
            {{2500, 200, 600, 400}, {}, {2500, 200, 600, 400}}, // no screen known: nothing to go by
        };
        for (const auto& c : cases)
            QCOMPARE(core::fitOnScreens(c.wanted, c.screens), c.placed);
    }
    // An unexpected error is told, with the address to report it to or, without one, the version.
    void errorsAreReportedNotFatal()
    {
        app->Event_UnhandledException(-3, u"bad_alloc"_s);
        QVERIFY(desktop.beeps == 1 && dialogs.messages.first().startsWith(u"Veltrick - Error [-3]\n\nOoops..."_s));
        QVERIFY(App::unhandledText(2, QString()).endsWith(u"please report it. (Veltrick v.8.0)"_s));
        QVERIFY(App::unhandledText(2, u"a@b.org"_s).endsWith(u"please report it by sending an email to: a@b.org"_s));
    }
    // A timer left running at exit: the closed time charged, timing goes on; no start time: stopped as it is.
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
            dialogs.expectModal(u"dupitwndo"_s, [](platform::ModalForm& f) { dupit(f).dupeit_Action(); });
        open({makeRow(kDay, u"R1"_s, u"01"_s, u"00"_s, kRunRunning)}, start);
        const JobRow& charged = w->ListBox1.row(nextDay ? 1 : 0);
        QTEST(time(charged), "charged");
        QVERIFY(w->running != start.isEmpty() && dialogs.messages.isEmpty() == start.isEmpty());
        QCOMPARE(w->ListBox1.selected().run, start.isEmpty() ? kRunStopped : kRunRunning);
        if (start.isEmpty())
            return;
        QCOMPARE(dialogs.messages, QStringList{u"Veltrick - WARNING!\n\nThe timer was not stopped for the Job in Row "
                                               "1. The time elapsed while Veltrick was closed will be added to this "
                                               "jobs total."_s});
        QCOMPARE(w->ListBox1.selected().cell(CellDate), shortDate(now.date()));
        const Timesheet disk = onDisk();
        QVERIFY(disk.ListCount() == w->ListBox1.ListCount() && time(disk.row(nextDay ? 1 : 0)) == time(charged));
        QCOMPARE(disk.starthrs + ':' + disk.startmin, now.toString(u"HH:mm"_s));
    }
    // Of two rows left running only the last is charged and runs on; the other is stopped.
    void twoRunningRowsChargeTheLast()
    {
        clock.set(QDateTime(kDay, QTime(12, 0)));
        open({makeRow(kDay, u"A"_s, u"00"_s, u"10"_s, kRunRunning), makeRow(kDay, u"B"_s, u"00"_s, u"20"_s, kRunNever),
              makeRow(kDay, u"C"_s, u"00"_s, u"30"_s, kRunRunning)},
             u"11:00"_s);
        QVERIFY(dialogs.messages.size() == 2 && dialogs.messages[0].contains(u"Row 1."_s) &&
                dialogs.messages[1].contains(u"Row 3."_s) && w->ListBox1.ListIndex == 2);
        QCOMPARE(time(w->ListBox1.row(2)) + time(w->ListBox1.row(0)) + w->ListBox1.row(0).run, u"01:3000:10"_s);
        w->Allstop();
        QVERIFY(w->setListIndex(0) && !w->running && w->runButton.caption == Tr::MWStartButtonSt);
    }
    // A damaged file, opened or converted: message, what was read (stopped), never written over, kept dirty.
    void damagedFileKeepsWhatWasRead()
    {
        for (const bool convert : {false, true}) {
            init();
            Timesheet sheet;
            sheet.rows = {makeRow(kDay, u"A"_s, u"01"_s, u"00"_s, kRunRunning)};
            const qsizetype rowA = storage::encodeTimesheet(sheet).size() - 2;
            sheet.rows.push_back(makeRow(kDay, u"B"_s));
            sheet.starthrs = u"09"_s;
            const QByteArray cut = storage::encodeTimesheet(sheet).left(rowA); // B and the start time cut off
            files.files[kPath] = cut;
            app->prefs.lastdoc = u"/home/ann/other.vlk"_s;
            if (convert) {
                dialogs.expectAnswer(platform::Answer::Action);
                dialogs.expectFile(kPath);
                doc->openOld();
            } else {
                app->thisdoc = kPath;
                doc->sesame();
            }
            QCOMPARE(dialogs.messages,
                     QStringList{"Veltrick - Error [-2]\r\rVeltrick - WARNING!\rThe last known path to the file was: " +
                                 kPath});
            QVERIFY(w->ListBox1.ListCount() == 1 && w->setListIndex(0) && !w->running && w->xpath.isEmpty());
            w->autosave();
            QVERIFY(w->boxchange && files.files[kPath] == cut);
            cleanup();
        }
    }
    // Save As refused leaves the document where it was; accepted, it moves there with the suffix added.
    void saveAsRefused()
    {
        open({makeRow(kDay, u"A"_s)});
        files.failWrites = true;
        dialogs.expectFile(u"/readonly/copy"_s);
        doc->newSaveAs();
        QCOMPARE(dialogs.messages.last(),
                 u"Error [28] Access denied!\n\nSorry, I can't write your Timesheet file in that location."_s);
        QCOMPARE(w->xpath, kPath);
        files.failWrites = false;
        dialogs.expectFile(u"/home/ann/copy"_s);
        doc->newSaveAs();
        const QString copy = u"/home/ann/copy.vlk"_s;
        QVERIFY(w->xpath == copy && app->prefs.lastdoc == copy && onDisk(copy).ListCount() == 1);
    }
};

QTEST_GUILESS_MAIN(TestCore)
#include "test_core.moc"

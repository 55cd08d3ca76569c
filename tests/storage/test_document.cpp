// Opening, saving and recovering a timesheet through the document, on files held in memory.
#include "core/timetext.h"
#include "storage/document.h"
#include "storage/timesheet_file.h"
#include "support/fakes.h"
#include "support/memorystore.h"

#include <QLocale>
#include <QtTest>

using namespace core;

namespace
{

const QString kPath = QStringLiteral("/home/ann/Timesheets/week.vlk");

class WritingHooks : public AppHooks, public MainwndoHooks
{
public:
    storage::Document* document = nullptr;
    platform::Result writeTimesheet(const QString& path, const Timesheet& sheet) override
    {
        return document->writeTimesheet(path, sheet);
    }
};

JobRow row(const QDate& date, const QString& job, const QString& h, const QString& m, const QString& run)
{
    JobRow r;
    r.setCell(CellDate, shortDate(date));
    r.setCell(CellJob, job);
    r.setCell(CellHours, h);
    r.setCell(CellMinutes, m);
    r.run = run;
    return r;
}

} // namespace

class TestDocument : public QObject
{
    Q_OBJECT

    testing::FakeClock clock;
    testing::FakeDesktop desktop;
    testing::ScriptedDialogs dialogs;
    testing::FakeTimers timers;
    platform::EventGate gate;
    testing::MemoryFileStore files;
    WritingHooks hooks;
    std::unique_ptr<App> app;
    std::unique_ptr<storage::Document> doc;

    void store(std::vector<JobRow> rows, const QString& starthrs, const QString& startmin)
    {
        Timesheet sheet;
        sheet.rows = std::move(rows);
        sheet.starthrs = starthrs;
        sheet.startmin = startmin;
        files.files[kPath] = storage::encodeTimesheet(sheet);
    }

    Timesheet stored() { return storage::decodeTimesheet(files.files.value(kPath)).sheet; }

private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }

    void init()
    {
        dialogs = testing::ScriptedDialogs();
        files = testing::MemoryFileStore();
        app = std::make_unique<App>(Mainwndo::Services{clock, desktop, dialogs, timers, hooks, gate}, hooks);
        doc = std::make_unique<storage::Document>(*app, files, dialogs, desktop, QStringLiteral("/home/ann"));
        hooks.document = doc.get();
    }

    void cleanup()
    {
        QVERIFY2(dialogs.errors.isEmpty(), qPrintable(dialogs.errors.join(QLatin1Char('\n'))));
        QVERIFY(dialogs.scriptDone());
    }

    // A timer left running when the program ended: the closed time is charged and the job runs on from
    // the minute the charge reached, even when saving the charge takes the clock past a minute; or, on a
    // later day, the rollover takes over.
    void leftOverTimer_data()
    {
        QTest::addColumn<QDate>("rowDate");
        QTest::addColumn<QString>("start");
        QTest::addColumn<QDateTime>("now");
        QTest::addColumn<int>("saveSeconds");
        QTest::addColumn<QString>("charged");
        const QDate day(2026, 11, 20);
        QTest::newRow("same day, later") << day << "09:15" << QDateTime(day, QTime(11, 0)) << 0 << "02:45";
        QTest::newRow("save crosses a minute") << day << "09:15" << QDateTime(day, QTime(11, 0, 50)) << 20 << "02:45";
        QTest::newRow("over midnight") << day << "23:50" << QDateTime(day.addDays(1), QTime(0, 10)) << 0 << "01:20";
        QTest::newRow("next day, later clock")
            << day << "09:00" << QDateTime(day.addDays(1), QTime(10, 0)) << 0 << "26:00";
        // No start time to count from: the row is stopped as it stands, not charged from midnight.
        QTest::newRow("no start time") << day << "" << QDateTime(day, QTime(11, 0)) << 0 << "01:00";
    }

    void leftOverTimer()
    {
        QFETCH(QDate, rowDate);
        QFETCH(QString, start);
        QFETCH(QDateTime, now);
        QFETCH(int, saveSeconds);
        clock.set(now);
        files.onWrite = [this, saveSeconds] { clock.set(clock.now().addSecs(saveSeconds)); };
        store({row(rowDate, QStringLiteral("R1"), QStringLiteral("01"), QStringLiteral("00"), kRunRunning)},
              start.left(2), start.right(2));
        const bool nextDay = now.date() != rowDate;
        if (nextDay)
            dialogs.expectModal(QStringLiteral("dupitwndo"),
                                [](platform::ModalForm& f) { static_cast<Dupitwndo&>(f).dupeit_Action(); });
        app->thisdoc = kPath;
        doc->sesame();
        Mainwndo& w = app->mainwndo();
        if (start.isEmpty()) {
            QVERIFY(dialogs.messages.isEmpty() && !w.running);
            QTEST(hhmm(w.ListBox1.row(0).minutes()), "charged");
            QCOMPARE(w.ListBox1.row(0).run, kRunStopped);
            return;
        }

        QCOMPARE(dialogs.messages, QStringList{QStringLiteral(
                                       "Veltrick - WARNING!\n\nThe timer was not stopped for the Job in Row 1. The "
                                       "time elapsed while Veltrick was closed will be added to this jobs total.")});
        const JobRow& charged = w.ListBox1.row(nextDay ? 1 : 0);
        QTEST(hhmm(charged.minutes()), "charged");
        QVERIFY(w.running);
        QCOMPARE(w.ListBox1.selected().run, kRunRunning);
        QCOMPARE(w.ListBox1.selected().cell(CellDate), shortDate(now.date()));
        // What is on disk agrees: the charge and the running row both reached the file.
        const Timesheet disk = stored();
        QCOMPARE(disk.ListCount(), w.ListBox1.ListCount());
        QCOMPARE(disk.row(nextDay ? 1 : 0).minutes(), charged.minutes());
        QCOMPARE(disk.starthrs + QLatin1Char(':') + disk.startmin, now.toString(QStringLiteral("HH:mm")));
    }

    void twoRunningRowsChargeTheLast()
    {
        const QDate day(2026, 11, 22);
        clock.set(QDateTime(day, QTime(12, 0)));
        store({row(day, QStringLiteral("A"), QStringLiteral("00"), QStringLiteral("10"), kRunRunning),
               row(day, QStringLiteral("B"), QStringLiteral("00"), QStringLiteral("20"), kRunNever),
               row(day, QStringLiteral("C"), QStringLiteral("00"), QStringLiteral("30"), kRunRunning)},
              QStringLiteral("11"), QStringLiteral("00"));
        app->thisdoc = kPath;
        doc->sesame();
        QCOMPARE(dialogs.messages.size(), 2);
        QVERIFY(dialogs.messages[0].contains(QStringLiteral("Row 1.")));
        QVERIFY(dialogs.messages[1].contains(QStringLiteral("Row 3.")));
        Mainwndo& w = app->mainwndo();
        QCOMPARE(w.ListBox1.ListIndex, 2);
        QCOMPARE(hhmm(w.ListBox1.row(2).minutes()), QStringLiteral("01:30"));
        QCOMPARE(hhmm(w.ListBox1.row(0).minutes()), QStringLiteral("00:10"));
        // Only the last is charged and goes on; the other is stopped, so that selecting it later cannot
        // put the window into a running state without a timer.
        QCOMPARE(w.ListBox1.row(0).run, kRunStopped);
        w.Allstop();
        QVERIFY(w.setListIndex(0));
        QVERIFY(!w.running);
        QCOMPARE(w.runButton.caption, Tr::MWStartButtonSt);
    }

    // A damaged file, opened or converted, gives the load's message and shows what could be read; the
    // file is never written over, and the rows stay dirty until they are kept with Save As. A row left
    // running in it is stopped: the start time to count from was cut off.
    void damagedFileKeepsWhatWasRead_data()
    {
        QTest::addColumn<bool>("convert");
        QTest::newRow("opened") << false;
        QTest::newRow("converted") << true;
    }

    void damagedFileKeepsWhatWasRead()
    {
        QFETCH(bool, convert);
        const QDate day(2026, 11, 22);
        store({row(day, QStringLiteral("A"), QStringLiteral("01"), QStringLiteral("00"), kRunRunning),
               row(day, QStringLiteral("B"), QStringLiteral("02"), QStringLiteral("00"), kRunStopped)},
              QStringLiteral("09"), QStringLiteral("00"));
        const QByteArray whole = files.files[kPath];
        files.files[kPath] = whole.left(whole.size() - 30);
        app->prefs.lastdoc = QStringLiteral("/home/ann/other.vlk");
        if (convert) {
            dialogs.expectAnswer(platform::Answer::Action);
            dialogs.expectFile(kPath);
            doc->openOld();
        } else {
            app->thisdoc = kPath;
            doc->sesame();
        }
        QCOMPARE(dialogs.messages, QStringList{QStringLiteral("Veltrick - Error [-2]\r\rVeltrick - WARNING!\rThe last "
                                                              "known path to the file was: ") +
                                               kPath});
        Mainwndo& w = app->mainwndo();
        QCOMPARE(w.ListBox1.ListCount(), 1);
        QVERIFY(w.setListIndex(0));
        QVERIFY(!w.running);
        QVERIFY(w.xpath.isEmpty() && w.boxchange);
        w.autosave();
        QVERIFY(w.boxchange);
        QCOMPARE(files.files[kPath], whole.left(whole.size() - 30));
    }

    // Save As to a place that refuses the file leaves the document where it was.
    void saveAsRefused()
    {
        const QDate day(2026, 11, 22);
        store({row(day, QStringLiteral("A"), QStringLiteral("01"), QStringLiteral("00"), kRunStopped)}, {}, {});
        app->thisdoc = kPath;
        doc->sesame();
        files.failWrites = true;
        dialogs.expectFile(QStringLiteral("/readonly/copy"));
        doc->newSaveAs();
        QCOMPARE(dialogs.messages.last(), QStringLiteral("Error [28] Access denied!\n\nSorry, I can't write your "
                                                         "Timesheet file in that location."));
        QCOMPARE(app->mainwndo().xpath, kPath);

        files.failWrites = false;
        dialogs.expectFile(QStringLiteral("/home/ann/copy"));
        doc->newSaveAs();
        QCOMPARE(app->mainwndo().xpath, QStringLiteral("/home/ann/copy.vlk"));
        QCOMPARE(app->prefs.lastdoc, QStringLiteral("/home/ann/copy.vlk"));
        QCOMPARE(storage::decodeTimesheet(files.files.value(QStringLiteral("/home/ann/copy.vlk"))).sheet.ListCount(),
                 1);
    }
};

QTEST_GUILESS_MAIN(TestDocument)
#include "test_document.moc"

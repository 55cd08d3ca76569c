// The one command state: the two enable procedures, and every path to a command obeying them.
#include "programrig.h"

#include <QtTest>

using namespace core;
using testing::ProgramRig;

namespace
{

const QString kSheet = QStringLiteral("/docs/a.vlk");

// The names of the items that are on, sorted.
QStringList onItems(const MenuItems& items)
{
    QStringList on;
    for (int i = 0; i < kItemCount; ++i)
        if (items.enabled(Item(i)))
            on << itemName(Item(i));
    on.sort();
    return on;
}

enum class State
{
    NoTimesheet,
    NewWithoutFile,
    Clean,
    Dirty,
    NoSelection,
    Running,
    StoppedAfterQuietRollover,
};

} // namespace

Q_DECLARE_METATYPE(State)

class TestCommands : public QObject
{
    Q_OBJECT

    testing::ScriptedDialogs dialogs;
    std::unique_ptr<ProgramRig> rig;

    void openSheet(int selected = 0)
    {
        rig->writeSheet(kSheet, {rig->row(QStringLiteral("A100"), 30), rig->row(QStringLiteral("B200"), 0)});
        rig->program->openRequested({kSheet});
        rig->w()->setListIndex(selected);
    }

    void enter(State state)
    {
        switch (state) {
        case State::NoTimesheet:
            return;
        case State::NewWithoutFile:
            dialogs.expectFile(QString()); // the save dialog of New, cancelled
            rig->program->command(Item::nusheet);
            return;
        case State::Clean:
        case State::Dirty:
        case State::Running:
            openSheet();
            if (state == State::Dirty)
                rig->w()->markChanged();
            if (state == State::Running)
                rig->program->runButton();
            return;
        case State::NoSelection:
            openSheet(-1);
            return;
        case State::StoppedAfterQuietRollover:
            // Midnight passes with the question turned off: the job goes on in today's row, and the
            // menus stay as they are after a rollover until the next one that ends by clearing it.
            rig->program->app().prefs.warningsign = false;
            rig->clock.set(2026, 11, 21, 23, 58);
            openSheet();
            rig->program->runButton();
            rig->clock.set(2026, 11, 22, 0, 2);
            rig->tick();
            QVERIFY(rig->w()->dateschanged && rig->w()->running);
            rig->program->runButton();
            return;
        }
    }

private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }

    void init()
    {
        dialogs = testing::ScriptedDialogs();
        rig = std::make_unique<ProgramRig>(dialogs);
        rig->start();
    }

    void cleanup()
    {
        QVERIFY2(dialogs.errors.isEmpty(), qPrintable(dialogs.errors.join(QLatin1Char('\n'))));
        QVERIFY(dialogs.scriptDone());
    }

    // The application's procedure, then the window's, step by step. Print stays on while a job runs;
    // export needs a file and a stopped job.
    void enableProcedures_data()
    {
        QTest::addColumn<State>("state");
        QTest::addColumn<bool>("netlook");
        QTest::addColumn<QString>("on");
        const QString app = QStringLiteral("helpon2 aboutme nineprefs");
        const QString doc =
            QStringLiteral("saveAs presetJobs FileQuit FileAddNewClient syncAddressBook FilePrintLayout printit ");
        const QString rows =
            QStringLiteral("nujobmenu2 duplicate edjobmenu notey zerorow clearjb2 totaltime2 totaldy2 ");
        QTest::newRow("no timesheet") << State::NoTimesheet << false << "nusheet open openOld FileQuit " + app;
        QTest::newRow("no timesheet, Net Link on")
            << State::NoTimesheet << true << "nusheet open openOld FileQuit webo " + app;
        QTest::newRow("new, no file yet")
            << State::NewWithoutFile << false << doc + "exportmenu nujobmenu2 shwnts " + app;
        QTest::newRow("clean file") << State::Clean << false
                                    << "clozeit switchit exportmenu " + doc + rows + "shwnts statusStart " + app;
        QTest::newRow("dirty file") << State::Dirty << false
                                    << "clozeit switchit exportmenu save " + doc + rows + "shwnts statusStart " + app;
        QTest::newRow("no row selected") << State::NoSelection << false
                                         << "clozeit switchit exportmenu " + doc + "nujobmenu2 shwnts " + app;
        QTest::newRow("timing")
            << State::Running << true
            << "clozeit switchit saveAs presetJobs FileQuit FilePrintLayout printit shwnts webo statusStop " + app;
        QTest::newRow("stopped after a quiet rollover")
            << State::StoppedAfterQuietRollover << false
            << "clozeit switchit " + doc + "notey zerorow clearjb2 shwnts statusStart " + app;
    }

    void enableProcedures()
    {
        QFETCH(State, state);
        QFETCH(bool, netlook);
        QFETCH(QString, on);
        rig->program->app().prefs.netlook = netlook;
        if (netlook)
            rig->program->netLinkStop(); // the setting alone: no server in a test
        enter(state);
        QStringList expected = on.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        expected.sort();
        QCOMPARE(onItems(rig->program->commandState()), expected);
    }

    // A key, the tray or a command that waited can bring a command whose item is off: it is asked again
    // when it runs, and does nothing but beep. Nothing is shown, written or moved.
    void refusedCommandsDoNothing_data()
    {
        QTest::addColumn<State>("state");
        QTest::addColumn<Item>("item");
        for (Item item : {Item::nujobmenu2, Item::duplicate, Item::edjobmenu, Item::notey, Item::zerorow,
                          Item::clearjb2, Item::totaltime2, Item::totaldy2, Item::statusStart, Item::syncAddressBook,
                          Item::FileAddNewClient, Item::open, Item::nusheet, Item::openOld, Item::exportmenu})
            QTest::addRow("%s while timing", qPrintable(itemName(item))) << State::Running << item;
        QTest::newRow("close without a file") << State::NewWithoutFile << Item::clozeit;
        QTest::newRow("save when clean") << State::Clean << Item::save;
        QTest::newRow("stop when stopped") << State::Clean << Item::statusStop;
        QTest::newRow("start with no row") << State::NoSelection << Item::statusStart;
        QTest::newRow("row command with no row") << State::NoSelection << Item::clearjb2;
    }

    void refusedCommandsDoNothing()
    {
        QFETCH(State, state);
        QFETCH(Item, item);
        enter(state);
        const Timesheet before = rig->w()->ListBox1;
        const int writes = rig->files.writes;
        const int beeps = rig->desktop.beeps;
        rig->clock.advanceMinutes(1);
        rig->program->command(item);
        QCOMPARE(rig->w()->ListBox1, before); // rows, selection and the start of the count
        QCOMPARE(rig->files.writes, writes);
        QCOMPARE(rig->desktop.beeps, beeps + 1);
    }

    // "Start Timer" on the running row once moved the start of the count without measuring: the minute
    // crossed since the last tick was lost.
    void startOnTheRunningRowLosesNoMinute()
    {
        rig->clock.set(2026, 11, 22, 10, 0, 50);
        openSheet(1);
        rig->program->command(Item::statusStart);
        QVERIFY(rig->w()->running);
        rig->clock.set(2026, 11, 22, 10, 1, 10);
        rig->program->command(Item::statusStart);
        rig->clock.set(2026, 11, 22, 10, 2, 0);
        rig->program->command(Item::statusStop);
        QCOMPARE(rig->w()->ListBox1.row(1).minutes(), qint64(2));
    }

    // A document without a file (converted, or a load that failed) stays dirty whatever the timer does;
    // its Save is Save As, and a close that cannot save does not drop it.
    void documentWithoutFileIsNeverDroppedUnasked()
    {
        rig->writeSheet(QStringLiteral("/old/sheet.vlk"), {rig->row(QStringLiteral("OLD1"), 45)});
        dialogs.expectAnswer(platform::Answer::Action);
        dialogs.expectFile(QStringLiteral("/old/sheet.vlk"));
        rig->program->command(Item::openOld);
        Mainwndo& w = *rig->w();
        QVERIFY(w.xpath.isEmpty() && w.boxchange);
        rig->program->runButton();
        rig->clock.advanceMinutes(3);
        rig->tick();
        rig->program->runButton();
        QVERIFY(!w.running);
        QVERIFY(w.boxchange);
        QCOMPARE(w.ListBox1.row(0).minutes(), qint64(48));

        dialogs.expectFile(QString()); // Save is Save As, cancelled
        rig->program->command(Item::save);
        QVERIFY(w.boxchange);
        dialogs.expectAnswer(platform::Answer::Action); // "Save", and the Save As cancelled again
        dialogs.expectFile(QString());
        QVERIFY(!rig->program->app().closeMainwndo());
        QCOMPARE(rig->w(), &w);
        dialogs.expectAnswer(platform::Answer::Action);
        dialogs.expectFile(QStringLiteral("/docs/kept.vlk"));
        QVERIFY(rig->program->app().closeMainwndo());
        const storage::ReadResult kept = storage::decodeTimesheet(rig->files.files.value("/docs/kept.vlk"));
        QCOMPARE(kept.sheet.rows.size(), size_t(1));
        QCOMPARE(kept.sheet.rows[0].minutes(), qint64(48));
    }

    // Events that arrive while a walk has yielded (a second launch's timesheet, a tick, a command) wait
    // until the walk is over, then run in their order. An open request inside a long walk once crashed.
    void eventsDuringAWalkWait()
    {
        rig->writeSheet(QStringLiteral("/docs/b.vlk"), {rig->row(QStringLiteral("B1"), 5)});
        std::vector<JobRow> many;
        for (int i = 0; i < 300; ++i)
            many.push_back(rig->row(QStringLiteral("R%1").arg(i), i));
        rig->writeSheet(kSheet, many);
        rig->program->openRequested({kSheet});
        rig->w()->setListIndex(0);
        rig->program->runButton();
        rig->desktop.sliceMs = 0; // every row yields
        int arrived = 0;
        int inside = 0;
        rig->desktop.onYield = [&] {
            // An event that ran inside the walk would walk and yield in here again.
            QCOMPARE(inside, 0);
            ++inside;
            if (arrived++ == 0) {
                rig->tick();
                rig->program->command(Item::statusStop);
                rig->program->openRequested({QStringLiteral("/docs/b.vlk")});
            }
            --inside;
        };
        rig->clock.advanceMinutes(2);
        rig->tick();
        rig->desktop.onYield = nullptr;
        QVERIFY(arrived > 0);
        QCOMPARE(rig->program->app().thisdoc, QStringLiteral("/docs/b.vlk"));
        QCOMPARE(rig->w()->ListBox1.ListCount(), 1);
        const storage::ReadResult a = storage::decodeTimesheet(rig->files.files.value(kSheet));
        QCOMPARE(a.sheet.rows[0].minutes(), qint64(2)); // the waiting tick and stop measured once
        QCOMPARE(a.sheet.rows[0].run, kRunStopped);
    }

    // Captions follow the Alt key and the note strip each time they are worked out.
    void captions()
    {
        openSheet();
        rig->desktop.alt = true;
        MenuItems items = rig->program->commandState();
        QCOMPARE(items.caption(Item::exportmenu), Tr::FMExportAlt);
        QCOMPARE(items.caption(Item::zerorow), Tr::EMResetAll);
        QCOMPARE(items.caption(Item::syncAddressBook), Tr::FMSyncClientsML);
        QCOMPARE(items.caption(Item::shwnts), Tr::VMShowNotes);
        rig->desktop.alt = false;
        rig->program->command(Item::shwnts);
        items = rig->program->commandState();
        QCOMPARE(items.caption(Item::zerorow), Tr::EMReset);
        QCOMPARE(items.caption(Item::shwnts), Tr::VMHideNotes);
        QVERIFY(rig->w()->notebox.visible);
    }

    // Online Help opens the manual the build lays out beside the test programs as the install does
    // beside the program; without it the user is told where it should be.
    void onlineHelpOpensTheManual()
    {
        rig->program->command(Item::helpon2);
        QCOMPARE(rig->desktop.urls.size(), 1);
        const QString manual = QUrl(rig->desktop.urls[0]).toLocalFile();
        QVERIFY2(manual.endsWith(QLatin1String("/share/doc/veltrick/manual.html")), qPrintable(manual));
        QVERIFY(QFileInfo(manual).isFile());

        rig->appDir = QStringLiteral("/nowhere/bin");
        rig->start();
        const int beeps = rig->desktop.beeps;
        rig->program->command(Item::helpon2);
        QCOMPARE(rig->desktop.urls.size(), 1);
        QCOMPARE(rig->desktop.beeps, beeps + 1);
        QCOMPARE(dialogs.messages.last(),
                 shell::Program::kNoManual.arg(QStringLiteral("/nowhere/share/doc/veltrick/manual.html")));
    }
};

QTEST_GUILESS_MAIN(TestCommands)
#include "test_commands.moc"

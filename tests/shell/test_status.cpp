// The strip and the tray item: their texts, widths, colours and menus, and the job switch they offer.
#include "core/timetext.h"
#include "programrig.h"

#include <QSignalSpy>
#include <QtTest>

using namespace core;
using shell::statuswindow;
using shell::VLKMenulet;
using testing::ProgramRig;

class TestStatus : public QObject
{
    Q_OBJECT

    testing::ScriptedDialogs dialogs;
    std::unique_ptr<ProgramRig> rig;
    const QString kSheet = QStringLiteral("/docs/a.vlk");

    shell::Program::Window& parts() { return *rig->program->window(); }

    // Rows of two jobs, one of them twice, and a never-started row of yesterday.
    void openSheet()
    {
        JobRow never = rig->row(QStringLiteral("C300"), 0, -1);
        never.setCell(CellClient, QStringLiteral("Bolt"));
        rig->writeSheet(kSheet, {rig->row(QStringLiteral("A100"), 75), rig->row(QStringLiteral("B200"), 5),
                                 rig->row(QStringLiteral("A100"), 30), never});
        rig->program->openRequested({kSheet});
    }

private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }

    void init()
    {
        dialogs = testing::ScriptedDialogs();
        rig = std::make_unique<ProgramRig>(dialogs);
        rig->start();
        openSheet();
    }

    void cleanup()
    {
        QVERIFY2(dialogs.errors.isEmpty(), qPrintable(dialogs.errors.join(QLatin1Char('\n'))));
        QVERIFY(dialogs.scriptDone());
    }

    // The strip says it with a hyphen, the tray's tool tip with a bullet; the clock follows each save.
    void texts()
    {
        Mainwndo& w = *rig->w();
        w.setListIndex(-1);
        QCOMPARE(parts().strip.statustext, QStringLiteral("-- Veltrick - No Job Selected --"));
        QCOMPARE(parts().menulet.ToolTip, QStringLiteral("-- Veltrick \u2022 No Job Selected --"));
        QCOMPARE(parts().menulet.Title, QStringLiteral("--:--"));
        w.setListIndex(0);
        QCOMPARE(parts().strip.statustext, QStringLiteral("A100 - P A100 - Design - 01:15"));
        QCOMPARE(parts().menulet.trayToolTip(), QStringLiteral("01:15\nA100 - P A100 - Design - 01:15"));
        rig->program->runButton();
        rig->clock.advanceMinutes(2);
        rig->tick();
        QCOMPARE(parts().menulet.Title, QStringLiteral("01:17"));
        QCOMPARE(parts().strip.statustext, QStringLiteral("A100 - P A100 - Design - 01:17"));
    }

    // 5.6 pixels a character and 112 beside the label, never below 132 nor above 640.
    void statusResizeLimits_data()
    {
        QTest::addColumn<int>("characters");
        QTest::addColumn<int>("width");
        QTest::newRow("empty") << 0 << 132;
        QTest::newRow("ten") << 10 << 168;
        QTest::newRow("long job number") << 120 << 640;
    }

    void statusResizeLimits()
    {
        QFETCH(int, characters);
        parts().strip.setText(QString(characters, QLatin1Char('x')));
        QTEST(parts().strip.Width, "width");
    }

    // Background by the run state and the desktop's appearance, at once when either changes.
    void colours_data()
    {
        QTest::addColumn<bool>("running");
        QTest::addColumn<bool>("dark");
        QTest::addColumn<unsigned>("back");
        QTest::newRow("stopped, light") << false << false << statuswindow::kStoppedLight;
        QTest::newRow("stopped, dark") << false << true << statuswindow::kStoppedDark;
        QTest::newRow("running, light") << true << false << statuswindow::kRunningLight;
        QTest::newRow("running, dark") << true << true << statuswindow::kRunningDark;
    }

    void colours()
    {
        QFETCH(bool, running);
        QFETCH(bool, dark);
        rig->w()->setListIndex(0);
        if (running)
            rig->program->runButton();
        rig->desktop.dark = dark;
        rig->program->appearanceChanged();
        QTEST(parts().strip.background, "back");
        QCOMPARE(parts().menulet.image,
                 running ? VLKMenulet::Image::StatusAvailable : VLKMenulet::Image::StatusUnavailable);
    }

    // One entry per job, whatever its case, pointing at its first row; choosing one while another runs stops
    // the first and goes on with the chosen through the start of a row that holds time, so an old day asks
    // first.
    void switchMenu()
    {
        Mainwndo& w = *rig->w();
        w.ListBox1.row(2).setCell(CellJob, QStringLiteral("a100"));
        const QList<statuswindow::SwitchItem> menu = parts().strip.statustext_ConstructContextualMenu();
        QCOMPARE(menu,
                 (QList<statuswindow::SwitchItem>{
                     {"A100 - P A100 - Design", 0}, {"B200 - P B200 - Design", 1}, {"C300 - P C300 - Design", 3}}));
        w.setListIndex(2);
        rig->program->runButton();
        rig->clock.advanceMinutes(4);
        dialogs.expectModal(QStringLiteral("dupitwndo"),
                            [](platform::ModalForm& form) { static_cast<Dupitwndo&>(form).dupeit_Action(); });
        rig->program->switchJob(3);
        QCOMPARE(w.ListBox1.row(3).minutes(), qint64(34)); // the A100 row, now below today's copy
        QCOMPARE(w.ListBox1.ListIndex, 0);
        QCOMPARE(w.ListBox1.row(0).cell(CellJob), QStringLiteral("C300"));
        QVERIFY(w.running);
        QCOMPARE(w.ListBox1.row(4).run, kRunNever); // the old day's row stays as it was

        // In a client's view the entries are that client's rows, tagged by their place in ListBox2.
        rig->program->runButton();
        parts().clientView.clientlist2_ExpandRow();
        parts().clientView.setClientlist2Index(2); // "Bolt"
        QCOMPARE(parts().strip.statustext_ConstructContextualMenu(),
                 (QList<statuswindow::SwitchItem>{{"C300 - P C300 - Design", 0}}));
    }

    // The tray's menu follows the selection and the run state; its Start and Stop are the commands'.
    void trayMenu()
    {
        Mainwndo& w = *rig->w();
        using Items = QList<VLKMenulet::MenuItem>;
        const VLKMenulet::MenuItem separator{QString(), true};
        const VLKMenulet::MenuItem show{VLKMenulet::kMLTTimesheet, true};
        w.setListIndex(-1);
        QCOMPARE(parts().menulet.Menu, (Items{{VLKMenulet::kMLTStart, false}, separator, show}));
        w.setListIndex(1);
        const VLKMenulet::MenuItem job{QStringLiteral("B200 - P B200 - Design"), false};
        QCOMPARE(parts().menulet.Menu, (Items{job, {VLKMenulet::kMLTStart, true}, separator, show}));
        rig->program->StatusItemHandler(VLKMenulet::kMLTStart);
        QVERIFY(w.running);
        QCOMPARE(parts().menulet.Menu, (Items{job, {VLKMenulet::kMLTStop, true}, separator, show}));
        rig->program->StatusItemHandler(VLKMenulet::kMLTStart); // a stale menu: refused
        QVERIFY(w.running);
        rig->program->StatusItemHandler(VLKMenulet::kMLTStop);
        QVERIFY(!w.running);
        QSignalSpy wanted(rig->program.get(), &shell::Program::timesheetWanted);
        rig->program->StatusItemHandler(VLKMenulet::kMLTTimesheet);
        QCOMPARE(wanted.count(), 1);
    }

    // Shown when a timesheet opens; switched off it parks at the top left; the quit keeps its place.
    void showHideAndPlace()
    {
        statuswindow& strip = parts().strip;
        QVERIFY(strip.visible);
        rig->program->app().prefs.statustrans = 40;
        rig->program->showStatusWindow();
        QCOMPARE(strip.opacity, 0.4);
        strip.Left = 700;
        strip.Top = 90;
        rig->program->hideStatusWindow();
        QVERIFY(!strip.visible);
        QCOMPARE(QPoint(strip.Left, strip.Top), QPoint(statuswindow::kParkedLeft, statuswindow::kParkedTop));
        strip.Left = 640;
        strip.Top = 20;
        rig->program->command(Item::FileQuit);
        QCOMPARE(rig->program->app().prefs.statusleft, 640);
        QCOMPARE(rig->program->app().prefs.statusposition, 20);
    }
};

QTEST_GUILESS_MAIN(TestStatus)
#include "test_status.moc"

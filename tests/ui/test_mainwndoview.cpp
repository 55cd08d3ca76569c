// The main window's widgets are wired to its form: clicks, selection, keys and the labels.
#include "core/app.h"
#include "core/timetext.h"
#include "core/ui/mainwndoview.h"
#include "support/fakes.h"

#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeView>
#include <QtTest>

using namespace core;

class TestMainwndoView : public QObject
{
    Q_OBJECT

    AppPrefs prefs;
    testing::FakeClock clock;
    testing::FakeDesktop desktop;
    testing::ScriptedDialogs dialogs;
    testing::FakeTimers timers;
    MainwndoHooks hooks;
    platform::EventGate gate;

    // The program builds the view once the window's logic has opened, as the application does.
    struct ViewHooks : AppHooks
    {
        std::unique_ptr<ui::MainwndoView> view;
        void mainwndoOpened(Mainwndo& window) override { view = std::make_unique<ui::MainwndoView>(window, prefs); }
        AppPrefs prefs;
    };

private slots:
    // The saved place is the window's before it first shows, and what the quit stores; with its screen
    // gone the window keeps the size it is made with.
    void placeRestoredBeforeShowing_data()
    {
        QTest::addColumn<QRect>("saved");
        QTest::addColumn<QRect>("screen");
        QTest::addColumn<bool>("restored");
        QTest::newRow("on its screen") << QRect(300, 200, 640, 480) << QRect(0, 0, 1920, 1080) << true;
        QTest::newRow("screen gone") << QRect(3000, 200, 900, 700) << QRect(0, 0, 1920, 1080) << false;
    }

    void placeRestoredBeforeShowing()
    {
        QFETCH(QRect, saved);
        QFETCH(QRect, screen);
        QFETCH(bool, restored);
        desktop.screenList = {screen};
        ViewHooks viewHooks;
        App app({clock, desktop, dialogs, timers, hooks, gate}, viewHooks);
        app.prefs.winleft = saved.left();
        app.prefs.wintop = saved.top();
        app.prefs.winwidth = saved.width();
        app.prefs.winheight = saved.height();
        app.mainwndo();
        QVERIFY(viewHooks.view);
        ui::MainwndoView& view = *viewHooks.view;
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        if (restored)
            QCOMPARE(view.geometry(), saved);
        else
            QCOMPARE(view.size(),
                     QSize(Mainwndo::kCreatedWidth, Mainwndo::kCreatedHeight).expandedTo(view.minimumSizeHint()));
        QCOMPARE(dialogs.messages.size(), restored ? 0 : 1);
        const QRect shown = view.geometry();
        app.closeMainwndo();
        QCOMPARE(QRect(app.prefs.winleft, app.prefs.wintop, app.prefs.winwidth, app.prefs.winheight), shown);
        dialogs.messages.clear();
    }

    void clicksSelectionAndKeysReachTheForm()
    {
        Mainwndo form(prefs, {clock, desktop, dialogs, timers, hooks, gate});
        for (int i = 0; i < 3; ++i) {
            JobRow row;
            row.cells = {shortDate(clock.now().date()), QStringLiteral("J%1").arg(i), {}, "01", "00"};
            row.run = i == 1 ? kRunNever : kRunStopped;
            form.ListBox1.AddRow(row);
        }
        emit form.rowsReset();
        ui::MainwndoView view(form, prefs);
        connect(&view, &ui::MainwndoView::runButtonClicked, &form, &Mainwndo::runButton_Action);
        view.keyDown = [&form](QChar key) { return form.Event_KeyDown(key); };
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));

        form.setListIndex(-1);
        QVERIFY(!view.runButton()->isEnabled()); // nothing selected
        QVERIFY(!view.ListBox1()->selectionModel()->hasSelection());

        view.ListBox1()->setCurrentIndex(view.ListBox1()->model()->index(1, 0));
        QCOMPARE(form.ListBox1.ListIndex, 1);
        QCOMPARE(view.runButton()->text(), Tr::MWStartButtonFs);

        QTest::mouseClick(view.runButton(), Qt::LeftButton);
        QVERIFY(form.running);
        QCOMPARE(view.runButton()->text(), Tr::MWStartButtonStop);
        QVERIFY(!view.ListBox1()->isEnabled()); // the selection cannot move under a running job

        clock.advanceMinutes(5);
        QTest::keyClick(&view, Qt::Key_Space);
        QVERIFY(!form.running);
        QCOMPARE(form.ListBox1.row(1).cell(CellMinutes), QStringLiteral("05"));
        QVERIFY(view.runtotal()->text().startsWith(QStringLiteral("List Totals - Time: 03:05")));

        form.setListIndex(2); // a selection made by the program shows in the list
        QCOMPARE(view.ListBox1()->currentIndex().row(), 2);
        // Ctrl+click on the highlighted row takes the highlight off, and the selection with it.
        QTest::mouseClick(view.ListBox1()->viewport(), Qt::LeftButton, Qt::ControlModifier,
                          view.ListBox1()->visualRect(view.ListBox1()->model()->index(2, 0)).center());
        QCOMPARE(form.ListBox1.ListIndex, -1);
        QVERIFY(!view.runButton()->isEnabled());
    }
};

QTEST_MAIN(TestMainwndoView)
#include "test_mainwndoview.moc"

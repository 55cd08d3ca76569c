// The main window's widgets are wired to its form: clicks, selection, keys and the labels.
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

private slots:
    void clicksSelectionAndKeysReachTheForm()
    {
        Mainwndo form(prefs, {clock, desktop, dialogs, timers, hooks});
        for (int i = 0; i < 3; ++i) {
            JobRow row;
            row.cells = {shortDate(clock.now().date()), QStringLiteral("J%1").arg(i), {}, "01", "00"};
            row.run = i == 1 ? kRunNever : kRunStopped;
            form.ListBox1.AddRow(row);
        }
        emit form.rowsReset();
        ui::MainwndoView view(form, prefs);
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
    }
};

QTEST_MAIN(TestMainwndoView)
#include "test_mainwndoview.moc"

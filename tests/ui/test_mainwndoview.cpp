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
            row.setCell(CellDate, shortDate(clock.now().date()));
            row.setCell(CellJob, QStringLiteral("J%1").arg(i));
            row.setCell(CellHours, QStringLiteral("01"));
            row.setCell(CellMinutes, QStringLiteral("00"));
            row.run = i == 1 ? kRunNever : kRunStopped;
            form.ListBox1.AddRow(row);
        }
        emit form.rowsReset();
        ui::MainwndoView view(form, prefs);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));

        QCOMPARE(view.ListBox1()->model()->headerData(CellHours, Qt::Horizontal).toString(), QStringLiteral("H\u2009"));
        QCOMPARE(view.ListBox1()->model()->headerData(CellMinutes, Qt::Horizontal).toString(), QStringLiteral("\u2009M"));
        for (int c = 7; c < kColumnCount; ++c)
            QVERIFY(view.ListBox1()->isColumnHidden(c));
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

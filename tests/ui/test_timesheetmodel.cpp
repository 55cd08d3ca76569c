// The colours and weights of the job lists' cells, and what a drag of a row carries.
#include "core/ui/timesheetmodel.h"

#include <QBrush>
#include <QFont>
#include <QMimeData>
#include <QtTest>

using namespace core;
using core::ui::TimesheetModel;

class TestTimesheetModel : public QObject
{
    Q_OBJECT

    Timesheet sheet;

private slots:
    void init()
    {
        sheet = {};
        for (int i = 0; i < 3; ++i) {
            JobRow row;
            row.cells = {
                QStringLiteral("11/2%1/26").arg(i), QStringLiteral("J%1").arg(i), {}, "01", "05", {}, {}, "x", "999"};
            sheet.AddRow(row);
        }
        sheet.row(1).note = QStringLiteral("note");
        sheet.row(2).budget = kBudgetOver;
    }

    void backgrounds_data()
    {
        QTest::addColumn<bool>("dark");
        QTest::addColumn<bool>("gray");
        QTest::addColumn<bool>("grayable");
        QTest::addColumn<QColor>("even");
        QTest::addColumn<QColor>("odd");
        QTest::addColumn<QColor>("note");
        // clang-format off
        QTest::newRow("light")       << false << false << true << QColor(10, 20, 30) << QColor(255, 255, 255) << QColor(255, 255, 0);
        QTest::newRow("light, gray") << false << true  << true << QColor(10, 20, 30) << QColor(255, 255, 255) << QColor(255, 255, 0);
        QTest::newRow("dark")        << true  << false << true << QColor(102, 102, 102) << QColor(153, 153, 153) << QColor(255, 92, 0);
        QTest::newRow("dark, gray")  << true  << true  << true << QColor(30, 30, 30) << QColor(10, 10, 10) << QColor(204, 51, 0);
        QTest::newRow("dark, second list never gray")
                                     << true  << true << false << QColor(102, 102, 102) << QColor(153, 153, 153) << QColor(255, 92, 0);
        // clang-format on
    }

    void backgrounds()
    {
        QFETCH(bool, dark);
        QFETCH(bool, gray);
        QFETCH(bool, grayable);
        QFETCH(QColor, even);
        QFETCH(QColor, odd);
        QFETCH(QColor, note);
        TimesheetModel model(sheet, nullptr, grayable);
        model.setStripe(QColor(10, 20, 30));
        model.setDark(dark);
        model.setGray(gray);
        auto colour = [&](int r, int c) { return model.index(r, c).data(Qt::BackgroundRole).value<QBrush>().color(); };
        QCOMPARE(colour(0, CellJob), even);
        QCOMPARE(colour(1, CellJob), odd);
        QCOMPARE(colour(1, CellDate), note);
        QCOMPARE(colour(2, CellJob), even);
    }

    void weightsAndOverBudget()
    {
        TimesheetModel model(sheet);
        auto bold = [&](int r, int c) { return model.index(r, c).data(Qt::FontRole).value<QFont>().bold(); };
        auto text = [&](int r, int c) { return model.index(r, c).data(Qt::ForegroundRole); };
        QVERIFY(bold(1, CellDate) && !bold(0, CellDate));
        QVERIFY(bold(2, CellHours) && bold(2, CellMinutes) && !bold(2, CellJob));
        QCOMPARE(text(2, CellHours).value<QBrush>().color(), QColor(255, 0, 0));
        QVERIFY(!text(0, CellHours).isValid());
        model.setGray(true); // the greyed list greys the warning too
        QCOMPARE(text(2, CellHours).value<QBrush>().color(), QColor(150, 150, 150));
        model.setDark(true);
        QCOMPARE(text(0, CellJob).value<QBrush>().color(), QColor(90, 90, 90));
    }

    void dragCarriesEightCells()
    {
        TimesheetModel model(sheet);
        std::unique_ptr<QMimeData> data(model.mimeData({model.index(1, 3)}));
        QVERIFY(data);
        QCOMPARE(data->data(QStringLiteral("text/plain")), QByteArray("11/21/26\tJ1\t\t01\t05\t\t\tx\t\r"));
    }
};

QTEST_MAIN(TestTimesheetModel)
#include "test_timesheetmodel.moc"

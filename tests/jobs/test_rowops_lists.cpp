// How the job lists answer heading presses, keys and the context menu.
#include "jobs/listbehaviour.h"
#include "support/listfixture.h"

#include <QtTest>

#include <random>

using namespace core;
using jobs::ListBehaviour;

class TestListBehaviour : public QObject
{
    Q_OBJECT

    std::unique_ptr<testing::ListFixture> f;
    std::unique_ptr<ListBehaviour> lists;
    QStringList commands;

private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }

    void init()
    {
        commands.clear();
        f = std::make_unique<testing::ListFixture>();
        // The commands the lists hand on, by name, with the window's own enable procedure deciding.
        ListBehaviour::Commands c{[this](core::Item item) { return f->w.allows(item); },
                                  [this](core::Item item) { commands << core::itemName(item); }};
        lists = std::make_unique<ListBehaviour>(f->w, ListBehaviour::Services{f->clock, f->desktop, f->view}, c);
    }

    void cleanup()
    {
        QVERIFY2(f->dialogs.errors.isEmpty(), qPrintable(f->dialogs.errors.join(QLatin1Char('\n'))));
        QVERIFY(f->dialogs.scriptDone());
    }

    void dateHeadingSortsByDayAndFlips()
    {
        // "soon" takes the key of the row before it.
        for (auto [date, job] : {std::pair{"11/2/26", "B"}, {"1/15/27", "D"}, {"soon", "D2"}, {"9/30/26", "A"}})
            f->add(date, job);
        f->add(QStringLiteral("11/20/26"), QStringLiteral("C")).setCell(CellLink, QStringLiteral("77"));
        f->w.setListIndex(0);

        QCOMPARE(lists->SortColumn(1, CellDate).column, -1); // no heading stays pressed
        QCOMPARE(testing::ListFixture::jobs(f->w.ListBox1), (QStringList{"A", "B", "C", "D", "D2"}));
        QCOMPARE(f->w.ListBox1.Cell(0, CellSortKey), QString::number(totalSeconds(QDate(2026, 9, 30))));
        QCOMPARE(f->w.ListBox1.Cell(4, CellSortKey), f->w.ListBox1.Cell(3, CellSortKey));
        QCOMPARE(f->w.ListBox1.ListIndex, 1); // the selection went with its row
        QCOMPARE(f->w.sortdirection, -1);
        // Empty links are numbered in row order, the one set is kept.
        QStringList links;
        for (const JobRow& row : f->w.ListBox1.rows)
            links << row.cell(CellLink);
        QCOMPARE(links, (QStringList{"3", "0", "77", "1", "2"}));

        lists->SortColumn(1, CellDate);
        QCOMPARE(testing::ListFixture::jobs(f->w.ListBox1), (QStringList{"D", "D2", "C", "B", "A"}));
        QCOMPARE(f->w.sortdirection, 1);
        QVERIFY(!f->w.boxchange); // a date sort leaves the document as it was
    }

    void dateSortIsStableOnLargeLists()
    {
        std::mt19937 random(7);
        const int rows = 20000;
        for (int i = 0; i < rows; ++i)
            f->add(shortDate(QDate(2026, 1, 1).addDays(int(random() % 300))), QString::number(i));
        for (int direction : {1, -1}) {
            lists->SortColumn(1, CellDate);
            const Timesheet& sheet = f->w.ListBox1;
            QCOMPARE(sheet.ListCount(), rows);
            for (int i = 1; i < rows; ++i) {
                const qint64 a = sheet.Cell(i - 1, CellSortKey).toLongLong();
                const qint64 b = sheet.Cell(i, CellSortKey).toLongLong();
                if (direction == 1 ? a > b : a < b)
                    QFAIL(qPrintable(QStringLiteral("out of order at %1").arg(i)));
                if (a == b && Val(sheet.Cell(i - 1, CellJob)) > Val(sheet.Cell(i, CellJob)))
                    QFAIL(qPrintable(QStringLiteral("rows of one day changed order at %1").arg(i)));
            }
        }
    }

    void headingOfTheClientViewSortsTheWholeList()
    {
        f->writeClients({QStringLiteral("Acme")});
        for (auto [job, client] : {std::pair{"Z", "Acme"}, {"M", "Other"}, {"A", "Acme"}})
            f->add(f->day(), job, client);
        f->pickClient(QStringLiteral("Acme"));
        f->view.setListBox2Index(1); // "A"
        QCOMPARE(f->w.ListBox1.ListIndex, 2);

        lists->SortColumn(2, CellJob);
        QCOMPARE(testing::ListFixture::jobs(f->w.ListBox1), (QStringList{"A", "M", "Z"}));
        QCOMPARE(testing::ListFixture::jobs(f->w.ListBox2), (QStringList{"A", "Z"}));
        QVERIFY(f->w.boxchange);
        // The link of every copy still names its row of the whole list.
        for (const JobRow& copy : f->w.ListBox2.rows)
            QCOMPARE(f->w.ListBox1.Cell(Val(copy.cell(CellLink)), CellJob), copy.cell(CellJob));
        QCOMPARE(f->w.ListBox2.selected().cell(CellJob) + f->w.ListBox1.selected().cell(CellJob), QStringLiteral("AA"));
    }

    void keys_data()
    {
        QTest::addColumn<bool>("selected");
        QTest::addColumn<QChar>("key");
        QTest::addColumn<bool>("taken");
        QTest::addColumn<QString>("command");
        // clang-format off
        QTest::newRow("Return edits")          << true  << QChar(13)  << true  << QStringLiteral("edjobmenu");
        QTest::newRow("Enter edits")           << true  << QChar(3)   << true  << QStringLiteral("edjobmenu");
        QTest::newRow("Backspace deletes")     << true  << QChar(8)   << true  << QStringLiteral("clearjb2");
        QTest::newRow("Delete deletes")        << true  << QChar(127) << true  << QStringLiteral("clearjb2");
        QTest::newRow("other keys pass")       << true  << QChar('x') << false << QString();
        QTest::newRow("nothing without a row") << false << QChar(8)   << false << QString();
        // clang-format on
    }

    void keys()
    {
        QFETCH(bool, selected);
        QFETCH(QChar, key);
        QFETCH(bool, taken);
        QFETCH(QString, command);
        f->add(f->day(), QStringLiteral("J1"));
        f->w.setListIndex(selected ? 0 : -1);
        QCOMPARE(lists->ListBox_KeyDown(1, key), taken);
        QCOMPARE(commands, command.isEmpty() ? QStringList{} : QStringList{command});
    }

    // The context menu is one more way to the commands: its entries are on and off with the menu items.
    void contextMenuShowsTheTotals()
    {
        QCOMPARE(lists->ConstructContextualMenu(1), (QList<jobs::MenuItem>{{Tr::EMAddJob}}));
        lists->ContextualMenuAction(Tr::EMAddJob);
        QCOMPARE(commands, QStringList{"nujobmenu2"});

        f->add(f->day(), QStringLiteral("J1"), QString(), 70);
        f->add(f->day(-1), QStringLiteral("j1"), QString(), 65);
        f->add(f->day(), QStringLiteral("J2"), QString(), 5);
        f->w.setListIndex(0);
        const QList<jobs::MenuItem> menu = lists->ConstructContextualMenu(1);
        const QList<jobs::MenuItem> expected{{Tr::EMDupeJob},
                                             {Tr::EMJobDetails},
                                             {Tr::EMJobNotes},
                                             {},
                                             {QStringLiteral("Job Total - 02:15"), false},
                                             {QStringLiteral("Day Total - 01:15"), false},
                                             {},
                                             {Tr::EMDeleteJob}};
        QCOMPARE(menu, expected);
        for (const QString& text : {Tr::EMDupeJob, Tr::EMJobDetails, Tr::EMJobNotes, Tr::EMDeleteJob})
            lists->ContextualMenuAction(text);
        QCOMPARE(commands, (QStringList{"nujobmenu2", "duplicate", "edjobmenu", "notey", "clearjb2"}));

        f->w.runButton_Action(); // timing: the row commands are off here as in the menus
        QVERIFY(f->w.running);
        for (const jobs::MenuItem& item : lists->ConstructContextualMenu(1))
            QVERIFY2(item.separator() || !item.enabled, qPrintable(item.text));
    }
};

QTEST_GUILESS_MAIN(TestListBehaviour)
#include "test_rowops_lists.moc"

// The client picker and the single-client view: ListBox2 is a copy, ListBox1 stays the truth.
#include "support/listfixture.h"

#include <QtTest>

using namespace core;

class TestClientView : public QObject
{
    Q_OBJECT

    std::unique_ptr<testing::ListFixture> f;

    void threeClients()
    {
        f->writeClients({QStringLiteral("Acme"), QStringLiteral("Bolt & Nut"), QStringLiteral("Zed")});
        f->add(f->day(), QStringLiteral("J0"), QStringLiteral("Bolt & Nut"), 60);
        f->add(f->day(), QStringLiteral("J1"), QStringLiteral("acme"), 30, QStringLiteral("n1")).budget = kBudgetOver;
        f->add(f->day(-3), QStringLiteral("J2"), QStringLiteral("Other"), 15);
        f->add(f->day(-2), QStringLiteral("J3"), QStringLiteral("ACME"), 45);
        f->w.setListIndex(2);
    }

private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }
    void init() { f = std::make_unique<testing::ListFixture>(); }

    void folderFillsFromTheFile_data()
    {
        QTest::addColumn<bool>("file");
        QTest::addColumn<QStringList>("rows");
        QTest::newRow("no file") << false << QStringList{Tr::MWClientListf};
        QTest::newRow("names in file order")
            << true << QStringList{Tr::MWClientListf, QStringLiteral("Zed"), QStringLiteral("acme")};
    }

    void folderFillsFromTheFile()
    {
        QFETCH(bool, file);
        QFETCH(QStringList, rows);
        QCOMPARE(f->view.clientlist2RowCount(), 1);
        QCOMPARE(f->view.clientlist2ListIndex(), 0);
        if (file)
            f->writeClients({QStringLiteral("Zed"), QStringLiteral("acme")});
        f->view.clientlist2_ExpandRow();
        QStringList shown;
        for (int r = 0; r < f->view.clientlist2RowCount(); ++r)
            shown << f->view.clientlist2Row(r);
        QCOMPARE(shown, rows);
    }

    void pickingAClientShowsItsRowsAlone()
    {
        threeClients();
        f->pickClient(QStringLiteral("Acme"));

        QCOMPARE(f->w.LB2ClientName, QStringLiteral("Acme"));
        QCOMPARE(testing::ListFixture::jobs(f->w.ListBox2), (QStringList{"J1", "J3"}));
        const JobRow& copy = f->w.ListBox2.row(0);
        QCOMPARE(copy.cell(CellLink), QStringLiteral("1"));
        QCOMPARE(copy.note, QStringLiteral("n1"));
        QVERIFY(copy.budget.isEmpty()); // worked out again for the view
        for (int i = 0; i < f->w.ListBox1.ListCount(); ++i)
            QCOMPARE(f->w.ListBox1.Cell(i, CellLink), QString::number(i));

        QVERIFY(f->w.ListBox2Ctl.visible && f->w.ListBox2Ctl.enabled);
        QVERIFY(!f->w.ListBox1Ctl.enabled);
        QVERIFY(f->w.listboxGray && f->w.toplist && f->view.dragbarVisible());
        QCOMPARE(f->w.ListBox2.ListIndex, 0);
        QCOMPARE(f->w.ListBox1.ListIndex, 1);
        QVERIFY(f->w.runButton.enabled);
        QVERIFY(f->hooks.budgetcheck2s >= 2); // every row of the view was visited
        QCOMPARE(f->w.runtotal, QStringLiteral("List Totals - Time: 01:15, Today: 00:30, Entries: 02"));

        f->view.setListBox2Index(1);
        QCOMPARE(f->w.ListBox1.ListIndex, 3);
        f->w.ListBox1.row(3).setCell(CellProject, QStringLiteral("changed")); // as the job dialog writes it
        f->view.rebuildKeepingIndex();
        QCOMPARE(f->w.ListBox2.ListIndex, 1);
        QCOMPARE(f->w.ListBox2.row(1).cell(CellProject), QStringLiteral("changed"));
        QCOMPARE(f->w.ListBox1.ListIndex, 3);
        f->view.setListBox2Index(-1);
        QCOMPARE(f->w.ListBox1.ListIndex, -1);
        QVERIFY(!f->w.runButton.enabled);

        // Switching clients moves the selection to the new client's first row, or to none.
        f->pickClient(QStringLiteral("Bolt & Nut"));
        QCOMPARE(testing::ListFixture::jobs(f->w.ListBox2), QStringList{"J0"});
        QCOMPARE(f->w.ListBox2.ListIndex, 0);
        QCOMPARE(f->w.ListBox1.ListIndex, 0);
        f->pickClient(QStringLiteral("Zed")); // nobody's rows
        QCOMPARE(f->w.ListBox2.ListCount(), 0);
        QCOMPARE(f->w.ListBox1.ListIndex, -1);
        QVERIFY(!f->w.runButton.enabled);
    }

    // Whatever brings the picker back to "All Clients" (a pick, closing the folder, or a contacts sync
    // rebuilding the picker) leaves the single-client view: picker and lists never disagree.
    void allClientsRestoresTheWholeList_data()
    {
        QTest::addColumn<QString>("xpath");
        QTest::addColumn<QString>("how");
        QTest::newRow("choose the folder") << QStringLiteral("/docs/a.vlk") << "pick";
        QTest::newRow("close the folder") << QStringLiteral("/docs/a.vlk") << "collapse";
        QTest::newRow("contacts synced") << QStringLiteral("/docs/a.vlk") << "sync";
        QTest::newRow("unsaved timesheet stays") << QString() << "pick";
    }

    void allClientsRestoresTheWholeList()
    {
        QFETCH(QString, xpath);
        QFETCH(QString, how);
        threeClients();
        f->pickClient(QStringLiteral("Acme"));
        f->w.xpath = xpath;
        if (how == QStringLiteral("collapse"))
            f->view.clientlist2_CollapseRow();
        else if (how == QStringLiteral("sync"))
            f->view.clientlist2_Open();
        else
            f->view.setClientlist2Index(0);
        if (xpath.isEmpty()) {
            QVERIFY(f->w.ListBox2Ctl.visible && f->w.toplist);
            return;
        }
        QVERIFY(!f->w.ListBox2Ctl.visible && !f->view.dragbarVisible());
        QVERIFY(f->w.ListBox1Ctl.enabled && f->w.ListBox1ScrollBar);
        QVERIFY(!f->w.listboxGray && !f->w.toplist);
        QCOMPARE(f->w.ListBox1.ListIndex, 0);
        QVERIFY(f->w.runtotal.endsWith(QStringLiteral("Entries: 04")));
        QCOMPARE(f->view.clientlist2ListIndex(), 0);
        QCOMPARE(f->view.clientlist2RowCount(), how == QStringLiteral("pick") ? 4 : 1);
    }

    void rolloverInsideTheView()
    {
        threeClients();
        f->prefs.warningsign = false;
        f->pickClient(QStringLiteral("Acme"));
        f->view.setListBox2Index(1); // J3, two days old
        f->w.allcont();

        // The new row of today is in the whole list, the view shows it selected, and it runs.
        QCOMPARE(f->w.ListBox1.ListCount(), 5);
        QCOMPARE(f->w.ListBox1.Cell(0, CellJob), QStringLiteral("J3"));
        QCOMPARE(f->w.ListBox1.ListIndex, 0);
        QVERIFY(f->w.running);
        QCOMPARE(testing::ListFixture::jobs(f->w.ListBox2), (QStringList{"J3", "J1", "J3"}));
        QCOMPARE(f->w.ListBox2.ListIndex, 0);
        QCOMPARE(f->w.ListBox2.row(0).cell(CellDate), f->day());
        QCOMPARE(f->w.ListBox2.row(0).run, kRunRunning);
    }
};

QTEST_GUILESS_MAIN(TestClientView)
#include "test_clientview.moc"

// The client picker and ListBox2 on screen drive the client view, and the lists' wiring reaches it.
#include "clients/ui/clientpane.h"
#include "jobs/ui/listwiring.h"
#include "support/listfixture.h"

#include <QHeaderView>
#include <QLabel>
#include <QTreeView>
#include <QTreeWidget>
#include <QtTest>

using namespace core;

class TestClientPane : public QObject
{
    Q_OBJECT

    static bool shown(QWidget& pane)
    {
        pane.show();
        return QTest::qWaitForWindowExposed(&pane);
    }

private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }

    void pickerAndSecondListFollowTheView()
    {
        testing::ListFixture f;
        f.writeClients({QStringLiteral("Acme"), QStringLiteral("Bolt")});
        f.add(f.day(), QStringLiteral("J0"), QStringLiteral("Bolt"), 10);
        f.add(f.day(-1), QStringLiteral("J1"), QStringLiteral("Acme"), 20);
        f.add(f.day(), QStringLiteral("J2"), QStringLiteral("acme"), 30, QStringLiteral("note"));
        clients::ui::ClientPane pane(f.view, f.w, f.prefs, new QTreeView);
        pane.resize(700, 400);
        QVERIFY(shown(pane));

        QTreeWidgetItem* folder = pane.clientlist2()->topLevelItem(0);
        QCOMPARE(folder->text(0), Tr::MWClientListf);
        QVERIFY(!pane.ListBox2()->isVisible());
        folder->setExpanded(true);
        QCOMPARE(folder->childCount(), 2);

        pane.clientlist2()->setCurrentItem(folder->child(0));
        QVERIFY(pane.ListBox2()->isVisible());
        QCOMPARE(pane.ListBox2()->model()->rowCount(), 2);
        QCOMPARE(std::pair(pane.ListBox2()->currentIndex().row(), f.w.ListBox1.ListIndex), std::pair(0, 1));

        pane.ListBox2()->setCurrentIndex(pane.ListBox2()->model()->index(1, 0));
        QCOMPARE(f.w.ListBox1.ListIndex, 2);
        // The copy carries the note: the date shows bold on the marked ground.
        const QModelIndex date = pane.ListBox2()->model()->index(1, CellDate);
        QVERIFY(date.data(Qt::FontRole).value<QFont>().bold());
        QCOMPARE(date.data(Qt::BackgroundRole).value<QBrush>().color(), QColor(255, 255, 0));
        QTest::mouseClick(pane.ListBox2()->viewport(), Qt::LeftButton, Qt::ControlModifier,
                          pane.ListBox2()->visualRect(date).center()); // the highlight off: none selected
        QCOMPARE(std::pair(f.w.ListBox2.ListIndex, f.w.ListBox1.ListIndex), std::pair(-1, -1));

        // A drag of the client column's handle sets the width the settings keep.
        pane.setSizes({200, 500});
        emit pane.splitterMoved(200, 1);
        QCOMPARE(f.w.clientlist2Width, 200);

        folder->setExpanded(false);
        QVERIFY(!pane.ListBox2()->isVisible());
        QVERIFY(!f.w.toplist);
    }

    void keysAndHeadingsOfTheSecondList()
    {
        testing::ListFixture f;
        f.writeClients({QStringLiteral("Acme")});
        f.add(QStringLiteral("11/2/26"), QStringLiteral("B"), QStringLiteral("Acme"));
        f.add(QStringLiteral("10/2/26"), QStringLiteral("A"), QStringLiteral("Acme"));
        QList<core::Item> ran;
        jobs::ListBehaviour lists(
            f.w, {f.clock, f.desktop, f.view},
            {[&f](core::Item item) { return f.w.allows(item); }, [&ran](core::Item item) { ran << item; }});
        clients::ui::ClientPane pane(f.view, f.w, f.prefs, new QTreeView);
        new jobs::ui::ListWiring(pane.ListBox2(), 2, lists);
        QVERIFY(shown(pane));
        f.pickClient(QStringLiteral("Acme"));

        QTest::mouseClick(pane.ListBox2()->header()->viewport(), Qt::LeftButton, {},
                          QPoint(pane.ListBox2()->header()->sectionViewportPosition(CellDate) + 5, 5));
        QCOMPARE(testing::ListFixture::jobs(f.w.ListBox2), (QStringList{"A", "B"}));
        QCOMPARE(pane.ListBox2()->model()->index(0, CellJob).data().toString(), QStringLiteral("A"));

        pane.ListBox2()->setFocus();
        QTest::keyClick(pane.ListBox2(), Qt::Key_Backspace);
        QCOMPARE(ran, QList<core::Item>{core::Item::clearjb2});
    }
};

QTEST_MAIN(TestClientPane)
#include "test_clientpane.moc"

// Delete with its four scopes, the selection that follows, and the reset of one row or all rows.
#include "jobs/rowops.h"
#include "support/listfixture.h"

#include <QtTest>

using namespace core;
using jobs::Aresure;

namespace
{
// clang-format off
enum Scope { One, JobNo, Date, Month };
// clang-format on

// Rows are "JOB|date".
void fill(testing::ListFixture& f, const QStringList& rows)
{
    for (const QString& spec : rows) {
        const QStringList parts = spec.split(QLatin1Char('|'));
        f.add(parts.value(1), parts.value(0), QStringLiteral("Acme"), 30);
    }
}
} // namespace

class TestRowOps : public QObject
{
    Q_OBJECT

    std::unique_ptr<testing::ListFixture> f;
    std::unique_ptr<jobs::RowOps> ops;

    // The user answers the delete window with a scope, or cancels.
    void answerDelete(std::optional<Scope> scope)
    {
        f->dialogs.expectModal(QStringLiteral("aresure"), [scope](platform::ModalForm& form) {
            auto& a = static_cast<Aresure&>(form);
            QVERIFY(a.GroupBox1 && a.delseljob && !a.delalljobs && !a.delalljobdate && !a.delallmonth);
            if (!scope) {
                a.Cancel_Action();
                return;
            }
            static constexpr bool Aresure::*radios[] = {&Aresure::delseljob, &Aresure::delalljobs,
                                                        &Aresure::delalljobdate, &Aresure::delallmonth};
            a.choose(radios[*scope]);
            a.Okay_Action();
        });
    }

    void answerReset(bool ok, const QString& expectTitle, const QString& expectQuestion)
    {
        f->dialogs.expectModal(QStringLiteral("aresure"), [=](platform::ModalForm& form) {
            auto& a = static_cast<Aresure&>(form);
            QVERIFY(!a.GroupBox1);
            QCOMPARE(a.title, expectTitle);
            QCOMPARE(a.question, expectQuestion);
            ok ? a.Okay_Action() : a.Cancel_Action();
        });
    }

private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }

    void init()
    {
        f = std::make_unique<testing::ListFixture>();
        ops = std::make_unique<jobs::RowOps>(
            f->w, jobs::RowOps::Services{f->clock, f->desktop, f->dialogs, f->hooks, f->view});
    }

    void cleanup()
    {
        QVERIFY2(f->dialogs.errors.isEmpty(), qPrintable(f->dialogs.errors.join(QLatin1Char('\n'))));
        QVERIFY(f->dialogs.scriptDone());
    }

    void deleteScopes_data()
    {
        QTest::addColumn<QStringList>("rows");
        QTest::addColumn<int>("selected");
        QTest::addColumn<int>("scope");
        QTest::addColumn<QStringList>("remaining");
        QTest::addColumn<int>("selectedAfter");

        const QStringList mixed{"A|11/22/26", "B|11/22/26", "a|11/21/26", "A|11/21/26",
                                "C|10/5/26",  "A|11/3/25",  "D|soon",     "E|11/1/26"};
        const QStringList four{"A|11/22/26", "B|11/22/26", "C|11/22/26", "D|11/22/26"};
        // clang-format off
        QTest::newRow("one row")                     << mixed << 1 << int(One)   << QStringList{"A", "a", "A", "C", "A", "D", "E"} << 1;
        QTest::newRow("job no., any case, neighbours") << mixed << 0 << int(JobNo) << QStringList{"B", "C", "D", "E"} << 0;
        QTest::newRow("job no. from below: last row")  << mixed << 3 << int(JobNo) << QStringList{"B", "C", "D", "E"} << 2;
        QTest::newRow("date")                        << mixed << 1 << int(Date)  << QStringList{"a", "A", "C", "A", "D", "E"} << 1;
        QTest::newRow("month keeps other year, bad dates") << mixed << 0 << int(Month) << QStringList{"C", "A", "D"} << 0;
        QTest::newRow("month of a bad date: nothing") << mixed << 6 << int(Month) << QStringList{"A", "B", "a", "A", "C", "A", "D", "E"} << 6;
        QTest::newRow("last of four ends on row 0")  << four << 3 << int(One) << QStringList{"A", "B", "C"} << 0;
        QTest::newRow("row before last: row above")  << four << 2 << int(One) << QStringList{"A", "B", "D"} << 1;
        QTest::newRow("only row")            << QStringList{"A|11/22/26"} << 0 << int(One) << QStringList{} << -1;
        QTest::newRow("all rows of one job") << QStringList{"A|11/22/26", "a|11/21/26"} << 1 << int(JobNo) << QStringList{} << -1;
        // clang-format on
    }

    void deleteScopes()
    {
        QFETCH(QStringList, rows);
        QFETCH(int, selected);
        QFETCH(int, scope);
        QFETCH(QStringList, remaining);
        QFETCH(int, selectedAfter);

        fill(*f, rows);
        f->w.setListIndex(selected);
        answerDelete(Scope(scope));
        ops->deletejb();

        QCOMPARE(testing::ListFixture::jobs(f->w.ListBox1), remaining);
        QCOMPARE(f->w.ListBox1.ListIndex, selectedAfter);
        QVERIFY(f->w.boxchange && f->desktop.beeps == 1);
        const int n = int(remaining.size());
        QVERIFY(f->w.runtotal.startsWith(Tr::MWListTotals + hhmm(30 * n) + Tr::MWListToday));
        QVERIFY(f->w.runtotal.endsWith(Tr::MWListTotalsEntries + fmt00(n)));
        QCOMPARE(f->w.runButton.enabled, selectedAfter >= 0);
    }

    void deleteInsideTheClientView()
    {
        f->writeClients({QStringLiteral("Acme")});
        for (auto [job, client] : {std::pair{"A1", "Acme"}, {"O1", "Other"}, {"A2", "acme"}, {"A3", "Acme"}})
            f->add(QStringLiteral("11/22/26"), job, client, 10);
        f->pickClient(QStringLiteral("Acme"));
        f->view.setListBox2Index(1); // A2

        answerDelete(One);
        ops->deletejb();
        QCOMPARE(testing::ListFixture::jobs(f->w.ListBox1), (QStringList{"A1", "O1", "A3"}));
        QCOMPARE(testing::ListFixture::jobs(f->w.ListBox2), (QStringList{"A1", "A3"}));
        QCOMPARE(f->w.ListBox2.ListIndex, 1); // kept by index: now A3
        QCOMPARE(f->w.ListBox1.selected().cell(CellJob), QStringLiteral("A3"));
        QVERIFY(f->w.runtotal.endsWith(QStringLiteral("Entries: 02")));

        // All rows of the client go: the view is empty and nothing can be started.
        answerDelete(JobNo);
        answerDelete(JobNo);
        f->view.setListBox2Index(0);
        ops->deletejb(); // A1
        ops->deletejb(); // A3
        QCOMPARE(testing::ListFixture::jobs(f->w.ListBox1), QStringList{"O1"});
        QCOMPARE(f->w.ListBox2.ListCount(), 0);
        QCOMPARE(std::pair(f->w.ListBox1.ListIndex, f->w.ListBox2.ListIndex), std::pair(-1, -1));
        QVERIFY(!f->w.runButton.enabled);
    }

    void cancelledDeleteChangesNothing()
    {
        fill(*f, {"A|11/22/26", "B|11/22/26"});
        f->w.setListIndex(1);
        const Timesheet before = f->w.ListBox1;
        answerDelete(std::nullopt);
        ops->deletejb();
        QCOMPARE(f->w.ListBox1, before);
        QVERIFY(!f->w.boxchange);
    }

    void resetOneRow_data()
    {
        QTest::addColumn<QString>("note");
        QTest::addColumn<bool>("ok");
        // clang-format off
        QTest::newRow("no note, OK") << QString() << true;
        QTest::newRow("note, OK") << QStringLiteral("call back") << true;
        QTest::newRow("note, Cancel") << QStringLiteral("call back") << false;
        // clang-format on
    }

    void resetOneRow()
    {
        QFETCH(QString, note);
        QFETCH(bool, ok);
        f->add(QStringLiteral("11/2/26"), QStringLiteral("K1"), QStringLiteral("Acme"), 95, note);
        JobRow& row = f->add(QStringLiteral("11/3/26"), QStringLiteral("K2"), QStringLiteral("Acme"), 125, note);
        row.budget = kBudgetOver;
        f->w.setListIndex(1);
        const Timesheet before = f->w.ListBox1;

        answerReset(ok, Tr::MWResetRow, note.isEmpty() ? Tr::MWResetRowQuestion : Tr::MWResetRowQuestionNote);
        ops->_zerorow_Action();

        QCOMPARE(f->w.boxchange, ok);
        if (!ok) {
            QCOMPARE(f->w.ListBox1, before);
            return;
        }
        QCOMPARE(f->w.ListBox1.row(0), before.row(0));
        // Only date, time, run mark and note change; the budget mark is left to the budget check.
        JobRow expected = before.row(1);
        expected.cells[CellDate] = f->day();
        expected.cells[CellHours] = expected.cells[CellMinutes] = QStringLiteral("00");
        expected.run = kRunNever;
        expected.note.clear();
        QCOMPARE(f->w.ListBox1.row(1), expected);
        QCOMPARE(f->w.runButton.caption, Tr::MWStartButtonFs);
        QVERIFY(f->w.runtotal.startsWith(QStringLiteral("List Totals - Time: 01:35")));
    }

    // The reset leaves the first row selected; in a client's view that does not show it, nothing.
    void resetAllRowsWithAlt_data()
    {
        QTest::addColumn<bool>("clientView");
        QTest::newRow("whole list") << false;
        QTest::newRow("client's view without the first row") << true;
    }

    void resetAllRowsWithAlt()
    {
        QFETCH(bool, clientView);
        f->add(QStringLiteral("10/2/26"), QStringLiteral("K1"), QString(), 95, QStringLiteral("n1"));
        f->add(QStringLiteral("9/3/26"), QStringLiteral("K2"), QStringLiteral("Acme"), 20);
        f->add(QStringLiteral("8/3/25"), QStringLiteral("K3"), QStringLiteral("Acme"), 0, QStringLiteral("n3"));
        if (clientView) {
            f->writeClients({QStringLiteral("Acme")});
            f->pickClient(QStringLiteral("Acme"));
            f->view.setListBox2Index(1); // K3
        } else {
            f->w.setListIndex(2);
        }
        f->desktop.alt = true;
        answerReset(true, Tr::MWResetAllRows, Tr::MWResetAllRowQuestion);
        ops->_zerorow_Action();

        QCOMPARE(f->w.ListBox1.ListIndex, clientView ? -1 : 0);
        QCOMPARE(f->w.runButton.enabled, !clientView); // never on for a row that is not on show
        for (const JobRow& row : f->w.ListBox1.rows) {
            QCOMPARE(row.cell(CellDate), f->day()); // every row now counts into today
            QVERIFY(row.minutes() == 0 && row.run == kRunNever && row.note.isEmpty());
        }
        QVERIFY(f->w.runtotal.endsWith(QStringLiteral("Entries: 0%1").arg(clientView ? 2 : 3)));
    }

    void altReadWhenTheCommandRuns()
    {
        // The menu was drawn with Alt held, but the key is up when the item runs: one row only.
        f->add(QStringLiteral("10/2/26"), QStringLiteral("K1"), QString(), 95);
        f->add(QStringLiteral("9/3/26"), QStringLiteral("K2"), QString(), 20);
        f->w.setListIndex(1);
        f->desktop.alt = false;
        answerReset(true, Tr::MWResetRow, Tr::MWResetRowQuestion);
        ops->_zerorow_Action();
        QCOMPARE(f->w.ListBox1.row(0).minutes(), qint64(95));
        QCOMPARE(f->w.ListBox1.row(1).minutes(), qint64(0));
    }
};

QTEST_GUILESS_MAIN(TestRowOps)
#include "test_rowops.moc"

// The delete question and the note editor on screen hand the user's choices back to their forms.
#include "jobs/ui/rowviews.h"
#include "storage/timesheet_file.h"
#include "support/fakes.h"

#include <QGroupBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QtTest>

using jobs::Aresure;
using jobs::Notewin;

class TestRowViews : public QObject
{
    Q_OBJECT

    testing::FakeDesktop desktop;

private slots:
    void aresureShapes_data()
    {
        QTest::addColumn<bool>("reset");
        QTest::newRow("delete") << false;
        QTest::newRow("reset") << true;
    }

    void aresureShapes()
    {
        QFETCH(bool, reset);
        Aresure form;
        if (reset) {
            form.GroupBox1 = false;
            form.Okay = Tr::MWButtonOK;
            form.height = Aresure::kResetHeight;
        }
        jobs::ui::AresureView view(form);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        QCOMPARE(view.GroupBox1()->isVisible(), !reset);
        QCOMPARE(view.Okay()->text(), reset ? Tr::MWButtonOK : Tr::MWButtonDelete);
        if (!reset) {
            QVERIFY(view.radio(0)->isChecked());
            QTest::mouseClick(view.radio(3), Qt::LeftButton);
            QVERIFY(form.delallmonth && !form.delseljob);
        }
        QTest::mouseClick(view.Okay(), Qt::LeftButton);
        QCOMPARE(form.ButtonPressed, Tr::MWButtonOK);
        QCOMPARE(view.result(), int(QDialog::Accepted));
    }

    void notewinRefusesPastTheLimitAndSaysSo()
    {
        Notewin form(desktop);
        form.Event_Open(QString(storage::kMaxFieldUtf8 - 2, QLatin1Char('x')), QRect(0, 0, 1920, 1080));
        jobs::ui::NotewinView view(form);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        QCOMPARE(view.roomLabel()->text(), form.roomLeftText());
        QVERIFY(view.roomLabel()->text().contains(QStringLiteral("2")));

        view.EditField1()->setFocus();
        QTest::keyClicks(view.EditField1(), QStringLiteral("abcd"));
        QCOMPARE(view.EditField1()->toPlainText().size(), storage::kMaxFieldUtf8);
        QVERIFY(view.EditField1()->toPlainText().endsWith(QStringLiteral("ab")));
        QCOMPARE(view.roomLabel()->text(), jobs::noteFullText());

        QTest::keyClick(view.EditField1(), Qt::Key_Backspace);
        QCOMPARE(view.roomLabel()->text(), form.roomLeftText());
        QTest::keyClick(view.EditField1(), Qt::Key_Enter);
        QCOMPARE(desktop.beeps, 1);
        QTest::keyClick(view.EditField1(), Qt::Key_Return, Qt::ShiftModifier);
        QCOMPARE(form.ButtonPressed, Notewin::kNWSaved);
        QCOMPARE(form.EditField1.size(), storage::kMaxFieldUtf8 - 1);
        QVERIFY(!view.isVisible());
    }
};

QTEST_MAIN(TestRowViews)
#include "test_rowviews.moc"

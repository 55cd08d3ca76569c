// The job dialog's widgets are wired to its form: typing, keys, arrows, menus and the buttons.
#include "jobs/jobdialogrig.h"
#include "jobs/ui/jobdialogview.h"

#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QToolButton>
#include <QtTest>

using jobs::specialw;
using jobs::ui::specialwView;
using testing::JobRig;

class TestSpecialwView : public QObject
{
    Q_OBJECT

    std::unique_ptr<JobRig> rig;
    bool open = false;

    // A new-job form dated New Year's Eve.
    std::unique_ptr<specialw> makeForm()
    {
        auto form = rig->makeDialog(open);
        form->dateField = QStringLiteral("12/31/26");
        return form;
    }

    static bool shown(QWidget& view)
    {
        view.show();
        return QTest::qWaitForWindowExposed(&view);
    }

    // Opens a menu button's menu as a click would and picks the row with this text.
    static void choose(QAbstractButton* button, const QString& text)
    {
        QMenu* menu = qobject_cast<QPushButton*>(button) ? static_cast<QPushButton*>(button)->menu()
                                                         : static_cast<QToolButton*>(button)->menu();
        QVERIFY(menu);
        emit menu->aboutToShow();
        for (QAction* action : menu->actions())
            if (action->text() == text) {
                action->trigger();
                return;
            }
        QFAIL(qPrintable(QStringLiteral("no menu row ") + text));
    }

private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }
    void init()
    {
        rig = std::make_unique<JobRig>();
        rig->writeOperations({{QStringLiteral("R&D"), QStringLiteral("lab")}});
    }
    void cleanup()
    {
        QVERIFY2(rig->dialogs.errors.isEmpty(), qPrintable(rig->dialogs.errors.join(u'\n')));
        QVERIFY(rig->dialogs.scriptDone());
    }

    void typingMenusAndOkSaveARow()
    {
        auto form = makeForm();
        specialwView view(*form);
        QVERIFY(shown(view));
        QVERIFY(view.okjob()->isVisible() && !view.okjob2()->isVisible());

        QTest::mouseClick(view.dateUp(), Qt::LeftButton);
        QCOMPARE(view.dateField()->text() + view.dateDay()->text(), "1/1/27" + specialw::kDayFriday);

        view.enterjob()->setFocus();
        QTest::keyClicks(view.enterjob(), QStringLiteral("ab12"));
        QCOMPARE(view.enterjob()->text(), QStringLiteral("AB12")); // upper case once focused
        QTest::keyClicks(view.enterclient(), QStringLiteral("Fence"));
        QTest::keyClicks(view.sphrs(), QStringLiteral("x2")); // the letter is swallowed with a beep
        QCOMPARE(view.sphrs()->text(), QStringLiteral("002"));
        QCOMPARE(rig->desktop.beeps, 1);
        choose(view.popup(), QStringLiteral("R&&D : lab"));
        QCOMPARE(form->popup.caption, QStringLiteral("R&&D"));
        QCOMPARE(view.popup()->text(), QStringLiteral("R&&D")); // a button shows "&&" as one "&"

        QTest::mouseClick(view.okjob(), Qt::LeftButton);
        QVERIFY(!view.okjob()->isEnabled());
        QCOMPARE(rig->w.ListBox1.ListCount(), 1);
        const auto& cells = rig->w.ListBox1.row(0).cells;
        QCOMPARE(QStringList(cells.begin(), cells.begin() + 6),
                 (QStringList{"1/1/27", "AB12", "Fence", "02", "00", "R&D"}));

        JobRig::timer(form->specialtimer()).fire();
        QVERIFY(!view.isVisible());
        QCOMPARE(view.result(), int(QDialog::Accepted));
    }

    void minutesMessageAndEscapeCancel()
    {
        auto form = makeForm();
        specialwView view(*form);
        QVERIFY(shown(view));
        view.spmin()->clear();
        QTest::keyClicks(view.spmin(), QStringLiteral("75"));
        QVERIFY(view.spmin()->text().isEmpty());
        QCOMPARE(rig->dialogs.messages, QStringList{specialw::kMinsLess});

        QTest::keyClick(&view, Qt::Key_Escape);
        QVERIFY(!view.isVisible());
        QCOMPARE(view.result(), int(QDialog::Rejected));
        QCOMPARE(form->ButtonPressed, Tr::MWButtonCancel);
        QVERIFY(!open);
        QCOMPARE(rig->w.ListBox1.ListCount(), 0);
    }

    void editModeShowsTheRowAndItsButton()
    {
        rig->w.ListBox1.AddRow(JobRig::row(QDate(2026, 11, 20), QStringLiteral("Q&A"), "01", core::kRunStopped));
        rig->w.setListIndex(0);
        rig->play([](specialw& d) {
            specialwView view(d);
            QVERIFY(shown(view));
            QVERIFY(view.okjob2()->isVisible() && !view.okjob()->isVisible());
            QCOMPARE(view.enterjob()->text() + view.popupclnt()->text(), QStringLiteral("Q&AAcme"));
            QCOMPARE(view.dateDay()->text(), specialw::kDayFriday);
            QTest::mouseClick(view.okjob2(), Qt::LeftButton);
        });
        rig->ops.doeditjob();
        QCOMPARE(rig->w.ListBox1.ListCount(), 1);
        QCOMPARE(rig->w.ListBox1.Cell(0, core::CellJob), QStringLiteral("Q&A"));
        QVERIFY(rig->w.boxchange);
    }
};

QTEST_MAIN(TestSpecialwView)
#include "test_jobdialogview.moc"

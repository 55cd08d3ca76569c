// The menus of the running program show the one command state at every moment, so that a key of a
// greyed item does nothing: a shortcut once opened "Add Job..." while a job was timing.
#include "shell/programrig.h"
#include "shell/ui/shell.h"

#include <QAction>
#include <QMainWindow>
#include <QPushButton>
#include <QtTest>

using core::Item;

class TestShell : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }

    void keysFollowTheCommandState()
    {
        testing::ScriptedDialogs dialogs;
        testing::ProgramRig rig(dialogs);
        const QString sheet = QStringLiteral("/docs/a.vlk");
        rig.writeSheet(sheet, {rig.row(QStringLiteral("A100"), 30), rig.row(QStringLiteral("B200"), 0)});
        rig.make();
        shell::ui::Shell shell(*rig.program);
        rig.program->start({sheet});
        QMainWindow* window = shell.front();
        QVERIFY(window != shell.startWindow());
        QTRY_VERIFY(window->isVisible());
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window));
        const auto action = [window](Item item) { return window->findChild<QAction*>(core::itemName(item)); };
        QVERIFY(action(Item::nujobmenu2) && action(Item::statusStart) && action(Item::nineprefs));
        QCOMPARE(action(Item::nineprefs)->shortcut(), QKeySequence(QStringLiteral("Ctrl+,")));

        QTest::mouseClick(window->findChild<QPushButton*>(QStringLiteral("runButton")), Qt::LeftButton);
        QVERIFY(rig.w()->running);
        // No menu was opened: the state reached the items when the job started.
        QVERIFY(!action(Item::nujobmenu2)->isEnabled());
        QVERIFY(!action(Item::statusStart)->isEnabled());
        QVERIFY(action(Item::statusStop)->isEnabled());
        for (int key : {Qt::Key_J, Qt::Key_R, Qt::Key_A, Qt::Key_L, Qt::Key_D, Qt::Key_F, Qt::Key_E})
            QTest::keyClick(window, Qt::Key(key), Qt::ControlModifier);
        QVERIFY2(dialogs.errors.isEmpty(), qPrintable(dialogs.errors.join(QLatin1Char('\n'))));
        QCOMPARE(rig.w()->ListBox1.ListCount(), 2);

        QTest::mouseClick(window->findChild<QPushButton*>(QStringLiteral("runButton")), Qt::LeftButton);
        QVERIFY(action(Item::nujobmenu2)->isEnabled());
        dialogs.expectModal(QStringLiteral("specialw"),
                            [](platform::ModalForm& form) { form.ButtonPressed = Tr::MWButtonCancel; });
        QTest::keyClick(window, Qt::Key_J, Qt::ControlModifier);
        QVERIFY(dialogs.scriptDone());
        QVERIFY2(dialogs.errors.isEmpty(), qPrintable(dialogs.errors.join(QLatin1Char('\n'))));
    }
};

QTEST_MAIN(TestShell)
#include "test_shell.moc"

// The menus of the running program show the one command state at every moment, so that a key of a
// greyed item does nothing: a shortcut once opened "Add Job..." while a job was timing.
#include "budgets/ui/presetjobsview.h"
#include "clients/ui/clientpane.h"
#include "core/ui/mainwndoview.h"
#include "shell/programrig.h"
#include "shell/ui/shell.h"
#include "storage/preset_file.h"

#include <QAction>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>
#include <QScrollBar>
#include <QTreeView>
#include <QtTest>

using core::Item;

class TestShell : public QObject
{
    Q_OBJECT

    // The widths of a list's visible columns.
    static QList<int> widths(QTreeView* list)
    {
        QList<int> out;
        for (int c = 0; c < 7; ++c)
            out << list->columnWidth(c);
        return out;
    }

    // Every text of the named columns fits its column in the list's font (a date as bold as a noted one).
    static void contentsFit(QTreeView* list, const QStringList& texts)
    {
        QFont bold = list->font();
        bold.setBold(true);
        const int columns[] = {core::CellDate, core::CellJob, core::CellHours, core::CellMinutes, core::CellClient};
        for (int i = 0; i < 5; ++i) {
            const QFontMetrics metrics(i == 0 ? bold : list->font());
            QVERIFY2(metrics.horizontalAdvance(texts[i]) < list->columnWidth(columns[i]), qPrintable(texts[i]));
        }
    }

private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }

    // At the size the window is made with and the default font, date, job, hours, minutes and client show
    // in full in both lists, with no sideways scrolling; the lists keep the same widths and follow a font.
    void firstHourColumns()
    {
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
        testing::ScriptedDialogs dialogs;
        testing::ProgramRig rig(dialogs);
        rig.clock.set(2026, 11, 22, 9, 0);
        const QString sheet = QStringLiteral("/docs/a.vlk");
        core::JobRow row = rig.row(QStringLiteral("A100"), 100 * 60 + 59);
        row.setCell(core::CellClient, QStringLiteral("Acme Studios"));
        rig.writeSheet(sheet, std::vector<core::JobRow>(40, row)); // enough rows for a scroll bar
        rig.files.files[storage::prefFile(storage::kClientsFileName)] =
            storage::encodeClientList({QStringLiteral("Acme Studios")});
        rig.make();
        shell::ui::Shell shell(*rig.program);
        rig.program->start({sheet});
        QMainWindow* window = shell.front();
        QTRY_VERIFY(window->isVisible());
        QCOMPARE(window->size(), QSize(core::Mainwndo::kCreatedWidth, core::Mainwndo::kCreatedHeight));
        auto* listBox1 = static_cast<core::ui::MainwndoView*>(window)->ListBox1();
        const QStringList texts{QStringLiteral("22/11/2026"), QStringLiteral("A100"), QStringLiteral("100"),
                                QStringLiteral("59"), QStringLiteral("Acme Studios")};
        contentsFit(listBox1, texts);
        QVERIFY(!listBox1->horizontalScrollBar()->isVisible());

        rig.program->window()->clientView.clientlist2_ExpandRow();
        rig.program->window()->clientView.setClientlist2Index(1);
        auto* listBox2 = window->findChild<clients::ui::ClientPane*>()->ListBox2();
        QTRY_VERIFY(listBox2->isVisible());
        QTRY_COMPARE(widths(listBox2), widths(listBox1));
        const QList<int> before = widths(listBox1);
        rig.program->applyListFont(QStringLiteral("System"), 12);
        contentsFit(listBox1, texts);
        contentsFit(listBox2, texts);
        QVERIFY(widths(listBox1)[core::CellDate] > before[core::CellDate]);
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    }

    void keysFollowTheCommandState()
    {
        testing::ScriptedDialogs dialogs;
        testing::ProgramRig rig(dialogs);
        const QString sheet = QStringLiteral("/docs/a.vlk");
        rig.writeSheet(sheet, {rig.row(QStringLiteral("A100"), 30), rig.row(QStringLiteral("<b>B200</b>"), 0)});
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

        // The strip shows a job as typed: markup in it is text, drawn as wide as the strip measured it.
        rig.w()->setListIndex(1);
        QLabel* text = shell.strip()->statustext();
        QVERIFY(text->text().startsWith(QStringLiteral("<b>B200</b>")));
        QVERIFY(text->sizeHint().width() >= text->fontMetrics().horizontalAdvance(text->text()));
    }

    // The preset window opens with no job chosen, though its list makes its first row current as it
    // takes the focus: Delete stays off until the user picks a row. Its headings show in full. A picked
    // job is changed from the keyboard: the focus stays where the user types, an imported job number and
    // project longer than typed ones may be are kept whole, and Return has nothing to press once the
    // fields are empty.
    void presetWindow()
    {
        testing::ScriptedDialogs dialogs;
        testing::ProgramRig rig(dialogs);
        const QString job = QStringLiteral("B2-NORTH-WING-ROOF");
        const QString book = QStringLiteral("Book of the long winter, second edition");
        rig.files.files[storage::prefFile(storage::kPresetJobsFileName)] = storage::encodePresetJobs(
            {{QStringLiteral("A100"), QStringLiteral("Site"), QStringLiteral("02"), QStringLiteral("00"), {}, {}, {}},
             {job, book, QStringLiteral("09"), QStringLiteral("01"), {}, {}, {}}});
        const QString sheet = QStringLiteral("/docs/a.vlk");
        rig.writeSheet(sheet, {rig.row(QStringLiteral("A100"), 30)});
        rig.make();
        shell::ui::Shell shell(*rig.program);
        rig.program->start({sheet});
        rig.program->command(Item::presetJobs);
        budgets::ui::PresetJobsView* view = nullptr;
        for (QWidget* top : QApplication::topLevelWidgets())
            view = view ? view : qobject_cast<budgets::ui::PresetJobsView*>(top);
        QVERIFY(view);
        QTRY_VERIFY(view->isVisible());
        auto* list = view->findChild<QTreeView*>(QStringLiteral("joblst"));
        QApplication::setActiveWindow(view);
        list->setFocus(Qt::TabFocusReason);
        QTRY_VERIFY(list->currentIndex().isValid());
        QCOMPARE(rig.program->presets().ListIndex, -1);
        QVERIFY(!view->findChild<QPushButton*>(QStringLiteral("killjob"))->isEnabled());
        for (int column = 0; column < 5; ++column) {
            const QString heading = list->model()->headerData(column, Qt::Horizontal).toString();
            QVERIFY2(list->header()->fontMetrics().horizontalAdvance(heading) < list->columnWidth(column) ||
                         column == 4,
                     qPrintable(heading));
        }
        QVERIFY(list->columnViewportPosition(4) + list->header()->fontMetrics().horizontalAdvance(
                                                      list->model()->headerData(4, Qt::Horizontal).toString()) <
                list->viewport()->width());

        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualRect(list->model()->index(1, 1)).center());
        QCOMPARE(rig.program->presets().ListIndex, 1);
        QVERIFY(view->findChild<QPushButton*>(QStringLiteral("killjob"))->isEnabled());

        QVERIFY(view->addjob()->isEnabled());
        QCOMPARE(view->field(2)->text() + view->field(3)->text(), job + book);
        const auto typeAtEnd = [](QLineEdit* field, const char* keys) {
            field->setFocus();
            field->end(false);
            for (const char* key = keys; *key; ++key)
                QTest::keyClick(QApplication::focusWidget(), *key);
        };
        typeAtEnd(view->field(2), "\bs");
        typeAtEnd(view->field(3), "\bs\r");
        const storage::PresetJob& changed = rig.program->presets().joblst[1];
        QCOMPARE(changed.job + changed.project, job.chopped(1) + QLatin1Char('S') + book.chopped(1) + QLatin1Char('s'));
        QVERIFY(!view->addjob()->isDefault() && !view->addjob()->isEnabled());

        // Escape closes the window as its close box does, and its place is kept.
        const int width = view->width() + 40;
        view->resize(width, view->height());
        QTRY_COMPARE(view->width(), width);
        list->setFocus();
        QTest::keyClick(list, Qt::Key_Escape);
        QVERIFY(!view->isVisible());
        QCOMPARE(rig.program->app().prefs.presetwinWidth, width);
    }
};

QTEST_MAIN(TestShell)
#include "test_shell.moc"

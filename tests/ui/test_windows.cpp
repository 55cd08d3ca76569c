// The program's views where they hold logic of their own: list colours, menus that follow the command
// state, the job dialog's fields, the report on paper; and one program per desktop session.
#include "core/ui/contrast.h"
#include "core/ui/mainwndoview.h"
#include "core/ui/timesheetmodel.h"
#include "jobs/ui/jobdialogview.h"
#include "platform/qt/reportprinter.h"
#include "shell/programrig.h"
#include "shell/ui/shell.h"
#include "shell/ui/singleinstance.h"
#include "shell/ui/statusviews.h"
#include "storage/prefs_file.h"

#include <QPrinter>
#include <QtTest>
#include <QtWidgets>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace core;

class TestWindows : public QObject
{
    Q_OBJECT

    std::unique_ptr<testing::ScriptedDialogs> dialogs;
    std::unique_ptr<testing::ProgramRig> rig;
    std::unique_ptr<shell::ui::Shell> shell;
    Timesheet sheet; // three rows, the second with a note, the third over its budget

    // The program on screen over a timesheet of these rows.
    ui::MainwndoView* open(const std::vector<JobRow>& rows)
    {
        rig->writeSheet(QStringLiteral("/docs/a.vlk"), rows);
        rig->make();
        shell = std::make_unique<shell::ui::Shell>(*rig->program);
        rig->program->start({QStringLiteral("/docs/a.vlk")});
        auto* window = static_cast<ui::MainwndoView*>(shell->front());
        QCoreApplication::processEvents(); // the window shows once the event loop is back
        window->activateWindow();
        const bool active = QTest::qWaitForWindowActive(window);
        QCoreApplication::processEvents(); // the menu items, made once the window is drawn
        return active ? window : nullptr;
    }

private slots:
    void init()
    {
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        dialogs = std::make_unique<testing::ScriptedDialogs>();
        rig = std::make_unique<testing::ProgramRig>(*dialogs);
        sheet = {};
        for (QString i : {"0", "1", "2"})
            sheet.AddRow(JobRow{
                {"11/2" + i + "/26", "J" + i, {}, QString("01"), QString("05"), {}, {}, QString("x"), QString("9")},
                {},
                {},
                {},
                {}});
        sheet.row(1).note = QStringLiteral("note");
        sheet.row(2).budget = kBudgetOver;
    }
    void cleanup()
    {
        shell.reset(); // the windows, then the program, before the next test's dialogs replace these
        rig.reset();
        QVERIFY2(dialogs->errors.isEmpty(), qPrintable(dialogs->errors.join(u'\n')));
        QVERIFY(dialogs->scriptDone());
    }

    // A noted row's date is bold on its yellow mark, an over-budget row's time bold and red; a greyed list
    // greys the warning, and on a dark desktop its stripes and the mark darken; a drag carries eight cells.
    void coloursAndWeights()
    {
        ui::TimesheetModel model(sheet);
        auto bold = [&](int r, int c) { return model.index(r, c).data(Qt::FontRole).value<QFont>().bold(); };
        auto text = [&](int r, int c) { return model.index(r, c).data(Qt::ForegroundRole); };
        auto back = [&](int r, int c) { return model.index(r, c).data(Qt::BackgroundRole).value<QBrush>().color(); };
        QVERIFY(bold(1, CellDate) && !bold(0, CellDate) && bold(2, CellHours) && bold(2, CellMinutes));
        QVERIFY(!bold(2, CellJob) && !text(0, CellHours).isValid());
        model.setStripe(QColor(10, 20, 30));
        QCOMPARE((QList<QColor>{back(0, CellJob), back(1, CellJob), back(1, CellDate),
                                text(2, CellHours).value<QBrush>().color()}),
                 (QList<QColor>{{10, 20, 30}, Qt::white, {255, 255, 0}, {255, 0, 0}}));
        model.setGray(true);
        QCOMPARE(text(2, CellHours).value<QBrush>().color(), QColor(150, 150, 150));
        model.setDark(true);
        QCOMPARE((QList<QColor>{back(0, CellJob), back(1, CellJob), back(1, CellDate),
                                text(0, CellJob).value<QBrush>().color()}),
                 (QList<QColor>{{30, 30, 30}, {10, 10, 10}, {204, 51, 0}, {133, 133, 133}}));
        std::unique_ptr<QMimeData> data(model.mimeData({model.index(1, 3)}));
        QCOMPARE(data->data(QStringLiteral("text/plain")), QByteArray("11/21/26\tJ1\t\t01\t05\t\t\tx\t\r"));
    }

    // Every cell of the list reads at 4.5:1 or better as painted, light and dark: plain, noted and
    // over-budget rows on both stripes and on a dark stripe of the user's, greyed, and with the running
    // row highlighted in the disabled list; the status strip too, stopped and running.
    void readableColours()
    {
        ui::MainwndoView* window =
            open({rig->row("A1", 30), rig->row("B2", 30), rig->row("C3", 30), rig->row("D4", 30)});
        QVERIFY(window);
        QTreeView* list = window->ListBox1();
        auto* model = static_cast<ui::TimesheetModel*>(list->model());
        rig->w()->ListBox1.row(1).note = rig->w()->ListBox1.row(3).note = QStringLiteral("note");
        rig->w()->ListBox1.row(2).budget = rig->w()->ListBox1.row(3).budget = kBudgetOver;
        list->setCurrentIndex(model->index(0, 0));
        const QPalette light = QApplication::palette();
        QPalette dark(QColor(53, 53, 53)); // white text, a mid blue highlight, grey text when disabled
        dark.setColor(QPalette::Highlight, QColor(42, 130, 218));
        dark.setColor(QPalette::Disabled, QPalette::Text, QColor(127, 127, 127));
        const auto restore = qScopeGuard([&] { QApplication::setPalette(light); });
        QStringList unreadable;
        const auto check = [&](const QColor& text, const QColor& back, const QString& where) {
            if (ui::contrastRatio(text, back) < ui::kMinContrast)
                unreadable << where + ": " + text.name() + " on " + back.name();
        };
        for (const bool darkDesktop : {false, true}) {
            QApplication::setPalette(darkDesktop ? dark : light);
            rig->desktop.dark = darkDesktop;
            for (const bool running : {false, true}) {
                if (rig->w()->running != running)
                    QTest::mouseClick(window->runButton(), Qt::LeftButton);
                QVERIFY(rig->w()->running == running && list->isEnabled() == !running);
                const QPalette strip = shell->strip()->palette(), colours = list->palette();
                check(strip.color(QPalette::WindowText), strip.color(QPalette::Window), "strip");
                const auto group = running ? QPalette::Disabled : QPalette::Active;
                for (const QColor& stripe : {QColor(243, 246, 250), QColor(40, 40, 120)})
                    for (const bool gray : {false, true}) {
                        model->setStripe(stripe);
                        model->setGray(gray);
                        for (int r = 0; r < model->rowCount(); ++r)
                            for (int c = 0; c < 7; ++c) {
                                const QModelIndex i = model->index(r, c);
                                const QVariant own = i.data(Qt::ForegroundRole); // else the list's own
                                const bool lit = list->selectionModel()->isSelected(i);
                                check(lit             ? colours.color(group, QPalette::HighlightedText)
                                      : own.isValid() ? own.value<QBrush>().color()
                                                      : colours.color(group, QPalette::Text),
                                      lit ? colours.color(group, QPalette::Highlight)
                                          : i.data(Qt::BackgroundRole).value<QBrush>().color(),
                                      QString::asprintf("dark %d running %d stripe %s gray %d row %d cell %d",
                                                        darkDesktop, running, qPrintable(stripe.name()), gray, r, c));
                            }
                    }
            }
        }
        QVERIFY2(unreadable.isEmpty(), qPrintable(unreadable.join(u'\n')));
    }

    // A first timesheet window shows every heading whole, in the header's font.
    void firstWindowShowsItsHeadings()
    {
        ui::MainwndoView* window = open({rig->row(QStringLiteral("A100"), 30)});
        QVERIFY(window);
        const QHeaderView* header = window->ListBox1()->header();
        const int margins = 2 * header->style()->pixelMetric(QStyle::PM_HeaderMargin, nullptr, header);
        for (int c = 0; c < 7; ++c) {
            const QString heading = header->model()->headerData(c, Qt::Horizontal).toString();
            QVERIFY2(header->sectionSize(c) >= header->fontMetrics().horizontalAdvance(heading) + margins,
                     qPrintable(heading));
        }
    }

    // The menu items follow the command state when it changes, not only when a menu opens: a greyed
    // item's key does nothing (a shortcut once opened the job dialog while a job was timing). The strip
    // shows markup in a job as text. Ctrl+click takes the highlight off, and the selection with it.
    void menusAndSelection()
    {
        ui::MainwndoView* window = open({rig->row(QStringLiteral("A100"), 30), rig->row("<b>B200</b>", 0)});
        QVERIFY(window);
        const auto action = [window](Item item) { return window->findChild<QAction*>(itemName(item)); };
        window->ListBox1()->setCurrentIndex(window->ListBox1()->model()->index(1, 0));
        QCOMPARE(rig->w()->ListBox1.ListIndex, 1);
        QLabel* strip = shell->strip()->statustext();
        QVERIFY(strip->text().startsWith(QStringLiteral("<b>B200</b>")));
        QVERIFY(strip->sizeHint().width() >= strip->fontMetrics().horizontalAdvance(strip->text()));
        QTest::mouseClick(window->runButton(), Qt::LeftButton);
        QVERIFY(rig->w()->running && !window->ListBox1()->isEnabled());
        QVERIFY(!action(Item::nujobmenu2)->isEnabled() && action(Item::statusStop)->isEnabled());
        for (int key : {Qt::Key_J, Qt::Key_R, Qt::Key_A, Qt::Key_L, Qt::Key_D, Qt::Key_F, Qt::Key_E})
            QTest::keyClick(window, Qt::Key(key), Qt::ControlModifier);
        QTest::keyClick(window, Qt::Key_Space); // the window's key: Stop
        QTRY_VERIFY(!rig->w()->running && action(Item::nujobmenu2)->isEnabled());
        QCOMPARE(rig->w()->ListBox1.ListCount(), 2);
        rig->w()->setListIndex(0); // the program's choice shows in the list
        const QRect row0 = window->ListBox1()->visualRect(window->ListBox1()->currentIndex());
        QTest::mouseClick(window->ListBox1()->viewport(), Qt::LeftButton, Qt::ControlModifier, row0.center());
        QVERIFY(rig->w()->ListBox1.ListIndex == -1 && !window->runButton()->isEnabled());
    }

    // The job number is upper case once the field had the focus; a letter in the hours is swallowed with
    // a beep; 60 minutes are refused with the message and 59 taken; an "&" from the menu shows as one.
    void jobDialog()
    {
        rig->files.files[storage::prefFile(storage::kOperationsFileName)] = storage::encodeOperations({{"R&D", "lab"}});
        QVERIFY(open({}));
        dialogs->expectModal(jobs::specialw::kFormName, [this](platform::ModalForm& form) {
            auto& d = static_cast<jobs::specialw&>(form);
            jobs::ui::specialwView view(d);
            view.show();
            QVERIFY(QTest::qWaitForWindowExposed(&view));
            view.enterjob()->setFocus();
            QTest::keyClicks(view.enterjob(), QStringLiteral("ab12"));
            QTest::keyClicks(view.enterclient(), QStringLiteral("Fence"));
            QTest::keyClicks(view.sphrs(), QStringLiteral("x2"));
            QCOMPARE(view.enterjob()->text() + view.sphrs()->text(), QStringLiteral("AB12002"));
            QCOMPARE(rig->desktop.beeps, 1);
            view.spmin()->clear();
            QTest::keyClicks(view.spmin(), QStringLiteral("60"));
            QCOMPARE(view.spmin()->text() + dialogs->messages.join(u'|'), jobs::specialw::kMinsLess);
            QTest::keyClicks(view.spmin(), QStringLiteral("59"));
            emit view.popup()->menu()->aboutToShow();
            view.popup()->menu()->actions().last()->trigger();
            QCOMPARE(view.popup()->menu()->actions().last()->text() + view.popup()->text(), "R&&D : labR&&D");
            QTest::mouseClick(view.okjob(), Qt::LeftButton);
            testing::ProgramRig::fake(d.specialtimer()).fire();
            QCOMPARE(view.result(), int(QDialog::Accepted));
        });
        rig->program->command(Item::nujobmenu2);
        const auto& cells = rig->w()->ListBox1.row(0).cells;
        QCOMPARE(QStringList(cells.begin(), cells.begin() + 6),
                 (QStringList{"11/22/26", "AB12", "Fence", "02", "59", "R&D"}));
    }

    // Every control the keyboard or a screen reader reaches says what it is, in every window ("▾" does
    // not). The job dialog's Tab follows its fields in reading order. Escape leaves the preferences their
    // one way out, which a first start refuses until there is an operation.
    void keyboardAndNames()
    {
        platform::qt::QtDialogs screens; // the program's own windows over the forms it opens
        shell::ui::registerViews(screens);
        QStringList unnamed;
        std::function<void(QAccessibleInterface*)> walk = [&](QAccessibleInterface* node) {
            using enum QAccessible::Role;
            static const QSet<QAccessible::Role> controls{EditableText, ComboBox, PushButton, CheckBox,
                                                          RadioButton,  Slider,   SpinBox,    List,
                                                          Table,        Tree,     ButtonMenu, ButtonDropDown};
            if (controls.contains(node->role()) && !node->text(QAccessible::Name).contains(QRegularExpression("\\w")))
                unnamed << node->object()->metaObject()->className() + (' ' + node->object()->objectName());
            for (int i = 0; node->role() != ComboBox && i < node->childCount(); ++i) // not its list
                walk(node->child(i));
        };
        const auto onScreen = [&](const QString& name, std::function<void(QWidget*)> use = {}) {
            dialogs->expectModal(name, [&, use](platform::ModalForm& form) {
                QTimer::singleShot(0, [&, use] {
                    QWidget* window = QApplication::activeModalWidget();
                    walk(QAccessible::queryAccessibleInterface(window));
                    if (use)
                        use(window);
                    QTest::keyClick(window, Qt::Key_Escape);
                    window->hide(); // kept open by a failed check
                });
                screens.showModal(form);
            });
        };
        rig->files.files.remove(storage::prefFile(storage::kOperationsFileName)); // a first start
        onScreen(QStringLiteral("noopps"));
        onScreen(QStringLiteral("prefwin"), [&](QWidget* window) {
            QTest::keyClick(window, Qt::Key_Escape);
            QCOMPARE(std::exchange(dialogs->messages, {}), QStringList{shell::prefwin::kPrefAddOperation});
            QTest::keyClicks(window->findChild<QLineEdit*>(QStringLiteral("newopp")), "Design\r"); // Return adds it
        });
        QVERIFY(open({rig->row(QStringLiteral("A100"), 30)}));
        QVERIFY(rig->files.files.contains(storage::prefFile(storage::kPrefsFileName))); // saved on the way out
        rig->w()->setListIndex(0);
        budgets::ui::PresetJobsView presets(rig->program->presets(), rig->program->app().prefs);
        for (QWidget* window : {static_cast<QWidget*>(shell->front()), static_cast<QWidget*>(&presets)})
            walk(QAccessible::queryAccessibleInterface(window));
        onScreen(jobs::specialw::kFormName, [&](QWidget* window) {
            QStringList order{window->focusWidget()->objectName()};
            while (order.size() < 6) {
                QTest::keyClick(window->focusWidget(), Qt::Key_Tab);
                order << window->focusWidget()->objectName();
            }
            QCOMPARE(order, (QStringList{"enterjob", "enterclient", "popupclnt", "popup", "nmepopup", "sphrs"}));
        });
        rig->program->command(Item::nujobmenu2);
        const std::pair<Item, const char*> windows[] = {
            {Item::notey, "notewin"},        {Item::clearjb2, "aresure"},
            {Item::totaltime2, "ttljobtme"}, {Item::FilePrintLayout, "printsetup"},
            {Item::printit, "pntops"},       {Item::exportmenu, "xpops"}};
        for (auto [item, name] : windows) {
            onScreen(name);
            rig->program->command(item);
        }
        QVERIFY2(unnamed.isEmpty(), qPrintable(QString::number(unnamed.size()) + " unnamed: " + unnamed.join(", ")));
    }

    // The tray icon shows the selected job's time, hours over minutes on the state's colour, and is drawn
    // again when the minute or the state changes, not at every tick.
    void trayIconTime()
    {
        using Image = shell::VLKMenulet::Image;
        QVERIFY(open({rig->row(QStringLiteral("A100"), 65)}));
        rig->w()->setListIndex(0);
        shell::VLKMenulet& menulet = rig->program->window()->menulet;
        QTRY_VERIFY(shell->tray()->icon() && menulet.Title == QStringLiteral("01:05")); // Qt's icon: no watcher
        const qint64 drawn = shell->tray()->icon()->icon().cacheKey();
        emit menulet.changed();
        QCOMPARE(shell->tray()->icon()->icon().cacheKey(), drawn);
        menulet.setImage(Image::StatusAvailable);
        QVERIFY(shell->tray()->icon()->icon().cacheKey() != drawn);
        const QImage icon = shell::ui::TrayIcon::drawIcon(Image::StatusAvailable, QStringLiteral("01:05"), 22);
        QCOMPARE(icon.pixelColor(11, 0), QColor(0x1FB32E));
        for (const char* other : {"01:06", "11:05", "--:--"})
            QVERIFY(icon != shell::ui::TrayIcon::drawIcon(Image::StatusAvailable, other, 22));
    }

    // The report on PDF pages, read back with pdftotext: every page has its foot, page 1 its title, the
    // last the total, and every row is there once, with the end of its note on its page.
    void reportOnPaper()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("pdftotext")).isEmpty()) {
            if (qEnvironmentVariableIsSet("CI"))
                QFAIL("pdftotext is missing (make installs poppler-utils)");
            QSKIP("needs pdftotext (poppler-utils)");
        }
        const auto job = [](int i) { return QStringLiteral("J%1").arg(i, 3, 10, QLatin1Char('0')); };
        platform::Report report{
            "Veltrick printed on 23 November 2026", "User: Ann", "Page: ", {"Date", "Job"}, {}, "Total"};
        for (int i = 0; i < 200; ++i) // long projects that wrap, long notes and short ones
            report.rows.append(
                {{"11/1/26", job(i), QStringLiteral("Project ").repeated(i % 9 ? 1 : 9)},
                 i % 4 ? QString() : job(i) + QStringLiteral(" words").repeated(i % 3 ? 1 : 40) + " end"});
        QTemporaryDir dir;
        QPrinter printer(QPrinter::HighResolution);
        printer.setOutputFileName(dir.filePath(QStringLiteral("report.pdf")));
        printer.setPageSize(QPageSize(QPageSize::A4));
        const int pages = platform::qt::paintReport(printer, report);
        QProcess text;
        text.start(QStringLiteral("pdftotext"),
                   {QStringLiteral("-raw"), printer.outputFileName(), QStringLiteral("-")});
        QVERIFY(text.waitForFinished(30000));
        const QStringList pageTexts = QString::fromUtf8(text.readAllStandardOutput()).split(u'\f').mid(0, pages);
        QVERIFY(pages >= 4 && pageTexts.size() == pages);
        QVERIFY(pageTexts.first().contains(report.title) && pageTexts.last().contains("Total"));
        int rowsFound = 0;
        for (int p = 0; p < pageTexts.size(); ++p) {
            QVERIFY(pageTexts[p].contains("User: Ann") && pageTexts[p].contains("Page: " + QString::number(p + 1)));
            for (int i = 0; i < 200; ++i) {
                const int row = pageTexts[p].indexOf("/26 " + job(i)), note = pageTexts[p].indexOf(job(i) + " words");
                rowsFound += row >= 0;
                QVERIFY2(row < 0 || i % 4 || (note > row && pageTexts[p].indexOf(" end", note) > note),
                         qPrintable(job(i)));
            }
        }
        QCOMPARE(rowsFound, 200);
        // Half an inch of paper round the ink of page 1: 30 dots at 60 dots an inch.
        QProcess::execute("pdftoppm", {"-png", "-r", "60", "-f", "1", "-l", "1", "-singlefile",
                                       printer.outputFileName(), dir.filePath("page")});
        const QImage page(dir.filePath("page.png"));
        QRect ink;
        for (int y = 0; y < page.height(); ++y)
            for (int x = 0; x < page.width(); ++x)
                ink |= qGray(page.pixel(x, y)) < 250 ? QRect(x, y, 1, 1) : QRect();
        QVERIFY2(!ink.isEmpty() && QRect(30, 30, page.width() - 60, page.height() - 60).contains(ink),
                 qPrintable(QString::asprintf("ink %d,%d to %d,%d", ink.left(), ink.top(), ink.right(), ink.bottom())));
    }

    // One program per user and desktop session: later launches hand their paths, made absolute, to the
    // first, which keeps its socket (two programs would autosave the same file); a socket left by a crash
    // (bound, nobody listening) is taken over; the key is the user's runtime folder and the display.
    void oneProgramPerSession()
    {
        using shell::ui::SingleInstance;
        QTemporaryDir runtime;
        qputenv("XDG_RUNTIME_DIR", runtime.path().toUtf8());
        qputenv("DISPLAY", ":7");
        qunsetenv("WAYLAND_DISPLAY");
        {
            SingleInstance first, second, third;
            QVERIFY(first.claim({}));
            QSignalSpy received(&first, &SingleInstance::openRequested);
            QVERIFY(!second.claim({QStringLiteral("/docs/a.vlk"), QStringLiteral("b.vlk")}));
            QTRY_COMPARE(received.count(), 1);
            QCOMPARE(received[0][0].toStringList(), (QStringList{"/docs/a.vlk", QDir::current().filePath("b.vlk")}));
            QVERIFY(!third.claim({})); // the first still answers: nobody took its place
            QTRY_COMPARE(received.count(), 2);
        }
        const QByteArray path = QFile::encodeName(SingleInstance::serverPath());
        const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, path.constData(), sizeof(address.sun_path));
        QVERIFY(::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0);
        ::close(fd); // the file stays, as after a crash
        SingleInstance next, later;
        QVERIFY(next.claim({}) && !later.claim({}));
        QVERIFY(path.startsWith(QFile::encodeName(runtime.path() + '/')));
        qputenv("DISPLAY", ":8");
        QVERIFY(SingleInstance::serverPath() != QFile::decodeName(path));
        qputenv("WAYLAND_DISPLAY", "wayland-0");
        QVERIFY(SingleInstance::serverPath().endsWith(QStringLiteral("veltrick-wayland-0.socket")));
    }
};

QTEST_MAIN(TestWindows)
#include "test_windows.moc"

#include "shell/ui/shell.h"

#include "budgets/ui/presetjobsview.h"
#include "clients/ui/addressaddview.h"
#include "clients/ui/clientpane.h"
#include "core/texts.h"
#include "core/ui/jobcolumns.h"
#include "core/ui/mainwndoview.h"
#include "core/ui/modalviews.h"
#include "core/ui/timesheetmodel.h"
#include "jobs/ui/jobdialogview.h"
#include "jobs/ui/listwiring.h"
#include "jobs/ui/rowviews.h"
#include "shell/aboutbox.h"
#include "shell/ui/filewatch.h"
#include "shell/ui/prefwinview.h"
#include "shell/ui/printviews.h"
#include "shell/ui/statusviews.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenuBar>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextEdit>
#include <QTimer>
#include <QTreeView>
#include <QVBoxLayout>

namespace shell::ui
{

namespace
{

using core::Item;

// The menus in their order; a missing item is a separator. Preferences close the Edit menu and About
// the Help menu, where a Linux desktop keeps them.
struct Menu
{
    const QString* caption;
    std::vector<std::optional<Item>> items;
};

const std::vector<Menu>& menuTree()
{
    static const std::optional<Item> sep;
    static const std::vector<Menu> tree{
        {&Tr::FileMenuText,
         {Item::nusheet,
          Item::open,
          Item::clozeit,
          Item::switchit,
          sep,
          Item::openOld,
          sep,
          Item::save,
          Item::saveAs,
          sep,
          Item::presetJobs,
          sep,
          Item::exportmenu,
          sep,
          Item::FileAddNewClient,
          Item::syncAddressBook,
          sep,
          Item::FilePrintLayout,
          Item::printit,
          sep,
          Item::FileQuit}},
        {&Tr::EditMenuText,
         {Item::EditCut, Item::EditCopy, Item::EditPaste, sep, Item::nujobmenu2, Item::duplicate, Item::edjobmenu,
          Item::notey, sep, Item::zerorow, Item::clearjb2, sep, Item::nineprefs}},
        {&Tr::ViewMenuText, {Item::totaltime2, Item::totaldy2, sep, Item::shwnts, Item::webo}},
        {&Tr::ControlMenuText, {Item::statusStart, Item::statusStop}},
        {&Tr::HelpMenuText, {Item::helpon2, sep, Item::aboutme}},
    };
    return tree;
}

// A text in a menu shows a literal "&" only when it is doubled.
QString forMenu(const QString& caption)
{
    QString text = caption;
    return text.replace(QStringLiteral("&&"), QStringLiteral("&")).replace(QLatin1Char('&'), QStringLiteral("&&"));
}

// The text field with the keyboard focus, if any: Cut, Copy and Paste act on it.
QWidget* focusedTextField()
{
    QWidget* focus = QApplication::focusWidget();
    if (qobject_cast<QLineEdit*>(focus) || qobject_cast<QTextEdit*>(focus) || qobject_cast<QPlainTextEdit*>(focus))
        return focus;
    return nullptr;
}

bool textFieldCan(QWidget* field, Item item)
{
    if (!field)
        return false;
    bool readOnly = false;
    bool selected = false;
    if (auto* line = qobject_cast<QLineEdit*>(field)) {
        readOnly = line->isReadOnly();
        selected = line->hasSelectedText();
    } else if (auto* text = qobject_cast<QTextEdit*>(field)) {
        readOnly = text->isReadOnly();
        selected = text->textCursor().hasSelection();
    } else if (auto* plain = qobject_cast<QPlainTextEdit*>(field)) {
        readOnly = plain->isReadOnly();
        selected = plain->textCursor().hasSelection();
    }
    switch (item) {
    case Item::EditCut:
        return selected && !readOnly;
    case Item::EditCopy:
        return selected;
    default:
        return !readOnly;
    }
}

void registerAboutView(platform::qt::QtDialogs& dialogs)
{
    dialogs.registerView(QStringLiteral("aboutbox"), [](platform::ModalForm& form, QWidget* parent) {
        const auto& about = static_cast<const Aboutbox&>(form);
        QMessageBox box(parent);
        box.setWindowTitle(Aboutbox::kTitle);
        box.setIconPixmap(QApplication::windowIcon().pixmap(64));
        box.setText(QStringLiteral("<b>Veltrick</b> ") + about.version);
        box.setInformativeText(about.details().join(QLatin1Char('\n')));
        box.exec();
    });
}

// The small window of the idle program: its menus and the two ways in. Closing it quits.
class StartWindow : public QMainWindow
{
public:
    std::function<void()> closed;

protected:
    void closeEvent(QCloseEvent* event) override
    {
        event->ignore(); // the quit decides, and may be cancelled at the save question
        if (closed)
            closed();
    }
};

} // namespace

void registerViews(platform::qt::QtDialogs& dialogs)
{
    core::ui::registerModalViews(dialogs);
    clients::ui::registerAddressaddView(dialogs);
    jobs::ui::registerSpecialwView(dialogs);
    jobs::ui::registerRowViews(dialogs);
    registerPrefwinView(dialogs);
    registerAboutView(dialogs);
    registerPrintViews(dialogs);
    // Opened from the job dialog, the preset window is modal over it.
    dialogs.registerView(QStringLiteral("preSetJobsWin"), [](platform::ModalForm& form, QWidget* parent) {
        auto& presets = static_cast<budgets::preSetJobsWin&>(form);
        budgets::ui::PresetJobsView view(presets, presets.prefs(), parent);
        view.exec();
    });
}

Shell::Shell(Program& program) : m_program(program)
{
    connect(&m_program, &Program::windowOpened, this, &Shell::showMainwndo);
    connect(&m_program, &Program::windowClosed, this, &Shell::closeMainwndoView);
    connect(&m_program, &Program::commandsChanged, this, &Shell::applyCommands);
    connect(&m_program, &Program::listFontChanged, this, &Shell::applyListFont);
    connect(&m_program, &Program::stripesChanged, this, [this] {
        const core::AppPrefs& prefs = m_program.app().prefs;
        const QColor stripe(prefs.red, prefs.green, prefs.blue);
        if (m_view) {
            m_view->model()->setStripe(stripe);
            m_view->ListBox1()->viewport()->update();
        }
        if (auto* pane = qobject_cast<clients::ui::ClientPane*>(m_pane.data())) {
            pane->listBox2Model()->setStripe(stripe);
            pane->ListBox2()->viewport()->update();
        }
    });
    // exit(), not quit(): quit() first offers every window its close, and the start window's close is
    // itself a quit, so the two would ask each other for ever.
    connect(
        &m_program, &Program::exitRequested, qApp, [] { QCoreApplication::exit(0); }, Qt::QueuedConnection);
    connect(&m_program, &Program::timesheetWanted, this, &Shell::showTimesheet);
    connect(&m_program.presets(), &budgets::preSetJobsWin::visibilityChanged, this, &Shell::showPresets);
    qApp->installEventFilter(this); // the desktop's light or dark appearance
}

Shell::~Shell()
{
    delete m_presets;
    m_tray.reset();
    delete m_strip;
    delete m_view;
    delete m_startWindow;
}

bool Shell::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange)
        m_program.appearanceChanged();
    // A window's menu items are made once it is on the screen, which they are not needed for, or at the
    // first key or click if that comes sooner: a shortcut must find its item.
    if (!m_emptyMenuBars.empty()) {
        if (event->type() == QEvent::Expose && watched->isWindowType())
            QTimer::singleShot(0, this, &Shell::fillMenus);
        else if (event->type() == QEvent::ShortcutOverride || event->type() == QEvent::KeyPress ||
                 event->type() == QEvent::MouseButtonPress)
            fillMenus();
    }
    return QObject::eventFilter(watched, event);
}

void Shell::showPresets()
{
    budgets::preSetJobsWin& form = m_program.presets();
    if (!form.visible) {
        if (m_presets)
            m_presets->hide();
        return;
    }
    if (!m_presets) {
        m_presets = new budgets::ui::PresetJobsView(form, m_program.app().prefs);
        m_presets->activated = [this] { m_program.presetsActivated(); };
    }
    m_presets->show();
    m_presets->raise();
    m_presets->activateWindow();
}

void Shell::showTimesheet()
{
    QMainWindow* window = front();
    if (window->isMinimized())
        window->showNormal();
    window->show();
    window->raise();
    window->activateWindow();
}

void Shell::start(const QStringList& documents)
{
    // On a first start the start window stands behind the welcome, so the user sees the program
    // before any question; otherwise it shows only when no timesheet opens.
    if (!m_program.operationsFileExists())
        startWindow()->show();
    m_program.start(documents);
    if (!m_program.mainwndo())
        startWindow()->show();
}

QMainWindow* Shell::front()
{
    return m_view ? static_cast<QMainWindow*>(m_view) : startWindow();
}

void Shell::openRequested(const QStringList& paths)
{
    m_program.openRequested(paths);
    QMainWindow* window = front();
    window->show();
    window->raise();
    window->activateWindow();
}

QMainWindow* Shell::startWindow()
{
    if (m_startWindow)
        return m_startWindow;
    auto* window = new StartWindow;
    m_startWindow = window;
    window->setObjectName(QStringLiteral("StartWindow"));
    window->setWindowTitle(core::Mainwndo::kAppTitle);
    window->closed = [this] { m_program.command(Item::FileQuit); };
    auto* central = new QWidget(window);
    auto* layout = new QVBoxLayout(central);
    layout->addWidget(new QLabel(QStringLiteral("<b>Veltrick</b> %1").arg(core::App::kAppVersion), central));
    layout->addWidget(new QLabel(kStartHint, central));
    auto* buttons = new QHBoxLayout;
    auto* newButton = new QPushButton(Tr::FMNewTimesheet, central);
    auto* openButton = new QPushButton(Tr::FMOpenTimesheet, central);
    connect(newButton, &QPushButton::clicked, this, [this] { m_program.command(Item::nusheet); });
    connect(openButton, &QPushButton::clicked, this, [this] { m_program.command(Item::open); });
    buttons->addWidget(newButton);
    buttons->addWidget(openButton);
    layout->addLayout(buttons);
    window->setCentralWidget(central);
    addMenus(window->menuBar());
    return window;
}

void Shell::addMenus(QMenuBar* bar)
{
    for (const Menu& tree : menuTree()) {
        QMenu* menu = bar->addMenu(*tree.caption);
        // The Alt key and the focused text field are read as the menu opens.
        connect(menu, &QMenu::aboutToShow, this, &Shell::applyCommands);
    }
    m_emptyMenuBars.emplace_back(bar);
}

void Shell::fillMenus()
{
    std::erase_if(m_actions, [](const auto& entry) { return entry.second.isNull(); }); // a closed window's
    const core::MenuItems state = m_program.commandState();
    for (const QPointer<QMenuBar>& bar : std::exchange(m_emptyMenuBars, {})) {
        for (size_t m = 0; bar && m < menuTree().size(); ++m) {
            QMenu* menu = bar->actions()[qsizetype(m)]->menu();
            for (const std::optional<Item>& entry : menuTree()[m].items) {
                if (!entry) {
                    menu->addSeparator();
                    continue;
                }
                const Item item = *entry;
                QAction* action = menu->addAction(forMenu(state.caption(item)));
                action->setObjectName(core::itemName(item));
                action->setShortcut(QKeySequence(core::itemKey(item)));
                if (item == Item::EditCut || item == Item::EditCopy || item == Item::EditPaste)
                    connect(action, &QAction::triggered, this, [this, item] { editText(item); });
                else
                    connect(action, &QAction::triggered, this, [this, item] { m_program.command(item); });
                m_actions.emplace_back(item, action);
            }
        }
    }
    applyCommands();
}

void Shell::applyCommands()
{
    if (m_view && m_program.mainwndo())
        m_view->setWindowModified(m_program.mainwndo()->boxchange); // the title's "*"
    const core::MenuItems state = m_program.commandState();
    QWidget* field = focusedTextField();
    for (const auto& [item, action] : m_actions) {
        if (!action)
            continue;
        const bool textCommand = item == Item::EditCut || item == Item::EditCopy || item == Item::EditPaste;
        action->setEnabled(textCommand ? textFieldCan(field, item) : state.enabled(item));
        action->setText(forMenu(state.caption(item)));
    }
}

void Shell::editText(Item item)
{
    QWidget* field = focusedTextField();
    if (!textFieldCan(field, item))
        return;
    const char* slot = item == Item::EditCut ? "cut" : item == Item::EditCopy ? "copy" : "paste";
    QMetaObject::invokeMethod(field, slot);
}

void Shell::applyListFont(const QString& font, int size)
{
    if (!m_view)
        return;
    const QFont chosen = core::ui::listFont(font, size);
    m_view->ListBox1()->setFont(chosen);
    if (m_pane)
        for (QWidget* list : m_pane->findChildren<QAbstractItemView*>())
            list->setFont(chosen);
}

void Shell::showMainwndo(core::Mainwndo* form)
{
    Program::Window* parts = m_program.window();
    auto* view = new core::ui::MainwndoView(*form, m_program.app().prefs);
    view->setAttribute(Qt::WA_DeleteOnClose, false);
    m_view = view;
    // The client picker and the client's list stand beside the timesheet, in one splitter with it.
    auto* pane = new clients::ui::ClientPane(parts->clientView, *form, m_program.app().prefs, view->ListBox1());
    static_cast<QVBoxLayout*>(view->centralWidget()->layout())->insertWidget(0, pane, 1);
    m_pane = pane;
    new jobs::ui::ListWiring(view->ListBox1(), 1, parts->lists);
    new jobs::ui::ListWiring(pane->ListBox2(), 2, parts->lists);
    connect(pane, &clients::ui::ClientPane::addClientClicked, this,
            [this] { m_program.command(Item::FileAddNewClient); });
    connect(view, &core::ui::MainwndoView::runButtonClicked, this, [this] { m_program.runButton(); });
    connect(view, &core::ui::MainwndoView::njButton2Clicked, this, [this] { m_program.command(Item::nujobmenu2); });
    view->keyDown = [this](QChar key) { return m_program.keyDown(key); };
    // The window's close button: the document's close decides, once no other event is under way.
    view->closeRequested = [this] {
        m_program.post([this] { m_program.app().closeMainwndo(); });
        return false;
    };
    connect(form, &core::Mainwndo::controlsChanged, this, &Shell::applyCommands);
    connect(form, &core::Mainwndo::selectionChanged, this, &Shell::applyCommands);
    // Another program's change to the open file is looked at as an event of its own, like a key.
    auto* watch = new FileWatch(view);
    watch->watch(form->xpath);
    connect(form, &core::Mainwndo::opened, watch, [watch, form] { watch->watch(form->xpath); });
    connect(watch, &FileWatch::changed, this, [this] { m_program.post([this] { m_program.document().checkDisk(); }); });
    addMenus(view->menuBar());
    m_strip = new StatusWindowView(parts->strip, *form, m_program, view);
    // Made whether a tray is there or not: a panel that starts later (a login, a restart) gets it then.
    m_tray = std::make_unique<TrayIcon>(parts->menulet, m_program);
    applyCommands();
    if (m_startWindow)
        m_startWindow->hide();
    // Shown once the event loop is back: a timesheet being read appears whole, not row by row.
    QTimer::singleShot(0, view, &QWidget::show);
}

void Shell::closeMainwndoView()
{
    // The strip and the tray item live as long as the timesheet window.
    m_tray.reset();
    if (m_strip)
        m_strip->deleteLater();
    if (m_view) {
        m_view->closeRequested = nullptr; // the document has closed: the window goes without asking
        m_view->close();
        m_view->deleteLater();
    }
    if (!m_program.isQuitting())
        startWindow()->show();
}

} // namespace shell::ui

#include "core/app.h"

#include "core/screenfit.h"
#include "core/texts.h"

namespace core
{

App::App(Mainwndo::Services services, AppHooks& hooks) : m_s(services), m_hooks(hooks) {}

App::~App() = default;

void App::Event_Open()
{
    m_hooks.locateStyleSheet();
    prefs = AppPrefs(); // the defaults of a first start
    m_hooks.readPrefs(prefs);
    const QPoint mouse = m_s.desktop.mousePosition();
    prefs.positionx = mouse.x();
    prefs.positiony = mouse.y();
    prefs.checktime = 1;

    if (!prefs.lastdoc.isEmpty() && prefs.autopen) {
        thisdoc = prefs.lastdoc;
        if (m_hooks.fileExists(thisdoc)) {
            m_hooks.sesame();
        } else {
            thisdoc.clear();
            m_s.desktop.beep();
            m_s.dialogs.message(QStringLiteral("Veltrick - Error [-2]\n\n") + kAppWarning + QLatin1Char('\n') +
                                kAppLastPath + prefs.lastdoc);
        }
    }
    if (!m_hooks.operationsFileExists()) {
        m_s.desktop.beep();
        m_hooks.firstRun();
    }
}

void App::Event_EnableMenuItems(MenuItems& m) const
{
    m.on({Item::nineprefs, Item::aboutme, Item::helpon2, Item::open, Item::nusheet});
    m.off({Item::presetJobs});
    if (mywindowcount == 1) {
        m.off({Item::nusheet, Item::open, Item::openOld}); // one timesheet at a time
        m.on({Item::saveAs, Item::presetJobs});
    }
    if (mywindowcount == 0)
        m.off({Item::saveAs});
    m.set(Item::webo, prefs.netlook);
    const bool alt = m_s.desktop.altDown();
    m.setCaption(Item::exportmenu, alt ? Tr::FMExportAlt : Tr::FMExport);
    m.setCaption(Item::zerorow, alt ? Tr::EMResetAll : Tr::EMReset);
    m.setCaption(Item::syncAddressBook, Tr::FMSyncClientsML);
    // The note strip's item tells what choosing it will do.
    m.setCaption(Item::shwnts, prefs.nteon ? Tr::VMHideNotes : Tr::VMShowNotes);
}

MenuItems App::menuState() const
{
    MenuItems items;
    items.on({Item::openOld, Item::saveAs, Item::FileQuit});
    if (m_main)
        Mainwndo::autoEnabled(items);
    Event_EnableMenuItems(items);
    if (m_main)
        m_main->Event_EnableMenuItems(items);
    return items;
}

Mainwndo& App::mainwndo()
{
    if (!m_main) {
        m_main = std::make_unique<Mainwndo>(prefs, m_s);
        emit mainwndoCreated(m_main.get());
        mainwndoEventOpen(*m_main);
    }
    return *m_main;
}

void App::mainwndoEventOpen(Mainwndo& window)
{
    window.myfilename = Mainwndo::kUntitled;
    window.running = false;
    window.notebox.visible = prefs.nteon;
    RestoreWindowSize(window, prefs.winleft, prefs.wintop, prefs.winwidth, prefs.winheight);
    window.clientlist2Width = prefs.cls;
    mywindowcount = 1;
    emit window.focusRequested(1);
    m_hooks.mainwndoOpened(window);
    window.rowcheck();
}

void App::RestoreWindowSize(Mainwndo& window, int left, int top, int width, int height)
{
    const QList<QRect> screens = m_s.desktop.screens();
    for (int i = 0; i < screens.size(); ++i) {
        const QRect& s = screens[i];
        // Both bounds are inclusive: a window exactly on the right or bottom edge is on that screen.
        if (s.left() <= left && s.left() + s.width() >= left && s.top() <= top && s.top() + s.height() >= top) {
            window.geometry = QRect(left, top, width, height);
            windScreen = i;
            emit window.controlsChanged();
            return;
        }
    }
    // As the message says: onto the main display, its size kept where the display is large enough.
    window.geometry = fitOnScreens(QRect(left, top, width, height), screens.mid(0, 1));
    m_s.dialogs.message(kScreenMissing + QStringLiteral("\n\n") + kWindowMoved);
}

bool App::closeMainwndo()
{
    if (!m_main)
        return true;
    if (m_main->Event_CancelClose())
        return false;
    // The stop that the close makes is written too; when the disk refuses it, the user is asked again.
    if (m_main->running && prefs.killQuit) {
        m_main->Allstop();
        if (m_main->Event_CancelClose())
            return false;
    }
    m_main->Event_Close();
    thisdoc.clear();
    mywindowcount = 0;
    // The view may still be inside one of the window's handlers: let it go once the event loop is back.
    m_main.release()->deleteLater();
    emit mainwndoClosed();
    return true;
}

bool App::_FileQuit_Action()
{
    m_hooks.quitting();
    m_hooks.saveprefs(prefs);
    if (!closeMainwndo())
        return false;
    Event_Close();
    return true;
}

void App::Event_Close()
{
    m_hooks.saveprefs(prefs);
    m_hooks.exit();
}

void App::Event_OpenDocument(const QString& path)
{
    if (m_main) {
        if (m_main->boxchange)
            m_main->autosave();
        if (m_main->running)
            m_main->Allstop();
        // Rows that are in no file (it has none yet, or the disk refused the save or the stop) are not
        // dropped unasked.
        if (m_main->boxchange && m_main->Event_CancelClose())
            return;
    }
    thisdoc = path;
    m_hooks.sesame();
}

void App::Event_UnhandledException(int code, const QString& what)
{
    Q_UNUSED(what);
    m_s.desktop.beep();
    m_s.dialogs.message(unhandledText(code, QStringLiteral(VELTRICK_SUPPORT_ADDRESS)));
}

QString App::unhandledText(int code, const QString& supportAddress)
{
    const QString head = QStringLiteral("Veltrick - Error [") + QString::number(code) + QStringLiteral("]\n\n");
    if (supportAddress.isEmpty())
        return head + kAppUnhandledExecption + QStringLiteral(". (Veltrick ") + kAppVersion + QStringLiteral(")");
    return head + kAppUnhandledExecption + kAppReportTo + supportAddress;
}

} // namespace core

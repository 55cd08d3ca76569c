#pragma once

#include "budgets/ui/presetjobsview.h"
#include "platform/qt/qtplatform.h"
#include "shell/program.h"
#include "shell/ui/statusviews.h"
#include "shell/ui/trayicon.h"

#include <QObject>
#include <QPointer>

#include <utility>
#include <vector>

class QAction;
class QMainWindow;
class QMenuBar;

namespace core::ui
{
class MainwndoView;
}

namespace shell::ui
{

// Teaches the Qt dialogs service the view of every modal window of the program.
void registerViews(platform::qt::QtDialogs& dialogs);

// The running program on screen: the start window, the menus of both windows and the main window's
// view, over the program that holds the logic. Every menu item and key shows the one command state
// and hands its command to the program.
class Shell : public QObject
{
    Q_OBJECT

public:
    inline static const QString kStartHint =
        QStringLiteral("Make a new timesheet, or open one, to start timing your work.");

    explicit Shell(Program& program);
    ~Shell() override;

    // Start-up, then a timesheet named on the command line, if any.
    void start(const QStringList& documents);
    // Another launch asked for these timesheets, or just for the program to come forward.
    void openRequested(const QStringList& paths);

    Program& program() { return m_program; }
    StatusWindowView* strip() const { return m_strip; }
    TrayIcon* tray() const { return m_tray.get(); }
    platform::EventGate& gate() { return m_program.gate(); }
    // The window in front: the main window while a timesheet is open, else the start window.
    QMainWindow* front();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // The start window, built the first time it is wanted: a start that opens a timesheet never is.
    QMainWindow* startWindow();
    // A window's menus are added with their titles, and filled by fillMenus once a window is drawn.
    void addMenus(QMenuBar* bar);
    void fillMenus();
    void applyCommands();
    void editText(core::Item item);
    void showMainwndo(core::Mainwndo* form);
    void closeMainwndoView();
    void applyListFont(const QString& font, int size);
    void showTimesheet();
    void showPresets();

    Program& m_program;
    QMainWindow* m_startWindow = nullptr;
    QPointer<core::ui::MainwndoView> m_view;
    QPointer<QWidget> m_pane;
    QPointer<StatusWindowView> m_strip;
    QPointer<budgets::ui::PresetJobsView> m_presets; // made on first showing, then kept

    std::unique_ptr<TrayIcon> m_tray;
    std::vector<std::pair<core::Item, QPointer<QAction>>> m_actions;
    std::vector<QPointer<QMenuBar>> m_emptyMenuBars;
};

} // namespace shell::ui

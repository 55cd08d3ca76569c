#pragma once

#include "shell/program.h"

#include <QIcon>
#include <QMenu>
#include <QPointer>
#include <QSystemTrayIcon>
#include <QWidget>

class QLabel;
class QPushButton;

namespace shell::ui
{

// The strip on screen: a frameless tool window above all others, dragged by its body, with the job's
// line, the run button and the job-switch menu on the line.
class StatusWindowView : public QWidget
{
    Q_OBJECT

public:
    StatusWindowView(statuswindow& form, core::Mainwndo& window, Program& program);
    ~StatusWindowView() override;

    QLabel* statustext() const { return m_text; }
    QPushButton* StatusRunButton() const { return m_run; }
    void refresh();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void showSwitchMenu(const QPoint& at);

    statuswindow& m_form;
    QPointer<statuswindow> m_formAlive; // the form may go first, with the timesheet window
    core::Mainwndo& m_window;
    Program& m_program;
    QLabel* m_text;
    QPushButton* m_run;
    QPoint m_grab; // where the body was taken, while it is dragged
    bool m_dragging = false;
};

// The tray item on screen; where the desktop has no tray it stays hidden and nothing else changes.
class TrayIcon : public QObject
{
    Q_OBJECT

public:
    TrayIcon(VLKMenulet& form, Program& program, QObject* parent = nullptr);

    // The icon of a state: a clock on a dot of the state's colour, clear at 22 pixels.
    static QIcon drawIcon(VLKMenulet::Image image);
    QSystemTrayIcon& icon() { return m_icon; }
    QMenu& menu() { return m_menu; }
    void refresh();

private:
    VLKMenulet& m_form;
    Program& m_program;
    QSystemTrayIcon m_icon;
    QMenu m_menu;
    bool m_menuOpen = false;
};

} // namespace shell::ui

#pragma once

#include "shell/program.h"

#include <QPointer>
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
    // `beside` is the timesheet window, which the strip stands beside until the user moves it.
    StatusWindowView(statuswindow& form, core::Mainwndo& window, Program& program, QWidget* beside);
    ~StatusWindowView() override;

    QLabel* statustext() const { return m_text; }
    QPushButton* StatusRunButton() const { return m_run; }
    void refresh();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showSwitchMenu(const QPoint& at);
    QPoint place() const; // of its top left corner on the screens of now

    statuswindow& m_form;
    QPointer<statuswindow> m_formAlive; // the form may go first, with the timesheet window
    core::Mainwndo& m_window;
    Program& m_program;
    QPointer<QWidget> m_beside;
    QLabel* m_text;
    QPushButton* m_run;
    QPoint m_grab; // where the body was taken, while it is dragged
    bool m_dragging = false;
};

} // namespace shell::ui

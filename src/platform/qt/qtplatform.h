#pragma once

#include "platform/desktop.h"
#include "platform/dialogs.h"
#include "platform/qt/desktopactivity.h"
#include "platform/timer.h"

#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <map>

namespace platform::qt
{

// A QTimer behind the timer interface; a one-shot turns itself off before its action runs.
class QtTimer : public Timer
{
public:
    explicit QtTimer(int periodMs);
    void setMode(Mode mode) override;
    Mode mode() const override { return m_mode; }
    int period() const override { return m_timer.interval(); }

private:
    QTimer m_timer;
    Mode m_mode = Off;
};

class QtTimerFactory : public TimerFactory
{
public:
    std::unique_ptr<Timer> create(int periodMs) override { return std::make_unique<QtTimer>(periodMs); }
};

// Message boxes, questions and file choosers as Qt dialogs, and the program's modal windows through
// views registered by name.
class QtDialogs : public Dialogs
{
public:
    using ViewRunner = std::function<void(ModalForm&, QWidget* parent)>;

    void message(const QString& text) override;
    Answer ask(const Question& question) override;
    void showModal(ModalForm& form) override;
    QString saveFile(const QString& title, const QString& prompt, const QString& dir, const QString& suggestedName,
                     const QString& filter) override;
    QString openFile(const QString& title, const QString& dir, const QString& filter) override;
    bool print(const Report& report) override;

    void registerView(const QString& formName, ViewRunner runner) { m_views[formName] = std::move(runner); }

private:
    static QWidget* parentWindow();
    std::map<QString, ViewRunner> m_views;
};

class QtDesktop : public Desktop
{
public:
    void beep() override;
    bool ctrlDown() const override;
    bool altDown() const override;
    QPoint mousePosition() const override;
    QList<QRect> screens() const override;
    bool openUrl(const QString& url) override;
    void processEvents() override;
    bool darkAppearance() const override;
    ActivityProbe& activity() override { return m_activity; }

private:
    DesktopActivity m_activity;
};

// Keeps a tool window off the task bar and the pager. On X11 it asks with _NET_WM_STATE_SKIP_TASKBAR and
// _SKIP_PAGER before the window is first mapped (Qt keeps states it did not set itself); Wayland
// compositors list no tool windows anyway.
void keepOffTaskbar(QWidget& window);

} // namespace platform::qt

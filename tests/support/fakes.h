#pragma once

#include "platform/clock.h"
#include "platform/desktop.h"
#include "platform/dialogs.h"
#include "platform/notifier.h"
#include "platform/timer.h"

#include <QStringList>

#include <deque>
#include <functional>
#include <utility>
#include <vector>

namespace testing
{

// A clock that stands still until the test moves it.
class FakeClock : public platform::Clock
{
public:
    QDateTime now() const override { return m_now; }
    void set(const QDateTime& now) { m_now = now; }
    void set(int y, int mo, int d, int h, int mi, int s = 0) { m_now = QDateTime(QDate(y, mo, d), QTime(h, mi, s)); }
    void advanceMinutes(int minutes) { m_now = m_now.addSecs(60LL * minutes); }

private:
    QDateTime m_now{QDate(2026, 11, 22), QTime(9, 0)};
};

class FakeTimer : public platform::Timer
{
public:
    explicit FakeTimer(int period) : m_period(period) {}
    void setMode(Mode mode) override { m_mode = mode; }
    Mode mode() const override { return m_mode; }
    int period() const override { return m_period; }

    // Fires as the event loop would: a one-shot timer turns itself off first.
    void fire()
    {
        if (m_mode == Off)
            return;
        if (m_mode == Single)
            m_mode = Off;
        if (action)
            action();
    }

private:
    int m_period;
    Mode m_mode = Off;
};

// Hands out fake timers and keeps them, in creation order, for the test to fire.
class FakeTimers : public platform::TimerFactory
{
public:
    std::unique_ptr<platform::Timer> create(int periodMs) override;
    std::vector<FakeTimer*> made;
};

// Scripted answers, in order. A question, modal window or file chooser that the script did not expect
// is recorded as an error; the test's cleanup checks that there were none.
class ScriptedDialogs : public platform::Dialogs
{
public:
    void message(const QString& text) override { messages << text; }
    platform::Answer ask(const platform::Question& question) override;
    void showModal(platform::ModalForm& form) override;
    QString saveFile(const QString& title, const QString&, const QString&, const QString&, const QString&) override
    {
        return nextFile(title);
    }
    QString openFile(const QString& title, const QString& dir, const QString&) override
    {
        openedIn = dir;
        return nextFile(title);
    }
    bool print(const platform::Report& report) override
    {
        printed << report;
        return true;
    }

    void expectAnswer(platform::Answer answer) { m_answers.push_back(answer); }
    // The handler plays the user in the named window: it ticks boxes and sets ButtonPressed.
    void expectModal(const QString& formName, std::function<void(platform::ModalForm&)> handler)
    {
        m_modals.push_back({formName, std::move(handler)});
    }
    void expectFile(const QString& path) { m_files.push_back(path); }
    // Runs while a question waits for its answer: what a kill at that moment would leave.
    std::function<void()> whileAsking;
    bool scriptDone() const { return m_answers.empty() && m_modals.empty() && m_files.empty(); }

    QStringList messages;
    QString openedIn; // where the last open chooser started
    QList<platform::Question> questions;
    QStringList modalsShown;
    QList<platform::Report> printed;
    QStringList errors;

private:
    QString nextFile(const QString& title);

    std::deque<platform::Answer> m_answers;
    std::deque<std::pair<QString, std::function<void(platform::ModalForm&)>>> m_modals;
    std::deque<QString> m_files;
};

// Input as the test plays it: `input` is the answer of the next question, and is spent by it.
class FakeActivity : public platform::ActivityProbe
{
public:
    Answer inputSinceLastCheck() override
    {
        ++checks;
        if (!canTell)
            return Answer::Unknown;
        return std::exchange(input, false) ? Answer::Input : Answer::NoInput;
    }
    void restart() override
    {
        input = false;
        ++restarts;
    }
    bool available() override { return canTell; }

    bool input = false, canTell = true;
    int checks = 0, restarts = 0;
};

class FakeDesktop : public platform::Desktop
{
public:
    void beep() override { ++beeps; }
    bool ctrlDown() const override { return ctrl; }
    bool altDown() const override { return alt; }
    QPoint mousePosition() const override { return mouse; }
    QList<QRect> screens() const override { return screenList; }
    bool openUrl(const QString& url) override
    {
        urls << url;
        return true;
    }
    void processEvents() override
    {
        ++yields;
        if (onYield)
            onYield();
    }
    int yieldSliceMs() const override { return sliceMs; }
    bool darkAppearance() const override { return dark; }
    platform::ActivityProbe& activity() override { return probe; }

    // What arrives while a walk has yielded: a test posts events here to see that they wait.
    std::function<void()> onYield;
    int sliceMs = 10, beeps = 0, yields = 0;
    bool ctrl = false, alt = false, dark = false;
    QPoint mouse;
    FakeActivity probe;
    QList<QRect> screenList{QRect(0, 0, 1920, 1080)};
    QStringList urls;
};

// Notices kept in a list; with `available` off the desktop has no notice service.
class FakeNotifier : public platform::Notifier
{
public:
    unsigned notify(const QString& title, const QString& body) override
    {
        if (!available)
            return 0;
        shown << title + QLatin1Char('|') + body;
        return unsigned(shown.size());
    }
    void withdraw(unsigned id) override { withdrawn << id; }

    bool available = true;
    QStringList shown;
    QList<unsigned> withdrawn;
};

} // namespace testing

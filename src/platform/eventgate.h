#pragma once

#include <QObject>
#include <QPointer>

#include <deque>
#include <exception>
#include <functional>

namespace platform
{

// Runs the events that may change rows one at a time. An event that arrives while another is under way
// (a long walk has yielded to the event loop, or a modal window runs its own loop) waits, and runs when
// the outermost event has ended, in the order of arrival. One whose owner has gone by then is dropped.
class EventGate
{
public:
    // Marks an event under way for its lifetime; the waiting events run when the outermost one ends.
    class Scope
    {
    public:
        explicit Scope(EventGate& gate) : m_gate(gate), m_exceptions(std::uncaught_exceptions()) { ++m_gate.m_depth; }
        ~Scope()
        {
            // While an error unwinds the stack nothing more runs; the waiting events go with the next one.
            if (--m_gate.m_depth == 0 && std::uncaught_exceptions() == m_exceptions)
                m_gate.drain();
        }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        EventGate& m_gate;
        int m_exceptions;
    };

    bool busy() const { return m_depth > 0; }

    // Runs the event now when nothing is under way, otherwise once the event under way has ended.
    // A null owner means the event belongs to no object and always runs.
    void post(const QObject* owner, std::function<void()> event)
    {
        m_waiting.push_back({owner, owner != nullptr, std::move(event)});
        if (!busy())
            Scope scope(*this);
    }

    // Called when the gate falls quiet after running events, so that what shows the state can follow.
    std::function<void()> settled;

private:
    struct Waiting
    {
        QPointer<const QObject> owner;
        bool owned = false;
        std::function<void()> event;
    };

    void drain()
    {
        bool ran = false;
        while (!m_waiting.empty()) {
            Waiting next = std::move(m_waiting.front());
            m_waiting.pop_front();
            if (next.owned && next.owner.isNull())
                continue;
            ++m_depth;
            struct Leave
            {
                int& depth;
                ~Leave() { --depth; }
            } leave{m_depth};
            next.event();
            ran = true;
        }
        if (ran && settled)
            settled();
    }

    int m_depth = 0;
    std::deque<Waiting> m_waiting;
};

} // namespace platform

#pragma once

#include "platform/desktop.h"

#include <QElapsedTimer>

namespace platform
{

// Yields to the event loop from inside a long walk, but only when about 10 ms of work have passed,
// so that 100,000 rows cost a handful of yields instead of 100,000.
class YieldGate
{
public:
    explicit YieldGate(Desktop& desktop) : m_desktop(desktop) { m_timer.start(); }

    void step()
    {
        if (m_timer.elapsed() >= kSliceMs) {
            m_desktop.processEvents();
            m_timer.restart();
        }
    }

private:
    static constexpr qint64 kSliceMs = 10;
    Desktop& m_desktop;
    QElapsedTimer m_timer;
};

} // namespace platform

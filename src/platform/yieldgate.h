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
    explicit YieldGate(Desktop& desktop)
        : m_desktop(desktop), m_sliceMs(desktop.yieldSliceMs()), m_rowsPerLook(m_sliceMs > 0 ? kRowsPerLook : 1)
    {
        m_timer.start();
    }

    void step()
    {
        // Reading the clock costs more than a row of most walks, so look only every few rows.
        if (++m_steps % m_rowsPerLook != 0)
            return;
        if (m_timer.elapsed() >= m_sliceMs) {
            m_desktop.processEvents();
            m_timer.restart();
        }
    }

private:
    static constexpr unsigned kRowsPerLook = 256;
    unsigned m_steps = 0;
    Desktop& m_desktop;
    qint64 m_sliceMs;
    unsigned m_rowsPerLook;
    QElapsedTimer m_timer;
};

} // namespace platform

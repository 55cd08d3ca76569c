#pragma once

#include "platform/activity.h"

#include <QList>
#include <QPoint>
#include <QRect>
#include <QString>

namespace platform
{

// The small services of the desktop that the logic asks for: beep, keys, pointer, screens, browser.
class Desktop
{
public:
    virtual ~Desktop() = default;
    virtual void beep() = 0;
    virtual bool ctrlDown() const = 0;
    virtual bool altDown() const = 0;
    virtual QPoint mousePosition() const = 0;
    // Available geometry of each screen, the main screen first.
    virtual QList<QRect> screens() const = 0;
    virtual bool openUrl(const QString& url) = 0;
    // Lets the interface repaint and timers fire in the middle of a long walk.
    virtual void processEvents() = 0;
    // How long a walk works between two yields; zero yields at every row.
    virtual int yieldSliceMs() const { return 10; }
    // The desktop's appearance is dark (light text on dark windows).
    virtual bool darkAppearance() const { return false; }
    // Keyboard and pointer input, for the idle warning.
    virtual ActivityProbe& activity() = 0;
};

} // namespace platform

#include "core/ui/onscreen.h"

#include "core/screenfit.h"

#include <QGuiApplication>
#include <QMargins>
#include <QScreen>
#include <QWidget>

namespace core::ui
{

namespace
{

// A frame as the common window managers draw it: a title bar above, thin borders elsewhere.
const QMargins kFrame(4, 32, 4, 4);

} // namespace

QRect frameOf(const QWidget& window)
{
    const QRect frame = window.frameGeometry();
    return frame == window.geometry() ? frame.marginsAdded(kFrame) : frame;
}

QRect onScreen(const QRect& wanted, bool decorated)
{
    QList<QRect> areas;
    for (const QScreen* screen : QGuiApplication::screens())
        areas << (decorated ? screen->availableGeometry().marginsRemoved(kFrame) : screen->availableGeometry());
    return fitOnScreens(wanted, areas);
}

} // namespace core::ui

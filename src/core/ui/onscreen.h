#pragma once

#include <QRect>

class QWidget;

namespace core::ui
{

// Where a window wanted at `wanted` goes on the screens of now (fitOnScreens over their available
// areas). A decorated window keeps room for the window manager's frame around it, which is not known
// before the window is first shown: its title bar, above all, stays on the screen.
QRect onScreen(const QRect& wanted, bool decorated);

// A window's frame on the screen: as the window manager drew it, or, until the toolkit knows it (it
// learns it some time after the window is shown, and tells no one), as a frame is commonly drawn.
QRect frameOf(const QWidget& window);

} // namespace core::ui

#pragma once

#include <QList>
#include <QRect>

namespace core
{

// A window's place brought onto the screens of now: a place that one screen shows whole stays as it
// is; otherwise the window goes onto the screen that shows most of it (the nearest one when none shows
// any), shrunk to that screen where it is larger, and moved no further than it must. Screens that went
// away, or a smaller one, never leave a window's buttons out of reach.
QRect fitOnScreens(const QRect& wanted, const QList<QRect>& screens);

} // namespace core

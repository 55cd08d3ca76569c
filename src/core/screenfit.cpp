#include "core/screenfit.h"

#include <algorithm>
#include <limits>

namespace core
{

namespace
{

qint64 shownArea(const QRect& screen, const QRect& window)
{
    const QRect shown = screen.intersected(window);
    return shown.isEmpty() ? 0 : qint64(shown.width()) * shown.height();
}

// The squared distance from the window's centre to the nearest point of the screen.
qint64 distance(const QRect& screen, const QRect& window)
{
    const QPoint centre = window.center();
    const qint64 dx = centre.x() - std::clamp(centre.x(), screen.left(), screen.right());
    const qint64 dy = centre.y() - std::clamp(centre.y(), screen.top(), screen.bottom());
    return dx * dx + dy * dy;
}

} // namespace

QRect fitOnScreens(const QRect& wanted, const QList<QRect>& screens)
{
    if (screens.isEmpty() || wanted.isEmpty())
        return wanted;
    const QRect* best = nullptr;
    qint64 bestArea = -1;
    qint64 bestDistance = std::numeric_limits<qint64>::max();
    for (const QRect& screen : screens) {
        if (screen.contains(wanted))
            return wanted;
        const qint64 area = shownArea(screen, wanted);
        const qint64 away = distance(screen, wanted);
        if (area > bestArea || (area == bestArea && away < bestDistance)) {
            best = &screen;
            bestArea = area;
            bestDistance = away;
        }
    }
    const QSize size = wanted.size().boundedTo(best->size());
    const int left = std::clamp(wanted.left(), best->left(), best->left() + best->width() - size.width());
    const int top = std::clamp(wanted.top(), best->top(), best->top() + best->height() - size.height());
    return QRect(QPoint(left, top), size);
}

} // namespace core

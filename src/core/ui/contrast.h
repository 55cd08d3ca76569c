#pragma once

#include <QColor>
#include <QHash>
#include <QPalette>

namespace core::ui
{

// The least contrast a text keeps against its background, light or dark appearance alike.
inline constexpr double kMinContrast = 4.5;

// The contrast ratio of two colours, from 1 (the same) to 21 (black on white): their relative
// luminances from linear sRGB, each plus 0.05, the lighter over the darker.
double contrastRatio(const QColor& a, const QColor& b);

// `colour` where it keeps kMinContrast against `against`; else the nearest shade of it that does: the
// same hue and saturation, the lightness moved just as far as needed, up or down, whichever is nearer.
QColor readableOn(const QColor& colour, const QColor& against);

// readableOn remembered: a list paints the same few pairs of colours cell after cell, and a shade found by
// walking the lightness costs a hundred luminances.
class ReadableColours
{
public:
    QColor operator()(const QColor& colour, const QColor& against) const;

private:
    mutable QHash<quint64, QRgb> m_known;
};

// Whether a palette is the desktop's dark appearance: its window colour darker than mid grey.
bool isDark(const QPalette& palette);

// `palette` with the highlight of every colour group shaded until the highlighted text reads on it.
QPalette withReadableHighlight(QPalette palette);

} // namespace core::ui

#pragma once

#include <QColor>
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

// `palette` with the highlight of every colour group shaded until the highlighted text reads on it.
QPalette withReadableHighlight(QPalette palette);

} // namespace core::ui

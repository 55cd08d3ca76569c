#include "core/ui/contrast.h"

#include <algorithm>
#include <cmath>

namespace core::ui
{

namespace
{
double luminance(const QColor& colour)
{
    const auto linear = [](double v) { return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4); };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}
} // namespace

double contrastRatio(const QColor& a, const QColor& b)
{
    const double la = luminance(a), lb = luminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

QColor readableOn(const QColor& colour, const QColor& against)
{
    if (contrastRatio(colour, against) >= kMinContrast)
        return colour;
    const QColor hsl = colour.toHsl();
    // The walk ends at the latest on black or white, one of which reads against any colour.
    for (int step = 1;; ++step) {
        for (const int lightness : {hsl.lightness() - step, hsl.lightness() + step}) {
            if (lightness < 0 || lightness > 255)
                continue;
            // Measured as painted, in 8 bits a channel.
            const QColor shade(QColor::fromHsl(hsl.hslHue(), hsl.hslSaturation(), lightness).rgb());
            if (contrastRatio(shade, against) >= kMinContrast)
                return shade;
        }
    }
}

QColor ReadableColours::operator()(const QColor& colour, const QColor& against) const
{
    const quint64 pair = quint64(colour.rgba()) << 32 | against.rgba();
    const auto known = m_known.constFind(pair);
    if (known != m_known.cend())
        return QColor::fromRgba(*known);
    const QColor shown = readableOn(colour, against);
    m_known.insert(pair, shown.rgba());
    return shown;
}

bool isDark(const QPalette& palette)
{
    return palette.color(QPalette::Window).lightness() < 128;
}

QPalette withReadableHighlight(QPalette palette)
{
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
        palette.setColor(
            group, QPalette::Highlight,
            readableOn(palette.color(group, QPalette::Highlight), palette.color(group, QPalette::HighlightedText)));
    return palette;
}

} // namespace core::ui

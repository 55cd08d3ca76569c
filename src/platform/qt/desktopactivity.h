#pragma once

#include "platform/activity.h"

#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace platform::qt
{

// Keyboard and pointer input as the desktop reports it. Each source tells the time since the last input;
// there was input since the last question when that time is shorter than the time between the two
// questions. The first source that answers is kept; when it stops answering, the others are asked again.
class DesktopActivity : public ActivityProbe
{
public:
    struct Source
    {
        QString name;
        // Milliseconds since the last input, or nothing when the source cannot tell.
        std::function<std::optional<qint64>()> idleMs;
    };

    // The X server's screen saver counter, with the pointer position: under X11, GNOME or not.
    static Source x11();
    // GNOME's idle monitor, under Wayland and X11.
    static Source mutter();
    // The screen saver service of KDE Plasma and others (milliseconds, as Plasma counts them).
    static Source screenSaver();
    // The idle notices of Wayland compositors that offer them (wlroots ones among others).
    static Source wayland();
    // Every source of this desktop, in the order they are asked.
    static std::vector<Source> desktopSources() { return {x11(), mutter(), screenSaver(), wayland()}; }

    // `monotonicMs` is the clock between questions; by default the system's monotonic clock.
    explicit DesktopActivity(std::vector<Source> sources = desktopSources(), std::function<qint64()> monotonicMs = {});

    Answer inputSinceLastCheck() override;
    void restart() override;
    bool available() override;
    // The source that answered last, or empty.
    QString sourceName() const;

private:
    std::optional<qint64> idleMs();

    std::vector<Source> m_sources;
    std::function<qint64()> m_now;
    int m_chosen = -1;
    qint64 m_last = 0;
};

} // namespace platform::qt

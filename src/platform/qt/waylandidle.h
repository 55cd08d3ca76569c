#pragma once

#include <QElapsedTimer>

#include <optional>

struct wl_display;
struct wl_registry;
struct wl_seat;
struct ext_idle_notifier_v1;
struct ext_idle_notification_v1;

namespace platform::qt
{

// The compositor's idle notice of the Wayland session (the idle-notify protocol), on a connection of
// its own: the compositor says when the seat has had no input for a second, and when input resumes.
// Nothing is read between questions; each question reads what the compositor has said since.
class WaylandIdle
{
public:
    // Input that ends a still second is seen; finer than that the question once a minute needs not be.
    static constexpr unsigned kNoticeMs = 1000;

    WaylandIdle() = default;
    ~WaylandIdle();
    WaylandIdle(const WaylandIdle&) = delete;
    WaylandIdle& operator=(const WaylandIdle&) = delete;

    // Milliseconds since the last input, or nothing outside a Wayland session or where the compositor
    // offers no idle notices.
    std::optional<qint64> idleMs();

private:
    bool connect();
    void disconnect();

    wl_display* m_display = nullptr;
    wl_registry* m_registry = nullptr;
    wl_seat* m_seat = nullptr;
    ext_idle_notifier_v1* m_notifier = nullptr;
    ext_idle_notification_v1* m_notification = nullptr;
    bool m_offersNoNotices = false; // this session's compositor has none: it is not asked again
    bool m_idle = false;
    qint64 m_idledAt = 0;
    QElapsedTimer m_clock;

    friend struct WaylandIdleListeners;
};

} // namespace platform::qt

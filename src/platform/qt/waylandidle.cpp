#include "platform/qt/waylandidle.h"

#include <QByteArray>
#include <QtGlobal>

#include "ext-idle-notify-v1-client.h"
#include <wayland-client.h>

#include <cstring>

namespace platform::qt
{

struct WaylandIdleListeners
{
    static void global(void* data, wl_registry* registry, uint32_t name, const char* interface, uint32_t)
    {
        auto* self = static_cast<WaylandIdle*>(data);
        if (!self->m_seat && std::strcmp(interface, wl_seat_interface.name) == 0)
            self->m_seat = static_cast<wl_seat*>(wl_registry_bind(registry, name, &wl_seat_interface, 1));
        else if (!self->m_notifier && std::strcmp(interface, ext_idle_notifier_v1_interface.name) == 0)
            self->m_notifier = static_cast<ext_idle_notifier_v1*>(
                wl_registry_bind(registry, name, &ext_idle_notifier_v1_interface, 1));
    }
    static void globalRemove(void*, wl_registry*, uint32_t) {}

    static void idled(void* data, ext_idle_notification_v1*)
    {
        auto* self = static_cast<WaylandIdle*>(data);
        self->m_idle = true;
        self->m_idledAt = self->m_clock.elapsed();
    }
    static void resumed(void* data, ext_idle_notification_v1*) { static_cast<WaylandIdle*>(data)->m_idle = false; }

    static constexpr wl_registry_listener registry{global, globalRemove};
    static constexpr ext_idle_notification_v1_listener notification{idled, resumed};
};

WaylandIdle::~WaylandIdle()
{
    disconnect();
}

bool WaylandIdle::connect()
{
    // Only a Wayland session: elsewhere a compositor socket found by its default name is not ours.
    if (qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") || m_offersNoNotices)
        return false;
    m_display = wl_display_connect(nullptr);
    if (!m_display)
        return false;
    m_registry = wl_display_get_registry(m_display);
    wl_registry_add_listener(m_registry, &WaylandIdleListeners::registry, this);
    if (wl_display_roundtrip(m_display) < 0 || !m_seat || !m_notifier) {
        m_offersNoNotices = m_seat && !m_notifier;
        disconnect();
        return false;
    }
    m_notification = ext_idle_notifier_v1_get_idle_notification(m_notifier, kNoticeMs, m_seat);
    ext_idle_notification_v1_add_listener(m_notification, &WaylandIdleListeners::notification, this);
    m_idle = false;
    m_clock.start();
    return true;
}

void WaylandIdle::disconnect()
{
    if (!m_display)
        return;
    if (m_notification)
        ext_idle_notification_v1_destroy(m_notification);
    if (m_notifier)
        ext_idle_notifier_v1_destroy(m_notifier);
    if (m_seat)
        wl_seat_destroy(m_seat);
    if (m_registry)
        wl_registry_destroy(m_registry);
    wl_display_disconnect(m_display);
    m_display = nullptr;
    m_registry = nullptr;
    m_seat = nullptr;
    m_notifier = nullptr;
    m_notification = nullptr;
}

std::optional<qint64> WaylandIdle::idleMs()
{
    if (!m_display && !connect())
        return std::nullopt;
    // Takes in, in order, every notice sent since the last question.
    if (wl_display_roundtrip(m_display) < 0) {
        disconnect(); // the compositor went away; the next question tries again
        return std::nullopt;
    }
    // Idle: the last input came a notice's span before the notice. Not idle: within the last span.
    return m_idle ? m_clock.elapsed() - m_idledAt + kNoticeMs : 0;
}

} // namespace platform::qt

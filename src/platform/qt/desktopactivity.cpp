#include "platform/qt/desktopactivity.h"

#include "platform/qt/waylandidle.h"

#include <QCursor>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QPoint>
#include <QtGui/qguiapplication_platform.h>

#include <xcb/screensaver.h>

#include <cstdlib>
#include <memory>

namespace platform::qt
{

namespace
{

// A service that takes longer is taken as none: the question comes once a minute, on the interface's
// thread.
constexpr int kCallTimeoutMs = 250;

template <typename T>
std::optional<qint64> callIdle(const QString& service, const QString& path, const QString& interface,
                               const QString& method)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return std::nullopt;
    const QDBusMessage call = QDBusMessage::createMethodCall(service, path, interface, method);
    const QDBusReply<T> reply = bus.call(call, QDBus::Block, kCallTimeoutMs);
    if (!reply.isValid())
        return std::nullopt;
    return qint64(reply.value());
}

} // namespace

DesktopActivity::Source DesktopActivity::x11()
{
    // The pointer position as last seen: a move counts as input even where the counter missed it.
    auto lastPointer = std::make_shared<std::optional<QPoint>>();
    return {QStringLiteral("X11"), [lastPointer]() -> std::optional<qint64> {
                // In a Wayland session the X server is the compositor's helper, and its counter misses
                // all input to Wayland windows: it would warn while the user works.
                if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
                    return std::nullopt;
                auto* x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
                xcb_connection_t* connection = x11 ? x11->connection() : nullptr;
                if (!connection)
                    return std::nullopt;
                const xcb_query_extension_reply_t* extension = xcb_get_extension_data(connection, &xcb_screensaver_id);
                if (!extension || !extension->present)
                    return std::nullopt;
                const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
                xcb_screensaver_query_info_reply_t* info =
                    xcb_screensaver_query_info_reply(connection, xcb_screensaver_query_info(connection, root), nullptr);
                if (!info)
                    return std::nullopt;
                qint64 idle = info->ms_since_user_input;
                std::free(info);
                const QPoint pointer = QCursor::pos();
                if (lastPointer->has_value() && **lastPointer != pointer)
                    idle = 0;
                *lastPointer = pointer;
                return idle;
            }};
}

DesktopActivity::Source DesktopActivity::mutter()
{
    return {QStringLiteral("GNOME"), [] {
                return callIdle<quint64>(QStringLiteral("org.gnome.Mutter.IdleMonitor"),
                                         QStringLiteral("/org/gnome/Mutter/IdleMonitor/Core"),
                                         QStringLiteral("org.gnome.Mutter.IdleMonitor"), QStringLiteral("GetIdletime"));
            }};
}

DesktopActivity::Source DesktopActivity::screenSaver()
{
    return {QStringLiteral("ScreenSaver"), [] {
                return callIdle<uint>(
                    QStringLiteral("org.freedesktop.ScreenSaver"), QStringLiteral("/org/freedesktop/ScreenSaver"),
                    QStringLiteral("org.freedesktop.ScreenSaver"), QStringLiteral("GetSessionIdleTime"));
            }};
}

DesktopActivity::Source DesktopActivity::wayland()
{
    auto idle = std::make_shared<WaylandIdle>();
    return {QStringLiteral("Wayland"), [idle] { return idle->idleMs(); }};
}

DesktopActivity::DesktopActivity(std::vector<Source> sources, std::function<qint64()> monotonicMs)
    : m_sources(std::move(sources)), m_now(std::move(monotonicMs))
{
    if (!m_now) {
        auto timer = std::make_shared<QElapsedTimer>();
        timer->start();
        m_now = [timer] { return timer->elapsed(); };
    }
    m_last = m_now();
}

std::optional<qint64> DesktopActivity::idleMs()
{
    if (m_chosen >= 0)
        if (std::optional<qint64> idle = m_sources[size_t(m_chosen)].idleMs())
            return idle;
    m_chosen = -1;
    for (size_t i = 0; i < m_sources.size(); ++i) {
        if (std::optional<qint64> idle = m_sources[i].idleMs()) {
            m_chosen = int(i);
            return idle;
        }
    }
    return std::nullopt;
}

ActivityProbe::Answer DesktopActivity::inputSinceLastCheck()
{
    const qint64 now = m_now();
    const qint64 since = now - m_last;
    m_last = now;
    const std::optional<qint64> idle = idleMs();
    if (!idle)
        return Answer::Unknown;
    return *idle < since ? Answer::Input : Answer::NoInput;
}

void DesktopActivity::restart()
{
    m_last = m_now();
    idleMs(); // the pointer as it is now is the starting point
}

bool DesktopActivity::available()
{
    return idleMs().has_value();
}

QString DesktopActivity::sourceName() const
{
    return m_chosen >= 0 ? m_sources[size_t(m_chosen)].name : QString();
}

} // namespace platform::qt

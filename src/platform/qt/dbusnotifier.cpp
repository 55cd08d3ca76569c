#include "platform/qt/dbusnotifier.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QVariantMap>

namespace platform::qt
{

namespace
{
const QString kService = QStringLiteral("org.freedesktop.Notifications");
const QString kPath = QStringLiteral("/org/freedesktop/Notifications");
const QString kDefaultAction = QStringLiteral("default");
// A notice service that does not answer in this time is taken as none.
constexpr int kCallTimeoutMs = 2000;
} // namespace

unsigned DBusNotifier::notify(const QString& title, const QString& body)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return 0;
    // Clicks are listened for from the first notice on: connecting costs round trips to the bus, which
    // a program that never shows a notice should not wait for as it starts.
    if (!m_listening)
        m_listening = bus.connect(kService, kPath, kService, QStringLiteral("ActionInvoked"), this,
                                  SLOT(onActionInvoked(uint, QString)));
    QDBusMessage call = QDBusMessage::createMethodCall(kService, kPath, kService, QStringLiteral("Notify"));
    call << kAppName << uint(0) << kAppIcon << title << body << QStringList{kDefaultAction, title} << QVariantMap()
         << int(-1);
    const QDBusReply<uint> reply = bus.call(call, QDBus::Block, kCallTimeoutMs);
    return reply.isValid() ? reply.value() : 0;
}

void DBusNotifier::withdraw(unsigned id)
{
    QDBusMessage call = QDBusMessage::createMethodCall(kService, kPath, kService, QStringLiteral("CloseNotification"));
    call << uint(id);
    QDBusConnection::sessionBus().asyncCall(call);
}

void DBusNotifier::onActionInvoked(uint id, const QString& action)
{
    if (action == kDefaultAction && activated)
        activated(id);
}

} // namespace platform::qt

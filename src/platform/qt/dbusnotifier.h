#pragma once

#include "platform/notifier.h"

#include <QObject>

namespace platform::qt
{

// Notices through the desktop's notification service (org.freedesktop.Notifications) on the session
// bus, with a "default" action: the click on a notice comes back as its ActionInvoked.
class DBusNotifier : public QObject, public Notifier
{
    Q_OBJECT

public:
    inline static const QString kAppName = QStringLiteral("Veltrick");
    inline static const QString kAppIcon = QStringLiteral("veltrick");

    unsigned notify(const QString& title, const QString& body) override;
    void withdraw(unsigned id) override;

private slots:
    void onActionInvoked(uint id, const QString& action);

private:
    bool m_listening = false;
};

} // namespace platform::qt

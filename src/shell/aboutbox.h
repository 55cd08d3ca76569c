#pragma once

#include "platform/dialogs.h"

#include <QString>

namespace shell
{

// The About window: the program's name and version, and what it runs on.
class Aboutbox : public platform::ModalForm
{
public:
    inline static const QString kTitle = QStringLiteral("About Veltrick");
    inline static const QString kTagline = QStringLiteral("A timesheet for the hours you bill.");
    inline static const QString kQtLabel = QStringLiteral("Qt: ");
    inline static const QString kSystemLabel = QStringLiteral("System: ");
    inline static const QString kNetLinkLabel = QStringLiteral("Net Link: ");
    inline static const QString kNetLinkOff = QStringLiteral("off");

    QString formName() const override { return QStringLiteral("aboutbox"); }

    QString version;
    QString qtVersion;
    QString system;
    QString netLink; // the page's address while the server listens, else kNetLinkOff

    // The lines under the name, in the order shown.
    QStringList details() const
    {
        return {kTagline, kQtLabel + qtVersion, kSystemLabel + system, kNetLinkLabel + netLink};
    }
};

} // namespace shell

#pragma once

#include <QString>

namespace netlink
{

// Texts of the application object around Net Link: the menu item's refusal and the start-up check.
inline const QString kAppNoSheetWeb =
    QStringLiteral("You must have a Timesheet file open to view it in a Web Browser!");
inline const QString kAppStyleSheetFailure = QStringLiteral("Error accessing stylesheet text file.");
// What "View in Web Browser" opens.
inline const QString kWebUrl = QStringLiteral("http://127.0.0.1:2000");

} // namespace netlink

#pragma once

#include "platform/result.h"

#include <QString>

namespace netlink
{

// The page's style sheet, from the program's folder: the build lays out share/ as the install does.
inline const QString kStyleSheetPath = QStringLiteral("../share/veltrick/styleSheet.txt");

// Reads the style sheet into `text`. On failure `text` is empty, so pages still go out
// with an empty style block, and the result carries kAppStyleSheetFailure for the start-up message.
platform::Result loadStyleSheet(const QString& appDir, QString& text);

} // namespace netlink

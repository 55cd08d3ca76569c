#pragma once

#include "platform/result.h"

#include <QString>
#include <QStringList>

namespace netlink
{

inline const QString kStyleSheetName = QStringLiteral("styleSheet.txt");

// Where the page's style sheet may be, best first: beside the executable (the build tree), in
// ../share/veltrick from it (an installed copy), and in the data folder the program was built for.
QStringList styleSheetCandidates(const QString& appDir);

// Reads the first style sheet found into `text`. On failure `text` is empty, so pages still go out
// with an empty style block, and the result carries kAppStyleSheetFailure for the start-up message.
platform::Result loadStyleSheet(const QString& appDir, QString& text);

} // namespace netlink

#pragma once

#include "core/timesheet.h"

#include <QByteArray>
#include <QString>

#include <functional>

namespace netlink
{

// The whole answer to a browser: response line, head with the style sheet, the run marker and the
// rows of ListBox1 as a table. Cells go out exactly as they are held, markup included.
// `running` picks the run marker once, before the first row. `yield` is called after every row so the
// window's clock keeps ticking; the list may change meanwhile, so its count is read afresh each row.
QByteArray buildPage(const core::Timesheet& ListBox1, bool running, const QString& styleSheetTxt,
                     const QString& ipnumber, const std::function<void()>& yield = {});

} // namespace netlink

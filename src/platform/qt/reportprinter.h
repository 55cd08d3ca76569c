#pragma once

#include "platform/report.h"

class QPrinter;

namespace platform::qt
{

// Draws the report on the printer's pages: the heading on the first page, the column headings on every
// page, each row whole on one page with its note under it, the total after the rows, and the user and
// page number at the foot of every page. Long cells and notes wrap. Answers the number of pages.
int paintReport(QPrinter& printer, const Report& report);

} // namespace platform::qt

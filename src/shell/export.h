#pragma once

#include "core/appprefs.h"
#include "core/timesheet.h"
#include "platform/report.h"

#include <QByteArray>
#include <QDate>

#include <optional>
#include <vector>

namespace shell
{

// Which rows a report or an export takes, in list order.
enum class Scope
{
    All,
    JobNumber, // the rows with the selected row's job number
    Date,      // ... date
    Client,    // ... client
    Custom     // the rows the user ticked
};

// The rows of the scope, or nothing when the scope needs a selected row and none is selected. A job
// number, date or client matches as the totals match it: ignoring case.
std::optional<std::vector<int>> chooseRows(const core::Timesheet& list, Scope scope, const QList<int>& ticked = {});

// The export encodings, in the order of the menu and of the setting `xprtEncoding`.
enum class Encoding
{
    MacRoman,
    Utf8,
    Utf16,
    WindowsAnsi
};

// Their names, as the two encoding menus show them.
inline const QStringList kEncodingRows = {QStringLiteral("MacRoman"), QStringLiteral("UTF-8"), QStringLiteral("UTF-16"),
                                          QStringLiteral("Windows (ANSI)")};

// The encoding the setting names; a value out of range is MacRoman.
Encoding exportEncoding(const core::AppPrefs& prefs);

struct ExportOptions
{
    bool xls = true; // an HTML table that spreadsheets open as a sheet; otherwise tab-separated text
    Encoding encoding = Encoding::Utf8;
    bool reportDate = true;
    bool headings = true;
    bool notes = true;
    bool total = true;
    bool blankRow = false;
    bool blankColumn = false;

    static ExportOptions fromPrefs(const core::AppPrefs& prefs);
};

// The export file of the rows. Characters the encoding cannot hold are written as "?" and counted in
// `replaced`. Hours and minutes go out as plain numbers, so that a spreadsheet can sum them.
QByteArray exportBytes(const core::Timesheet& list, const std::vector<int>& rows, const ExportOptions& options,
                       const QString& reportDate, int* replaced = nullptr);

// The printed report of the rows, with its heading, the user and the total.
platform::Report buildReport(const core::Timesheet& list, const std::vector<int>& rows, const core::AppPrefs& prefs,
                             const QString& longDate);

} // namespace shell

#pragma once

#include <QString>

// Texts shared by several windows. Texts that belong to one window live on that window's class.
namespace Tr
{
inline const QString MWStartButtonFs = QStringLiteral("First Start");
inline const QString MWStartButtonSt = QStringLiteral("Start");
inline const QString MWStartButtonStop = QStringLiteral("Stop");
inline const QString MWButtonOK = QStringLiteral("OK");
inline const QString MWButtonCancel = QStringLiteral("Cancel");
inline const QString MWButtonNote = QStringLiteral("Notes:");
inline const QString MWButtonDontSave = QStringLiteral("Don't Save");
inline const QString MWButtonContinue = QStringLiteral("Continue");
inline const QString MWButtonReset = QStringLiteral("Reset");
inline const QString MWButtonNew = QStringLiteral("New");
inline const QString MWButtonPrint = QStringLiteral("Print");
inline const QString SaveMenuText = QStringLiteral("Save");
inline const QString CMStart = QStringLiteral("Start Timer");
inline const QString CMStop = QStringLiteral("Stop Timer");
inline const QString VMShowNotes = QStringLiteral("Show Notes in Timesheet");
inline const QString VMHideNotes = QStringLiteral("Hide Notes in Timesheet");

inline const QString MWDate = QStringLiteral("Date");
inline const QString MWJobNo = QStringLiteral("Job No.");
inline const QString MWProject = QStringLiteral("Project");
inline const QString MWHour = QStringLiteral("H\u2009");
inline const QString MWMin = QStringLiteral("\u2009M");
inline const QString MWOperation = QStringLiteral("Operation");
inline const QString MWClient = QStringLiteral("Client");
inline const QString MWDescription = QStringLiteral("Description");
inline const QString MWClientListf = QStringLiteral("All Clients");
inline const QString MWStatusNoJob = QStringLiteral("-- Veltrick - No Job Selected --");

// Captions of the menus and their items; the context menus of the lists use the same.
inline const QString FileMenuText = QStringLiteral("&File");
inline const QString EditMenuText = QStringLiteral("&Edit");
inline const QString ViewMenuText = QStringLiteral("&View");
inline const QString ControlMenuText = QStringLiteral("&Control");
inline const QString HelpMenuText = QStringLiteral("&Help");
inline const QString FMNewTimesheet = QStringLiteral("New Timesheet...");
inline const QString FMOpenTimesheet = QStringLiteral("Open Timesheet...");
inline const QString FMCloseTimesheet = QStringLiteral("Close Timesheet");
inline const QString FMSwitchTimesheet = QStringLiteral("Close && Total Budgets\u2026");
inline const QString FMOpenOld = QStringLiteral("Convert Older VLK Timesheet\u2026");
inline const QString SaveAsMenuText = QStringLiteral("Save As\u2026");
inline const QString FMPresetJobs = QStringLiteral("Preset Jobs");
inline const QString FMExport = QStringLiteral("Export...");
inline const QString FMExportAlt = QStringLiteral("Export Options...");
inline const QString FMAddClient = QStringLiteral("Add New Client\u2026");
inline const QString FMSyncClients = QStringLiteral("Sync Client List with Address Book");
inline const QString FMSyncClientsML = QStringLiteral("Sync Client List with Contacts");
inline const QString PrintOpsMenuText = QStringLiteral("Print Options\u2026");
inline const QString PrintMenuText = QStringLiteral("Print...");
inline const QString QuitMenuText = QStringLiteral("Quit");
inline const QString EMCut = QStringLiteral("Cut");
inline const QString EMCopy = QStringLiteral("Copy");
inline const QString EMPaste = QStringLiteral("Paste");
inline const QString EMAddJob = QStringLiteral("Add Job...");
inline const QString EMDupeJob = QStringLiteral("Duplicate Job...");
inline const QString EMJobDetails = QStringLiteral("Job Details\u2026");
inline const QString EMJobNotes = QStringLiteral("Job Notes...");
inline const QString EMReset = QStringLiteral("Reset Row...");
inline const QString EMResetAll = QStringLiteral("Reset All Rows...");
inline const QString EMDeleteJob = QStringLiteral("Delete Job...");
inline const QString VMViewInBrowser = QStringLiteral("View in Web Browser");
inline const QString OnlineHelpText = QStringLiteral("Online Help");
inline const QString AboutMenuText = QStringLiteral("About Veltrick");
inline const QString PrefMenuText = QStringLiteral("Preferences...");
// Labels of the job dialog that the two total windows share.
inline const QString TotalTime = QStringLiteral("Time:");
inline const QString DateLabel = QStringLiteral("Date:");

inline const QString MWListTotals = QStringLiteral("List Totals - Time: ");
inline const QString MWListToday = QStringLiteral(", Today: ");
inline const QString MWListTotalsEntries = QStringLiteral(", Entries: ");
inline const QString EMJobTotal = QStringLiteral("Job Total");
inline const QString EMDayTotal = QStringLiteral("Day Total");

inline const QString DupeWinTxt =
    QStringLiteral("You can not add more time to the selected job because it was not created today.\n\n"
                   "Do you want to create another entry for the selected job, and start timing using today's "
                   "date?\r    ");
inline const QString DupeWinDontShow = QStringLiteral("Don't show this dialog again.");

inline const QString MWErrorWriteFail = QStringLiteral("Error - Could not Write Timesheet file!");
inline const QString MWDSWriteError = QStringLiteral("Error Writing File!");
} // namespace Tr

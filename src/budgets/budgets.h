#pragma once

#include "core/mainwndo.h"
#include "platform/desktop.h"
#include "platform/notifier.h"
#include "storage/preset_file.h"

#include <QHash>

#include <functional>

namespace budgets
{

inline const QString kNSUNotifiTitle = QStringLiteral("Budget Information");
inline const QString kNSUNotifiminsleft = QStringLiteral("minutes remaining");
inline const QString kNSUNotifiAlertMsg =
    QStringLiteral("Single Client Selected: You must select All Clients from the Client List before you can edit "
                   "your Preset Jobs List.");

// Hours against budgets: the check of the selected row's job, the walk that checks every job of the
// timesheet, the notice in a job's last hour and the "over" mark at its budget, the closing of the
// timesheet's hours into the closed totals, and the click on a notice.
class Budgets
{
public:
    struct Services
    {
        core::Mainwndo& window;
        storage::PresetJobList& joblst;
        platform::Desktop& desktop;
        platform::Dialogs& dialogs;
        platform::Notifier& notifier;
        std::function<void()> updatestatus;
        // Where the notice goes when the desktop has no notice service: the status line and the tray.
        std::function<void(const QString&)> noticeFallback;
        // The preset window, shown with the row of this job selected.
        std::function<void(const QString&)> showJob;
    };

    explicit Budgets(Services services);

    // The check of the selected row's job, on ListBox1 and on the client's ListBox2.
    void budgetcheck();
    void budgetcheck2();
    // Every job of ListBox1 checked as a walk of the selection over every row would, in one pass: the
    // preset list's active hours and minutes, the marks of the rows, and the notices of the last hour.
    void checkAll();
    // The hours of the open timesheet added into the closed totals.
    void budgetTotalizer();
    // The text of the notice for a job with `minutes` of its active total past the hour.
    static QString noticeText(const QString& job, qint64 minutes);
    // A notice was clicked.
    void Event_DidActivateNotification(unsigned id);

    // Notices delivered in this run, for the tests: their keys and texts.
    QHash<unsigned, QString> delivered;

private:
    void check(core::Timesheet& list);
    void CreateMessage(const QString& job);
    // Writes the job's active total into its preset entries; the answer is the last entry's budget and
    // closed total, or a budget of 0 when the job has no entry.
    std::pair<qint64, qint64> recordActive(const QString& job, qint64 total);
    // Marks the rows of a tracked job "over" or clears the mark; true when a row changed.
    static bool mark(core::Timesheet& list, const QString& job, bool over);

    Services m_s;
};

} // namespace budgets

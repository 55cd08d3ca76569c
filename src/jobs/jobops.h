#pragma once

#include "jobs/jobdialog.h"

namespace jobs
{

// Adding, editing and duplicating rows through the job dialog, with the main window's menu items and
// new-job label that lead there. The lists' double-click, Return and context menu reach the same three
// operations through ListBehaviour::Commands.
class JobOps
{
public:
    explicit JobOps(JobServices services) : m_s(services) {}

    // Up while the job dialog is open, for the windows that refresh its menus.
    bool openFlag = false;
    // The job dialog while it is open, else null.
    specialw* openDialog() const { return m_open; }

    // A new job dated today, for the client picked beside the list.
    void donewjob();
    // The same, with a time already filled in: the idle time that the user is to name a job for.
    void donewjob(const QString& hours, const QString& minutes);
    // The selected row in the dialog, saved back in place.
    void doeditjob();
    // The selected row's job, client, operation and user again, dated today with no time and no note.
    void clone();

    // Entries of the main window.
    void _nujobmenu2_Action() { donewjob(); }
    void njButton2_MouseDown() { donewjob(); }
    void _edjobmenu_Action() { doeditjob(); }
    void _duplicate_Action() { clone(); }

private:
    void runDialog(specialw& dialog);
    // A dialog that saves a new row: dated today, with the add button.
    void newRowToday(specialw& dialog, const QString& title) const;
    // The job, project, user, operation and client of a row.
    static void takeJob(specialw& dialog, const core::JobRow& row);

    JobServices m_s;
    specialw* m_open = nullptr;
};

} // namespace jobs

#include "jobs/jobops.h"

#include "core/timetext.h"

namespace jobs
{

void JobOps::runDialog(specialw& dialog)
{
    m_open = &dialog;
    m_s.dialogs.showModal(dialog);
    dialog.closeWindow(); // however the window went, its timers stop and the open flag falls
    m_open = nullptr;
}

void JobOps::newRowToday(specialw& dialog, const QString& title) const
{
    const QDate today = m_s.clock.now().date();
    dialog.wintitle = title;
    dialog.okjob.visible = true;
    dialog.okjob2.visible = false;
    dialog.dateField = core::shortDate(today);
    dialog.dateDay = specialw::dayCaption(today);
}

void JobOps::takeJob(specialw& dialog, const core::JobRow& row)
{
    dialog.enterjob = row.cell(core::CellJob);
    dialog.enterclient = row.cell(core::CellProject);
    dialog.nmepopup = row.user;
    dialog.popup.caption = row.cell(core::CellOperation);
    dialog.popupclnt.caption = row.cell(core::CellClient);
}

void JobOps::donewjob()
{
    donewjob(QStringLiteral("00"), QStringLiteral("00"));
}

void JobOps::donewjob(const QString& hours, const QString& minutes)
{
    core::Mainwndo& w = m_s.main;
    if (!w.allows(core::Item::nujobmenu2))
        return;
    // The dialog presets the client picked beside the list; "&" doubled, as its menu shows it.
    w.clientnameselected = menuText(w.ListBox2Ctl.visible ? w.LB2ClientName : Tr::MWClientListf);

    specialw dialog(m_s, openFlag);
    dialog.Event_Open();
    newRowToday(dialog, specialw::kWintitle);
    dialog.sphrs = hours;
    dialog.spmin = minutes;
    runDialog(dialog);
}

void JobOps::doeditjob()
{
    const core::Timesheet& list = m_s.main.ListBox1;
    if (!m_s.main.allows(core::Item::edjobmenu))
        return;
    // The dialog opens first, so that the row's user and client replace its defaults.
    specialw dialog(m_s, openFlag);
    dialog.Event_Open();
    const core::JobRow& row = list.selected();
    dialog.wintitle = specialw::kWintitleE;
    dialog.dateField = row.cell(core::CellDate);
    takeJob(dialog, row);
    dialog.sphrs = row.cell(core::CellHours);
    dialog.spmin = row.cell(core::CellMinutes);
    dialog.okjob2.visible = true;
    dialog.okjob.visible = false;
    if (const auto date = core::parseShortDate(dialog.dateField, m_s.clock.now().date()))
        dialog.dateDay = specialw::dayCaption(*date);
    dialog.NotesArea = row.note;
    runDialog(dialog);
}

void JobOps::clone()
{
    const core::Timesheet& list = m_s.main.ListBox1;
    if (!m_s.main.allows(core::Item::duplicate))
        return;
    specialw dialog(m_s, openFlag);
    dialog.Event_Open();
    newRowToday(dialog, specialw::kWintitleD);
    takeJob(dialog, list.selected());
    runDialog(dialog);
}

} // namespace jobs

#include "budgets/budgets.h"

#include "core/app.h"
#include "core/timetext.h"
#include "platform/yieldgate.h"

namespace budgets
{

Budgets::Budgets(Services services) : m_s(std::move(services)) {}

void Budgets::budgetcheck()
{
    check(m_s.window.ListBox1);
}

void Budgets::budgetcheck2()
{
    check(m_s.window.ListBox2);
}

std::pair<qint64, qint64> Budgets::recordActive(const QString& job, qint64 total)
{
    qint64 budget = 0;
    qint64 closed = 0;
    const QString active = core::fmt00(total / 60);
    const QString minutes = QString::number(total % 60);
    // With a job number entered twice, every entry shows the hours and the last one counts.
    for (storage::PresetJob& preset : m_s.joblst) {
        if (core::sameText(preset.job, job)) {
            budget = core::Val(preset.budget);
            closed = core::Val(preset.closed);
            preset.active = active;
            preset.closedTag = minutes;
        }
    }
    return {budget, closed};
}

bool Budgets::mark(core::Timesheet& list, const QString& job, bool over)
{
    const QString tag = over ? core::kBudgetOver : QString();
    bool changed = false;
    for (core::JobRow& row : list.rows) {
        if (row.budget != tag && core::sameText(row.cell(core::CellJob), job)) {
            row.budget = tag;
            changed = true;
        }
    }
    return changed;
}

void Budgets::check(core::Timesheet& list)
{
    core::Mainwndo& w = m_s.window;
    if (list.hasSelection()) {
        const QString job = list.selected().cell(core::CellJob);
        qint64 total = 0;
        platform::YieldGate gate(m_s.desktop);
        for (const core::JobRow& row : list.rows) {
            if (core::sameText(row.cell(core::CellJob), job))
                total += row.minutes();
            gate.step();
        }
        w.budgetTotalMins = total % 60;
        const auto [budget, closed] = recordActive(job, total);
        if (budget > 0) {
            const qint64 used = total / 60 + closed;
            // The notice falls in the hour that ends at the budget, once per job and run.
            if (used == budget - 1 && !w.budgetNotice)
                CreateMessage(job);
            if (mark(list, job, used >= budget))
                emit w.marksChanged();
        }
    }
    m_s.updatestatus();
}

void Budgets::checkAll()
{
    core::Mainwndo& w = m_s.window;
    core::Timesheet& list = w.ListBox1;
    // The total of every job, under the spelling of its first row, in the order of first rows. Jobs are
    // found by their spelling first and folded only when a spelling is new: rows repeat a few jobs.
    QHash<QString, int> bySpelling;
    QHash<QString, int> byFolded;
    QStringList jobs;
    std::vector<qint64> totals;
    platform::YieldGate gate(m_s.desktop);
    for (const core::JobRow& row : list.rows) {
        const QString& spelling = row.cell(core::CellJob);
        auto job = bySpelling.constFind(spelling);
        if (job == bySpelling.cend()) {
            const QString key = spelling.toCaseFolded();
            auto folded = byFolded.constFind(key);
            if (folded == byFolded.cend()) {
                folded = byFolded.insert(key, int(jobs.size()));
                jobs << spelling;
                totals.push_back(0);
            }
            job = bySpelling.insert(spelling, *folded);
        }
        totals[size_t(*job)] += row.minutes();
        gate.step();
    }
    enum Mark : char
    {
        Unbudgeted,
        Within,
        Over
    };
    std::vector<Mark> marks(size_t(jobs.size()), Unbudgeted);
    for (int j = 0; j < jobs.size(); ++j) {
        const qint64 total = totals[size_t(j)];
        const auto [budget, closed] = recordActive(jobs[j], total);
        if (budget <= 0)
            continue;
        const qint64 used = total / 60 + closed;
        // As the walk over the rows would: the first row of a job not yet warned in this run warns.
        if (used == budget - 1 && !w.trackListindex.contains(jobs[j], Qt::CaseInsensitive)) {
            w.budgetTotalMins = total % 60;
            CreateMessage(jobs[j]);
        }
        marks[size_t(j)] = used >= budget ? Over : Within;
    }
    for (core::JobRow& row : list.rows) {
        const Mark mark = marks[size_t(bySpelling.value(row.cell(core::CellJob)))];
        if (mark != Unbudgeted)
            row.budget = mark == Over ? core::kBudgetOver : QString();
        gate.step();
    }
    // The selection ends where it was, with its own job's state.
    w.budgetNotice =
        list.hasSelection() && w.trackListindex.contains(list.selected().cell(core::CellJob), Qt::CaseInsensitive);
    if (list.hasSelection())
        w.budgetTotalMins = totals[size_t(bySpelling.value(list.selected().cell(core::CellJob)))] % 60;
    emit w.marksChanged();
    m_s.updatestatus();
}

QString Budgets::noticeText(const QString& job, qint64 minutes)
{
    return Tr::MWJobNo + QLatin1Char(' ') + job + QStringLiteral(" : ") + QString::number(60 - minutes) +
           QLatin1Char(' ') + kNSUNotifiminsleft;
}

void Budgets::CreateMessage(const QString& job)
{
    core::Mainwndo& w = m_s.window;
    const QString text = noticeText(job, w.budgetTotalMins);
    const unsigned id = m_s.notifier.notify(kNSUNotifiTitle, text);
    if (id != 0)
        delivered.insert(id, text);
    else if (m_s.noticeFallback)
        m_s.noticeFallback(text);
    w.trackListindex << job;
    w.budgetNotice = true;
}

void Budgets::budgetTotalizer()
{
    checkAll();
    platform::YieldGate gate(m_s.desktop);
    for (storage::PresetJob& preset : m_s.joblst) {
        // Whole hours are closed; the minutes past the hour stay behind.
        preset.closed = core::fmt00(core::Val(preset.closed) + core::Val(preset.active));
        gate.step();
    }
}

void Budgets::Event_DidActivateNotification(unsigned id)
{
    const auto it = delivered.constFind(id);
    if (it == delivered.cend())
        return; // not one of ours
    // The job number is the third word of the text: "Job No. A100 : 45 minutes remaining".
    const QString job = it->split(QLatin1Char(' ')).value(2);
    if (m_s.window.ListBox2Ctl.visible) {
        m_s.desktop.beep();
        m_s.dialogs.message(core::App::kAppRunWarning + QStringLiteral("\n\n") + kNSUNotifiAlertMsg);
        return;
    }
    m_s.notifier.withdraw(id);
    delivered.remove(id);
    if (m_s.showJob)
        m_s.showJob(job);
}

} // namespace budgets

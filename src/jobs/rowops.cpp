#include "jobs/rowops.h"

#include "clients/clientview.h"
#include "core/timetext.h"
#include "platform/yieldgate.h"

#include <QHash>

#include <functional>
#include <optional>

namespace jobs
{

void Aresure::Event_Open(const QRect& screen)
{
    top = screen.height() / 2 - height / 2;
    left = screen.width() / 2 - kWidth / 2;
}

void Aresure::choose(bool Aresure::*radio)
{
    delseljob = delalljobs = delalljobdate = delallmonth = false;
    this->*radio = true;
}

void RowOps::deletejb()
{
    // Never the running row, nor while the rollover question is open: the tick charges the selected row.
    if (!m_w.allows(core::Item::clearjb2))
        return;
    m_s.desktop.beep();
    Aresure aresure; // made anew for each use, so every delete starts on delseljob
    aresure.question = Tr::MWDeleteJbTitle;
    aresure.title = Aresure::kASWinTitle;
    aresure.height = Aresure::kDeleteHeight;
    const QList<QRect> screens = m_s.desktop.screens();
    aresure.Event_Open(screens.isEmpty() ? QRect() : screens.first());
    m_s.dialogs.showModal(aresure);
    if (aresure.ButtonPressed != Tr::MWButtonOK || !m_w.allows(core::Item::clearjb2))
        return;

    const int row = m_w.ListBox1.ListIndex;
    const core::JobRow& chosen = m_w.ListBox1.row(row);
    const QString job = chosen.cell(core::CellJob);
    const QString date = chosen.cell(core::CellDate);
    const QDate today = m_s.clock.now().date();

    std::function<bool(const core::JobRow&)> goes;
    if (aresure.delalljobs) {
        goes = [&](const core::JobRow& r) { return core::sameText(r.cell(core::CellJob), job); };
    } else if (aresure.delalljobdate) {
        goes = [&](const core::JobRow& r) { return core::sameText(r.cell(core::CellDate), date); };
    } else if (aresure.delallmonth) {
        const std::optional<QDate> picked = core::parseShortDate(date, today);
        if (!picked)
            goes = [](const core::JobRow&) { return false; }; // no month to compare: nothing goes
        else {
            // A timesheet has few distinct dates; parse each text once.
            auto parsed = std::make_shared<QHash<QString, std::optional<QDate>>>();
            goes = [=](const core::JobRow& r) {
                const QString& text = r.cell(core::CellDate);
                auto it = parsed->find(text);
                if (it == parsed->end())
                    it = parsed->insert(text, core::parseShortDate(text, today));
                return it->has_value() && (*it)->month() == picked->month() && (*it)->year() == picked->year();
            };
        }
    }

    if (!goes) {
        m_w.ListBox1.RemoveRow(row);
    } else {
        // The kept rows go into a new list, so the list on screen stays whole while the walk yields.
        std::vector<core::JobRow> kept;
        kept.reserve(m_w.ListBox1.rows.size());
        platform::YieldGate gate(m_s.desktop);
        for (core::JobRow& r : m_w.ListBox1.rows) {
            if (!goes(r))
                kept.push_back(r);
            gate.step();
        }
        m_w.ListBox1.rows = std::move(kept);
    }
    afterRemoval(row);
}

void RowOps::afterRemoval(int row)
{
    core::Timesheet& list = m_w.ListBox1;
    const int last = list.ListCount() - 1;
    int index = row == last ? row - 1 : row;
    if (index > last)
        index = -1; // an index past the end selects nothing
    if (index == -1)
        index = 0;
    list.ListIndex = -1;
    emit m_w.rowsReset();
    m_w.setListIndex(index);
    m_w.markChanged();
    m_w.Uptotal();
    const bool viewOn = m_w.ListBox2Ctl.visible;
    m_w.Uptotal2(viewOn ? 2 : 1);
    if (viewOn) {
        m_s.clientView.rebuildKeepingIndex();
        m_w.Uptotal2(2);
    }
}

void RowOps::resetRow(core::JobRow& row, const QString& today)
{
    row.setCell(core::CellDate, today);
    row.setCell(core::CellHours, QStringLiteral("00"));
    row.setCell(core::CellMinutes, QStringLiteral("00"));
    row.run = core::kRunNever;
    row.note.clear();
}

void RowOps::_zerorow_Action()
{
    if (!m_w.allows(core::Item::zerorow))
        return;
    const int row = m_w.ListBox1.ListIndex;
    const QString today = core::shortDate(m_s.clock.now().date());
    Aresure aresure;
    aresure.GroupBox1 = false;
    aresure.height = Aresure::kResetHeight;
    aresure.Okay = Tr::MWButtonOK;
    const QList<QRect> screens = m_s.desktop.screens();

    // The Alt key is read again here: the menu's caption may have been drawn with another state.
    if (m_s.desktop.altDown()) {
        aresure.title = Tr::MWResetAllRows;
        aresure.question = Tr::MWResetAllRowQuestion;
        aresure.Event_Open(screens.isEmpty() ? QRect() : screens.first());
        m_s.desktop.beep();
        m_s.dialogs.showModal(aresure);
        if (aresure.ButtonPressed == Tr::MWButtonOK) {
            m_w.setListIndex(0);
            platform::YieldGate gate(m_s.desktop);
            for (core::JobRow& r : m_w.ListBox1.rows) {
                resetRow(r, today);
                gate.step();
            }
            emit m_w.rowsReset();
            m_w.markChanged();
            m_w.Uptotal();
        }
    } else if (m_w.ListBox1.hasSelection()) {
        aresure.title = Tr::MWResetRow;
        aresure.question = m_w.ListBox1.row(row).note.isEmpty() ? Tr::MWResetRowQuestion : Tr::MWResetRowQuestionNote;
        aresure.Event_Open(screens.isEmpty() ? QRect() : screens.first());
        m_s.desktop.beep();
        m_s.dialogs.showModal(aresure);
        if (aresure.ButtonPressed == Tr::MWButtonOK) {
            resetRow(m_w.ListBox1.row(row), today);
            emit m_w.rowChanged(row);
            m_w.markChanged();
            m_w.Uptotal();
        }
    }

    if (m_w.ListBox2Ctl.visible) {
        m_s.clientView.rebuildFollowingListBox1();
        m_w.Uptotal2(2);
    }
    m_w.rowcheck();
    m_s.hooks.budgetcheck();
}

} // namespace jobs

#include "clients/clientview.h"

#include "clients/clientlist.h"
#include "core/timetext.h"
#include "platform/yieldgate.h"

namespace clients
{

namespace
{
// The copy that ListBox2 holds of a row: the visible cells, the sort key, the link, and the note, run and
// user tags. The budget mark is worked out again for the view.
core::JobRow viewCopy(const core::JobRow& row)
{
    core::JobRow copy;
    for (int c = core::CellDate; c <= core::CellClient; ++c)
        copy.setCell(c, row.cell(c));
    copy.setCell(core::CellSortKey, row.cell(core::CellSortKey));
    copy.setCell(core::CellLink, row.cell(core::CellLink));
    copy.note = row.note;
    copy.run = row.run;
    copy.user = row.user;
    return copy;
}
} // namespace

ClientView::ClientView(core::Mainwndo& window, Services services) : m_w(window), m_s(std::move(services)) {}

void ClientView::clientlist2_Open()
{
    m_children.clear();
    m_expanded = false;
    // Back on "All Clients": a client's view that was on goes through the change like any other pick,
    // so the picker and the lists never disagree.
    if (m_clientIndex > 0) {
        setClientlist2Index(0);
        return;
    }
    m_clientIndex = 0;
    emit clientRowsChanged();
}

void ClientView::clientlist2_ExpandRow()
{
    m_children.clear();
    const QStringList names = readClientList(m_s.files, m_s.clientsPath);
    platform::YieldGate gate(m_s.desktop);
    for (const QString& name : names) {
        m_children << name;
        gate.step();
    }
    m_expanded = true;
    emit clientRowsChanged();
}

void ClientView::clientlist2_CollapseRow()
{
    if (m_w.running) {
        emit clientRowsChanged(); // the picker stays as it is until the job stops
        return;
    }
    m_children.clear();
    m_expanded = false;
    if (m_clientIndex > 0)
        setClientlist2Index(0); // leaves the single-client view through clientlist2_Change
    m_clientIndex = 0;
    emit clientRowsChanged();
    m_w.setListIndex(0);
    m_w.Uptotal2(1);
}

void ClientView::setClientlist2Index(int index)
{
    if (index < -1 || index >= clientlist2RowCount())
        index = -1;
    if (m_w.running) {
        emit clientRowsChanged(); // the view cannot change during timing: the picker shows it again
        return;
    }
    if (index == m_clientIndex)
        return;
    m_clientIndex = index;
    emit clientRowsChanged();
    clientlist2_Change();
}

void ClientView::clientlist2_Change()
{
    if (m_clientIndex < 0)
        return;
    if (m_clientIndex > 0) {
        const bool wasShown = m_w.ListBox2Ctl.visible;
        populatelistbox2();
        if (wasShown) {
            // From one client to another: the selection moves to the new client's first row, so that the
            // run button never acts on a row that is not on show.
            setListBox2Index(m_w.ListBox2.ListCount() > 0 ? 0 : -1);
        }
        m_w.ListBox1Ctl.enabled = false;
        m_w.ListBox1ScrollBar = false;
        m_w.listboxGray = true;
        m_dragbarVisible = true;
        m_w.toplist = true;
        m_w.runButton.enabled = false;
        m_w.rowcheck();
        m_w.ListBox2Ctl.enabled = true;
        m_w.Uptotal2(2);
        emit viewToggled();
        return;
    }
    // "All Clients": only a document with a file goes back to the whole list.
    if (m_w.xpath.isEmpty())
        return;
    m_w.ListBox2Ctl.visible = false;
    m_dragbarVisible = false;
    m_w.ListBox1Ctl.enabled = true;
    m_w.ListBox1ScrollBar = true;
    m_w.setListIndex(0);
    m_w.rowcheck();
    m_w.listboxGray = false;
    m_w.toplist = false;
    m_w.Uptotal2(1);
    emit viewToggled();
}

void ClientView::populatelistbox2()
{
    const QString client = clientlist2Text();
    m_w.LB2ClientName = client;
    m_w.ListBox2.DeleteAllRows();
    const bool wasShown = m_w.ListBox2Ctl.visible;
    platform::YieldGate gate(m_s.desktop);
    core::Timesheet& all = m_w.ListBox1;
    for (int i = 0; i < all.ListCount(); ++i) {
        core::JobRow& row = all.row(i);
        row.setCell(core::CellLink, QString::number(i));
        if (core::sameText(row.cell(core::CellClient), client))
            m_w.ListBox2.AddRow(viewCopy(row));
        gate.step();
    }
    emit listBox2Reset();
    if (wasShown)
        return;

    m_w.ListBox2Ctl.visible = true;
    m_dragbarVisible = true;
    emit viewToggled();
    // Visit every row once so that the budget marks of the whole view are worked out; the full
    // selection change, with its row check, is left for the first row at the end.
    for (int r = 0; r < m_w.ListBox2.ListCount(); ++r) {
        selectListBox2Quietly(r);
        m_s.hooks.budgetcheck2();
        gate.step();
    }
    setListBox2Index(0);
}

void ClientView::selectListBox2Quietly(int index)
{
    m_w.ListBox2.ListIndex = index;
    const int link = core::Val(m_w.ListBox2.row(index).cell(core::CellLink));
    if (link >= 0 && link < m_w.ListBox1.ListCount())
        m_w.ListBox1.ListIndex = link;
}

void ClientView::setListBox2Index(int index)
{
    if (index < -1 || index >= m_w.ListBox2.ListCount())
        index = -1;
    m_w.ListBox2.ListIndex = index;
    emit listBox2SelectionChanged();
    ListBox2_Change();
}

void ClientView::ListBox2_Change()
{
    if (!m_w.ListBox2.hasSelection()) {
        m_w.setListIndex(-1);
        m_w.runButton.enabled = false;
        emit m_w.controlsChanged();
        return;
    }
    const QString& link = m_w.ListBox2.selected().cell(core::CellLink);
    const core::Timesheet& all = m_w.ListBox1;
    // The link is the row's index in ListBox1 while the view is up; look there first.
    const int direct = core::Val(link);
    int found = -1;
    if (direct >= 0 && direct < all.ListCount() && all.Cell(direct, core::CellLink) == link) {
        found = direct;
    } else {
        for (int i = 0; i < all.ListCount(); ++i) {
            if (all.Cell(i, core::CellLink) == link) {
                found = i;
                break;
            }
        }
    }
    if (found >= 0)
        m_w.setListIndex(found);
    m_w.runButton.enabled = true;
    emit m_w.controlsChanged();
    budgetcheck2();
}

void ClientView::rebuildKeepingIndex()
{
    const int kept = m_w.ListBox2.ListIndex;
    populatelistbox2();
    setListBox2Index(kept);
}

void ClientView::rebuildFollowingListBox1()
{
    populatelistbox2();
    const QString link = QString::number(m_w.ListBox1.ListIndex);
    int match = -1;
    for (int r = 0; m_w.ListBox1.hasSelection() && r < m_w.ListBox2.ListCount(); ++r) {
        if (m_w.ListBox2.Cell(r, core::CellLink) == link) {
            match = r;
            break;
        }
    }
    // Through the change, so that a row of another client loses the selection in ListBox1 too: the run
    // button must never start a row that is not on show.
    setListBox2Index(match);
}

bool ClientView::invisibledragbarV_MouseDrag(int pointerX, int dx)
{
    if (pointerX <= kClientWidthMin || pointerX >= kClientWidthMax)
        return false;
    m_w.clientlist2Width += dx;
    emit m_w.controlsChanged();
    return true;
}

} // namespace clients

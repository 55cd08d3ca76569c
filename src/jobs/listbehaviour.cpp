#include "jobs/listbehaviour.h"

#include "clients/clientview.h"
#include "core/timetext.h"
#include "platform/yieldgate.h"

#include <QHash>

#include <algorithm>
#include <numeric>
#include <optional>

namespace jobs
{

std::vector<qint64> fillSortKeys(core::Timesheet& list, const QDate& today, platform::Desktop& desktop)
{
    std::vector<qint64> keys;
    keys.reserve(list.rows.size());
    // A timesheet holds few distinct dates: each text is parsed once and its key text shared.
    struct Parsed
    {
        bool ok = false;
        qint64 key = 0;
        QString text;
    };
    QHash<QString, Parsed> cache;
    qint64 last = core::totalSeconds(today);
    QString lastText = QString::number(last);
    int counter = 0;
    platform::YieldGate gate(desktop);
    for (core::JobRow& row : list.rows) {
        const QString& date = row.cell(core::CellDate);
        auto it = cache.find(date);
        if (it == cache.end()) {
            Parsed parsed;
            if (const std::optional<QDate> d = core::parseShortDate(date, today)) {
                parsed.ok = true;
                parsed.key = core::totalSeconds(*d);
                parsed.text = QString::number(parsed.key);
            }
            it = cache.insert(date, parsed);
        }
        if (it->ok) {
            last = it->key;
            lastText = it->text;
        }
        row.setCell(core::CellSortKey, lastText);
        keys.push_back(last);
        if (row.cell(core::CellLink).isEmpty())
            row.setCell(core::CellLink, QString::number(counter++));
        gate.step();
    }
    return keys;
}

namespace
{
// Puts the rows in the order of `order` (old indexes), moving the selection with its row.
void applyOrder(core::Timesheet& list, const std::vector<int>& order)
{
    // Follows the cycles of the permutation in place: a second list of 100,000 rows costs more in fresh
    // memory than the moves themselves.
    std::vector<core::JobRow>& rows = list.rows;
    std::vector<bool> placed(order.size(), false);
    int selected = -1;
    for (size_t start = 0; start < order.size(); ++start) {
        if (order[start] == list.ListIndex)
            selected = static_cast<int>(start);
        if (placed[start])
            continue;
        core::JobRow held = std::move(rows[start]);
        size_t to = start;
        for (;;) {
            placed[to] = true;
            const auto from = static_cast<size_t>(order[to]);
            if (from == start) {
                rows[to] = std::move(held);
                break;
            }
            rows[to] = std::move(rows[from]);
            to = from;
        }
    }
    list.ListIndex = selected;
}
} // namespace

void sortByDateKey(core::Timesheet& list, const std::vector<qint64>& keys, int direction)
{
    std::vector<int> order(list.rows.size());
    std::iota(order.begin(), order.end(), 0);
    if (direction >= 0)
        std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return keys[a] < keys[b]; });
    else
        std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return keys[a] > keys[b]; });
    applyOrder(list, order);
}

void sortByText(core::Timesheet& list, int column, Qt::SortOrder order)
{
    std::vector<int> perm(list.rows.size());
    std::iota(perm.begin(), perm.end(), 0);
    std::stable_sort(perm.begin(), perm.end(), [&](int a, int b) {
        const int c = list.Cell(a, column).compare(list.Cell(b, column), Qt::CaseInsensitive);
        return order == Qt::AscendingOrder ? c < 0 : c > 0;
    });
    applyOrder(list, perm);
}

bool ListBehaviour::ListBox_KeyDown(int list, QChar key)
{
    if (!listOf(list).hasSelection())
        return false;
    // Backspace, and on this keyboard also Delete, remove; Return and Enter edit.
    if (key == QChar(8) || key == QChar(127)) {
        run(core::Item::clearjb2);
        return true;
    }
    if (key == QChar(13) || key == QChar(3)) {
        run(core::Item::edjobmenu);
        return true;
    }
    return false;
}

void ListBehaviour::ListBox_DoubleClick()
{
    run(core::Item::edjobmenu);
}

namespace
{
// The context menu's entries and the commands they stand for.
const std::pair<const QString*, core::Item> kContextCommands[] = {{&Tr::EMDupeJob, core::Item::duplicate},
                                                                  {&Tr::EMJobDetails, core::Item::edjobmenu},
                                                                  {&Tr::EMJobNotes, core::Item::notey},
                                                                  {&Tr::EMDeleteJob, core::Item::clearjb2},
                                                                  {&Tr::EMAddJob, core::Item::nujobmenu2}};
} // namespace

QList<MenuItem> ListBehaviour::ConstructContextualMenu(int list)
{
    // Each entry is on exactly when its menu item is: the context menu is one more path to a command.
    const auto item = [this](const QString& text, core::Item command) { return MenuItem{text, enabled(command)}; };
    if (!listOf(list).hasSelection())
        return {item(Tr::EMAddJob, core::Item::nujobmenu2)};
    m_w.totalJobTime();
    m_w.totalSelectedDay();
    const QString dash = QStringLiteral(" - ");
    return {item(Tr::EMDupeJob, core::Item::duplicate),
            item(Tr::EMJobDetails, core::Item::edjobmenu),
            item(Tr::EMJobNotes, core::Item::notey),
            {},
            {Tr::EMJobTotal + dash + m_w.jobtotal, false},
            {Tr::EMDayTotal + dash + m_w.selecteddaytotal, false},
            {},
            item(Tr::EMDeleteJob, core::Item::clearjb2)};
}

bool ListBehaviour::ContextualMenuAction(const QString& itemText)
{
    for (const auto& [text, command] : kContextCommands)
        if (itemText == *text)
            run(command);
    return true;
}

ListBehaviour::SortShown ListBehaviour::SortColumn(int list, int column)
{
    core::Timesheet& sheet = listOf(list);
    const std::vector<qint64> keys = fillSortKeys(sheet, m_s.clock.now().date(), m_s.desktop);
    SortShown& text = m_text[list == 2 ? 1 : 0];

    if (column == core::CellDate) {
        // The date's text does not sort; its key in cell 8 does. Not an edit of the document.
        const int direction = m_w.sortdirection == 1 ? 1 : -1;
        m_w.sortdirection = -direction;
        sortByDateKey(sheet, keys, direction);
        text = {};
        if (list == 2)
            emit m_s.clientView.listBox2Reset();
        else
            emit m_w.rowsReset();
        return {};
    }

    const Qt::SortOrder order =
        text.column == column && text.order == Qt::AscendingOrder ? Qt::DescendingOrder : Qt::AscendingOrder;
    text = {column, order};
    if (list == 2 && column >= core::CellJob && column <= core::CellOperation) {
        // The whole list takes the order first, then the view is built again from it.
        sortByText(m_w.ListBox1, column, order);
        emit m_w.rowsReset();
        m_s.clientView.rebuildFollowingListBox1();
    }
    sortByText(sheet, column, order);
    if (list == 2)
        emit m_s.clientView.listBox2Reset();
    else
        emit m_w.rowsReset();
    m_w.markChanged();
    return text;
}

void ListBehaviour::run(core::Item item)
{
    if (m_commands.run)
        m_commands.run(item);
}

} // namespace jobs

#pragma once

#include "core/mainwndo.h"
#include "jobs/listtexts.h"
#include "platform/clock.h"
#include "platform/desktop.h"

#include <QDate>
#include <QList>

#include <functional>
#include <vector>

namespace clients
{
class ClientView;
}

namespace jobs
{

// One item of a list's context menu.
struct MenuItem
{
    QString text; // empty: a separator
    bool enabled = true;

    bool separator() const { return text.isEmpty(); }
    bool operator==(const MenuItem&) const = default;
};

// Fills cell 8 of every row with the seconds of its date, and any empty cell 9 with a running number.
// A date that does not parse takes the key of the row before it (today's for the first row). The answer
// is the keys as numbers, row by row.
std::vector<qint64> fillSortKeys(core::Timesheet& list, const QDate& today, platform::Desktop& desktop);

// Reorders the rows by their keys, rising for direction 1 and falling for -1; rows of one date keep
// their order. The selection follows its row.
void sortByDateKey(core::Timesheet& list, const std::vector<qint64>& keys, int direction);

// Reorders the rows by the text of a column, ignoring case; equal texts keep their order.
void sortByText(core::Timesheet& list, int column, Qt::SortOrder order);

// How the two job lists answer keys, heading presses and the context menu. List 1 is ListBox1 and
// list 2 ListBox2; both act on the selected row of ListBox1.
class ListBehaviour
{
public:
    // The program's commands, the same that its menus run: whether one may run now, and running it
    // (which asks the state again). Unset, every command is off.
    struct Commands
    {
        std::function<bool(core::Item)> enabled;
        std::function<void(core::Item)> run;
    };

    struct Services
    {
        platform::Clock& clock;
        platform::Desktop& desktop;
        clients::ClientView& clientView;
    };

    ListBehaviour(core::Mainwndo& window, Services services, Commands commands = {})
        : m_w(window), m_s(services), m_commands(std::move(commands))
    {}

    // A key in a list: true when it was taken.
    bool ListBox_KeyDown(int list, QChar key);
    void ListBox_DoubleClick();
    // While the single-client view is up a click in ListBox1 is swallowed.
    bool ListBox1_MouseDown() const { return m_w.ListBox2Ctl.visible; }

    QList<MenuItem> ConstructContextualMenu(int list);
    bool ContextualMenuAction(const QString& itemText);

    // A heading of a list was pressed. The answer is the column and direction the heading now shows.
    struct SortShown
    {
        int column = -1;
        Qt::SortOrder order = Qt::AscendingOrder;
    };
    SortShown SortColumn(int list, int column);

private:
    core::Timesheet& listOf(int list) { return list == 2 ? m_w.ListBox2 : m_w.ListBox1; }
    bool enabled(core::Item item) const { return m_commands.enabled && m_commands.enabled(item); }
    void run(core::Item item);

    core::Mainwndo& m_w;
    Services m_s;
    Commands m_commands;
    // The toolkit's sort state of the text headings, per list.
    SortShown m_text[2];
};

} // namespace jobs

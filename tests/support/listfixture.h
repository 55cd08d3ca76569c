#pragma once

#include "clients/clientview.h"
#include "core/mainwndo.h"
#include "core/timetext.h"
#include "storage/clients_file.h"
#include "support/fakes.h"
#include "support/memorystore.h"

namespace testing
{

// Counts the view's budget calls; the rollover's rebuild goes to the client view.
class ListHooks : public core::MainwndoHooks
{
public:
    void budgetcheck2() override { ++budgetcheck2s; }
    void populatelistbox2() override { view->rebuildFollowingListBox1(); }

    clients::ClientView* view = nullptr;
    int budgetcheck2s = 0;
};

// A main window with its client view over fakes: fixed clock, scripted windows, files in memory.
struct ListFixture
{
    inline static const QString kClientsPath = QStringLiteral("/prefs/VLK8Contacts");

    core::AppPrefs prefs;
    FakeClock clock;
    FakeDesktop desktop;
    ScriptedDialogs dialogs;
    FakeTimers timers;
    ListHooks hooks;
    MemoryFileStore files;
    platform::EventGate gate;
    core::Mainwndo w{prefs, {clock, desktop, dialogs, timers, hooks, gate}};
    clients::ClientView view{w, {desktop, hooks, files, kClientsPath}};

    ListFixture()
    {
        hooks.view = &view;
        w.xpath = QStringLiteral("/docs/test.vlk");
        view.clientlist2_Open();
    }

    QString day(int offset = 0) const { return core::shortDate(clock.now().date().addDays(offset)); }

    // Adds a row at the end: date, job, client, minutes in all, note.
    core::JobRow& add(const QString& date, const QString& job, const QString& client = {}, int minutes = 0,
                      const QString& note = {})
    {
        core::JobRow row{{date, job, "P-" + job, {}, {}, QStringLiteral("Design"), client},
                         note,
                         {},
                         {},
                         QStringLiteral("Default User")};
        row.setMinutes(minutes);
        row.run = minutes > 0 ? core::kRunStopped : core::kRunNever;
        w.ListBox1.AddRow(row);
        return w.ListBox1.rows.back();
    }

    // The job numbers of a list, top to bottom.
    static QStringList jobs(const core::Timesheet& list)
    {
        QStringList out;
        for (const core::JobRow& row : list.rows)
            out << row.cell(core::CellJob);
        return out;
    }

    void writeClients(const QStringList& names) { files.files[kClientsPath] = storage::encodeClientList(names); }

    // Opens the folder and picks the client by name.
    void pickClient(const QString& name)
    {
        if (!view.expanded())
            view.clientlist2_ExpandRow();
        for (int r = 1; r < view.clientlist2RowCount(); ++r)
            if (view.clientlist2Row(r) == name)
                return view.setClientlist2Index(r);
    }
};

} // namespace testing

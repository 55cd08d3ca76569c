#pragma once

#include "core/timetext.h"
#include "shell/program.h"
#include "storage/clients_file.h"
#include "storage/operations_file.h"
#include "storage/timesheet_file.h"
#include "support/fakecontacts.h"
#include "support/fakes.h"
#include "support/memorystore.h"

#include <QCoreApplication>

namespace testing
{

// The whole program without windows, over fakes: a clock the test moves, timers it fires, files in
// memory, and the given dialogs playing the user.
struct ProgramRig
{
    explicit ProgramRig(platform::Dialogs& dialogs) : dialogs(dialogs)
    {
        files.files[storage::prefFile(storage::kOperationsFileName)] =
            storage::encodeOperations({{QStringLiteral("Design"), {}}, {QStringLiteral("Writing"), {}}});
        files.files[storage::prefFile(storage::kClientsFileName)] =
            storage::encodeClientList({QStringLiteral("Acme"), QStringLiteral("Bolt")});
    }

    // A new run of the program, as after a quit or a crash; the files stay.
    void start(const QStringList& documents = {})
    {
        make();
        program->start(documents);
    }
    // The program made but not yet started, for a test that puts windows over it first.
    void make()
    {
        program.reset();
        timers.made.clear();
        program = std::make_unique<shell::Program>(
            shell::Program::Services{clock, desktop, dialogs, timers, files, contacts,
                                     desktopNotifier ? *desktopNotifier : notifier, QStringLiteral("/docs"), appDir});
    }

    core::Mainwndo* w() const { return program->mainwndo(); }
    static FakeTimer& fake(platform::Timer& timer) { return static_cast<FakeTimer&>(timer); }
    void tick() { fake(w()->Timer3()).fire(); }

    // Writes a timesheet file of the given rows.
    void writeSheet(const QString& path, const std::vector<core::JobRow>& rows, const QString& starthrs = {},
                    const QString& startmin = {})
    {
        core::Timesheet sheet;
        sheet.rows = rows;
        sheet.starthrs = starthrs;
        sheet.startmin = startmin;
        files.files[path] = storage::encodeTimesheet(sheet);
    }

    core::JobRow row(const QString& job, int minutes, int dayOffset = 0) const
    {
        core::JobRow r;
        r.cells[core::CellDate] = core::shortDate(clock.now().date().addDays(dayOffset));
        r.cells[core::CellJob] = job;
        r.cells[core::CellProject] = QStringLiteral("P ") + job;
        r.cells[core::CellOperation] = QStringLiteral("Design");
        r.cells[core::CellClient] = QStringLiteral("Acme");
        r.setMinutes(minutes);
        r.run = minutes > 0 ? core::kRunStopped : core::kRunNever;
        r.user = QStringLiteral("Ann");
        return r;
    }

    FakeClock clock;
    FakeDesktop desktop;
    platform::Dialogs& dialogs;
    FakeTimers timers;
    MemoryFileStore files;
    FakeAddressBook contacts;
    FakeNotifier notifier;
    platform::Notifier* desktopNotifier = nullptr; // the desktop's notices instead, on a real session bus
    // The program's folder: the style sheet and the manual are found from it, as the build lays them out.
    QString appDir = QCoreApplication::applicationDirPath();
    std::unique_ptr<shell::Program> program;
};

} // namespace testing

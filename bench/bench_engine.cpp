// One minute tick of a running job: the measurement, today's and the list's totals, the label.
// The file write is stubbed, so this is the engine's own price per tick.
#include "core/mainwndo.h"
#include "core/timetext.h"
#include "storage/timesheet_file.h"
#include "support/fakes.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QLocale>

namespace
{

void livecountTick(benchmark::State& state)
{
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    core::AppPrefs prefs;
    testing::FakeClock clock;
    testing::FakeDesktop desktop;
    testing::ScriptedDialogs dialogs;
    testing::FakeTimers timers;
    core::MainwndoHooks hooks;
    platform::EventGate gate;
    core::Mainwndo w(prefs, {clock, desktop, dialogs, timers, hooks, gate});

    clock.set(2026, 11, 22, 9, 0);
    const QDate today = clock.now().date();
    const auto rows = static_cast<int>(state.range(0));
    core::Timesheet sheet;
    sheet.rows.reserve(static_cast<size_t>(rows));
    for (int i = 0; i < rows; ++i) {
        core::JobRow row;
        row.setCell(core::CellDate, core::shortDate(today.addDays(-(i % 60))));
        row.setCell(core::CellJob, QStringLiteral("J%1").arg(i % 500));
        row.setCell(core::CellProject, QStringLiteral("Project %1").arg(i % 97));
        row.setCell(core::CellHours, core::fmt00(i % 9));
        row.setCell(core::CellMinutes, core::fmt00(i % 60));
        row.run = core::kRunStopped;
        sheet.AddRow(std::move(row));
    }
    // The rows as the program holds them: read from a file, repeated texts shared.
    w.ListBox1.rows = storage::decodeTimesheet(storage::encodeTimesheet(sheet)).sheet.rows;
    w.xpath = QStringLiteral("/tmp/bench.vlk");
    w.setListIndex(0);
    w.runButton_Action();

    for (auto _ : state) {
        clock.advanceMinutes(1);
        w.livecount();
        benchmark::DoNotOptimize(w.runtotal);
    }
    state.SetItemsProcessed(state.iterations() * rows);
}

} // namespace

BENCHMARK(livecountTick)->Arg(1000)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

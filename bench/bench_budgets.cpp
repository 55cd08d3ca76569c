// Hours against budgets on a large timesheet: the check of the selected row's job with 1,000 preset
// jobs, and the load of a 100,000-row file with and without them (the load checks every job of the
// list, in one pass).
#include "shell/programrig.h"
#include "storage/preset_file.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QLocale>

namespace
{

const QString kSheet = QStringLiteral("/docs/big.vlk");
constexpr int kRows = 100000;
constexpr int kJobs = 1000;

// A program over a 100,000-row timesheet of 1,000 jobs; with presets, every job has a budget far from
// spent, so that the check does all its work and no notice changes the rows.
std::unique_ptr<testing::ProgramRig> makeRig(testing::ScriptedDialogs& dialogs, bool presets)
{
    auto rig = std::make_unique<testing::ProgramRig>(dialogs);
    std::vector<core::JobRow> rows;
    rows.reserve(kRows);
    for (int i = 0; i < kRows; ++i)
        rows.push_back(rig->row(QStringLiteral("J%1").arg(i % kJobs), 1 + i % 50, -(i / 400)));
    rig->writeSheet(kSheet, rows);
    storage::PresetJobList jobs;
    for (int j = 0; presets && j < kJobs; ++j)
        jobs.push_back({QStringLiteral("J%1").arg(j),
                        QStringLiteral("Project %1").arg(j),
                        QStringLiteral("9999"),
                        QStringLiteral("10"),
                        {},
                        {},
                        {}});
    rig->files.files[storage::prefFile(storage::kPresetJobsFileName)] = storage::encodePresetJobs(jobs);
    return rig;
}

void BM_BudgetCheck(benchmark::State& state)
{
    testing::ScriptedDialogs dialogs;
    auto rig = makeRig(dialogs, true);
    rig->start({kSheet});
    rig->w()->setListIndex(kRows / 2);
    budgets::Budgets& budgets = rig->program->window()->budgets;
    for (auto _ : state)
        budgets.budgetcheck();
    state.counters["presets"] = double(rig->program->presets().joblst.size());
}
BENCHMARK(BM_BudgetCheck)->Unit(benchmark::kMillisecond);

// The whole load of the file into a new program: read, decode, recover, totals and the budget walk.
void BM_Load(benchmark::State& state)
{
    testing::ScriptedDialogs dialogs;
    auto rig = makeRig(dialogs, state.range(0) != 0);
    for (auto _ : state) {
        rig->start({kSheet});
        benchmark::DoNotOptimize(rig->w()->ListBox1.ListCount());
    }
}
BENCHMARK(BM_Load)->ArgName("presets")->Arg(0)->Arg(kJobs)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

// The long walks of the job lists at 100,000 rows: building the single-client view and the date sort.
#include "jobs/listbehaviour.h"
#include "support/listfixture.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QLocale>

namespace
{

// A year and a half of work spread over 100,000 rows and eight clients.
void fillRows(testing::ListFixture& f, int rows)
{
    const QStringList clients{"Acme", "Bolt", "Crane", "Delta", "Echo", "Fjord", "Gale", "Hollow"};
    f.w.ListBox1.rows.reserve(static_cast<size_t>(rows));
    const QDate first(2025, 6, 1);
    for (int i = 0; i < rows; ++i) {
        core::JobRow& row =
            f.add(core::shortDate(first.addDays((i * 7919) % 540)), QStringLiteral("J%1").arg(i % 500),
                  clients[i % clients.size()], i % 600, i % 13 == 0 ? QStringLiteral("note") : QString());
        row.setCell(core::CellProject, QStringLiteral("Project %1").arg(i % 97));
    }
    f.writeClients(clients);
    f.view.clientlist2_ExpandRow();
}

void populatelistbox2(benchmark::State& state)
{
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    testing::ListFixture f;
    fillRows(f, static_cast<int>(state.range(0)));
    f.view.setClientlist2Index(1); // the view is up: each rebuild is the one that follows an edit
    for (auto _ : state) {
        f.view.populatelistbox2();
        benchmark::DoNotOptimize(f.w.ListBox2.rows.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void openClientView(benchmark::State& state)
{
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    testing::ListFixture f;
    fillRows(f, static_cast<int>(state.range(0)));
    for (auto _ : state) {
        f.view.setClientlist2Index(2); // open on a client: rebuild, visit every row, select the first
        state.PauseTiming();
        f.view.setClientlist2Index(0);
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void dateSort(benchmark::State& state)
{
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    testing::ListFixture f;
    fillRows(f, static_cast<int>(state.range(0)));
    jobs::ListBehaviour lists(f.w, {f.clock, f.desktop, f.view});
    f.w.setListIndex(500);
    for (auto _ : state) {
        lists.SortColumn(1, core::CellDate); // each press turns the order round, so every press moves rows
        benchmark::DoNotOptimize(f.w.ListBox1.rows.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

} // namespace

BENCHMARK(populatelistbox2)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(openClientView)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(dateSort)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

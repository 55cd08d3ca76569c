// The export of a 100,000-row timesheet with notes, in each encoding and form (target: under 1 s).
#include "shell/export.h"

#include <benchmark/benchmark.h>

#include <numeric>

namespace
{

constexpr int kRows = 100000;

void BM_Export(benchmark::State& state)
{
    core::Timesheet list;
    list.rows.reserve(kRows);
    for (int i = 0; i < kRows; ++i) {
        core::JobRow row;
        row.cells = {QStringLiteral("11/23/26"),
                     QStringLiteral("J%1").arg(i % 1000),
                     QStringLiteral("Project %1 caf\u00e9").arg(i),
                     {},
                     {},
                     QStringLiteral("Design"),
                     QStringLiteral("Zo\u00eb & S\u00f8n \u2013 <client>")};
        row.setMinutes(i % 600);
        row.note = i % 3 == 0 ? QStringLiteral("A note of a few words, line %1").arg(i) : QString();
        list.rows.push_back(row);
    }
    std::vector<int> all(kRows);
    std::iota(all.begin(), all.end(), 0);
    shell::ExportOptions options;
    options.encoding = shell::Encoding(state.range(0));
    options.xls = state.range(1) != 0;
    qint64 bytes = 0;
    for (auto _ : state) {
        const QByteArray out = shell::exportBytes(list, all, options, QStringLiteral("11/23/26"));
        bytes = out.size();
        benchmark::DoNotOptimize(out.constData());
    }
    state.counters["MB"] = double(bytes) / 1e6;
}

} // namespace

// encoding (0 MacRoman, 1 UTF-8, 2 UTF-16, 3 Windows ANSI), xls
BENCHMARK(BM_Export)->ArgsProduct({{0, 1, 2, 3}, {0, 1}})->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();

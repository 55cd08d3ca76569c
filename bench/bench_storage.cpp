// Saving and loading timesheets of 1,000 to 1,000,000 rows, next to a plain write of a buffer of the same
// size (write, fsync, rename) as the yardstick for the save.

#include "storage/filestore.h"
#include "storage/timesheet_file.h"

#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <unistd.h>

namespace
{

// Rows as a year of real use looks: a few hundred dates, a few dozen jobs, some notes, one user.
core::Timesheet makeSheet(int rows)
{
    static const QStringList operations = {QStringLiteral("Design"), QStringLiteral("Meeting"),
                                           QStringLiteral("Entwicklung"), QStringLiteral("Review")};
    static const QStringList clients = {QStringLiteral("Acme"), QStringLiteral("Bäckerei Groß"),
                                        QStringLiteral("Northwind Traders")};
    core::Timesheet sheet;
    sheet.rows.reserve(size_t(rows));
    for (int i = 0; i < rows; ++i) {
        core::JobRow row;
        row.setCell(core::CellDate, QStringLiteral("%1/%2/26").arg(1 + (i / 40) % 28).arg(1 + (i / 1120) % 12));
        row.setCell(core::CellJob, QStringLiteral("J%1").arg(1000 + i % 37));
        row.setCell(core::CellProject, QStringLiteral("Project number %1").arg(i % 37));
        row.setCell(core::CellHours, QStringLiteral("%1").arg(i % 9, 2, 10, QLatin1Char('0')));
        row.setCell(core::CellMinutes, QStringLiteral("%1").arg(i % 60, 2, 10, QLatin1Char('0')));
        row.setCell(core::CellOperation, operations[i % operations.size()]);
        row.setCell(core::CellClient, clients[i % clients.size()]);
        row.run = i % 5 == 0 ? core::kRunNever : core::kRunStopped;
        if (i % 3 == 0)
            row.note = QStringLiteral("Call with the client about the draft, changes agreed – %1").arg(i);
        row.user = QStringLiteral("Default User");
        sheet.rows.push_back(std::move(row));
    }
    sheet.starthrs = QStringLiteral("09");
    sheet.startmin = QStringLiteral("30");
    return sheet;
}

// The yardstick: the same number of bytes written, synced and renamed over the target.
void plainWrite(const QByteArray& target, const QByteArray& bytes)
{
    const QByteArray temp = target + ".tmp";
    const int fd = ::open(temp.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd < 0 || ::write(fd, bytes.constData(), size_t(bytes.size())) != bytes.size() || ::fsync(fd) != 0)
        std::abort();
    ::close(fd);
    if (::rename(temp.constData(), target.constData()) != 0)
        std::abort();
}

void BM_Encode(benchmark::State& state)
{
    const core::Timesheet sheet = makeSheet(int(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(storage::encodeTimesheet(sheet));
}

void BM_SaveBaseline(benchmark::State& state)
{
    const QByteArray bytes = storage::encodeTimesheet(makeSheet(int(state.range(0))));
    QTemporaryDir dir;
    const QByteArray path = QFile::encodeName(dir.filePath(QStringLiteral("plain.vlk")));
    for (auto _ : state)
        plainWrite(path, bytes);
    state.counters["bytes"] = double(bytes.size());
}

// The same buffer through the program's store, which also syncs the folder: the save less the encoding.
void BM_SaveStoreOnly(benchmark::State& state)
{
    const QByteArray bytes = storage::encodeTimesheet(makeSheet(int(state.range(0))));
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("store.vlk"));
    storage::DiskFileStore store;
    for (auto _ : state) {
        if (!store.write(path, bytes).ok())
            state.SkipWithError("write failed");
    }
}

void BM_Save(benchmark::State& state)
{
    const core::Timesheet sheet = makeSheet(int(state.range(0)));
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("sheet.vlk"));
    storage::DiskFileStore store;
    QByteArray buffer; // kept between saves, as the document keeps it
    for (auto _ : state) {
        storage::encodeTimesheet(sheet, buffer);
        if (!store.write(path, buffer).ok())
            state.SkipWithError("write failed");
    }
}

void BM_Decode(benchmark::State& state)
{
    const QByteArray bytes = storage::encodeTimesheet(makeSheet(int(state.range(0))));
    for (auto _ : state) {
        const storage::ReadResult result = storage::decodeTimesheet(bytes);
        // The rows' own memory: each row's size, and the texts they share (notes are kept apart).
        state.counters["shared texts"] = double(core::RowText::distinctTexts());
        benchmark::DoNotOptimize(result);
    }
    state.counters["row bytes"] = double(sizeof(core::JobRow));
}

void BM_Load(benchmark::State& state)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("sheet.vlk"));
    storage::DiskFileStore store;
    store.write(path, storage::encodeTimesheet(makeSheet(int(state.range(0)))));
    for (auto _ : state) {
        QByteArray bytes;
        if (!store.read(path, bytes).ok())
            state.SkipWithError("read failed");
        const storage::ReadResult result = storage::decodeTimesheet(bytes);
        if (!result.complete)
            state.SkipWithError("incomplete read");
        benchmark::DoNotOptimize(result);
    }
}

// A thousand rows to a million, each ten times the last, so growth that is not linear shows.
void rowCounts(benchmark::internal::Benchmark* b)
{
    for (int rows = 1000; rows <= 1000000; rows *= 10)
        b->Arg(rows);
    b->Unit(benchmark::kMillisecond);
}

} // namespace

BENCHMARK(BM_Encode)->Apply(rowCounts);
BENCHMARK(BM_SaveBaseline)->Apply(rowCounts)->UseRealTime();
BENCHMARK(BM_SaveStoreOnly)->Apply(rowCounts)->UseRealTime();
BENCHMARK(BM_Save)->Apply(rowCounts)->UseRealTime();
BENCHMARK(BM_Decode)->Apply(rowCounts);
BENCHMARK(BM_Load)->Apply(rowCounts)->UseRealTime();

BENCHMARK_MAIN();

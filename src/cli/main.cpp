// veltrick-cli: looks into and writes timesheet files from a shell, without the windows.

#include "cli/timesheet_json.h"
#include "core/timetext.h"
#include "platform/clock.h"
#include "storage/filestore.h"
#include "storage/timesheet_file.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QFile>
#include <QHash>
#include <QStringList>

#include <cstdio>
#include <vector>

namespace
{

enum ExitCode
{
    ExitOk = 0,
    ExitFailed = 1, // a damaged or unreadable file, bad input, a failed write
    ExitUsage = 2,
};

const char kHelp[] = R"(Usage: veltrick-cli COMMAND FILE.vlk

Reads and writes Veltrick timesheet files (.vlk).

Commands:
  dump FILE.vlk    Print the timesheet as JSON on standard output:
                     {"read": "..", "starthrs": "..", "startmin": "..",
                      "rows": [{"date", "job", "project", "hours", "minutes", "operation",
                                "client", "run", "note", "user", "budget"}, ...]}
                   Every value is the stored text, unchanged. "run" is "**" for a job never
                   started, "" for a stopped one and "*" for the one that was running.
                   "read" is a digest of the file as dump read it.
  write FILE.vlk   Read JSON of the same form on standard input and write the file. The old file
                   is replaced only once the new one is complete on disk. A missing key is an
                   empty text. A text too long for the file (more than 186 bytes of UTF-8) is
                   cut at a character boundary, with a warning. Where the input has the
                   "read" of a dump and the file is no longer what that dump read (another
                   program or computer changed it since), nothing is written: exit status 1.
  totals FILE.vlk  Print the total time of the list, of today's rows (rows whose date is
                   today's short date) and of each job number (compared ignoring case), as HH:MM.
  --help, -h       Show this text.

Exit status:
  0  done
  1  the file is damaged or cannot be read or written, or the input is not valid JSON of the
     form above, or the file changed since the dump the input came from; for a damaged file, dump and totals still print what could be read
  2  the command line is wrong
)";

const QString kErrUsage = QStringLiteral("veltrick-cli: expected a command and one file. Try veltrick-cli --help.");
const QString kErrUnknownCommand = QStringLiteral("veltrick-cli: unknown command \"%1\". Try veltrick-cli --help.");
const QString kErrRead = QStringLiteral("veltrick-cli: cannot read %1: %2");
const QString kErrDamaged = QStringLiteral("veltrick-cli: %1 is damaged: %2 Showing the %3 rows that could be read.");
const QString kErrOutput = QStringLiteral("veltrick-cli: cannot write to standard output");
const QString kErrStdin = QStringLiteral("veltrick-cli: cannot read standard input");
const QString kErrJson = QStringLiteral("veltrick-cli: the input is not a timesheet: %1");
const QString kErrWrite = QStringLiteral("veltrick-cli: cannot write %1: %2");
const QString kErrChanged = QStringLiteral(
    "veltrick-cli: %1 was changed by another program or computer since it was dumped; it was not written.");
const QString kWarnCut = QStringLiteral("veltrick-cli: %1 texts were too long for the file and were cut.");
const QString kListTotal = QStringLiteral("List total: %1 (%2 rows)");
const QString kTodayTotal = QStringLiteral("Today (%1): %2");
const QString kJobTotals = QStringLiteral("Job totals:");

// What dump says it read, the same on every machine and in every version, for write to compare.
QString digestOf(const QByteArray& bytes)
{
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha1).toHex());
}

void printErr(const QString& text)
{
    const QByteArray bytes = text.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
}

void printOut(const QByteArray& bytes)
{
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
    std::fflush(stdout);
}

// Reads the file; a damaged one still gives its rows, with the message on stderr and `damaged` set.
bool load(const QString& path, core::Timesheet& sheet, bool& damaged, QString* digest = nullptr)
{
    storage::DiskFileStore store;
    QByteArray bytes;
    const platform::Result read = store.read(path, bytes);
    if (!read.ok()) {
        printErr(kErrRead.arg(path, read.message));
        return false;
    }
    if (digest)
        *digest = digestOf(bytes);
    storage::ReadResult result = storage::decodeTimesheet(bytes);
    damaged = !result.complete;
    if (damaged)
        printErr(kErrDamaged.arg(path, result.error).arg(result.sheet.ListCount()));
    sheet = std::move(result.sheet);
    return true;
}

int dump(const QString& path)
{
    core::Timesheet sheet;
    bool damaged = false;
    QString digest;
    if (!load(path, sheet, damaged, &digest))
        return ExitFailed;
    if (!cli::writeTimesheetJson(sheet, stdout, digest)) {
        printErr(kErrOutput);
        return ExitFailed;
    }
    return damaged ? ExitFailed : ExitOk;
}

int write(const QString& path)
{
    QFile input;
    if (!input.open(stdin, QIODevice::ReadOnly)) {
        printErr(kErrStdin);
        return ExitFailed;
    }
    const QByteArray json = input.readAll();
    core::Timesheet sheet;
    QString error, read;
    if (!cli::timesheetFromJson(json, sheet, error, &read)) {
        printErr(kErrJson.arg(error));
        return ExitFailed;
    }
    storage::DiskFileStore store;
    QByteArray onDisk;
    // A file gone since the dump loses nothing by being written again.
    if (!read.isEmpty() && store.read(path, onDisk).ok() && digestOf(onDisk) != read) {
        printErr(kErrChanged.arg(path));
        return ExitFailed;
    }
    int cut = 0;
    const QByteArray bytes = storage::encodeTimesheet(sheet, &cut);
    if (cut > 0)
        printErr(kWarnCut.arg(cut));
    const platform::Result written = store.write(path, bytes);
    if (!written.ok()) {
        printErr(kErrWrite.arg(path, written.message));
        return ExitFailed;
    }
    return ExitOk;
}

int totals(const QString& path, const platform::Clock& clock)
{
    core::Timesheet sheet;
    bool damaged = false;
    if (!load(path, sheet, damaged))
        return ExitFailed;

    const QString today = core::shortDate(clock.now().date());
    qint64 listMinutes = 0;
    qint64 todayMinutes = 0;
    // Job totals in the order in which each job number first appears, under its first spelling.
    QHash<QString, size_t> jobIndex;
    std::vector<std::pair<QString, qint64>> jobs;
    for (const core::JobRow& row : sheet.rows) {
        const qint64 minutes = row.minutes();
        listMinutes += minutes;
        if (core::sameText(row.cell(core::CellDate), today))
            todayMinutes += minutes;
        const QString& job = row.cell(core::CellJob);
        const QString key = job.toCaseFolded();
        auto it = jobIndex.constFind(key);
        if (it == jobIndex.cend()) {
            it = jobIndex.insert(key, jobs.size());
            jobs.emplace_back(job, 0);
        }
        jobs[it.value()].second += minutes;
    }

    QString text = kListTotal.arg(core::hhmm(listMinutes)).arg(sheet.ListCount()) + u'\n' +
                   kTodayTotal.arg(today, core::hhmm(todayMinutes)) + u'\n' + kJobTotals + u'\n';
    for (const auto& [job, minutes] : jobs)
        text += job + u'\t' + core::hhmm(minutes) + u'\n';
    printOut(text.toUtf8());
    return damaged ? ExitFailed : ExitOk;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    if (args.size() == 1 && (args[0] == QLatin1String("--help") || args[0] == QLatin1String("-h"))) {
        printOut(kHelp);
        return ExitOk;
    }
    if (args.size() != 2) {
        printErr(kErrUsage);
        return ExitUsage;
    }
    const QString& command = args[0];
    const QString& path = args[1];
    if (command == QLatin1String("dump"))
        return dump(path);
    if (command == QLatin1String("write"))
        return write(path);
    if (command == QLatin1String("totals")) {
        const platform::SystemClock clock;
        return totals(path, clock);
    }
    printErr(kErrUnknownCommand.arg(command));
    return ExitUsage;
}

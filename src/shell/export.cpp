#include "shell/export.h"

#include "core/texts.h"
#include "core/timetext.h"

#include <QTextCodec>

#include <array>

namespace shell
{

namespace
{

const QString kReportDate = QStringLiteral("Report Date: ");
const QString kTotalTime = QStringLiteral("Total Time:");
const QString kExportTitle = QStringLiteral("Veltrick Export"); // the sheet's name where a program shows one
const QStringList kHeadings = {QStringLiteral("Date"),   QStringLiteral("Job No."), QStringLiteral("Project"),
                               QStringLiteral("Hours"),  QStringLiteral("Minutes"), QStringLiteral("Operation"),
                               QStringLiteral("Client"), QStringLiteral("Notes")};
constexpr int kHoursColumn = 3;
constexpr int kMinutesColumn = 4;
constexpr int kFieldCount = 7; // the row's cells; the note follows when wanted

QTextCodec* codec(Encoding encoding)
{
    switch (encoding) {
    case Encoding::MacRoman:
        return QTextCodec::codecForName("Apple Roman");
    case Encoding::Utf16:
        return QTextCodec::codecForName("UTF-16LE");
    case Encoding::WindowsAnsi:
        return QTextCodec::codecForName("windows-1252");
    case Encoding::Utf8:
        break;
    }
    return QTextCodec::codecForName("UTF-8");
}

// Every character the single-byte encoding cannot hold replaced by "?"; a pair of surrogates (a
// character beyond the first 65,536) counts as one.
QString fitEncoding(const QString& text, Encoding encoding, int& replaced)
{
    if (encoding == Encoding::Utf8 || encoding == Encoding::Utf16)
        return text;
    // Which of the 65,536 first characters the encoding holds, worked out once per encoding.
    static std::array<std::vector<bool>, 4> holds;
    std::vector<bool>& table = holds[size_t(encoding)];
    if (table.empty()) {
        QTextCodec* single = codec(encoding);
        table.resize(0x10000);
        for (char32_t u = 0; u < 0x10000; ++u)
            table[u] = !QChar::isSurrogate(u) && single->canEncode(QChar(char16_t(u)));
    }
    QString out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (table[c.unicode()]) {
            out += c;
            continue;
        }
        if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate())
            ++i;
        out += QLatin1Char('?');
        ++replaced;
    }
    return out;
}

// The name the file declares for itself, as browsers and spreadsheets know it.
QString charsetName(Encoding encoding)
{
    switch (encoding) {
    case Encoding::MacRoman:
        return QStringLiteral("macintosh");
    case Encoding::Utf16:
        return QStringLiteral("utf-16");
    case Encoding::WindowsAnsi:
        return QStringLiteral("windows-1252");
    case Encoding::Utf8:
        break;
    }
    return QStringLiteral("utf-8");
}

// The table as lines of cells, whatever the file's form.
QList<QStringList> table(const core::Timesheet& list, const std::vector<int>& rows, const ExportOptions& o,
                         const QString& reportDate)
{
    const int width = kFieldCount + (o.notes ? 1 : 0);
    QList<QStringList> lines;
    const auto add = [&](QStringList cells) {
        while (cells.size() < width)
            cells << QString();
        if (o.blankColumn)
            cells.prepend(QString());
        lines << cells;
    };
    if (o.reportDate)
        add({kReportDate + reportDate});
    if (o.headings)
        add(kHeadings.mid(0, width));
    if (o.blankRow && !lines.isEmpty())
        add({});
    qint64 total = 0;
    for (int index : rows) {
        const core::JobRow& row = list.row(index);
        QStringList cells;
        for (int c = 0; c < kFieldCount; ++c)
            cells << row.cell(c);
        cells[kHoursColumn] = QString::number(core::Val(row.cell(core::CellHours)));
        cells[kMinutesColumn] = QString::number(core::Val(row.cell(core::CellMinutes)));
        if (o.notes)
            cells << row.note;
        total += row.minutes();
        add(cells);
    }
    if (o.total) {
        if (o.blankRow)
            add({});
        QStringList cells(width);
        cells[0] = kTotalTime;
        cells[kHoursColumn] = QString::number(total / 60);
        cells[kMinutesColumn] = QString::number(total % 60);
        add(cells);
    }
    return lines;
}

QString tabText(const QList<QStringList>& lines)
{
    QString text;
    for (const QStringList& cells : lines) {
        QStringList clean;
        for (QString cell : cells) {
            // A tab or a line end inside a field would start a new cell or row.
            cell.replace(QLatin1String("\r\n"), QLatin1String(" "));
            for (QChar& ch : cell)
                if (ch == QLatin1Char('\t') || ch == QLatin1Char('\r') || ch == QLatin1Char('\n'))
                    ch = QLatin1Char(' ');
            clean << cell;
        }
        text += clean.join(QLatin1Char('\t')) + QLatin1String("\r\n");
    }
    return text;
}

QString htmlText(const QList<QStringList>& lines, const ExportOptions& o, const QString& title)
{
    QString text =
        QStringLiteral("<!DOCTYPE html>\r\n<html>\r\n<head>\r\n<meta charset=\"%1\">\r\n<title>%2</title>\r\n"
                       "</head>\r\n<body>\r\n<table>\r\n")
            .arg(charsetName(o.encoding), title.toHtmlEscaped());
    for (const QStringList& cells : lines) {
        text += QLatin1String("<tr>");
        for (const QString& cell : cells) {
            QString escaped = cell.toHtmlEscaped();
            escaped.replace(QLatin1String("\r\n"), QLatin1String("<br>"));
            escaped.replace(QLatin1Char('\n'), QLatin1String("<br>"));
            escaped.replace(QLatin1Char('\r'), QLatin1String("<br>"));
            text += QLatin1String("<td>") + escaped + QLatin1String("</td>");
        }
        text += QLatin1String("</tr>\r\n");
    }
    text += QLatin1String("</table>\r\n</body>\r\n</html>\r\n");
    return text;
}

} // namespace

std::optional<std::vector<int>> chooseRows(const core::Timesheet& list, Scope scope, const QList<int>& ticked)
{
    std::vector<int> rows;
    if (scope == Scope::All || scope == Scope::Custom) {
        std::vector<bool> on(size_t(list.ListCount()), scope == Scope::All);
        for (int row : ticked)
            if (row >= 0 && row < list.ListCount())
                on[size_t(row)] = true;
        for (int i = 0; i < list.ListCount(); ++i)
            if (on[size_t(i)])
                rows.push_back(i);
        return rows;
    }
    if (!list.hasSelection())
        return std::nullopt;
    const int column = scope == Scope::JobNumber ? core::CellJob
                       : scope == Scope::Date    ? core::CellDate
                                                 : core::CellClient;
    const QString& wanted = list.selected().cell(column);
    for (int i = 0; i < list.ListCount(); ++i)
        if (core::sameText(list.row(i).cell(column), wanted))
            rows.push_back(i);
    return rows;
}

Encoding exportEncoding(const core::AppPrefs& prefs)
{
    return prefs.xprtEncoding >= 1 && prefs.xprtEncoding <= 3 ? Encoding(prefs.xprtEncoding) : Encoding::MacRoman;
}

ExportOptions ExportOptions::fromPrefs(const core::AppPrefs& prefs)
{
    ExportOptions o;
    o.xls = prefs.exportFormat != QLatin1String("txt");
    o.encoding = exportEncoding(prefs);
    o.reportDate = prefs.expdt;
    o.headings = prefs.exphd;
    o.notes = prefs.expnt;
    o.total = prefs.explt;
    o.blankRow = prefs.expbr;
    o.blankColumn = prefs.expbc;
    return o;
}

QByteArray exportBytes(const core::Timesheet& list, const std::vector<int>& rows, const ExportOptions& options,
                       const QString& reportDate, int* replaced)
{
    const QList<QStringList> lines = table(list, rows, options, reportDate);
    int unheld = 0;
    const QString text =
        fitEncoding(options.xls ? htmlText(lines, options, kExportTitle) : tabText(lines), options.encoding, unheld);
    if (replaced)
        *replaced = unheld;
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    QByteArray bytes;
    if (options.encoding == Encoding::Utf16)
        bytes = QByteArrayLiteral("\xFF\xFE"); // the byte order mark tells the reader the form
    bytes += codec(options.encoding)->fromUnicode(text.constData(), int(text.size()), &state);
    return bytes;
}

platform::Report buildReport(const core::Timesheet& list, const std::vector<int>& rows, const core::AppPrefs& prefs,
                             const QString& longDate)
{
    platform::Report report;
    report.title = prefs.dateon ? prefs.iam + QLatin1Char(' ') + longDate : prefs.iam;
    report.footer = QStringLiteral("User: ") + prefs.usrname;
    report.pagePrefix = QStringLiteral("Page: ");
    report.headings = {Tr::MWDate, Tr::MWJobNo, Tr::MWProject, QStringLiteral("Time"), Tr::MWOperation, Tr::MWClient};
    qint64 total = 0;
    for (int index : rows) {
        const core::JobRow& row = list.row(index);
        report.rows.append({{row.cell(core::CellDate), row.cell(core::CellJob), row.cell(core::CellProject),
                             core::hhmm(row.minutes()), row.cell(core::CellOperation), row.cell(core::CellClient)},
                            row.note});
        total += row.minutes();
    }
    report.total = kTotalTime + QLatin1Char(' ') + core::hhmm(total);
    return report;
}

} // namespace shell

#include "netlink/page.h"

#include "core/texts.h"

namespace netlink
{

namespace
{

// Most cells are plain ASCII: copy those straight in and leave the rest to the UTF-8 encoder.
void appendText(QByteArray& out, QStringView text)
{
    const char16_t* src = text.utf16();
    const qsizetype n = text.size();
    for (qsizetype i = 0; i < n; ++i) {
        if (src[i] >= 0x80) {
            out.append(text.toUtf8());
            return;
        }
    }
    const qsizetype start = out.size();
    out.resize(start + n);
    char* dst = out.data() + start;
    for (qsizetype i = 0; i < n; ++i)
        dst[i] = static_cast<char>(src[i]);
}

void appendCell(QByteArray& out, QByteArrayView open, QStringView text)
{
    out.append(open);
    appendText(out, text);
    out.append("</td>");
}

constexpr qsizetype kBytesPerRowGuess = 320;

} // namespace

QByteArray buildPage(const core::Timesheet& ListBox1, bool running, const QString& styleSheetTxt,
                     const QString& ipnumber, const std::function<void()>& yield)
{
    const QByteArrayView runMarker =
        running ? QByteArrayView("<hr class=\"runstart\">") : QByteArrayView("<hr class=\"runstop\">");
    const QByteArray style = styleSheetTxt.toUtf8();

    QByteArray out;
    out.reserve(1024 + style.size() + ipnumber.size() * 3 + kBytesPerRowGuess * ListBox1.ListCount());

    out.append("HTTP/1.0 200 OK\r\n\r\n"
               "<html>\r\n"
               "<head>\r\n"
               "<title>Veltrick @ ");
    appendText(out, ipnumber);
    out.append("</title>\r\n"
               "<meta charset=\"UTF8\">\r\n"
               "<style type=\"text/css\" media=\"screen\"><!--\r\n");
    out.append(style);
    out.append("--></style>\r\n"
               "<body marginwidth=\"10\" marginheight=\"10\" leftmargin=\"10\" topmargin=\"10\" "
               "bottommargin=\"50\">\r\n"
               "<div><h1>Veltrick</h1>");
    out.append(runMarker);
    out.append("<table width=\"100%\" border=\"0\" cellspacing=\"2\" cellpadding=\"5\">\r\n"
               "<script>setTimeout(function(){\r\n"
               "window.location.reload(true);\r\n"
               "}, 60000);\r\n"
               "</script>\r\n"
               "<tr class=\"header\">\r\n");
    appendCell(out, "<td width=\"10%\">", Tr::MWDate);
    appendCell(out, "<td width=\"10%\">", Tr::MWJobNo);
    appendCell(out, "<td width=\"20%\">", Tr::MWProject);
    appendCell(out, "<td width=\"3%\" align=\"center\">", Tr::MWHour);
    appendCell(out, "<td width=\"3%\" align=\"center\">", Tr::MWMin);
    appendCell(out, "<td width=\"15%\">", Tr::MWOperation);
    appendCell(out, "<td width=\"15%\">", Tr::MWClient);
    appendCell(out, "<td>", Tr::MWButtonNote);
    out.append("\r\n</tr>\r\n");

    // The count and the selection are read on every pass: a yield may have added, removed or
    // selected rows, and a row past the end must never be touched.
    for (int r = 0; r < ListBox1.ListCount(); ++r) {
        const core::JobRow& row = ListBox1.row(r);
        if (r == ListBox1.ListIndex)
            out.append("<tr class=\"hilite\">\r\n");
        else if (r % 2 == 0)
            out.append("<tr class=\"roweven\">\r\n");
        else
            out.append("<tr class=\"rowodd\">\r\n");
        appendCell(out, "<td>", row.cell(core::CellDate));
        appendCell(out, "<td>", row.cell(core::CellJob));
        appendCell(out, "<td>", row.cell(core::CellProject));
        appendCell(out, "<td align=\"center\">", row.cell(core::CellHours));
        appendCell(out, "<td align=\"center\">", row.cell(core::CellMinutes));
        appendCell(out, "<td>", row.cell(core::CellOperation));
        appendCell(out, "<td>", row.cell(core::CellClient));
        appendCell(out, "<td>", row.note);
        out.append("\r\n</tr>\r\n");
        if (yield)
            yield();
    }

    out.append("</table>\r\n"
               "</div></body>\r\n"
               "</html>");
    return out;
}

} // namespace netlink

#include "platform/qt/reportprinter.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPrinter>

#include <algorithm>
#include <array>

namespace platform::qt
{

namespace
{

// Shares of the page's width, column by column: date, job number, project, time, operation, client.
constexpr std::array<qreal, 6> kShares{0.12, 0.11, 0.27, 0.08, 0.18, 0.24};
constexpr int kTextFlags = Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap;
constexpr qreal kMinMargin = 12.7; // millimetres

class Pages
{
public:
    Pages(QPrinter& printer, const Report& report) : m_printer(printer), m_report(report), m_painter(&printer)
    {
        m_area = printer.pageLayout()
                     .paintRectPixels(printer.resolution())
                     .translated(-printer.pageLayout().paintRectPixels(printer.resolution()).topLeft());
        m_body = QFont(QStringLiteral("Sans Serif"), 9);
        m_bold = m_body;
        m_bold.setBold(true);
        m_noteFont = m_body;
        m_noteFont.setItalic(true);
        m_titleFont = m_bold;
        m_titleFont.setPointSizeF(13);
        m_line = QFontMetricsF(m_body, &printer).lineSpacing();
        m_gap = m_line / 3;
        qreal x = m_area.left();
        for (qreal share : kShares) {
            m_columns.push_back(QRectF(x, 0, m_area.width() * share - m_gap, 0));
            x += m_area.width() * share;
        }
        m_bottom = m_area.bottom() - 2 * m_line; // the foot line and a gap above it
    }

    int paint()
    {
        startPage();
        m_painter.setFont(m_titleFont);
        const QRectF title =
            m_painter.boundingRect(QRectF(m_area.left(), m_y, m_area.width(), 0), kTextFlags, m_report.title);
        m_painter.drawText(title, kTextFlags, m_report.title);
        m_y = title.bottom() + m_line;
        headings();
        for (const Report::Row& row : m_report.rows)
            paintRow(row);
        m_painter.setFont(m_bold);
        if (m_y + m_line > m_bottom) {
            newPage();
        }
        m_y += m_gap;
        m_painter.drawText(QRectF(m_area.left(), m_y, m_area.width(), m_line), kTextFlags, m_report.total);
        m_painter.end();
        return m_page;
    }

private:
    QRectF cell(int column, qreal height) const
    {
        QRectF r = m_columns[size_t(column)];
        r.moveTop(m_y);
        r.setHeight(height);
        return r;
    }

    qreal heightOf(const QString& text, const QFont& font, qreal width)
    {
        m_painter.setFont(font);
        return m_painter.boundingRect(QRectF(0, 0, width, 0), kTextFlags, text).height();
    }

    void paintRow(const Report::Row& row)
    {
        qreal cells = m_line;
        for (int c = 0; c < row.cells.size() && c < int(kShares.size()); ++c)
            cells = std::max(cells, heightOf(row.cells[c], m_body, m_columns[size_t(c)].width()));
        const qreal noteIndent = m_columns[1].left() - m_area.left();
        const qreal note = row.note.isEmpty() ? 0 : heightOf(row.note, m_noteFont, m_area.width() - noteIndent);
        // A row never splits: one that does not fit goes whole to the next page.
        if (m_y + cells + note > m_bottom && m_rowsOnPage > 0)
            newPage();
        m_painter.setFont(m_body);
        for (int c = 0; c < row.cells.size() && c < int(kShares.size()); ++c)
            m_painter.drawText(cell(c, cells), kTextFlags, row.cells[c]);
        m_y += cells;
        if (!row.note.isEmpty()) {
            m_painter.setFont(m_noteFont);
            m_painter.drawText(QRectF(m_area.left() + noteIndent, m_y, m_area.width() - noteIndent, note), kTextFlags,
                               row.note);
            m_y += note;
        }
        m_y += m_gap;
        ++m_rowsOnPage;
    }

    void headings()
    {
        m_painter.setFont(m_bold);
        for (int c = 0; c < m_report.headings.size() && c < int(kShares.size()); ++c)
            m_painter.drawText(cell(c, m_line), kTextFlags, m_report.headings[c]);
        m_y += m_line;
        m_painter.drawLine(QPointF(m_area.left(), m_y), QPointF(m_area.right(), m_y));
        m_y += m_gap;
    }

    void startPage()
    {
        ++m_page;
        m_y = m_area.top();
        m_rowsOnPage = 0;
        m_painter.setFont(m_body);
        const QRectF foot(m_area.left(), m_area.bottom() - m_line, m_area.width(), m_line);
        m_painter.drawText(foot, Qt::AlignLeft | Qt::AlignBottom, m_report.footer);
        m_painter.drawText(foot, Qt::AlignRight | Qt::AlignBottom, m_report.pagePrefix + QString::number(m_page));
    }

    void newPage()
    {
        m_printer.newPage();
        startPage();
        headings();
    }

    QPrinter& m_printer;
    const Report& m_report;
    QPainter m_painter;
    QRectF m_area;
    QFont m_body, m_bold, m_noteFont, m_titleFont;
    qreal m_line = 0, m_gap = 0, m_y = 0, m_bottom = 0;
    std::vector<QRectF> m_columns;
    int m_page = 0;
    int m_rowsOnPage = 0;
};

} // namespace

int paintReport(QPrinter& printer, const Report& report)
{
    // Half an inch of paper round the report, or the margins already set where they are wider: the
    // printer's own, which it cannot print into, or the user's.
    QMarginsF margins = printer.pageLayout().margins(QPageLayout::Millimeter);
    margins = QMarginsF(std::max(margins.left(), kMinMargin), std::max(margins.top(), kMinMargin),
                        std::max(margins.right(), kMinMargin), std::max(margins.bottom(), kMinMargin));
    printer.setPageMargins(margins, QPageLayout::Millimeter);
    return Pages(printer, report).paint();
}

} // namespace platform::qt

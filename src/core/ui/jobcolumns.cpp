#include "core/ui/jobcolumns.h"

#include "core/jobrow.h"
#include "core/texts.h"
#include "core/timetext.h"

#include <QEvent>
#include <QFontDatabase>
#include <QFontMetrics>
#include <QHeaderView>
#include <QStyle>
#include <QTreeView>

#include <algorithm>

namespace core::ui
{

namespace
{

// Room around a cell's text: the view's margins and a little air.
constexpr int kCellPadding = 7;
// A name as long as most clients', projects' and operations': twelve characters.
const QString kTwelveLetters = QStringLiteral("Northwind Co");

int fit(const QFontMetrics& metrics, const QString& text)
{
    return metrics.horizontalAdvance(text) + kCellPadding;
}

// The widest short date of the locale, over every month of a year, with two-digit days, in bold: the
// date of a row with a note is bold.
int widestDate(const QFontMetrics& metrics, const QFontMetrics& bold)
{
    int widest = 0;
    for (int month = 1; month <= 12; ++month)
        widest = std::max(widest, fit(bold, shortDate(QDate(2026, month, 28))));
    return std::max(widest, fit(metrics, Tr::MWDate));
}

// What each column takes before project and operation give way: its usual content whole, and for
// project and operation a letter and the ellipsis.
std::array<int, 7> leastWidths(const QFont& font)
{
    const QFontMetrics metrics(font);
    QFont boldFont = font;
    boldFont.setBold(true);
    // A noted row's date and an over-budget row's time are bold.
    const QFontMetrics bold(boldFont);
    const int letter = metrics.horizontalAdvance(QLatin1Char('n'));
    std::array<int, 7> least{};
    least[CellDate] = widestDate(metrics, bold);
    least[CellJob] = fit(metrics, QStringLiteral("A100"));
    least[CellProject] = letter + kCellPadding;
    least[CellHours] = std::max(fit(bold, QStringLiteral("100")), fit(metrics, Tr::MWHour));
    least[CellMinutes] = std::max(fit(bold, QStringLiteral("59")), fit(metrics, Tr::MWMin));
    least[CellOperation] = letter + kCellPadding;
    least[CellClient] = fit(metrics, kTwelveLetters);
    return least;
}

} // namespace

std::array<int, 7> jobColumnWidths(const QFont& font, int width)
{
    const std::array<int, 7> least = leastWidths(font);
    std::array<int, 7> widths = least;
    widths[CellDate] = std::max(least[CellDate], width * 12 / 100);
    widths[CellJob] = std::max(least[CellJob], width * 12 / 100);
    widths[CellProject] = std::max(least[CellProject], width * 25 / 100);
    widths[CellOperation] = std::max(least[CellOperation], width * 20 / 100);
    int used = 0;
    for (int c = CellDate; c < CellClient; ++c)
        used += widths[c];
    int short_ = used + least[CellClient] - width;
    for (int c : {CellProject, CellOperation}) {
        const int give = std::clamp(short_, 0, widths[c] - least[c]);
        widths[c] -= give;
        used -= give;
        short_ -= give;
    }
    widths[CellClient] = std::max(least[CellClient], width - used);
    return widths;
}

QFont listFont(const QString& family, int size)
{
    QFont font = family == QStringLiteral("System") || !QFontDatabase::hasFamily(family) ? QFont() : QFont(family);
    font.setPointSize(size);
    return font;
}

QFont listFont(const AppPrefs& prefs)
{
    return listFont(prefs.chosefont, prefs.fontsize);
}

int selectedRow(const QTreeView* list)
{
    const QModelIndexList rows = list->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

JobColumns::JobColumns(QTreeView* list) : QObject(list), m_list(list), m_viewport(list->viewport())
{
    // The widths below decide; the header's own least width would hold narrow columns wider.
    list->header()->setMinimumSectionSize(1);
    list->installEventFilter(this);
    list->viewport()->installEventFilter(this);
}

int JobColumns::columnsWidth() const
{
    // Room is always left for the vertical scroll bar, so that a list with few rows and one with many,
    // side by side, keep the same columns.
    return m_list->maximumViewportSize().width() - m_list->style()->pixelMetric(QStyle::PM_ScrollBarExtent);
}

int JobColumns::shortOfUsual() const
{
    const QFont font = m_list->font();
    std::array<int, 7> usual = leastWidths(font);
    const int twelve = fit(QFontMetrics(font), kTwelveLetters);
    usual[CellProject] = twelve;
    usual[CellOperation] = twelve;
    for (int c = 0; c < int(usual.size()); ++c)
        usual[size_t(c)] = std::max(usual[size_t(c)], m_list->header()->sectionSizeHint(c));
    const auto shows = [&](int width) {
        const std::array<int, 7> widths = jobColumnWidths(font, width);
        for (size_t c = 0; c < widths.size(); ++c)
            if (widths[c] < usual[c])
                return false;
        return true;
    };
    // Every column grows with the list, so the least width that shows them all is found by halving.
    const int now = columnsWidth();
    int enough = std::max(now, 1);
    while (!shows(enough) && enough < (1 << 15))
        enough *= 2;
    int lacking = now;
    while (enough - lacking > 1) {
        const int middle = lacking + (enough - lacking) / 2;
        (shows(middle) ? enough : lacking) = middle;
    }
    return shows(now) ? 0 : enough - now;
}

void JobColumns::layout()
{
    const std::array<int, 7> widths = jobColumnWidths(m_list->font(), columnsWidth());
    for (int c = 0; c < int(widths.size()); ++c)
        m_list->setColumnWidth(c, widths[size_t(c)]);
}

bool JobColumns::eventFilter(QObject* watched, QEvent* event)
{
    if ((watched == m_viewport && event->type() == QEvent::Resize) ||
        (watched == m_list && event->type() == QEvent::FontChange))
        layout();
    return QObject::eventFilter(watched, event);
}

} // namespace core::ui

#include "core/ui/timesheetmodel.h"

#include "core/texts.h"
#include "core/ui/contrast.h"

#include <QAbstractItemView>
#include <QBrush>
#include <QFont>
#include <QMimeData>
#include <QPalette>

namespace core::ui
{

namespace
{
bool isOver(const JobRow& row, int column)
{
    return (column == CellHours || column == CellMinutes) && row.budget == kBudgetOver;
}
} // namespace

int TimesheetModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_sheet.ListCount();
}

int TimesheetModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : kColumnCount;
}

QColor TimesheetModel::background(int row, int column) const
{
    const bool gray = m_grayable && m_gray;
    if (column == CellDate && !m_sheet.row(row).note.isEmpty()) {
        if (!m_dark)
            return kNoteLight;
        return gray ? kNoteDarkGray : kNoteDark;
    }
    if (m_dark && gray)
        return row % 2 == 0 ? kEvenDarkGray : kOddDarkGray;
    return stripeOf(row, m_dark, m_stripe);
}

QColor TimesheetModel::textColour(int row, int column) const
{
    QColor text = m_text;
    if (m_grayable && m_gray)
        text = m_dark ? kGrayTextDark : kGrayTextLight;
    else if (isOver(m_sheet.row(row), column))
        text = kOverText;
    // Any ground, the user's stripe too, keeps its colour; the text takes the nearest shade that reads on it.
    const QColor shown = m_readable(text, background(row, column));
    return shown == m_text ? QColor() : shown;
}

QVariant TimesheetModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= m_sheet.ListCount())
        return {};
    const JobRow& row = m_sheet.row(index.row());
    const int column = index.column();
    switch (role) {
    case Qt::DisplayRole:
        return row.cell(column);
    case Qt::TextAlignmentRole:
        return column == CellHours ? QVariant(Qt::AlignRight | Qt::AlignVCenter)
                                   : QVariant(Qt::AlignLeft | Qt::AlignVCenter);
    case Qt::FontRole:
        if ((column == CellDate && !row.note.isEmpty()) || isOver(row, column)) {
            QFont bold;
            bold.setBold(true);
            return bold;
        }
        return {};
    case Qt::ForegroundRole: {
        const QColor colour = textColour(index.row(), column);
        return colour.isValid() ? QVariant(QBrush(colour)) : QVariant();
    }
    case Qt::BackgroundRole:
        return QBrush(background(index.row(), column));
    default:
        return {};
    }
}

QVariant TimesheetModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    if (role == Qt::TextAlignmentRole)
        return section == CellHours ? QVariant(Qt::AlignRight | Qt::AlignVCenter)
                                    : QVariant(Qt::AlignLeft | Qt::AlignVCenter);
    if (role != Qt::DisplayRole)
        return {};
    switch (section) {
    case CellDate:
        return Tr::MWDate;
    case CellJob:
        return Tr::MWJobNo;
    case CellProject:
        return Tr::MWProject;
    case CellHours:
        return Tr::MWHour;
    case CellMinutes:
        return Tr::MWMin;
    case CellOperation:
        return Tr::MWOperation;
    case CellClient:
        return Tr::MWClient;
    case 7:
        return QStringLiteral(" ");
    default:
        return QString();
    }
}

Qt::ItemFlags TimesheetModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemNeverHasChildren;
}

QByteArray TimesheetModel::dragText(const JobRow& row)
{
    QString text;
    for (int c = 0; c <= 7; ++c)
        text += row.cell(c) + QLatin1Char('\t');
    text += QLatin1Char('\r');
    return text.toUtf8();
}

QMimeData* TimesheetModel::mimeData(const QModelIndexList& indexes) const
{
    if (indexes.isEmpty() || !indexes.first().isValid() || indexes.first().row() >= m_sheet.ListCount())
        return nullptr;
    auto* data = new QMimeData;
    data->setData(kDragMime, dragText(m_sheet.row(indexes.first().row())));
    return data;
}

QColor TimesheetModel::stripeOf(int row, bool dark, const QColor& stripe)
{
    const bool even = row % 2 == 0;
    if (!dark)
        return even ? stripe : kOddLight;
    return even ? kEvenDark : kOddDark;
}

void TimesheetModel::setDark(bool dark)
{
    if (dark == m_dark)
        return;
    m_dark = dark;
    repaintAll();
}

void TimesheetModel::follow(const QAbstractItemView& list)
{
    const QColor text = list.palette().color(list.isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::Text);
    if (text != m_text) {
        m_text = text;
        repaintAll();
    }
    setDark(isDark(list.palette()));
}

void TimesheetModel::setGray(bool gray)
{
    if (gray == m_gray)
        return;
    m_gray = gray;
    repaintAll();
}

void TimesheetModel::repaintAll()
{
    if (m_sheet.ListCount() > 0)
        emit dataChanged(index(0, 0), index(m_sheet.ListCount() - 1, kColumnCount - 1),
                         {Qt::BackgroundRole, Qt::ForegroundRole});
}

} // namespace core::ui

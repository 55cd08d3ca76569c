#include "core/ui/timesheetmodel.h"

#include "core/texts.h"

#include <QBrush>
#include <QFont>

namespace core::ui
{

int TimesheetModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_sheet.ListCount();
}

int TimesheetModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : kColumnCount;
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
        return column == CellHours ? QVariant(Qt::AlignRight | Qt::AlignVCenter) : QVariant(Qt::AlignLeft | Qt::AlignVCenter);
    case Qt::FontRole:
        if ((column == CellDate && !row.note.isEmpty()) ||
            ((column == CellHours || column == CellMinutes) && row.budget == kBudgetOver)) {
            QFont bold;
            bold.setBold(true);
            return bold;
        }
        return {};
    case Qt::ForegroundRole:
        if ((column == CellHours || column == CellMinutes) && row.budget == kBudgetOver)
            return QBrush(Qt::red);
        return {};
    case Qt::BackgroundRole:
        if (column == CellDate && !row.note.isEmpty())
            return QBrush(QColor(255, 240, 140));
        return index.row() % 2 ? QVariant(QBrush(m_stripe)) : QVariant();
    default:
        return {};
    }
}

QVariant TimesheetModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    if (role == Qt::TextAlignmentRole)
        return section == CellHours ? QVariant(Qt::AlignRight | Qt::AlignVCenter) : QVariant(Qt::AlignLeft | Qt::AlignVCenter);
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

} // namespace core::ui

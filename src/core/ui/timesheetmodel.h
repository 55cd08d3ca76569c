#pragma once

#include "core/timesheet.h"

#include <QAbstractTableModel>
#include <QColor>

namespace core::ui
{

// Shows a Timesheet as a list control: twelve columns, seven of them visible, cell numbers unchanged.
class TimesheetModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    explicit TimesheetModel(const Timesheet& sheet, QObject* parent = nullptr) : QAbstractTableModel(parent), m_sheet(sheet)
    {
    }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    void setStripe(const QColor& colour) { m_stripe = colour; }
    void resetAll()
    {
        beginResetModel();
        endResetModel();
    }
    void rowChanged(int row) { emit dataChanged(index(row, 0), index(row, columnCount() - 1)); }

private:
    const Timesheet& m_sheet;
    QColor m_stripe{243, 246, 250};
};

} // namespace core::ui

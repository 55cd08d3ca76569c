#pragma once

#include "core/timesheet.h"
#include "core/ui/contrast.h"

#include <QAbstractTableModel>
#include <QColor>

class QAbstractItemView;
class QPalette;

namespace core::ui
{

// Shows a Timesheet as a list control: twelve columns, seven of them visible, cell numbers unchanged.
// Rows are striped, a row with a note has its date bold on a marked ground, an over-budget row its time
// in bold red; a drag carries the row's first eight cells as tab-separated text.
class TimesheetModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    // Paint colours of the lists. The texts on them are shaded where they would not read (see textColour);
    // the dark stripes are dark enough that white text and a red budget mark both do.
    inline static const QColor kOddLight{255, 255, 255};
    inline static const QColor kEvenDark{44, 44, 44};
    inline static const QColor kOddDark{60, 60, 60};
    inline static const QColor kEvenDarkGray{30, 30, 30};
    inline static const QColor kOddDarkGray{10, 10, 10};
    inline static const QColor kNoteLight{255, 255, 0};
    inline static const QColor kNoteDark{255, 92, 0};
    inline static const QColor kNoteDarkGray{204, 51, 0};
    inline static const QColor kOverText{255, 0, 0};
    inline static const QColor kGrayTextLight{150, 150, 150};
    inline static const QColor kGrayTextDark{90, 90, 90};
    inline static const QString kDragMime = QStringLiteral("text/plain");

    // `grayable`: the list is painted greyed while the single-client view is on (ListBox1 alone).
    explicit TimesheetModel(const Timesheet& sheet, QObject* parent = nullptr, bool grayable = true)
        : QAbstractTableModel(parent), m_sheet(sheet), m_grayable(grayable)
    {}

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QStringList mimeTypes() const override { return {kDragMime}; }
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    Qt::DropActions supportedDragActions() const override { return Qt::CopyAction; }

    // The text a drag of a row carries: cells 0 to 7, each followed by a tab, then a carriage return.
    static QByteArray dragText(const JobRow& row);
    // The ground of a row's cells in a list striped with `stripe` (the user's colour, in the light
    // appearance), not greyed; the preset jobs list is striped the same.
    static QColor stripeOf(int row, bool dark, const QColor& stripe);

    void setStripe(const QColor& colour) { m_stripe = colour; }
    void setDark(bool dark);
    // The appearance and the text colour of the list that shows the model, enabled or greyed.
    void follow(const QAbstractItemView& list);
    void setGray(bool gray);
    void resetAll()
    {
        beginResetModel();
        endResetModel();
    }
    void rowChanged(int row) { emit dataChanged(index(row, 0), index(row, columnCount() - 1)); }

    QColor background(int row, int column) const;
    QColor textColour(int row, int column) const; // invalid: the list's own text colour

private:
    void repaintAll();

    const Timesheet& m_sheet;
    bool m_grayable;
    QColor m_stripe{243, 246, 250};
    bool m_dark = false;
    bool m_gray = false;
    QColor m_text{Qt::black}; // what the list paints where the model gives no colour
    ReadableColours m_readable;
};

} // namespace core::ui

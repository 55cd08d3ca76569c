#pragma once

#include "budgets/presetjobs.h"
#include "core/ui/contrast.h"

#include <QAbstractTableModel>
#include <QDialog>

#include <functional>

class QLabel;
class QLineEdit;
class QPushButton;
class QToolButton;
class QTreeView;

namespace budgets::ui
{

// The preset jobs in their five columns, striped like the job lists.
class PresetJobsModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    PresetJobsModel(const preSetJobsWin& form, const core::AppPrefs& prefs, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    void setDark(bool dark);
    void resetAll();

private:
    const preSetJobsWin& m_form;
    const core::AppPrefs& m_prefs;
    bool m_dark = false;
    core::ui::ReadableColours m_readable;
};

// The preset jobs window on screen: the list, the edit row under it and the export and import button.
class PresetJobsView : public QDialog
{
    Q_OBJECT

public:
    PresetJobsView(preSetJobsWin& form, const core::AppPrefs& prefs, QWidget* parent = nullptr);

    // The window came to the front: the open timesheet's hours are brought up to date.
    std::function<void()> activated;

    QTreeView* joblst() const { return m_list; }
    QLineEdit* field(int number) const;
    QPushButton* addjob() const { return m_addjob; }
    QToolButton* ExpImp() const { return m_expImp; }
    void refresh();

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void reject() override;

private:
    static constexpr int kHeadingPadding = 14;
    static constexpr int kLeastProjectWidth = 110;

    void showRows();
    int headingWidth(int column) const;
    // The window width at which every heading shows in full.
    int widthForHeadings() const;
    void placeFocus();

    preSetJobsWin& m_form;
    PresetJobsModel* m_model;
    QTreeView* m_list;
    QLineEdit* m_fields[4];
    QPushButton* m_addjob;
    QPushButton* m_killjob;
    QToolButton* m_expImp;
    bool m_refreshing = false;
};

} // namespace budgets::ui

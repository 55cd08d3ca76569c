#pragma once

#include "core/appprefs.h"

#include <QFont>
#include <QObject>

#include <array>

class QTreeView;

namespace core::ui
{

// The widths of the seven visible columns of a job list `width` pixels wide, in `font`:
// the list's shares for date, job, project and operation, the fixed hours and minutes, the client the
// rest; each column at least as wide as its usual content (the locale's longest short date, "A100",
// "100", "59", a client name of twelve characters), project and operation giving way first.
std::array<int, 7> jobColumnWidths(const QFont& font, int width);

// The font of the job lists: the one the settings name, or the desktop's own where that family is not
// installed. The setting keeps its value either way.
QFont listFont(const AppPrefs& prefs);
QFont listFont(const QString& family, int size);

// The row a list shows highlighted, or -1 for none: the user's choice, which Ctrl+click can take away
// without moving the current row.
int selectedRow(const QTreeView* list);

// Keeps a job list's columns laid out by jobColumnWidths whenever the list's width or font changes, so
// that ListBox1 and ListBox2, which are as wide as each other, always match.
class JobColumns : public QObject
{
public:
    explicit JobColumns(QTreeView* list);
    void layout();
    // How many pixels the list is short of showing every heading and its column's usual content whole,
    // a project and an operation of twelve characters too; 0 when it shows them.
    int shortOfUsual() const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    int columnsWidth() const;

    QTreeView* m_list;
    // Kept apart: the list's destructor sends its viewport events when it is no longer a scroll area.
    QObject* m_viewport;
};

} // namespace core::ui

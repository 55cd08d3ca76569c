#pragma once

#include "jobs/listbehaviour.h"

#include <QObject>

class QTreeView;

namespace jobs::ui
{

// Hands what happens in a job list on screen to the lists' behaviour: keys, double-clicks, the context
// menu, heading presses and drags. List 1 is ListBox1, list 2 ListBox2.
class ListWiring : public QObject
{
    Q_OBJECT

public:
    ListWiring(QTreeView* list, int which, ListBehaviour& behaviour);

    // The context menu as it would open now; shown by the right button.
    void showContextMenu(const QPoint& at);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void headingPressed(int section);

    QTreeView* m_list;
    // Kept apart: the list's destructor sends its viewport events when it is no longer a scroll area.
    QObject* m_viewport;
    int m_which;
    ListBehaviour& m_behaviour;
};

} // namespace jobs::ui

#include "jobs/ui/listwiring.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QTreeView>

namespace jobs::ui
{

ListWiring::ListWiring(QTreeView* list, int which, ListBehaviour& behaviour)
    : QObject(list), m_list(list), m_viewport(list->viewport()), m_which(which), m_behaviour(behaviour)
{
    m_list->installEventFilter(this);
    m_list->viewport()->installEventFilter(this);
    m_list->setContextMenuPolicy(Qt::CustomContextMenu);
    m_list->setDragEnabled(true);
    m_list->setDragDropMode(QAbstractItemView::DragOnly);
    m_list->setSortingEnabled(false); // the behaviour sorts; the toolkit must not sort again
    m_list->header()->setSectionsClickable(true);
    connect(m_list->header(), &QHeaderView::sectionClicked, this, &ListWiring::headingPressed);
    connect(m_list, &QTreeView::doubleClicked, this, [this] { m_behaviour.ListBox_DoubleClick(); });
    connect(m_list, &QTreeView::customContextMenuRequested, this, &ListWiring::showContextMenu);
}

void ListWiring::headingPressed(int section)
{
    const ListBehaviour::SortShown shown = m_behaviour.SortColumn(m_which, section);
    QHeaderView* header = m_list->header();
    header->setSortIndicatorShown(shown.column >= 0);
    if (shown.column >= 0)
        header->setSortIndicator(shown.column, shown.order);
}

void ListWiring::showContextMenu(const QPoint& at)
{
    // A right click on a row picks that row first, as a left click would.
    const QModelIndex under = m_list->indexAt(at);
    if (under.isValid())
        m_list->setCurrentIndex(under);
    QMenu menu(m_list);
    for (const MenuItem& item : m_behaviour.ConstructContextualMenu(m_which)) {
        if (item.separator()) {
            menu.addSeparator();
            continue;
        }
        QString shown = item.text;
        QAction* action = menu.addAction(shown.replace(QLatin1Char('&'), QStringLiteral("&&")));
        action->setData(item.text);
        action->setEnabled(item.enabled);
    }
    if (QAction* chosen = menu.exec(m_list->viewport()->mapToGlobal(at)))
        m_behaviour.ContextualMenuAction(chosen->data().toString());
}

bool ListWiring::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_list && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        QChar c;
        switch (key->key()) {
        case Qt::Key_Backspace:
            c = QChar(8);
            break;
        case Qt::Key_Delete:
            c = QChar(127);
            break;
        case Qt::Key_Return:
            c = QChar(13);
            break;
        case Qt::Key_Enter:
            c = QChar(3);
            break;
        default:
            return false;
        }
        return m_behaviour.ListBox_KeyDown(m_which, c);
    }
    if (m_which == 1 && watched == m_viewport &&
        (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick))
        return m_behaviour.ListBox1_MouseDown();
    return QObject::eventFilter(watched, event);
}

} // namespace jobs::ui

#include "clients/ui/clientpane.h"

#include "core/ui/contrast.h"
#include "core/ui/jobcolumns.h"
#include "core/ui/timesheetmodel.h"

#include <QEvent>
#include <QHeaderView>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QTreeView>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace clients::ui
{

namespace
{

// The bar between the client's list and the timesheet, painted in its own colours: one at rest, another
// while it is dragged. (A style sheet would do the same at the price of a style of its own for the pane,
// built as the window opens.)
class Dragbar : public QSplitter
{
public:
    using QSplitter::QSplitter;
    QColor rest, dragged;

protected:
    QSplitterHandle* createHandle() override { return new Handle(orientation(), this); }

private:
    class Handle : public QSplitterHandle
    {
    public:
        Handle(Qt::Orientation orientation, Dragbar* bar) : QSplitterHandle(orientation, bar), m_bar(bar) {}

    protected:
        void paintEvent(QPaintEvent*) override
        {
            QPainter(this).fillRect(rect(), m_pressed ? m_bar->dragged : m_bar->rest);
        }
        void mousePressEvent(QMouseEvent* event) override
        {
            m_pressed = true;
            update();
            QSplitterHandle::mousePressEvent(event);
        }
        void mouseReleaseEvent(QMouseEvent* event) override
        {
            m_pressed = false;
            update();
            QSplitterHandle::mouseReleaseEvent(event);
        }

    private:
        Dragbar* m_bar;
        bool m_pressed = false;
    };
};

// A client's row with a rule under it.
class RuledRows : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QColor rule;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        QStyledItemDelegate::paint(painter, option, index);
        painter->save();
        painter->setPen(rule);
        painter->drawLine(option.rect.bottomLeft(), option.rect.bottomRight());
        painter->restore();
    }
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        return QStyledItemDelegate::sizeHint(option, index) + QSize(0, 1);
    }
};

} // namespace

ClientPane::ClientPane(ClientView& view, core::Mainwndo& window, const core::AppPrefs& prefs, QWidget* listBox1,
                       QWidget* parent)
    : QSplitter(Qt::Horizontal, parent), m_view(view), m_w(window)
{
    setObjectName(QStringLiteral("invisibledragbarV"));
    setChildrenCollapsible(false);
    setHandleWidth(5);

    auto* left = new QWidget(this);
    auto* leftLayout = new QVBoxLayout(left);
    leftLayout->setContentsMargins(0, 0, 0, 0);
    leftLayout->setSpacing(2);
    m_clients = new QTreeWidget(left);
    m_clients->setObjectName(QStringLiteral("clientlist2"));
    m_clients->setAccessibleName(kClientList);
    m_clients->setHeaderHidden(true);
    m_clients->setColumnCount(1);
    m_clients->setFont(core::ui::listFont(prefs));
    m_clients->setSelectionMode(QAbstractItemView::SingleSelection);
    m_clients->setItemDelegate(new RuledRows(m_clients));
    leftLayout->addWidget(m_clients, 1);
    m_addClient = new QLabel(kAddClient, left);
    m_addClient->setObjectName(QStringLiteral("addClient2"));
    m_addClient->setCursor(Qt::PointingHandCursor);
    m_addClient->installEventFilter(this);
    leftLayout->addWidget(m_addClient);
    // The width stays between the bounds the drag allows.
    left->setMinimumWidth(ClientView::kClientWidthMin + 1);
    left->setMaximumWidth(ClientView::kClientWidthMax - 1);
    addWidget(left);

    m_lists = new Dragbar(Qt::Vertical, this);
    m_lists->setObjectName(QStringLiteral("dragbar"));
    m_lists->setChildrenCollapsible(false);
    m_lists->setHandleWidth(6);
    m_model = new core::ui::TimesheetModel(window.ListBox2, this, false);
    m_model->setStripe(QColor(prefs.red, prefs.green, prefs.blue));
    m_listBox2 = new QTreeView(m_lists);
    m_listBox2->setObjectName(QStringLiteral("ListBox2"));
    m_listBox2->setAccessibleName(kListBox2Name);
    m_listBox2->setModel(m_model);
    m_listBox2->setRootIsDecorated(false);
    m_listBox2->setUniformRowHeights(true);
    m_listBox2->setSelectionMode(QAbstractItemView::SingleSelection);
    m_listBox2->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_listBox2->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_listBox2->setAllColumnsShowFocus(true);
    m_listBox2->setFont(core::ui::listFont(prefs));
    new core::ui::JobColumns(m_listBox2);
    m_listBox2->header()->setStretchLastSection(false);
    for (int c = 7; c < core::kColumnCount; ++c)
        m_listBox2->setColumnHidden(c, true);
    m_lists->addWidget(m_listBox2);
    m_lists->addWidget(listBox1);
    m_lists->setStretchFactor(1, 1);
    addWidget(m_lists);
    setStretchFactor(1, 1);
    setSizes({window.clientlist2Width, 1000});

    connect(this, &QSplitter::splitterMoved, this,
            [this](int pos) { m_w.clientlist2Width = ClientView::clampClientWidth(pos); });
    connect(m_lists, &QSplitter::splitterMoved, this, [this] {
        if (QWidget* top = this->window())
            top->setMinimumHeight(ClientView::dragbarMinHeight(m_listBox2->height()));
    });
    connect(m_clients, &QTreeWidget::itemExpanded, this, [this] {
        if (!m_showing)
            m_view.clientlist2_ExpandRow();
    });
    connect(m_clients, &QTreeWidget::itemCollapsed, this, [this] {
        if (!m_showing)
            m_view.clientlist2_CollapseRow();
    });
    connect(m_clients, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* current) {
        if (m_showing || !current)
            return;
        QTreeWidgetItem* parent = current->parent();
        m_view.setClientlist2Index(parent ? parent->indexOfChild(current) + 1 : 0);
    });
    // As in ListBox1: the highlighted row, which Ctrl+click can take away, is the selection.
    connect(m_listBox2->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        if (m_showing)
            return;
        const int row = core::ui::selectedRow(m_listBox2);
        if (row != m_w.ListBox2.ListIndex)
            m_view.setListBox2Index(row);
    });
    connect(&view, &ClientView::clientRowsChanged, this, &ClientPane::showClientRows);
    connect(&view, &ClientView::listBox2Reset, this, [this] {
        m_model->resetAll();
        showListBox2Selection();
    });
    connect(&view, &ClientView::listBox2SelectionChanged, this, &ClientPane::showListBox2Selection);
    connect(&view, &ClientView::viewToggled, this, &ClientPane::refresh);
    connect(&window, &core::Mainwndo::controlsChanged, this, &ClientPane::refresh);

    paintColours();
    showClientRows();
    refresh();
}

void ClientPane::showClientRows()
{
    m_showing = true;
    if (m_clients->topLevelItemCount() == 0) {
        auto* folder = new QTreeWidgetItem(m_clients, {Tr::MWClientListf});
        folder->setChildIndicatorPolicy(QTreeWidgetItem::ShowIndicator);
    }
    QTreeWidgetItem* folder = m_clients->topLevelItem(0);
    qDeleteAll(folder->takeChildren());
    for (int r = 1; r < m_view.clientlist2RowCount(); ++r)
        new QTreeWidgetItem(folder, {m_view.clientlist2Row(r)});
    folder->setExpanded(m_view.expanded());
    const int index = m_view.clientlist2ListIndex();
    QTreeWidgetItem* current = index == 0 ? folder : index > 0 ? folder->child(index - 1) : nullptr;
    m_clients->setCurrentItem(current);
    paintColours();
    m_showing = false;
}

void ClientPane::showListBox2Selection()
{
    m_showing = true;
    const int row = m_w.ListBox2.ListIndex;
    QItemSelectionModel* selection = m_listBox2->selectionModel();
    if (row < 0) {
        selection->clear();
    } else {
        const QModelIndex index = m_model->index(row, 0);
        selection->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        m_listBox2->scrollTo(index);
    }
    m_showing = false;
}

void ClientPane::refresh()
{
    m_listBox2->setVisible(m_w.ListBox2Ctl.visible);
    m_listBox2->setEnabled(m_w.ListBox2Ctl.enabled);
    m_model->follow(*m_listBox2); // greyed while a job runs
    m_clients->setEnabled(m_w.clientlist2.enabled);
    m_addClient->setEnabled(m_w.addClient2.enabled);
    if (m_w.ListBox2Ctl.visible && m_lists->sizes().value(0) == 0) {
        const int total = m_lists->height();
        m_lists->setSizes({173, std::max(100, total - 173)});
    }
    m_listBox2->viewport()->update();
}

void ClientPane::paintColours()
{
    const bool dark = core::ui::isDark(palette());
    m_listBox2->setPalette(core::ui::withReadableHighlight(palette()));
    m_model->follow(*m_listBox2);
    // Every row, and the space below the last one, takes the list's colour.
    QPalette clientPalette = palette();
    clientPalette.setColor(QPalette::Base,
                           QColor::fromRgb(dark ? ClientView::kClientRowDark : ClientView::kClientRowLight));
    clientPalette.setColor(QPalette::Text, dark ? Qt::white : Qt::black);
    m_clients->setPalette(core::ui::withReadableHighlight(clientPalette));
    auto* bar = static_cast<Dragbar*>(m_lists);
    bar->rest = QColor::fromRgb(dark ? ClientView::kDragbarRestDark : ClientView::kDragbarRest);
    bar->dragged = QColor::fromRgb(dark ? ClientView::kDragbarDraggedDark : ClientView::kDragbarDragged);
    for (int i = 0; i < bar->count(); ++i)
        bar->handle(i)->update();
    static_cast<RuledRows*>(m_clients->itemDelegate())->rule = QColor(dark ? 0x555555 : 0xB8C0C4);
    m_clients->viewport()->update();
}

void ClientPane::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::PaletteChange)
        paintColours();
    QSplitter::changeEvent(event);
}

bool ClientPane::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_addClient && event->type() == QEvent::MouseButtonPress && m_addClient->isEnabled()) {
        emit addClientClicked();
        return true;
    }
    return QSplitter::eventFilter(watched, event);
}

} // namespace clients::ui

#include "core/ui/mainwndoview.h"

#include "core/timetext.h"
#include "core/ui/contrast.h"
#include "core/ui/jobcolumns.h"
#include "core/ui/onscreen.h"
#include "core/ui/timesheetmodel.h"

#include <QCloseEvent>
#include <QFrame>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTreeView>
#include <QVBoxLayout>

namespace core::ui
{

MainwndoView::MainwndoView(Mainwndo& form, const AppPrefs& prefs, QWidget* parent) : QMainWindow(parent), m_form(form)
{
    setObjectName(QStringLiteral("Mainwndo"));
    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(6, 6, 6, 4);
    layout->setSpacing(4);

    m_model = new TimesheetModel(form.ListBox1, this);
    m_model->setStripe(QColor(prefs.red, prefs.green, prefs.blue));
    m_list = new QTreeView(central);
    m_list->setObjectName(QStringLiteral("ListBox1"));
    m_list->setAccessibleName(Mainwndo::kListBox1Name);
    m_list->setModel(m_model);
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true); // keeps 100,000 rows cheap to lay out
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    m_list->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->setAllColumnsShowFocus(true);
    m_list->header()->setStretchLastSection(false);
    m_list->header()->setSectionsMovable(false);
    for (int c = 7; c < kColumnCount; ++c)
        m_list->setColumnHidden(c, true);
    m_list->setFont(listFont(prefs));
    m_columns = new JobColumns(m_list);
    m_list->installEventFilter(this);
    m_list->viewport()->installEventFilter(this);
    layout->addWidget(m_list, 1);

    m_notebox = new QLineEdit(central);
    m_notebox->setObjectName(QStringLiteral("notebox"));
    m_notebox->setAccessibleName(Tr::MWButtonNote); // the selected row's note, as the job dialog labels it
    m_notebox->setReadOnly(true);
    layout->addWidget(m_notebox);

    auto* bar = new QHBoxLayout;
    m_indecator = new QFrame(central);
    m_indecator->setObjectName(QStringLiteral("indecator"));
    m_indecator->setFixedSize(14, 14);
    m_indecator->setAutoFillBackground(true);
    m_runButton = new QPushButton(central);
    m_runButton->setObjectName(QStringLiteral("runButton"));
    m_runButton->setMinimumWidth(96);
    m_runtotal = new QLabel(central);
    m_runtotal->setObjectName(QStringLiteral("runtotal"));
    // The totals line never holds the window wider than it was made: it goes on two lines instead.
    m_runtotal->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_runtotal->setWordWrap(true);
    bar->addWidget(m_indecator);
    bar->addWidget(m_runButton);
    bar->addSpacing(8);
    bar->addWidget(m_runtotal, 1);
    m_njButton2 = new QPushButton(Tr::EMAddJob, central);
    m_njButton2->setObjectName(QStringLiteral("njButton2"));
    m_njButton2->setFlat(true);
    bar->addWidget(m_njButton2);
    layout->addLayout(bar);

    auto* status = new QHBoxLayout;
    m_dataprogress = new QProgressBar(central);
    m_dataprogress->setObjectName(QStringLiteral("dataprogress"));
    m_dataprogress->setRange(0, 0); // a spinner, not a gauge
    m_dataprogress->setFixedSize(60, 10);
    m_dataprogress->setTextVisible(false);
    m_datastream = new QLabel(central);
    m_datastream->setObjectName(QStringLiteral("datastream"));
    QFont small = m_datastream->font();
    small.setPointSizeF(small.pointSizeF() * 0.85);
    m_datastream->setFont(small);
    // A long notice (a file's name in it) is cut at the window's edge, never widens the window.
    m_datastream->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    status->addWidget(m_dataprogress);
    status->addWidget(m_datastream, 1);
    layout->addLayout(status);
    setCentralWidget(central);

    connect(m_runButton, &QPushButton::clicked, this, &MainwndoView::runButtonClicked);
    connect(m_njButton2, &QPushButton::clicked, this, &MainwndoView::njButton2Clicked);
    // The highlighted row is the selected one. Ctrl+click takes the highlight off without moving the
    // current row, so the selection, not the current row, is what the form follows.
    connect(m_list->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        const int row = selectedRow(m_list);
        if (row != m_form.ListBox1.ListIndex)
            m_form.setListIndex(row);
    });
    connect(&form, &Mainwndo::controlsChanged, this, &MainwndoView::refresh);
    connect(&form, &Mainwndo::rowsReset, this, [this] {
        m_model->resetAll();
        showSelection();
    });
    connect(&form, &Mainwndo::rowChanged, m_model, &TimesheetModel::rowChanged);
    connect(&form, &Mainwndo::selectionChanged, this, &MainwndoView::showSelection);
    connect(&form, &Mainwndo::focusRequested, this, [this](int) { m_list->setFocus(); });
    connect(&form, &Mainwndo::closing, this, &MainwndoView::keepGeometry);

    followAppearance();
    // The saved place and size; the desktop places a window that has none. Both are brought onto the
    // screens when the window is first shown.
    if (form.geometry.isValid())
        setGeometry(form.geometry);
    else
        resize(Mainwndo::kCreatedWidth, Mainwndo::kCreatedHeight);
    refresh();
}

void MainwndoView::showEvent(QShowEvent* event)
{
    // The first show comes once the window's parts are laid out and before it is on the screen: the
    // columns can be measured, and the window put in its place, without a visible jump.
    if (!m_placed) {
        m_placed = true;
        QRect wanted = geometry();
        // The size a window is made with was chosen for other fonts than the desktop's: a window still
        // at that size is as wide as its headings and their usual contents need.
        if (size() == QSize(Mainwndo::kCreatedWidth, Mainwndo::kCreatedHeight))
            wanted.setWidth(width() + m_columns->shortOfUsual());
        const QRect fitted = onScreen(wanted, true);
        if (m_form.geometry.isValid())
            setGeometry(fitted);
        else
            resize(fitted.size());
    }
    QMainWindow::showEvent(event);
}

void MainwndoView::refresh()
{
    setWindowTitle(m_form.title + QStringLiteral("[*]")); // "*" while there are unsaved changes
    m_runButton->setText(m_form.runButton.caption);
    m_runButton->setEnabled(m_form.runButton.enabled);
    QPalette palette = m_indecator->palette();
    palette.setColor(QPalette::Window, QColor::fromRgb(m_form.indecator));
    m_indecator->setPalette(palette);
    m_list->setEnabled(m_form.ListBox1Ctl.enabled);
    m_model->follow(*m_list); // greyed while a job runs
    m_njButton2->setEnabled(m_form.njButton2.enabled);
    m_list->setVerticalScrollBarPolicy(m_form.ListBox1ScrollBar ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);
    m_model->setGray(m_form.listboxGray);
    m_notebox->setVisible(m_form.notebox.visible);
    m_notebox->setText(oneLine(m_form.notebox.caption)); // the strip is one line
    m_runtotal->setText(m_form.runtotal);
    m_datastream->setText(m_form.datastream);
    m_datastream->setToolTip(m_form.datastream);
    m_dataprogress->setVisible(m_form.dataprogress);
}

void MainwndoView::showSelection()
{
    const int row = m_form.ListBox1.ListIndex;
    QItemSelectionModel* selection = m_list->selectionModel();
    const QSignalBlocker block(selection);
    if (row < 0) {
        selection->clear();
    } else {
        const QModelIndex index = m_model->index(row, 0);
        selection->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        m_list->scrollTo(index);
    }
    m_list->viewport()->update();
}

void MainwndoView::keepGeometry()
{
    // Before it is shown the window has no place of its own yet: keep what was restored. A maximised or
    // minimised window keeps the place it goes back to.
    if (isVisible())
        m_form.geometry = isMaximized() || isMinimized() ? normalGeometry() : geometry();
}

void MainwndoView::closeEvent(QCloseEvent* event)
{
    if (m_closing || !closeRequested) {
        event->accept();
        return;
    }
    // The close of the document decides, once no other event is under way; the window goes away with
    // the form when it agrees.
    m_closing = closeRequested();
    if (m_closing)
        event->accept();
    else
        event->ignore();
}

void MainwndoView::followAppearance()
{
    m_list->setPalette(withReadableHighlight(palette()));
    m_model->follow(*m_list);
    const bool dark = isDark(palette());
    // The note strip keeps its own colours: pale yellow, or orange on a dark desktop, with grey text.
    QPalette strip = m_notebox->palette();
    strip.setColor(QPalette::Base, QColor::fromRgb(dark ? kStripBackDark : kStripBack));
    strip.setColor(QPalette::Text, readableOn(QColor::fromRgb(kStripText), strip.color(QPalette::Base)));
    m_notebox->setPalette(strip);
}

void MainwndoView::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::PaletteChange)
        followAppearance();
    if (event->type() == QEvent::WindowStateChange)
        isMinimized() ? m_form.Event_Minimize() : m_form.Event_Restore();
    QMainWindow::changeEvent(event);
}

bool MainwndoView::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_list && event->type() == QEvent::KeyPress && takeKey(static_cast<QKeyEvent*>(event)))
        return true;
    return QMainWindow::eventFilter(watched, event);
}

void MainwndoView::keyPressEvent(QKeyEvent* event)
{
    if (!takeKey(event))
        QMainWindow::keyPressEvent(event);
}

bool MainwndoView::takeKey(const QKeyEvent* event)
{
    return keyDown && !event->text().isEmpty() && keyDown(event->text().at(0));
}

} // namespace core::ui

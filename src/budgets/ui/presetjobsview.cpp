#include "budgets/ui/presetjobsview.h"

#include "core/texts.h"
#include "core/ui/jobcolumns.h"
#include "core/ui/onscreen.h"
#include "core/ui/timesheetmodel.h"

#include <QGridLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>

namespace budgets::ui
{

namespace
{

QString cell(const storage::PresetJob& job, int column)
{
    switch (column) {
    case 0:
        return job.job;
    case 1:
        return job.project;
    case 2:
        return job.budget;
    case 3:
        return job.closed;
    case 4:
        return job.active;
    default:
        return job.extra.value(column - storage::kPresetColumns);
    }
}

} // namespace

PresetJobsModel::PresetJobsModel(const preSetJobsWin& form, const core::AppPrefs& prefs, QObject* parent)
    : QAbstractTableModel(parent), m_form(form), m_prefs(prefs)
{}

int PresetJobsModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_form.joblst.size());
}

int PresetJobsModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_form.columnCount;
}

QVariant PresetJobsModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= m_form.joblst.size())
        return {};
    if (role == Qt::DisplayRole)
        return cell(m_form.joblst[index.row()], index.column());
    // The stripes of the timesheet; the text, black or white by the appearance, shaded where it would
    // not read on them.
    const QColor back =
        core::ui::TimesheetModel::stripeOf(index.row(), m_dark, QColor(m_prefs.red, m_prefs.green, m_prefs.blue));
    if (role == Qt::BackgroundRole)
        return back;
    if (role == Qt::ForegroundRole)
        return m_readable(m_dark ? Qt::white : Qt::black, back);
    if (role == Qt::TextAlignmentRole && index.column() >= 2 && index.column() <= 4)
        return int(Qt::AlignRight | Qt::AlignVCenter);
    return {};
}

QVariant PresetJobsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case 0:
        return Tr::MWJobNo;
    case 1:
        return Tr::MWProject;
    case 2:
        return preSetJobsWin::kPSBudgetHours;
    case 3:
        return preSetJobsWin::kPSTotalUsedHours;
    case 4:
        return preSetJobsWin::kPSUsedHours;
    default:
        return {};
    }
}

void PresetJobsModel::setDark(bool dark)
{
    m_dark = dark;
    resetAll();
}

void PresetJobsModel::resetAll()
{
    beginResetModel();
    endResetModel();
}

PresetJobsView::PresetJobsView(preSetJobsWin& form, const core::AppPrefs& prefs, QWidget* parent)
    : QDialog(parent), m_form(form)
{
    setObjectName(QStringLiteral("preSetJobsWin"));
    setWindowTitle(preSetJobsWin::kPSJWindowTitle);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(QStringLiteral("<b>%1</b>").arg(preSetJobsWin::kPSEditJobs), this));

    m_model = new PresetJobsModel(form, prefs, this);
    m_list = new QTreeView(this);
    m_list->setObjectName(QStringLiteral("joblst"));
    m_list->setAccessibleName(preSetJobsWin::kPSEditJobs);
    m_list->setModel(m_model);
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    m_list->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->header()->setStretchLastSection(true);
    layout->addWidget(m_list, 1);

    auto* grid = new QGridLayout;
    const QString names[] = {QStringLiteral("EditField2"), QStringLiteral("EditField3"), QStringLiteral("EditField4"),
                             QStringLiteral("EditField5")};
    for (int i = 0; i < 4; ++i) {
        m_fields[i] = new QLineEdit(this);
        m_fields[i]->setObjectName(names[i]);
        m_fields[i]->installEventFilter(this);
    }
    m_fields[0]->setPlaceholderText(preSetJobsWin::kCue);
    // Each label names its field, for a screen reader too.
    const auto label = [this](const QString& text, QWidget* field) {
        auto* l = new QLabel(text, this);
        l->setBuddy(field);
        return l;
    };
    grid->addWidget(label(preSetJobsWin::kPSJobNotxt, m_fields[0]), 0, 0);
    grid->addWidget(m_fields[0], 0, 1);
    grid->addWidget(label(preSetJobsWin::kPSProjectTxt, m_fields[1]), 0, 2);
    grid->addWidget(m_fields[1], 0, 3);
    grid->addWidget(label(preSetJobsWin::kPSBudgetHTxt, m_fields[2]), 1, 0);
    auto* budget = new QHBoxLayout;
    budget->addWidget(m_fields[2]);
    budget->addWidget(new QLabel(preSetJobsWin::kPSBgtHrsTxt, this));
    grid->addLayout(budget, 1, 1);
    grid->addWidget(label(preSetJobsWin::kPSBudgetTotal, m_fields[3]), 1, 2);
    auto* closed = new QHBoxLayout;
    closed->addWidget(m_fields[3]);
    closed->addWidget(new QLabel(preSetJobsWin::kPSBgtHrsTxt, this));
    grid->addLayout(closed, 1, 3);
    grid->setColumnStretch(3, 1);
    layout->addLayout(grid);

    auto* buttons = new QHBoxLayout;
    m_expImp = new QToolButton(this);
    m_expImp->setObjectName(QStringLiteral("ExpImp"));
    m_expImp->setText(preSetJobsWin::kPSExportBtn + QStringLiteral(" / ") + preSetJobsWin::kPSImportBtn);
    m_expImp->setPopupMode(QToolButton::InstantPopup);
    auto* menu = new QMenu(m_expImp);
    for (const QString& command : {preSetJobsWin::kPSExportBtn, preSetJobsWin::kPSImportBtn,
                                   preSetJobsWin::kPSImport6Btn, preSetJobsWin::kPSUpdateBudgets})
        connect(menu->addAction(command), &QAction::triggered, this,
                [this, command] { m_form.ExpImp_Action(command); });
    m_expImp->setMenu(menu);
    m_killjob = new QPushButton(preSetJobsWin::kPSDelBtn, this);
    m_killjob->setObjectName(QStringLiteral("killjob"));
    m_killjob->setAutoDefault(false);
    m_addjob = new QPushButton(this);
    m_addjob->setObjectName(QStringLiteral("addjob"));
    // Return presses it only while the form says so, not whenever the window shows or it has the focus.
    m_addjob->setAutoDefault(false);
    buttons->addWidget(m_expImp);
    buttons->addStretch();
    buttons->addWidget(m_killjob);
    buttons->addWidget(m_addjob);
    layout->addLayout(buttons);

    // The selection, not the current row, is the user's choice: the list makes its first row current
    // when it takes the focus, unselected, and a Delete then would remove a row nobody chose.
    connect(m_list->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        if (m_refreshing)
            return;
        m_form.joblst_Change(core::ui::selectedRow(m_list));
    });
    connect(m_list, &QTreeView::doubleClicked, this, [this] { m_form.joblst_DoubleClick(); });
    connect(m_fields[0], &QLineEdit::textEdited, this, [this](const QString& t) { m_form.EditField2_TextChange(t); });
    connect(m_fields[1], &QLineEdit::textEdited, this, [this](const QString& t) { m_form.EditField3_TextChange(t); });
    connect(m_fields[2], &QLineEdit::textEdited, this, [this](const QString& t) { m_form.EditField4_TextChange(t); });
    connect(m_fields[3], &QLineEdit::textEdited, this, [this](const QString& t) { m_form.EditField5_TextChange(t); });
    connect(m_addjob, &QPushButton::clicked, this, [this] { m_form.addjob_Action(); });
    connect(m_killjob, &QPushButton::clicked, this, [this] { m_form.killjob_Action(); });
    connect(&form, &preSetJobsWin::changed, this, &PresetJobsView::refresh);
    connect(&form, &preSetJobsWin::rowsReset, this, &PresetJobsView::showRows);

    m_model->setDark(core::ui::isDark(palette()));
    // A window stored narrower than its headings need, as the first one is with a wide font, grows;
    // one that the screens of now cannot show whole comes onto them.
    const QSize stored(std::max({form.Width, 406, widthForHeadings()}), std::max(form.Height, 299));
    const QRect placed = core::ui::onScreen(QRect(QPoint(form.Left, form.Top), stored), true);
    resize(placed.size());
    move(placed.topLeft());
    showRows();
}

QLineEdit* PresetJobsView::field(int number) const
{
    return number >= 2 && number <= 5 ? m_fields[number - 2] : nullptr;
}

int PresetJobsView::headingWidth(int column) const
{
    const QString text = m_model->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
    return m_list->header()->fontMetrics().horizontalAdvance(text) + kHeadingPadding;
}

int PresetJobsView::widthForHeadings() const
{
    int list = kLeastProjectWidth;
    for (int column : {0, 2, 3, 4})
        list += headingWidth(column);
    // The list's frame, the scroll bar and the window's margins around it.
    const QMargins margins = layout()->contentsMargins();
    return list + 2 * m_list->frameWidth() + m_list->style()->pixelMetric(QStyle::PM_ScrollBarExtent) + margins.left() +
           margins.right();
}

void PresetJobsView::showRows()
{
    m_refreshing = true;
    m_model->resetAll();
    // The job and the hours take the room of their headings, the project the rest.
    const int width = std::max(m_list->viewport()->width(), 380);
    for (int column : {0, 2, 3})
        m_list->setColumnWidth(column, headingWidth(column));
    int project = width;
    for (int column : {0, 2, 3, 4})
        project -= headingWidth(column);
    m_list->setColumnWidth(1, std::max(project, kLeastProjectWidth));
    m_refreshing = false;
    refresh();
}

void PresetJobsView::refresh()
{
    m_refreshing = true;
    const preSetJobsWin::Field* fields[] = {&m_form.EditField2, &m_form.EditField3, &m_form.EditField4,
                                            &m_form.EditField5};
    m_fields[0]->setMaxLength(m_form.jobLimit());
    m_fields[1]->setMaxLength(m_form.projectLimit());
    for (int i = 0; i < 4; ++i) {
        if (m_fields[i]->text() != fields[i]->Text) {
            m_fields[i]->setText(fields[i]->Text);
            // A long project shows from its start, not scrolled to its end, until it is typed in.
            if (!m_fields[i]->hasFocus())
                m_fields[i]->setCursorPosition(0);
        }
        m_fields[i]->setEnabled(fields[i]->Enabled);
    }
    m_addjob->setText(m_form.addjobCaption);
    m_addjob->setEnabled(m_form.addjobEnabled);
    m_addjob->setDefault(m_form.addjobDefault());
    m_killjob->setEnabled(m_form.killjobEnabled);
    if (core::ui::selectedRow(m_list) != m_form.ListIndex) {
        if (m_form.ListIndex >= 0)
            m_list->setCurrentIndex(m_model->index(m_form.ListIndex, 0));
        else
            m_list->selectionModel()->clear();
    }
    m_list->viewport()->update();
    placeFocus();
    m_refreshing = false;
}

void PresetJobsView::placeFocus()
{
    // A hidden view leaves the request to the one on screen (the modal copy over the job dialog) or to
    // its own showing.
    if (!isVisible())
        return;
    const int wanted = int(m_form.focus) - int(preSetJobsWin::Focus::EditField2);
    m_form.focus = preSetJobsWin::Focus::None;
    if (wanted >= 0 && wanted < 4)
        m_fields[wanted]->setFocus();
}

void PresetJobsView::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    placeFocus();
}

bool PresetJobsView::event(QEvent* event)
{
    if (event->type() == QEvent::WindowActivate && activated)
        activated();
    if (event->type() == QEvent::PaletteChange)
        m_model->setDark(core::ui::isDark(palette()));
    return QDialog::event(event);
}

bool PresetJobsView::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        const QChar typed = key->text().isEmpty() ? QChar() : key->text().at(0);
        if (!typed.isNull() && typed.isPrint()) {
            if (watched == m_fields[0])
                return m_form.EditField2_KeyDown(typed);
            if (watched == m_fields[2] || watched == m_fields[3])
                return m_form.hoursKeyDown(typed);
        }
    }
    return QDialog::eventFilter(watched, event);
}

void PresetJobsView::reject()
{
    // Escape and the close box both end here: the window's place is kept and the edit row emptied.
    m_form.Left = x();
    m_form.Top = y();
    m_form.Width = width();
    m_form.Height = height();
    m_form.Event_CancelClose();
    QDialog::reject();
}

} // namespace budgets::ui

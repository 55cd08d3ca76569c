#include "shell/ui/prefwinview.h"

#include "core/texts.h"
#include "core/ui/onscreen.h"
#include "platform/qt/qtplatform.h"

#include "core/ui/jobcolumns.h"
#include <QActionGroup>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>

#include <QColorDialog>
#include <QFontDatabase>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QSlider>
#include <QTabWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace shell::ui
{

namespace
{

template <typename W> W* named(W* widget, const QString& name)
{
    widget->setObjectName(name);
    return widget;
}

QPushButton* button(const QString& caption, const QString& name, QWidget* parent)
{
    auto* b = named(new QPushButton(caption, parent), name);
    b->setAutoDefault(false); // Return belongs to `addnew` while a name is typed
    return b;
}

void setText(QLineEdit* edit, const QString& text)
{
    // Rewriting an unchanged text would move the cursor to the end while the user types.
    if (edit->text() != text)
        edit->setText(text);
}

} // namespace

PrefwinView::PrefwinView(prefwin& form, const QStringList& fonts, QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint), m_form(form)
{
    setObjectName(QStringLiteral("prefwin"));
    setWindowTitle(prefwin::kPrefTitle);
    setModal(true);

    auto* layout = new QVBoxLayout(this);
    m_tabs = named(new QTabWidget(this), QStringLiteral("TabPanel1"));
    m_tabs->addTab(buildGeneral(), prefwin::kPrefTab1);
    m_tabs->addTab(buildOperations(), prefwin::kPrefTab2);
    m_tabs->addTab(buildExport(), prefwin::kPrefTab3);
    layout->addWidget(m_tabs);
    auto* bottom = new QHBoxLayout;
    bottom->addStretch();
    m_save = button(prefwin::kPrefSaveButton, QStringLiteral("Saveprefa"), this);
    bottom->addWidget(m_save);
    layout->addLayout(bottom);

    connect(m_tabs, &QTabWidget::currentChanged, this, [this](int tab) {
        forward([&] { m_form.TabPanel1_Change(tab); });
        applyListFont();
    });
    connect(m_save, &QPushButton::clicked, this, [this] { forward([&] { m_form.Saveprefa_Action(); }); });

    m_form.Event_Open(fonts);
    refresh();
    applyListFont();

    const QSize hint = sizeHint();
    setFixedSize(qMax(prefwin::Width, hint.width()), qMax(prefwin::Height, hint.height()));
    move(core::ui::onScreen(QRect(QPoint(m_form.Left, m_form.Top), size()), true).topLeft());
    // Ready for typing in the tab it opens on: the user's name, or a first operation for a new user.
    if (QWidget* first = m_tabs->currentIndex() == 0 ? m_EditField1 : m_tabs->currentIndex() == 1 ? m_newopp : nullptr)
        first->setFocus();
}

QWidget* PrefwinView::buildGeneral()
{
    auto* page = new QWidget;
    auto* form = new QFormLayout(page);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);

    m_EditField1 = named(new QLineEdit(page), QStringLiteral("EditField1"));
    m_EditField1->setMaxLength(prefwin::kNameLength);
    form->addRow(prefwin::kPrefDefaultUser, m_EditField1);
    connect(m_EditField1, &QLineEdit::textEdited, this,
            [this](const QString& text) { forward([&] { m_form.EditField1_TextChange(text); }); });

    m_noactivpop = named(new QComboBox(page), QStringLiteral("noactivpop"));
    m_noactivpop->addItems(prefwin::kNoactivRows);
    form->addRow(prefwin::kPrefNoActivity, m_noactivpop);
    m_noactivNote = named(new QLabel(page), QStringLiteral("noactivNote"));
    m_noactivNote->setWordWrap(true);
    form->addRow(QString(), m_noactivNote);
    connect(m_noactivpop, &QComboBox::activated, this,
            [this](int row) { forward([&] { m_form.noactivpop_Change(row); }); });

    m_lstfont = named(new QComboBox(page), QStringLiteral("lstfont"));
    m_lstfont->setMaxVisibleItems(20);
    form->addRow(prefwin::kPrefFontTxt, m_lstfont);
    connect(m_lstfont, &QComboBox::activated, this, [this](int row) { forward([&] { m_form.lstfont_Change(row); }); });

    m_Typesize = named(new QComboBox(page), QStringLiteral("Typesize"));
    m_Typesize->addItems(prefwin::kTypesizeRows);
    form->addRow(prefwin::kPrefFontSize, m_Typesize);
    connect(m_Typesize, &QComboBox::activated, this,
            [this](int row) { forward([&] { m_form.Typesize_Change(row); }); });

    auto check = [&](QCheckBox*& box, const QString& caption, const QString& name, void (prefwin::*action)(bool)) {
        box = named(new QCheckBox(caption, page), name);
        connect(box, &QCheckBox::clicked, this, [this, action](bool on) { forward([&] { (m_form.*action)(on); }); });
    };
    check(m_recentsheet, prefwin::kPrefAutoOpen, QStringLiteral("recentsheet"), &prefwin::recentsheet_Action);
    check(m_enablewarn, prefwin::kPrefWarnings, QStringLiteral("enablewarn"), &prefwin::enablewarn_Action);
    check(m_stopOnQuit, prefwin::kPrefStopTOQ, QStringLiteral("stopOnQuit"), &prefwin::stopOnQuit_Action);
    check(m_netconnect, prefwin::kPrefNetLnk, QStringLiteral("netconnect"), &prefwin::netconnect_Action);
    check(m_statusshow, prefwin::kPrefStatusSho, QStringLiteral("statusshow"), &prefwin::statusshow_Action);
    form->addRow(m_recentsheet);
    form->addRow(m_enablewarn);
    form->addRow(m_stopOnQuit);
    auto* net = new QHBoxLayout;
    net->addWidget(m_netconnect);
    m_restartWeb = button(prefwin::kPrefConnectButton, QStringLiteral("restartWeb"), page);
    connect(m_restartWeb, &QPushButton::clicked, this, [this] { forward([&] { m_form.restartWeb_Action(); }); });
    net->addWidget(m_restartWeb);
    net->addStretch();
    form->addRow(net);
    form->addRow(m_statusshow);
    setTabOrder(m_netconnect, m_restartWeb); // it stands beside Net Link, before the status window's box

    auto* slider = new QHBoxLayout;
    m_Slider1 = named(new QSlider(Qt::Horizontal, page), QStringLiteral("Slider1"));
    m_Slider1->setRange(prefwin::kSliderMinimum, prefwin::kSliderMaximum);
    connect(m_Slider1, &QSlider::valueChanged, this, [this](int value) {
        if (!m_refreshing)
            forward([&] { m_form.Slider1_ValueChanged(value); });
    });
    m_Transvalue = named(new QLabel(page), QStringLiteral("Transvalue"));
    m_Transvalue->setMinimumWidth(m_Transvalue->fontMetrics().horizontalAdvance(QStringLiteral("100%")) + 4);
    slider->addWidget(m_Slider1);
    slider->addWidget(m_Transvalue);
    auto* sliderLabel = new QLabel(prefwin::kPrefWinTrans, page);
    sliderLabel->setBuddy(m_Slider1); // the row holds the slider and its value: the label names the slider
    form->addRow(sliderLabel, slider);

    m_stripes = button(prefwin::kPrefStripes, QStringLiteral("stripes"), page);
    connect(m_stripes, &QPushButton::clicked, this, [this] {
        const core::AppPrefs& prefs = m_form.prefs();
        const QColor chosen =
            QColorDialog::getColor(QColor(prefs.red, prefs.green, prefs.blue), this, prefwin::kPrefSelectColor);
        if (chosen.isValid())
            forward([&] { m_form.stripes_Action(chosen.red(), chosen.green(), chosen.blue()); });
    });
    auto* stripes = new QHBoxLayout;
    stripes->addWidget(m_stripes);
    stripes->addStretch();
    form->addRow(stripes);

    m_checkupdates = named(new QComboBox(page), QStringLiteral("checkupdates"));
    m_checkupdates->addItems({prefwin::kPrefCUOff, prefwin::kPrefCULaunch, prefwin::kPrefCUDay, prefwin::kPrefCUWeek});
    form->addRow(prefwin::kPrefUpdateLabel, m_checkupdates);
    connect(m_checkupdates, &QComboBox::activated, this,
            [this](int row) { forward([&] { m_form.checkupdates_Change(row); }); });
    auto* note = new QLabel(prefwin::kPrefUpdatesNote, page);
    note->setWordWrap(true);
    QFont small = note->font();
    small.setPointSizeF(small.pointSizeF() * 0.85);
    note->setFont(small);
    form->addRow(note);
    return page;
}

QWidget* PrefwinView::buildOperations()
{
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);

    auto* top = new QHBoxLayout;
    m_Canvas1 = button(QString(), QStringLiteral("Canvas1"), page);
    auto* menu = new QMenu(m_Canvas1);
    auto* choices = new QActionGroup(menu);
    const QStringList captions{prefwin::kPrefButtonUser, prefwin::kPrefButtonGroup};
    for (int i = 0; i < captions.size(); ++i) {
        QAction* action = menu->addAction(captions[i]);
        action->setCheckable(true);
        choices->addAction(action);
        connect(action, &QAction::triggered, this, [this, i] { forward([&] { m_form.Canvas1_Action(i); }); });
    }
    m_Canvas1->setMenu(menu);
    top->addWidget(m_Canvas1);
    top->addStretch();
    m_exportlist = button(prefwin::kXPButtonExport, QStringLiteral("exportlist"), page);
    connect(m_exportlist, &QPushButton::clicked, this, [this] { forward([&] { m_form.exportlist_Action(); }); });
    top->addWidget(m_exportlist);
    layout->addLayout(top);

    m_opplistnow = named(new QTreeWidget(page), QStringLiteral("opplistnow"));
    m_opplistnow->setAccessibleName(prefwin::kPrefTab2);
    m_opplistnow->setColumnCount(2);
    m_opplistnow->setHeaderLabels({Tr::MWOperation, Tr::MWDescription});
    m_opplistnow->setRootIsDecorated(false);
    m_opplistnow->setUniformRowHeights(true);
    m_opplistnow->setAlternatingRowColors(true);
    m_opplistnow->setSelectionMode(QAbstractItemView::SingleSelection);
    m_opplistnow->header()->setStretchLastSection(true);
    m_opplistnow->header()->setSectionsMovable(false);
    connect(m_opplistnow->header(), &QHeaderView::sectionResized, this, [this](int section) {
        if (section == 0)
            keepColumnWidth();
    });
    connect(m_opplistnow, &QTreeWidget::itemSelectionChanged, this, [this] {
        if (m_refreshing)
            return;
        const QList<QTreeWidgetItem*> chosen = m_opplistnow->selectedItems();
        const int row = chosen.isEmpty() ? -1 : m_opplistnow->indexOfTopLevelItem(chosen.first());
        forward([&] { m_form.opplistnow_Change(row); });
        if (row >= 0)
            m_newopp->setFocus();
    });
    connect(m_opplistnow, &QTreeWidget::itemDoubleClicked, this, [this] {
        forward([&] { m_form.opplistnow_DoubleClick(); });
        m_newopp->setFocus();
    });
    m_opplistnow->viewport()->installEventFilter(this);
    layout->addWidget(m_opplistnow, 1);

    // A grid rather than a form: with a group list the status text in StaticText1 takes the whole row.
    auto* fields = new QGridLayout;
    fields->setColumnStretch(1, 1);
    m_StaticText1 = named(new QLabel(page), QStringLiteral("StaticText1"));
    m_newopp = named(new QLineEdit(page), QStringLiteral("newopp"));
    m_newopp->setMaxLength(prefwin::kNameLength);
    m_newopp->installEventFilter(this);
    connect(m_newopp, &QLineEdit::textEdited, this,
            [this](const QString& text) { forward([&] { m_form.newopp_TextChange(text); }); });
    m_StaticText1->setBuddy(m_newopp);
    fields->addWidget(m_StaticText1, 0, 0);
    fields->addWidget(m_newopp, 0, 1);
    m_StaticText11 = named(new QLabel(prefwin::kPrefDescTxt, page), QStringLiteral("StaticText11"));
    m_newdesc = named(new QLineEdit(page), QStringLiteral("newdesc"));
    m_newdesc->setMaxLength(prefwin::kDescriptionLength);
    connect(m_newdesc, &QLineEdit::textEdited, this,
            [this](const QString& text) { forward([&] { m_form.newdesc_TextChange(text); }); });
    m_StaticText11->setBuddy(m_newdesc);
    fields->addWidget(m_StaticText11, 1, 0);
    fields->addWidget(m_newdesc, 1, 1);
    layout->addLayout(fields);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    m_killthis = button(prefwin::kPrefRemoveBtn, QStringLiteral("killthis"), page);
    m_addnew = button(prefwin::kPSAddBtn, QStringLiteral("addnew"), page);
    connect(m_killthis, &QPushButton::clicked, this, [this] { forward([&] { m_form.killthis_Action(); }); });
    connect(m_addnew, &QPushButton::clicked, this, [this] {
        forward([&] { m_form.addnew_Action(); });
        m_newopp->setFocus();
    });
    buttons->addWidget(m_killthis);
    buttons->addWidget(m_addnew);
    layout->addLayout(buttons);
    return page;
}

QWidget* PrefwinView::buildExport()
{
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(named(new QLabel(prefwin::kPrefExportHead, page), QStringLiteral("StaticText8")));

    auto check = [&](QCheckBox*& box, const QString& caption, const QString& name, void (prefwin::*action)(bool),
                     QWidget* parent) {
        box = named(new QCheckBox(caption, parent), name);
        connect(box, &QCheckBox::clicked, this, [this, action](bool on) { forward([&] { (m_form.*action)(on); }); });
    };
    check(m_xdate, prefwin::kPrefEOReportDate, QStringLiteral("xdate"), &prefwin::xdate_Action, page);
    check(m_xheader, prefwin::kPrefEOColumn, QStringLiteral("xheader"), &prefwin::xheader_Action, page);
    check(m_xnotes, prefwin::kPrefEONote, QStringLiteral("xnotes"), &prefwin::xnotes_Action, page);
    check(m_xtotal, prefwin::kPrefEOTotal, QStringLiteral("xtotal"), &prefwin::xtotal_Action, page);
    for (QCheckBox* box : {m_xdate, m_xheader, m_xnotes, m_xtotal})
        layout->addWidget(box);

    auto* group = new QGroupBox(prefwin::kPrefEOSprShtDesc, page);
    auto* inGroup = new QVBoxLayout(group);
    check(m_xblnkrow, prefwin::kPrefEOBlkRow, QStringLiteral("xblnkrow"), &prefwin::xblnkrow_Action, group);
    check(m_xblnkcol, prefwin::kPrefEOBlkCol, QStringLiteral("xblnkcol"), &prefwin::xblnkcol_Action, group);
    m_prefRadioExcel = named(new QRadioButton(prefwin::kPrefMSExcelFile, group), QStringLiteral("prefRadioExcel"));
    m_prefRadioText = named(new QRadioButton(prefwin::kPrefTextFile, group), QStringLiteral("prefRadioText"));
    connect(m_prefRadioExcel, &QRadioButton::clicked, this,
            [this] { forward([&] { m_form.prefRadioExcel_Action(); }); });
    connect(m_prefRadioText, &QRadioButton::clicked, this, [this] { forward([&] { m_form.prefRadioText_Action(); }); });
    for (QWidget* w : std::initializer_list<QWidget*>{m_xblnkrow, m_xblnkcol, m_prefRadioExcel, m_prefRadioText})
        inGroup->addWidget(w);
    layout->addWidget(group);

    auto* encoding = new QFormLayout;
    m_formatMenu = named(new QComboBox(page), QStringLiteral("formatMenu"));
    m_formatMenu->addItems(prefwin::kFormatRows);
    connect(m_formatMenu, &QComboBox::activated, this,
            [this](int row) { forward([&] { m_form.formatMenu_Change(row); }); });
    encoding->addRow(prefwin::kPrefFileFormat, m_formatMenu);
    layout->addLayout(encoding);
    layout->addStretch();
    return page;
}

template <typename Handler> void PrefwinView::forward(Handler handler)
{
    if (m_refreshing)
        return;
    handler();
    refresh();
    if (m_form.closed())
        accept();
}

void PrefwinView::refresh()
{
    m_refreshing = true;
    const QSignalBlocker tabs(m_tabs);
    m_tabs->setCurrentIndex(m_form.TabPanel1);

    setText(m_EditField1, m_form.EditField1);
    QPixmap swatch(16, 16);
    swatch.fill(QColor(m_form.prefs().red, m_form.prefs().green, m_form.prefs().blue));
    m_stripes->setIcon(swatch);
    m_noactivpop->setCurrentIndex(m_form.noactivpop);
    m_noactivNote->setText(m_form.noactivNote);
    m_noactivNote->setVisible(!m_form.noactivNote.isEmpty());
    if (m_shownFonts != m_form.lstfont) {
        m_lstfont->clear();
        for (const QString& row : m_form.lstfont) {
            if (row.isEmpty())
                m_lstfont->insertSeparator(m_lstfont->count());
            else
                m_lstfont->addItem(row);
        }
        m_shownFonts = m_form.lstfont;
    }
    m_lstfont->setCurrentIndex(m_form.lstfontValue);
    m_Typesize->setCurrentIndex(m_form.Typesize);
    const std::pair<QCheckBox*, const prefwin::CheckBox*> boxes[] = {
        {m_recentsheet, &m_form.recentsheet}, {m_enablewarn, &m_form.enablewarn}, {m_stopOnQuit, &m_form.stopOnQuit},
        {m_netconnect, &m_form.netconnect},   {m_statusshow, &m_form.statusshow}, {m_xdate, &m_form.xdate},
        {m_xheader, &m_form.xheader},         {m_xnotes, &m_form.xnotes},         {m_xtotal, &m_form.xtotal},
        {m_xblnkrow, &m_form.xblnkrow},       {m_xblnkcol, &m_form.xblnkcol}};
    for (const auto& [box, state] : boxes) {
        box->setChecked(state->Value);
        box->setEnabled(state->Enabled);
    }
    m_restartWeb->setEnabled(m_form.restartWeb.Enabled);
    m_Slider1->setValue(m_form.Slider1.Value);
    m_Slider1->setEnabled(m_form.Slider1.Enabled);
    m_Transvalue->setText(m_form.Transvalue);
    m_checkupdates->setCurrentIndex(m_form.checkupdates);

    if (m_shownList != m_form.opplistnow) {
        m_opplistnow->clear();
        QList<QTreeWidgetItem*> items;
        items.reserve(m_form.opplistnow.size());
        for (const storage::Operation& operation : std::as_const(m_form.opplistnow))
            items << new QTreeWidgetItem(QStringList{operation.name, operation.description});
        m_opplistnow->addTopLevelItems(items);
        m_shownList = m_form.opplistnow;
    }
    if (m_form.opplistnowIndex >= 0 && m_form.opplistnowIndex < m_opplistnow->topLevelItemCount())
        m_opplistnow->setCurrentItem(m_opplistnow->topLevelItem(m_form.opplistnowIndex));
    else
        m_opplistnow->clearSelection();
    m_opplistnow->setEnabled(m_form.opplistnowEnabled);
    m_StaticText1->setText(m_form.StaticText1.Text);
    m_StaticText11->setVisible(m_form.StaticText11.Visible);
    m_newdesc->setVisible(m_form.StaticText11.Visible);
    setText(m_newopp, m_form.newopp.Text);
    m_newopp->setEnabled(m_form.newopp.Enabled);
    m_newopp->setVisible(m_form.newopp.Visible);
    setText(m_newdesc, m_form.newdesc.Text);
    m_newdesc->setEnabled(m_form.newdesc.Enabled);
    m_addnew->setText(m_form.addnew.Caption);
    m_addnew->setEnabled(m_form.addnew.Enabled);
    m_addnew->setDefault(m_form.addnew.Default);
    // Return elsewhere saves, as OK does in other dialogs; while an operation's name is typed it adds it.
    m_save->setDefault(!m_form.addnew.Default);
    m_killthis->setEnabled(m_form.killthis.Enabled);
    m_exportlist->setEnabled(m_form.exportlist.Enabled);
    m_Canvas1->setText(m_form.Canvas1 == 0 ? prefwin::kPrefButtonUser : prefwin::kPrefButtonGroup);
    const QList<QAction*> choices = m_Canvas1->menu()->actions();
    for (int i = 0; i < choices.size(); ++i)
        choices[i]->setChecked(i == m_form.Canvas1);

    m_prefRadioExcel->setChecked(m_form.prefRadioExcel);
    m_prefRadioText->setChecked(m_form.prefRadioText);
    m_formatMenu->setCurrentIndex(m_form.formatMenu);
    m_refreshing = false;
}

void PrefwinView::applyListFont()
{
    m_opplistnow->setFont(core::ui::listFont(m_form.prefs()));
    keepColumnWidth();
    update();
}

void PrefwinView::keepColumnWidth()
{
    // The name column keeps between a fifth and three fifths of the list.
    const int width = m_opplistnow->viewport()->width();
    if (width <= 0)
        return;
    const int column = m_opplistnow->columnWidth(0);
    const int wanted = qBound(width / 5, column, width * 3 / 5);
    if (wanted != column)
        m_opplistnow->setColumnWidth(0, wanted);
}

void PrefwinView::reject()
{
    // Escape, and the desktop's close (QDialog::closeEvent comes here), press Save Preferences: the window
    // has no Cancel. An empty operations list keeps it open and says why, as for the button.
    forward([&] { m_form.Saveprefa_Action(); });
}

bool PrefwinView::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_opplistnow->viewport() && (event->type() == QEvent::Resize || event->type() == QEvent::Show)) {
        // The list gets its real width only when its tab first shows: that is when the columns are set.
        if (!m_columnSet && m_opplistnow->viewport()->isVisible()) {
            m_columnSet = true;
            m_opplistnow->setColumnWidth(0, m_opplistnow->viewport()->width() * 2 / 5);
        }
        keepColumnWidth();
    }
    if (watched == m_newopp && event->type() == QEvent::KeyPress) {
        const QString text = static_cast<QKeyEvent*>(event)->text();
        if (text.size() == 1 && m_form.newopp_KeyDown(text.front()))
            return true;
    }
    return QDialog::eventFilter(watched, event);
}

void registerPrefwinView(platform::qt::QtDialogs& dialogs)
{
    dialogs.registerView(QStringLiteral("prefwin"), [](platform::ModalForm& form, QWidget* parent) {
        PrefwinView view(static_cast<prefwin&>(form), QFontDatabase::families(), parent);
        view.exec();
    });
}

} // namespace shell::ui

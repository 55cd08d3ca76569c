#include "jobs/ui/jobdialogview.h"

#include "core/mainwndo.h"
#include "core/ui/contrast.h"
#include "platform/qt/qtplatform.h"

#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

namespace jobs::ui
{

namespace
{

const QString kChooseJobArrow = QStringLiteral("\u25BE");
constexpr int kMinimumWidth = 380;

// A caption may come from a menu ("&" doubled) or straight from a row (single "&"); on a button both
// must show one literal "&".
QString buttonCaption(const QString& caption)
{
    return fromMenuText(caption).replace(QLatin1Char('&'), QStringLiteral("&&"));
}

// The character the form's key filters judge, or a null QChar for keys that carry no character
// (Shift, Ctrl on its own, function keys), which pass untouched.
QChar keyCharacter(const QKeyEvent* key)
{
    switch (key->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return QChar(13);
    case Qt::Key_Backspace:
        return QChar(8);
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        return QChar(9);
    case Qt::Key_Home:
        return QChar(1);
    case Qt::Key_End:
        return QChar(4);
    case Qt::Key_Left:
        return QChar(28);
    case Qt::Key_Right:
        return QChar(29);
    case Qt::Key_Up:
        return QChar(30);
    case Qt::Key_Down:
        return QChar(31);
    case Qt::Key_Delete:
        return QChar(127);
    case Qt::Key_Escape:
        return QChar(); // the window's key: Cancel
    default:
        break;
    }
    const QString text = key->text();
    return text.isEmpty() ? QChar() : text.front();
}

} // namespace

specialwView::specialwView(specialw& form, QWidget* parent) : QDialog(parent), m_form(form)
{
    setObjectName(specialw::kFormName);
    setWindowTitle(core::Mainwndo::kAppTitle);
    setMinimumWidth(kMinimumWidth);
    if (parent)
        setWindowModality(Qt::WindowModal);

    auto* layout = new QVBoxLayout(this);
    m_wintitle = new QLabel(this);
    QFont bold = m_wintitle->font();
    bold.setBold(true);
    m_wintitle->setFont(bold);
    layout->addWidget(m_wintitle);

    auto* grid = new QGridLayout;
    int line = 0;
    // The label names its field for a screen reader as well as on screen.
    auto label = [&](const QString& text, QWidget* field) {
        auto* l = new QLabel(text, this);
        l->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        l->setBuddy(field);
        grid->addWidget(l, line, 0);
    };

    auto* dateRow = new QHBoxLayout;
    m_dateField = new QLineEdit(this);
    m_dateField->setObjectName(QStringLiteral("dateField"));
    label(Tr::DateLabel, m_dateField);
    m_dateField->setMaximumWidth(m_dateField->fontMetrics().horizontalAdvance(QStringLiteral("00/00/0000")) + 16);
    auto* arrows = new QVBoxLayout;
    arrows->setSpacing(0);
    m_dateUp = new QToolButton(this);
    m_dateUp->setArrowType(Qt::UpArrow);
    m_dateUp->setAccessibleName(specialw::kDateLater);
    m_dateDown = new QToolButton(this);
    m_dateDown->setArrowType(Qt::DownArrow);
    m_dateDown->setAccessibleName(specialw::kDateEarlier);
    for (QToolButton* arrow : {m_dateUp, m_dateDown}) {
        arrow->setAutoRepeat(true);
        arrow->setFixedSize(18, 12);
        arrow->setFocusPolicy(Qt::NoFocus); // Up and Down in the date field do the same
        arrows->addWidget(arrow);
    }
    m_dateDay = new QLabel(this);
    dateRow->addWidget(m_dateField);
    dateRow->addLayout(arrows);
    dateRow->addWidget(m_dateDay);
    dateRow->addStretch();
    grid->addLayout(dateRow, line++, 1);

    auto* jobRow = new QHBoxLayout;
    m_enterjob = new QLineEdit(this);
    m_enterjob->setObjectName(QStringLiteral("enterjob"));
    m_enterjob->setPlaceholderText(specialw::kNoChoice);
    m_enterjob->setAccessibleDescription(specialw::kJobChoicesKey);
    label(specialw::kJobNo, m_enterjob);
    m_choosejob = new QToolButton(this);
    m_choosejob->setText(kChooseJobArrow);
    m_choosejob->setAccessibleName(specialw::kJobChoices);
    // Tab goes from the job number straight on to the project, as past a combo box's arrow: the field
    // opens the menu with Alt+Down, and a click on the arrow leaves the focus in the field.
    m_choosejob->setFocusPolicy(Qt::NoFocus);
    m_choosejob->setPopupMode(QToolButton::InstantPopup);
    m_choosejob->setStyleSheet(QStringLiteral("QToolButton::menu-indicator { image: none; }"));
    jobRow->addWidget(m_enterjob);
    jobRow->addWidget(m_choosejob);
    grid->addLayout(jobRow, line++, 1);

    m_enterclient = new QLineEdit(this);
    m_enterclient->setObjectName(QStringLiteral("enterclient"));
    label(specialw::kProject, m_enterclient);
    grid->addWidget(m_enterclient, line++, 1);

    // The two menus show their choice as their caption: the label is their name, the choice its value.
    // Return on them presses the default button, as on a closed combo box; Space opens them.
    m_popupclnt = new QPushButton(this);
    m_popupclnt->setObjectName(QStringLiteral("popupclnt"));
    m_popupclnt->setAccessibleName(specialw::kClient);
    m_popupclnt->setAutoDefault(false);
    label(specialw::kClient, m_popupclnt);
    grid->addWidget(m_popupclnt, line++, 1);

    m_popup = new QPushButton(this);
    m_popup->setObjectName(QStringLiteral("popup"));
    m_popup->setAccessibleName(specialw::kOperation);
    m_popup->setAutoDefault(false);
    label(specialw::kOperation, m_popup);
    grid->addWidget(m_popup, line++, 1);

    m_nmepopup = new QLineEdit(this);
    m_nmepopup->setObjectName(QStringLiteral("nmepopup"));
    label(specialw::kUser, m_nmepopup);
    grid->addWidget(m_nmepopup, line++, 1);

    auto* timeRow = new QHBoxLayout;
    m_sphrs = new QLineEdit(this);
    m_sphrs->setObjectName(QStringLiteral("sphrs"));
    m_sphrs->setAccessibleName(specialw::kHours);
    label(Tr::TotalTime, m_sphrs);
    m_spmin = new QLineEdit(this);
    m_spmin->setObjectName(QStringLiteral("spmin"));
    m_spmin->setAccessibleName(specialw::kMinutes);
    const int digitWidth = m_sphrs->fontMetrics().horizontalAdvance(QStringLiteral("000")) + 16;
    for (QLineEdit* time : {m_sphrs, m_spmin}) {
        time->setAlignment(Qt::AlignRight);
        time->setFixedWidth(digitWidth);
    }
    timeRow->addWidget(m_sphrs);
    timeRow->addWidget(new QLabel(specialw::kTheDots, this));
    timeRow->addWidget(m_spmin);
    timeRow->addStretch();
    grid->addLayout(timeRow, line++, 1);
    grid->setColumnStretch(1, 1);
    layout->addLayout(grid);

    auto* notesLabel = new QLabel(Tr::MWButtonNote, this);
    layout->addWidget(notesLabel);
    m_notes = new QPlainTextEdit(this);
    m_notes->setObjectName(QStringLiteral("NotesArea"));
    notesLabel->setBuddy(m_notes);
    m_notes->setTabChangesFocus(true);
    m_notes->setMinimumHeight(m_notes->fontMetrics().height() * 4);
    layout->addWidget(m_notes);
    m_noteWarning = new QLabel(this);
    m_noteWarning->setWordWrap(true);
    layout->addWidget(m_noteWarning);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    m_canceljob = new QPushButton(this);
    m_okjob = new QPushButton(this);
    m_okjob2 = new QPushButton(this);
    m_canceljob->setAutoDefault(false);
    buttons->addWidget(m_canceljob);
    buttons->addWidget(m_okjob);
    buttons->addWidget(m_okjob2);
    layout->addLayout(buttons);

    // Typing goes into the form; what the form changes comes back through refresh().
    connect(m_dateField, &QLineEdit::textEdited, this, [this](const QString& t) { m_form.dateField = t; });
    connect(m_enterjob, &QLineEdit::textEdited, this, [this](const QString& t) {
        if (m_form.enterjobMask == QStringLiteral(">") && t != t.toUpper()) {
            const int cursor = m_enterjob->cursorPosition();
            m_enterjob->setText(t.toUpper());
            m_enterjob->setCursorPosition(cursor);
        }
        m_form.enterjob = m_enterjob->text();
    });
    connect(m_enterclient, &QLineEdit::textEdited, this, [this](const QString& t) { m_form.enterclient = t; });
    connect(m_nmepopup, &QLineEdit::textEdited, this, [this](const QString& t) { m_form.nmepopup = t; });
    connect(m_sphrs, &QLineEdit::textEdited, this, [this](const QString& t) { m_form.sphrs = t; });
    connect(m_spmin, &QLineEdit::textEdited, this, [this](const QString& t) {
        m_form.spmin = t;
        m_form.spmin_TextChange();
    });
    connect(m_notes, &QPlainTextEdit::textChanged, this, [this] {
        if (m_refreshing)
            return;
        const QString typed = m_notes->toPlainText();
        const QString before = m_form.NotesArea;
        if (m_form.NotesArea_TextChange(typed))
            return;
        // Refused: put the old text back with the cursor where the input began.
        const int cursor = m_notes->textCursor().position() - static_cast<int>(typed.size() - before.size());
        m_refreshing = true;
        m_notes->setPlainText(before);
        m_refreshing = false;
        QTextCursor back = m_notes->textCursor();
        back.setPosition(std::clamp(cursor, 0, static_cast<int>(before.size())));
        m_notes->setTextCursor(back);
    });
    connect(m_dateUp, &QToolButton::clicked, this, [this] { m_form.dateArrows_Up(); });
    connect(m_dateDown, &QToolButton::clicked, this, [this] { m_form.dateArrows_Down(); });
    connect(m_okjob, &QPushButton::clicked, this, [this] { m_form.okjob_Action(); });
    connect(m_okjob2, &QPushButton::clicked, this, [this] { m_form.okjob2_Action(); });
    connect(m_canceljob, &QPushButton::clicked, this, [this] { m_form.canceljob_Action(); });
    attachMenu(m_choosejob, &specialw::choosejob, &specialw::choosejob_Action);
    attachMenu(m_popupclnt, &specialw::popupclnt, &specialw::popupclnt_Action);
    attachMenu(m_popup, &specialw::popup, &specialw::popup_Action);
    m_sphrs->installEventFilter(this);
    m_spmin->installEventFilter(this);
    m_enterjob->installEventFilter(this);
    m_dateField->installEventFilter(this);

    connect(&m_form, &specialw::changed, this, &specialwView::refresh);
    connect(&m_form, &specialw::closeRequested, this,
            [this] { done(m_form.ButtonPressed == Tr::MWButtonCancel ? QDialog::Rejected : QDialog::Accepted); });

    followNotesColours();
    refresh();
    (m_form.okjob2.visible ? m_okjob2 : m_okjob)->setDefault(true);
    m_enterjob->setFocus();
}

void specialwView::attachMenu(QAbstractButton* button, MenuButton specialw::*menu, void (specialw::*action)(int))
{
    auto* popupMenu = new QMenu(button);
    if (auto* tool = qobject_cast<QToolButton*>(button))
        tool->setMenu(popupMenu);
    else
        static_cast<QPushButton*>(button)->setMenu(popupMenu);
    // The rows are read when the menu opens, so a refresh in between is always shown.
    connect(popupMenu, &QMenu::aboutToShow, this, [this, popupMenu, menu, action] {
        popupMenu->clear();
        const MenuButton& rows = m_form.*menu;
        for (int i = 0; i < rows.rows.size(); ++i) {
            if (rows.rows[i].separator) {
                popupMenu->addSeparator();
                continue;
            }
            QAction* item = popupMenu->addAction(rows.rows[i].text);
            // Only the row chosen last carries a mark; the others show no empty box.
            item->setCheckable(i == rows.MenuValue);
            item->setChecked(i == rows.MenuValue);
            connect(item, &QAction::triggered, this, [this, action, i] { (m_form.*action)(i); });
        }
    });
}

void specialwView::showText(QLineEdit* edit, const QString& text, int limit)
{
    // The limit holds for typing; a longer text that comes from a row is shown whole.
    edit->setMaxLength(std::max(limit, static_cast<int>(text.size())));
    if (edit->text() != text)
        edit->setText(text);
}

void specialwView::refresh()
{
    m_wintitle->setText(m_form.wintitle);
    showText(m_dateField, m_form.dateField, specialw::kDateFieldLimit);
    m_dateDay->setText(m_form.dateDay);
    showText(m_enterjob, m_form.enterjob, specialw::kEnterjobLimit);
    showText(m_enterclient, m_form.enterclient, specialw::kEnterclientLimit);
    m_popupclnt->setText(buttonCaption(m_form.popupclnt.caption));
    m_popupclnt->setAccessibleDescription(fromMenuText(m_form.popupclnt.caption));
    m_popup->setText(buttonCaption(m_form.popup.caption));
    m_popup->setAccessibleDescription(fromMenuText(m_form.popup.caption));
    showText(m_nmepopup, m_form.nmepopup, specialw::kNmepopupLimit);
    showText(m_sphrs, m_form.sphrs, specialw::kSphrsLimit);
    showText(m_spmin, m_form.spmin, specialw::kSpminLimit);
    if (m_notes->toPlainText() != m_form.NotesArea) {
        m_refreshing = true;
        m_notes->setPlainText(m_form.NotesArea);
        m_refreshing = false;
    }
    m_noteWarning->setText(m_form.noteWarning);
    m_noteWarning->setVisible(!m_form.noteWarning.isEmpty());
    const std::pair<QPushButton*, const core::Control*> controls[] = {
        {m_okjob, &m_form.okjob}, {m_okjob2, &m_form.okjob2}, {m_canceljob, &m_form.canceljob}};
    for (const auto& [button, control] : controls) {
        button->setText(control->caption);
        button->setEnabled(control->enabled);
        button->setVisible(control->visible);
    }
}

void specialwView::followNotesColours()
{
    m_form.NotesArea_Open(core::ui::isDark(palette()));
    QPalette colours = m_notes->palette();
    colours.setColor(QPalette::Base, QColor::fromRgb(m_form.NotesAreaBackground));
    colours.setColor(QPalette::Text, QColor::fromRgb(m_form.NotesAreaTextColor));
    m_notes->setPalette(colours);
}

void specialwView::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::PaletteChange && m_notes)
        followNotesColours();
    QDialog::changeEvent(event);
}

bool specialwView::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_enterjob && event->type() == QEvent::FocusIn)
        m_form.enterjob_GotFocus();
    if ((watched == m_enterjob || watched == m_dateField) && event->type() == QEvent::KeyPress) {
        // The keys of a combo box and of a spin box reach the buttons that Tab passes by.
        const auto* key = static_cast<QKeyEvent*>(event);
        const bool altDown = key->key() == Qt::Key_Down && key->modifiers() & Qt::AltModifier;
        if (watched == m_enterjob && (altDown || key->key() == Qt::Key_F4)) {
            m_choosejob->showMenu();
            return true;
        }
        if (watched == m_dateField && (key->key() == Qt::Key_Up || key->key() == Qt::Key_Down)) {
            (key->key() == Qt::Key_Up ? m_dateUp : m_dateDown)->click();
            return true;
        }
    }
    if ((watched == m_sphrs || watched == m_spmin) && event->type() == QEvent::KeyPress) {
        const QChar key = keyCharacter(static_cast<QKeyEvent*>(event));
        if (!key.isNull())
            return watched == m_sphrs ? m_form.sphrs_KeyDown(key) : m_form.spmin_KeyDown(key);
    }
    return QDialog::eventFilter(watched, event);
}

void specialwView::reject()
{
    // Escape and the close box are Cancel; after a save the form closes the window itself.
    if (!m_form.closed)
        m_form.canceljob_Action();
    else
        QDialog::reject();
}

void runSpecialw(specialw& form, QWidget* parent)
{
    specialwView view(form, parent);
    view.exec();
}

void registerSpecialwView(platform::qt::QtDialogs& dialogs)
{
    dialogs.registerView(specialw::kFormName, [](platform::ModalForm& form, QWidget* parent) {
        runSpecialw(static_cast<specialw&>(form), parent);
    });
}

} // namespace jobs::ui

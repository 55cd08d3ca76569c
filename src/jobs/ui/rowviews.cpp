#include "jobs/ui/rowviews.h"

#include "core/ui/contrast.h"
#include "platform/qt/qtplatform.h"

#include <QApplication>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTextBlock>
#include <QVBoxLayout>

namespace jobs::ui
{

AresureView::AresureView(Aresure& form, QWidget* parent) : QDialog(parent), m_form(form)
{
    setObjectName(form.formName());
    setWindowTitle(form.title);
    auto* layout = new QVBoxLayout(this);
    auto* question = new QLabel(form.question, this);
    question->setObjectName(QStringLiteral("question"));
    question->setWordWrap(true);
    layout->addWidget(question);

    m_group = new QGroupBox(this);
    m_group->setObjectName(QStringLiteral("GroupBox1"));
    auto* radios = new QVBoxLayout(m_group);
    const QString texts[] = {Aresure::kASWinRadOne, Aresure::kASWinRadTwo, Aresure::kASWinRadThree,
                             Aresure::kASWinRadFour};
    static constexpr bool Aresure::*fields[] = {&Aresure::delseljob, &Aresure::delalljobs, &Aresure::delalljobdate,
                                                &Aresure::delallmonth};
    for (int i = 0; i < 4; ++i) {
        m_radios[i] = new QRadioButton(texts[i], m_group);
        m_radios[i]->setChecked(form.*fields[i]);
        connect(m_radios[i], &QRadioButton::toggled, this, [this, i](bool on) {
            if (on)
                m_form.choose(fields[i]);
        });
        radios->addWidget(m_radios[i]);
    }
    m_group->setVisible(form.GroupBox1);
    layout->addWidget(m_group);
    layout->addStretch(1);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    m_cancel = new QPushButton(Tr::MWButtonCancel, this);
    m_okay = new QPushButton(form.Okay, this);
    m_okay->setDefault(true);
    buttons->addWidget(m_cancel);
    buttons->addWidget(m_okay);
    layout->addLayout(buttons);
    connect(m_okay, &QPushButton::clicked, this, [this] {
        m_form.Okay_Action();
        accept();
    });
    connect(m_cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(this, &QDialog::rejected, this, [this] { m_form.Cancel_Action(); });

    resize(Aresure::kWidth, form.height);
    move(form.left, form.top);
}

NotewinView::NotewinView(Notewin& form, QWidget* parent) : QDialog(parent), m_form(form)
{
    setObjectName(form.formName());
    setWindowTitle(Notewin::kNWTitleTxt);
    auto* layout = new QVBoxLayout(this);
    auto* description = new QLabel(Notewin::kNWDescriptionTxt, this);
    description->setObjectName(QStringLiteral("StaticText1"));
    layout->addWidget(description);

    m_edit = new QPlainTextEdit(this);
    m_edit->setObjectName(QStringLiteral("EditField1"));
    description->setBuddy(m_edit);
    m_edit->setPlainText(form.EditField1);
    m_edit->moveCursor(QTextCursor::End);
    const bool dark = core::ui::isDark(palette());
    QPalette palette = m_edit->palette();
    palette.setColor(QPalette::Base, QColor::fromRgb(dark ? Notewin::kFieldBackDark : Notewin::kFieldBack));
    palette.setColor(QPalette::Text, QColor::fromRgb(dark ? Notewin::kFieldTextDark : Notewin::kFieldText));
    m_edit->setPalette(palette);
    m_edit->installEventFilter(this);
    layout->addWidget(m_edit, 1);

    auto* bottom = new QHBoxLayout;
    m_room = new QLabel(this);
    m_room->setObjectName(QStringLiteral("roomLeft"));
    m_save = new QPushButton(Notewin::kNWSaveTxt, this);
    m_save->setObjectName(QStringLiteral("saveit"));
    m_save->setAutoDefault(false);
    bottom->addWidget(m_room, 1);
    bottom->addWidget(m_save);
    layout->addLayout(bottom);

    connect(m_edit, &QPlainTextEdit::textChanged, this, &NotewinView::textEdited);
    connect(m_save, &QPushButton::clicked, this, [this] {
        m_form.saveit_Action();
        accept();
    });
    showRoom();
    resize(Notewin::kWidth, Notewin::kHeight);
    move(form.left, form.top);
}

void NotewinView::textEdited()
{
    const QString proposed = m_edit->toPlainText();
    if (proposed == m_form.EditField1 || m_form.EditField1_TextChange(proposed)) {
        showRoom();
        return;
    }
    // Refused: put the text back as it was and leave the cursor where the input began.
    const int grown = static_cast<int>(proposed.size() - m_form.EditField1.size());
    const int cursor = std::max(0, m_edit->textCursor().position() - std::max(0, grown));
    const QSignalBlocker block(m_edit);
    m_edit->setPlainText(m_form.EditField1);
    QTextCursor back = m_edit->textCursor();
    back.setPosition(std::min(cursor, static_cast<int>(m_form.EditField1.size())));
    m_edit->setTextCursor(back);
    QApplication::beep();
    showRoom();
}

void NotewinView::showRoom()
{
    m_room->setText(m_form.full ? noteFullText() : m_form.roomLeftText());
}

bool NotewinView::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_edit && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        switch (m_form.EditField1_KeyDown(key->key(), key->modifiers() & Qt::ShiftModifier,
                                          key->modifiers() & Qt::ControlModifier)) {
        case Notewin::Key::Swallow:
            return true;
        case Notewin::Key::Save:
            m_save->click();
            return true;
        case Notewin::Key::SelectAll:
            m_edit->selectAll();
            return true;
        case Notewin::Key::Type:
            break;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void NotewinView::reject()
{
    m_form.saveit_Action();
    accept();
}

void registerRowViews(platform::qt::QtDialogs& dialogs)
{
    dialogs.registerView(QStringLiteral("aresure"), [](platform::ModalForm& f, QWidget* parent) {
        AresureView view(static_cast<Aresure&>(f), parent);
        view.exec();
    });
    dialogs.registerView(QStringLiteral("notewin"), [](platform::ModalForm& f, QWidget* parent) {
        NotewinView view(static_cast<Notewin&>(f), parent);
        view.exec();
    });
}

} // namespace jobs::ui

#include "core/ui/modalviews.h"

#include "core/app.h"
#include "core/mainwndo.h"
#include "core/noactivity.h"
#include "core/totalwindows.h"
#include "platform/qt/qtplatform.h"

#include <QCheckBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

namespace core::ui
{

namespace
{

// Room on a title bar for its icon and buttons, in lines of the window's font.
constexpr int kTitleBarControls = 8;

void runDupitwndo(Dupitwndo& form, QWidget* parent)
{
    QDialog dialog(parent);
    dialog.setObjectName(QStringLiteral("dupitwndo"));
    dialog.setWindowTitle(QStringLiteral("Veltrick"));
    auto* layout = new QVBoxLayout(&dialog);
    auto* text = new QLabel(Tr::DupeWinTxt.trimmed(), &dialog);
    text->setWordWrap(true);
    text->setMinimumWidth(380);
    layout->addWidget(text);
    auto* dontshow = new QCheckBox(Tr::DupeWinDontShow, &dialog);
    dontshow->setChecked(form.dontshowTicked());
    QObject::connect(dontshow, &QCheckBox::toggled, [&form](bool on) { form.dontshow_Action(on); });
    layout->addWidget(dontshow);
    auto* buttons = new QDialogButtonBox(&dialog);
    QPushButton* dupeit = buttons->addButton(Tr::MWButtonOK, QDialogButtonBox::AcceptRole);
    QPushButton* cancel = buttons->addButton(Tr::MWButtonCancel, QDialogButtonBox::RejectRole);
    dupeit->setDefault(true);
    QObject::connect(dupeit, &QPushButton::clicked, &dialog, [&] {
        form.dupeit_Action();
        dialog.accept();
    });
    QObject::connect(cancel, &QPushButton::clicked, &dialog, &QDialog::reject);
    layout->addWidget(buttons);
    if (dialog.exec() != QDialog::Accepted)
        form.Cancel_Action(); // Escape and the close box count as Cancel
}

// The two total windows: labels on the left, the copyable total, centred on the main screen.
void runTotalWindow(const QString& title, const QList<QPair<QString, QString>>& fields, const QString& total,
                    const QString& totalLabel, QWidget* parent)
{
    QDialog dialog(parent);
    dialog.setWindowTitle(title);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(new QLabel(title, &dialog));
    auto* form = new QFormLayout;
    for (const auto& [label, value] : fields)
        form->addRow(label, new QLabel(value, &dialog));
    auto* copyable = new QPlainTextEdit(total, &dialog);
    copyable->setReadOnly(true);
    copyable->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    copyable->setMaximumHeight(copyable->fontMetrics().height() * 2 + 8);
    form->addRow(totalLabel, copyable);
    layout->addLayout(form);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, &dialog);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    layout->addWidget(buttons);
    // The title is long for so small a window: wide enough for the title bar to show it whole, in bold
    // as title bars draw it, beside the bar's icon and buttons.
    QFont bold = dialog.font();
    bold.setBold(true);
    dialog.setMinimumWidth(QFontMetrics(bold).horizontalAdvance(title) +
                           kTitleBarControls * dialog.fontMetrics().height());
    dialog.adjustSize();
    if (QScreen* screen = QGuiApplication::primaryScreen()) {
        const QRect area = screen->geometry();
        dialog.move(area.width() / 2 - dialog.width() / 2, area.height() / 2 - dialog.height() / 2);
    }
    dialog.exec();
}

void runNoopps(Noopps& form, QWidget* parent)
{
    QDialog dialog(parent);
    dialog.setWindowTitle(Noopps::FRWinTitle);
    auto* layout = new QVBoxLayout(&dialog);
    auto* head = new QLabel(Noopps::FRWinHeadText, &dialog);
    QFont big = head->font();
    big.setPointSizeF(big.pointSizeF() * 1.4);
    big.setBold(true);
    head->setFont(big);
    layout->addWidget(head);
    auto* text = new QLabel(Noopps::FRWinText, &dialog);
    text->setWordWrap(true);
    text->setMinimumWidth(360);
    layout->addWidget(text);
    auto* buttons = new QDialogButtonBox(&dialog);
    QObject::connect(buttons->addButton(Tr::MWButtonOK, QDialogButtonBox::AcceptRole), &QPushButton::clicked, &dialog,
                     &QDialog::accept);
    layout->addWidget(buttons);
    dialog.exec();
    form.ButtonPressed = Tr::MWButtonOK;
}

// The idle warning, modal on the timesheet window; its inactive time counts on while it is open.
void runNoactivity(noactivity& form, QWidget* parent)
{
    QDialog dialog(parent);
    dialog.setObjectName(QStringLiteral("noactivity"));
    dialog.setWindowTitle(noactivity::kNAWinTitle);
    dialog.setWindowModality(Qt::WindowModal);
    auto* layout = new QVBoxLayout(&dialog);
    auto* title = new QLabel(noactivity::kNAWinTitle, &dialog);
    QFont big = title->font();
    big.setBold(true);
    big.setPointSizeF(big.pointSizeF() * 1.2);
    title->setFont(big);
    layout->addWidget(title);
    auto* warning = new QLabel(&dialog);
    warning->setObjectName(QStringLiteral("StaticText1"));
    warning->setWordWrap(true);
    layout->addWidget(warning);
    auto* times = new QFormLayout;
    auto* stopped = new QLabel(&dialog);
    stopped->setObjectName(QStringLiteral("alrt"));
    auto* inactive = new QLabel(&dialog);
    inactive->setObjectName(QStringLiteral("inac"));
    QFont bold = stopped->font();
    bold.setBold(true);
    stopped->setFont(bold);
    inactive->setFont(bold);
    times->addRow(noactivity::kNAWinActivityStopped, stopped);
    times->addRow(noactivity::kNAWinTimeSet, inactive);
    layout->addLayout(times);
    auto* text = new QLabel(noactivity::kNAWinMainText, &dialog);
    text->setWordWrap(true);
    text->setMinimumWidth(420);
    layout->addWidget(text);
    auto* buttons = new QDialogButtonBox(&dialog);
    QPushButton* next = buttons->addButton(Tr::MWButtonContinue, QDialogButtonBox::AcceptRole);
    QPushButton* reset = buttons->addButton(Tr::MWButtonReset, QDialogButtonBox::DestructiveRole);
    QPushButton* fresh = buttons->addButton(Tr::MWButtonNew, QDialogButtonBox::ActionRole);
    next->setDefault(true);
    layout->addWidget(buttons);
    const auto refresh = [&] {
        warning->setText(form.StaticText1);
        stopped->setText(form.alrthr + QStringLiteral(" : ") + form.alrtmn);
        inactive->setText(form.inacH + QStringLiteral(" : ") + form.inacM);
    };
    refresh();
    QObject::connect(&form, &noactivity::changed, &dialog, refresh);
    QObject::connect(&form, &noactivity::closeRequested, &dialog, &QDialog::accept);
    QObject::connect(next, &QPushButton::clicked, &dialog, [&form] { form.PushButton1_Action(); });
    QObject::connect(reset, &QPushButton::clicked, &dialog, [&form] { form.PushButton2_Action(); });
    QObject::connect(fresh, &QPushButton::clicked, &dialog, [&form] { form.PushButton3_Action(); });
    dialog.exec();
}

} // namespace

void registerModalViews(platform::qt::QtDialogs& dialogs)
{
    dialogs.registerView(QStringLiteral("noopps"),
                         [](platform::ModalForm& f, QWidget* parent) { runNoopps(static_cast<Noopps&>(f), parent); });
    dialogs.registerView(QStringLiteral("noactivity"), [](platform::ModalForm& f, QWidget* parent) {
        runNoactivity(static_cast<noactivity&>(f), parent);
    });
    dialogs.registerView(QStringLiteral("dupitwndo"), [](platform::ModalForm& f, QWidget* parent) {
        runDupitwndo(static_cast<Dupitwndo&>(f), parent);
    });
    dialogs.registerView(QStringLiteral("ttljobtme"), [](platform::ModalForm& f, QWidget* parent) {
        auto& w = static_cast<Ttljobtme&>(f);
        runTotalWindow(Ttljobtme::kTTJDesc, {{Tr::MWJobNo, w.redjobno}, {Tr::MWProject, w.cliproj}}, w.cpyfield,
                       Tr::TotalTime, parent);
        w.ButtonPressed = Tr::MWButtonOK;
    });
    dialogs.registerView(QStringLiteral("ttldaytme"), [](platform::ModalForm& f, QWidget* parent) {
        auto& w = static_cast<Ttldaytme&>(f);
        runTotalWindow(Ttldaytme::kTTLDesc, {{Tr::DateLabel, w.redate}}, w.dayttl, Tr::TotalTime, parent);
        w.ButtonPressed = Tr::MWButtonOK;
    });
}

} // namespace core::ui

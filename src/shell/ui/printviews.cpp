#include "shell/ui/printviews.h"

#include "core/timetext.h"
#include "platform/qt/qtplatform.h"
#include "shell/printforms.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace shell::ui
{

namespace
{

void runPrintsetup(printsetup& form, QWidget* parent)
{
    QDialog dialog(parent);
    dialog.setObjectName(QStringLiteral("printsetup"));
    dialog.setWindowTitle(Tr::PrintOpsMenuText);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(new QLabel(printsetup::kPSWinDesc, &dialog));
    auto* fields = new QFormLayout;
    auto* title = new QLineEdit(form.shetitle, &dialog);
    title->setObjectName(QStringLiteral("shetitle"));
    fields->addRow(printsetup::kPSWinPageTitle, title);
    auto* date = new QCheckBox(printsetup::kPSWinShowDate, &dialog);
    date->setObjectName(QStringLiteral("Checkdate"));
    date->setChecked(form.Checkdate);
    fields->addRow(QString(), date);
    layout->addLayout(fields);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, &dialog);
    QPushButton* save = buttons->addButton(Tr::SaveMenuText, QDialogButtonBox::AcceptRole);
    save->setDefault(true);
    layout->addWidget(buttons);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    QObject::connect(save, &QPushButton::clicked, &dialog, [&] {
        form.shetitle = title->text();
        form.Checkdate = date->isChecked();
        form.saveme_Action();
        dialog.accept();
    });
    dialog.exec();
}

// The radio buttons of the row choice, and the ticked list of a custom selection where there is one.
// A choice the form refuses (no row selected) puts the radio back on the form's choice.
QGroupBox* scopeBox(RowChoice& form, int scopes, const core::Timesheet& list, QDialog& dialog)
{
    auto* box = new QGroupBox(&dialog);
    auto* layout = new QVBoxLayout(box);
    auto* group = new QButtonGroup(box);
    for (int i = 0; i < scopes; ++i) {
        auto* radio = new QRadioButton(RowChoice::kScopeCaptions[i], box);
        radio->setObjectName(QStringLiteral("RadioButton%1").arg(i + 1));
        group->addButton(radio, i);
        layout->addWidget(radio);
    }
    group->button(int(form.scope))->setChecked(true);
    QListWidget* custom = nullptr;
    if (scopes > int(Scope::Custom)) {
        custom = new QListWidget(box);
        custom->setObjectName(QStringLiteral("xplist"));
        custom->setAccessibleName(RowChoice::kScopeCaptions[int(Scope::Custom)]);
        for (int i = 0; i < list.ListCount(); ++i) {
            const core::JobRow& row = list.row(i);
            auto* item = new QListWidgetItem(QStringList{row.cell(core::CellDate), row.cell(core::CellJob),
                                                         row.cell(core::CellProject), core::hhmm(row.minutes())}
                                                 .join(QStringLiteral("   ")),
                                             custom);
            item->setCheckState(form.ticked.contains(i) ? Qt::Checked : Qt::Unchecked);
        }
        custom->setVisible(form.scope == Scope::Custom);
        custom->setMinimumHeight(160);
        layout->addWidget(custom);
        QObject::connect(custom, &QListWidget::itemChanged, box, [&form, custom](QListWidgetItem* item) {
            form.tick(custom->row(item), item->checkState() == Qt::Checked);
        });
    }
    QObject::connect(group, &QButtonGroup::idClicked, box, [&form, group, custom, &dialog](int id) {
        form.RadioButton_Action(Scope(id));
        group->button(int(form.scope))->setChecked(true);
        if (custom) {
            custom->setVisible(form.scope == Scope::Custom);
            dialog.adjustSize();
        }
    });
    return box;
}

// Cancel is the default button of both windows, as a slip of Return prints or exports nothing.
QPushButton* addButtons(QDialog& dialog, QVBoxLayout* layout, const QString& action)
{
    auto* buttons = new QDialogButtonBox(&dialog);
    QPushButton* run = buttons->addButton(action, QDialogButtonBox::AcceptRole);
    run->setObjectName(QStringLiteral("PushButton1"));
    QPushButton* cancel = buttons->addButton(Tr::MWButtonCancel, QDialogButtonBox::RejectRole);
    cancel->setDefault(true);
    QObject::connect(cancel, &QPushButton::clicked, &dialog, &QDialog::reject);
    layout->addWidget(buttons);
    return run;
}

void runPntops(pntops& form, const core::Timesheet& list, QWidget* parent)
{
    QDialog dialog(parent);
    dialog.setObjectName(QStringLiteral("pntops"));
    dialog.setWindowTitle(pntops::kPWWinTitle);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(scopeBox(form, 4, list, dialog));
    QPushButton* print = addButtons(dialog, layout, Tr::MWButtonPrint);
    QObject::connect(print, &QPushButton::clicked, &dialog, [&] {
        dialog.hide(); // the print dialog takes its place
        form.PushButton1_Action();
        dialog.accept();
    });
    dialog.exec();
}

void runXpops(xpops& form, const core::Timesheet& list, QWidget* parent)
{
    QDialog dialog(parent);
    dialog.setObjectName(QStringLiteral("xpops"));
    dialog.setWindowTitle(xpops::kXPWinTitle);
    dialog.setWindowModality(Qt::WindowModal);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(scopeBox(form, 5, list, dialog));
    auto* encoding = new QFormLayout;
    auto* formatMenu = new QComboBox(&dialog);
    formatMenu->setObjectName(QStringLiteral("formatMenu"));
    formatMenu->addItems(kEncodingRows);
    formatMenu->setCurrentIndex(form.formatMenu);
    encoding->addRow(xpops::kXPFileFormat, formatMenu);
    layout->addLayout(encoding);
    QObject::connect(formatMenu, &QComboBox::activated, &dialog, [&form](int row) { form.formatMenu_Change(row); });
    QPushButton* run = addButtons(dialog, layout, xpops::kXPButtonExport);
    QObject::connect(run, &QPushButton::clicked, &dialog, [&] {
        form.PushButton1_Action();
        if (!form.ButtonPressed.isEmpty())
            dialog.accept();
    });
    dialog.exec();
}

} // namespace

void registerPrintViews(platform::qt::QtDialogs& dialogs)
{
    dialogs.registerView(QStringLiteral("printsetup"), [](platform::ModalForm& f, QWidget* parent) {
        runPrintsetup(static_cast<printsetup&>(f), parent);
    });
    dialogs.registerView(QStringLiteral("pntops"), [](platform::ModalForm& f, QWidget* parent) {
        auto& form = static_cast<pntops&>(f);
        runPntops(form, form.list(), parent);
    });
    dialogs.registerView(QStringLiteral("xpops"), [](platform::ModalForm& f, QWidget* parent) {
        auto& form = static_cast<xpops&>(f);
        runXpops(form, form.list(), parent);
    });
}

} // namespace shell::ui

#include "clients/ui/addressaddview.h"

#include "clients/addressadd.h"
#include "core/texts.h"
#include "platform/qt/qtplatform.h"

#include <QCheckBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace clients::ui
{

namespace
{

void runAddressadd(addressadd& form, QWidget* parent)
{
    QDialog dialog(parent);
    dialog.setObjectName(addressadd::kFormName);
    dialog.setWindowTitle(QStringLiteral("Veltrick"));
    auto* layout = new QVBoxLayout(&dialog);
    auto* groupInfo = new QLabel(form.groupInfo, &dialog);
    layout->addWidget(groupInfo);
    auto* check = new QCheckBox(addressadd::kAAIncludeClientNameTxt, &dialog);
    layout->addWidget(check);
    auto* fields = new QFormLayout;
    auto* nameOne = new QLineEdit(&dialog);
    auto* nameTwo = new QLineEdit(&dialog);
    auto* nameCompany = new QLineEdit(&dialog);
    fields->addRow(addressadd::kAAFirstName, nameOne);
    fields->addRow(addressadd::kAALastNameTxt, nameTwo);
    fields->addRow(addressadd::kAACompanyNameTxt, nameCompany);
    layout->addLayout(fields);
    auto* buttons = new QDialogButtonBox(&dialog);
    QPushButton* save = buttons->addButton(Tr::SaveMenuText, QDialogButtonBox::AcceptRole);
    QPushButton* cancel = buttons->addButton(Tr::MWButtonCancel, QDialogButtonBox::RejectRole);
    save->setDefault(true);
    layout->addWidget(buttons);

    const auto show = [&] {
        check->setChecked(form.CheckBox1);
        for (auto [edit, field] : {std::pair{nameOne, &form.nameOne}, std::pair{nameTwo, &form.nameTwo},
                                   std::pair{nameCompany, &form.nameCompany}}) {
            edit->setText(field->Text);
            edit->setEnabled(field->Enabled);
        }
        if (form.focus == addressadd::Focus::nameOne)
            nameOne->setFocus();
        else if (form.focus == addressadd::Focus::nameCompany)
            nameCompany->setFocus();
        if (!form.Visible)
            dialog.accept();
    };
    const auto take = [&] {
        form.nameOne.Text = nameOne->text();
        form.nameTwo.Text = nameTwo->text();
        form.nameCompany.Text = nameCompany->text();
    };
    QObject::connect(check, &QCheckBox::clicked, &dialog, [&](bool on) {
        take();
        form.CheckBox1 = on;
        form.CheckBox1_Action();
        show();
    });
    QObject::connect(save, &QPushButton::clicked, &dialog, [&] {
        take();
        form.PushButton1_Action();
        show();
    });
    QObject::connect(cancel, &QPushButton::clicked, &dialog, [&] {
        form.PushButton2_Action();
        dialog.reject();
    });
    show();
    if (dialog.exec() != QDialog::Accepted && form.Visible)
        form.PushButton2_Action(); // Escape closes like Cancel
}

} // namespace

void registerAddressaddView(platform::qt::QtDialogs& dialogs)
{
    dialogs.registerView(addressadd::kFormName, [](platform::ModalForm& f, QWidget* parent) {
        runAddressadd(static_cast<addressadd&>(f), parent);
    });
}

} // namespace clients::ui

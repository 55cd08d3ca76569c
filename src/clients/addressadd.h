#pragma once

#include "platform/contacts.h"
#include "platform/desktop.h"
#include "platform/dialogs.h"

#include <QList>
#include <QString>

namespace clients
{

class ClientSync;

// A text field of a form as the view shows it.
struct TextField
{
    QString Text;
    bool Enabled = true;
};

// The add-contact sheet: a company name, and first and last name when the check box asks for them;
// Save puts the new contact into the client group and synchronises the client list.
class addressadd : public platform::ModalForm
{
public:
    enum class Focus
    {
        None,
        nameOne,
        nameCompany
    };

    addressadd(platform::AddressBook& book, platform::Dialogs& dialogs, platform::Desktop& desktop, ClientSync& sync);
    QString formName() const override { return kFormName; }

    void Open();
    void CheckBox1_Action();
    void PushButton1_Action();
    void PushButton2_Action();

    QString groupInfo;
    QString added; // the company of the contact saved, empty until one is
    TextField nameOne;
    TextField nameTwo;
    TextField nameCompany;
    bool CheckBox1 = false;
    int groupnumber = -1;
    Focus focus = Focus::None;
    // False once Save or Cancel has closed the sheet.
    bool Visible = true;

    inline static const QString kFormName = QStringLiteral("addressadd");
    inline static const QString kAAFirstName = QStringLiteral("First Name:");
    inline static const QString kAALastNameTxt = QStringLiteral("Last Name:");
    inline static const QString kAACompanyNameTxt = QStringLiteral("Company Name:");
    inline static const QString kAAIncludeClientNameTxt = QStringLiteral("Include Client Name");
    inline static const QString kAATitleTxtML = QStringLiteral("Contacts Group : Veltrick Clients");
    inline static const QString kAAAddFirstNameTxt = QStringLiteral("Please enter a First Name for this new contact");
    inline static const QString kAAAddLastNameTxt = QStringLiteral("Please enter a Last Name for this new contact");
    inline static const QString kAAAddCompanyTxt = QStringLiteral("Please enter a Company Name for this new contact");

private:
    void refuse(const QString& text);

    platform::AddressBook& m_book;
    platform::Dialogs& m_dialogs;
    platform::Desktop& m_desktop;
    ClientSync& m_sync;
    QList<platform::AddressBookGroup> m_groups;
};

} // namespace clients

#include "clients/addressadd.h"

#include "clients/clientsync.h"
#include "clients/texts.h"

namespace clients
{

addressadd::addressadd(platform::AddressBook& book, platform::Dialogs& dialogs, platform::Desktop& desktop,
                       ClientSync& sync)
    : m_book(book), m_dialogs(dialogs), m_desktop(desktop), m_sync(sync)
{}

void addressadd::Open()
{
    groupInfo = kAATitleTxtML;
    m_groups = m_book.Groups();
    groupnumber = -1;
    for (int i = 0; i < m_groups.size(); ++i)
        if (m_groups[i].Name.compare(Tr::MWClientGroupName, Qt::CaseInsensitive) == 0)
            groupnumber = i;
    nameOne = {QString(), false};
    nameTwo = {QString(), false};
    nameCompany.Enabled = true;
    CheckBox1 = false;
    focus = Focus::nameCompany;
    Visible = true;
}

void addressadd::CheckBox1_Action()
{
    nameOne.Enabled = CheckBox1;
    nameTwo.Enabled = CheckBox1;
    if (CheckBox1) {
        focus = Focus::nameOne;
    } else {
        nameOne.Text.clear();
        nameTwo.Text.clear();
        focus = Focus::nameCompany;
    }
}

void addressadd::refuse(const QString& text)
{
    m_desktop.beep();
    m_dialogs.message(text);
}

void addressadd::PushButton1_Action()
{
    if (nameOne.Enabled && nameOne.Text.isEmpty())
        return refuse(kAAAddFirstNameTxt);
    if (nameOne.Enabled && nameTwo.Text.isEmpty())
        return refuse(kAAAddLastNameTxt);
    if (nameCompany.Text.isEmpty())
        return refuse(kAAAddCompanyTxt);

    platform::AddressBookContact contact;
    contact.FirstName = nameOne.Text;
    contact.LastName = nameTwo.Text;
    contact.CompanyName = nameCompany.Text;
    m_book.Add(contact);
    if (groupnumber >= 0 && groupnumber < m_groups.size())
        m_book.GroupAdd(m_groups[groupnumber], contact);
    m_book.Save(); // the store's own failures are not reported here; the synchronisation shows what stuck

    added = contact.CompanyName;
    m_sync.syncaddressbook2();
    m_sync.host().refreshClientList();
    Visible = false;
}

void addressadd::PushButton2_Action()
{
    Visible = false;
}

} // namespace clients

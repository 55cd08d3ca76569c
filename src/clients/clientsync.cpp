#include "clients/clientsync.h"

#include "clients/addressadd.h"
#include "clients/clientlist.h"
#include "clients/texts.h"
#include "platform/yieldgate.h"
#include "storage/clients_file.h"

#include <QSet>

namespace clients
{

ClientSync::ClientSync(platform::AddressBook& book, platform::Dialogs& dialogs, platform::Desktop& desktop,
                       storage::FileStore& files, QString clientsFile, SyncHost& host)
    : m_book(book), m_dialogs(dialogs), m_desktop(desktop), m_files(files), m_clientsFile(std::move(clientsFile)),
      m_host(host)
{}

void ClientSync::fillGroupNames(const QList<platform::AddressBookGroup>& groups)
{
    platform::YieldGate gate(m_desktop);
    clientlist3.clear();
    for (const auto& group : groups) {
        clientlist3 << group.Name;
        gate.step();
    }
}

int ClientSync::findClientGroup(int& count) const
{
    count = 0;
    int idx = -1;
    for (int row = 0; row < clientlist3.size(); ++row) {
        if (clientlist3[row].compare(Tr::MWClientGroupName, Qt::CaseInsensitive) == 0) {
            ++count;
            idx = row;
        }
    }
    return idx;
}

void ClientSync::makeNewAddressGroup()
{
    platform::AddressBookGroup group;
    group.Name = Tr::MWClientGroupName;
    m_book.Add(group);
    m_book.Save(); // a refused write shows as the group still missing when the groups are read again
}

void ClientSync::syncaddressbook2()
{
    const QString& G = Tr::MWClientGroupName;
    QList<platform::AddressBookGroup> groups = m_book.Groups();
    fillGroupNames(groups);
    int count = 0;
    int idx = findClientGroup(count);

    if (count > 1) {
        m_dialogs.message(Tr::MWDupeContactsGroupA + QString::number(count) + Tr::MWDupeContactsGroupB + G +
                          QLatin1Char('.') + kEol + kEol + Tr::MWDupeContactsGroupC + kEol + kEol +
                          Tr::MWDupeContactsGroupD + G + QLatin1Char('.'));
        m_desktop.beep();
        return;
    }

    if (idx == -1) {
        makeNewAddressGroup();
        groups = m_book.Groups();
        fillGroupNames(groups);
        idx = findClientGroup(count);
        if (idx == -1) {
            m_desktop.beep();
            m_dialogs.message(Tr::MWAddressBookNoAccess + kEol + kEol + Tr::MWAddressBookNoAccessTxt);
            return;
        }
        m_desktop.beep();
        m_dialogs.message(Tr::MWNewBookContacts + kEol + kEol + Tr::MWNewBookContactsTxt + kEol + kEol +
                          Tr::MWNewBookExtraTxt);
    }

    const QList<platform::AddressBookContact> contacts = m_book.GroupContacts(groups[idx]);
    clientlist3.clear();
    // The names already taken, case folded: the first spelling met is the one kept.
    QSet<QString> seen;
    platform::YieldGate gate(m_desktop);
    for (const auto& contact : contacts) {
        const QString& name = contact.CompanyName;
        const QString folded = name.toCaseFolded();
        if (!name.isEmpty() && name.compare(kMissingValue, Qt::CaseInsensitive) != 0 && !seen.contains(folded)) {
            seen.insert(folded);
            clientlist3 << name;
        }
        gate.step();
    }
    sortClientNames(clientlist3);

    m_host.resetClientList();

    const auto written = m_files.write(m_clientsFile, storage::encodeClientList(clientlist3));
    if (!written.ok()) {
        m_desktop.beep();
        m_dialogs.message(kClientListWriteFail + kEol + kEol + written.message);
    }
    // The contacts were read: adding a client may go ahead even when the list file could not be written.
    m_host.setContactsAccess(true);
}

void ClientSync::_syncAddressBook_Action()
{
    syncaddressbook2();
    m_host.setStatus(Tr::MWUpdatedListTxt);
    m_host.startTimer2();
}

void ClientSync::addClient()
{
    syncaddressbook2();
    if (m_host.contactsAccess())
        showAddressadd();
}

QString ClientSync::showAddressadd()
{
    addressadd sheet(m_book, m_dialogs, m_desktop, *this);
    sheet.Open();
    m_dialogs.showModal(sheet);
    return sheet.added;
}

} // namespace clients

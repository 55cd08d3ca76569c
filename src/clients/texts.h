#pragma once

#include <QString>

// Shared texts of the client list and its synchronisation with the contacts.
namespace Tr
{
inline const QString MWClientGroupName = QStringLiteral("Veltrick Clients");
inline const QString MWNewBookContacts =
    QStringLiteral("A new Group has been created in your Contacts application called Veltrick Clients.");
inline const QString MWNewBookContactsTxt =
    QStringLiteral("Please open your Contacts application and drag any contacts that you want to appear in the "
                   "Veltrick Client List into this new group. Then restart Veltrick and choose Sync Client List "
                   "with Contacs from the File menu.");
inline const QString MWNewBookExtraTxt =
    QStringLiteral("You can also click the Add New Client button under the Client List.");
inline const QString MWUpdatedListTxt = QStringLiteral("Client list updated");
inline const QString MWAddressBookNoAccess = QStringLiteral("Sorry - Contacts access not allowed!");
inline const QString MWAddressBookNoAccessTxt =
    QStringLiteral("Please make sure that you have given Veltrick permission to access your Contacts (See Security "
                   "& Privacy settings).");
inline const QString MWDupeContactsGroupA = QStringLiteral("WARNING: You have ");
inline const QString MWDupeContactsGroupB = QStringLiteral(" groups in your Contacts named ");
inline const QString MWDupeContactsGroupC = QStringLiteral("Contacts have not been synced.");
inline const QString MWDupeContactsGroupD =
    QStringLiteral("To sync your contacts, please remove the extra groups named ");
} // namespace Tr

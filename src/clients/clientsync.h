#pragma once

#include "platform/contacts.h"
#include "platform/desktop.h"
#include "platform/dialogs.h"
#include "storage/filestore.h"

#include <QString>
#include <QStringList>

namespace clients
{

// What the synchronisation needs of the main window: its contactsAccess flag, its client picker,
// the shared status line with its clearing timer, and the job dialog's client menu.
class SyncHost
{
public:
    virtual ~SyncHost() = default;
    virtual bool contactsAccess() const = 0;
    virtual void setContactsAccess(bool on) = 0;
    // Empties clientlist2, adds the folder row "All Clients" closed and selects it, which leaves a
    // single-client view that was on.
    virtual void resetClientList() = 0;
    // Shows dataprogress and puts the text in datastream.
    virtual void setStatus(const QString& datastream) = 0;
    // Starts Timer2 in one-shot mode; when it fires the window empties the status line.
    virtual void startTimer2() = 0;
    // When the job dialog is open, it refills its client menu from the file.
    virtual void refreshClientList() = 0;
};

// Reads the client group of the user's contacts and rewrites the client list file from it.
class ClientSync
{
public:
    ClientSync(platform::AddressBook& book, platform::Dialogs& dialogs, platform::Desktop& desktop,
               storage::FileStore& files, QString clientsFile, SyncHost& host);

    void syncaddressbook2();
    // The menu item "Sync Client List with Contacts": the status line says so even after a warning.
    void _syncAddressBook_Action();
    // addClient2_MouseDown, _FileAddNewClient_Action and the job dialog's add-client item: synchronise,
    // then open the add-contact sheet if the contacts may be read.
    void addClient();
    // The add-contact sheet alone, for callers that have just synchronised. The answer is the company
    // of the client added, or empty.
    QString showAddressadd();

    SyncHost& host() { return m_host; }

    // The work area: first the names of all groups, then the client names.
    QStringList clientlist3;

    inline static const QString kEol = QStringLiteral("\n");
    inline static const QString kMissingValue = QStringLiteral("missing value");
    inline static const QString kClientListWriteFail = QStringLiteral("Error - Could not Write the Client List file!");

private:
    void fillGroupNames(const QList<platform::AddressBookGroup>& groups);
    // The row of the last group named like the client group, -1 if none; count gets how many there are.
    int findClientGroup(int& count) const;
    void makeNewAddressGroup();

    platform::AddressBook& m_book;
    platform::Dialogs& m_dialogs;
    platform::Desktop& m_desktop;
    storage::FileStore& m_files;
    QString m_clientsFile;
    SyncHost& m_host;
};

} // namespace clients

#pragma once

#include "platform/result.h"

#include <QList>
#include <QString>

namespace platform
{

// A group of the user's contacts as the store lists it.
struct AddressBookGroup
{
    QString Name;
    // The store's own key for the group; empty until the group has been added to a store.
    QString id;
};

// A person or company of the user's contacts, with the fields the program reads and writes.
struct AddressBookContact
{
    QString FirstName;
    QString LastName;
    QString CompanyName;
    // The store's own key for the contact; empty until the contact has been added to a store.
    QString id;
};

// The user's shared contacts store. Additions are pending until Save; Groups reads the store anew.
class AddressBook
{
public:
    virtual ~AddressBook() = default;

    // All groups, in an order that stays the same while the store is unchanged. Empty when the store
    // cannot be read (access refused).
    virtual QList<AddressBookGroup> Groups() = 0;
    // Queue a new group or contact and give it its key.
    virtual void Add(AddressBookGroup& group) = 0;
    virtual void Add(AddressBookContact& contact) = 0;
    // Write what is pending. The pending list is emptied whatever the outcome.
    virtual Result Save() = 0;

    // The contacts of a group returned by Groups (or added before).
    virtual QList<AddressBookContact> GroupContacts(const AddressBookGroup& group) = 0;
    // Queue putting a contact into a group; both must have been added or listed first.
    virtual void GroupAdd(const AddressBookGroup& group, const AddressBookContact& contact) = 0;
};

} // namespace platform

#pragma once

#include "platform/contacts.h"

#include <QHash>

namespace testing
{

// A contacts store in memory: groups by key and their members; a new group is kept once saved.
class FakeAddressBook : public platform::AddressBook
{
public:
    QList<platform::AddressBookGroup> Groups() override { return groups; }
    void Add(platform::AddressBookGroup& group) override
    {
        group.id = QStringLiteral("g%1").arg(++m_keys);
        m_pendingGroups << group;
    }
    void Add(platform::AddressBookContact& contact) override { contact.id = QStringLiteral("c%1").arg(++m_keys); }
    platform::Result Save() override
    {
        groups << std::exchange(m_pendingGroups, {});
        return platform::Result::success();
    }
    QList<platform::AddressBookContact> GroupContacts(const platform::AddressBookGroup& group) override
    {
        return members.value(group.id);
    }
    void GroupAdd(const platform::AddressBookGroup& group, const platform::AddressBookContact& contact) override
    {
        members[group.id] << contact;
    }

    QList<platform::AddressBookGroup> groups;
    QHash<QString, QList<platform::AddressBookContact>> members;

private:
    QList<platform::AddressBookGroup> m_pendingGroups;
    int m_keys = 0;
};

} // namespace testing

#pragma once

#include "platform/contacts.h"
#include "storage/filestore.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

namespace clients
{

// The user's contacts as a folder of vCard files, read recursively, the layout that CardDAV sync tools
// and command-line address books keep. Groups are group cards (vCard 4 KIND:group or the CardDAV form
// of Apple's address book) and the names in CATEGORIES. What the program adds is written as vCard 4.0.
class VCardStore : public platform::AddressBook
{
public:
    VCardStore(storage::FileStore& files, QString folder = defaultFolder());

    // $XDG_DATA_HOME/contacts
    static QString defaultFolder();
    const QString& folder() const { return m_folder; }

    QList<platform::AddressBookGroup> Groups() override;
    void Add(platform::AddressBookGroup& group) override;
    void Add(platform::AddressBookContact& contact) override;
    platform::Result Save() override;
    QList<platform::AddressBookContact> GroupContacts(const platform::AddressBookGroup& group) override;
    void GroupAdd(const platform::AddressBookGroup& group, const platform::AddressBookContact& contact) override;

    // Files larger than this are not vCards a person keeps; they are passed over rather than read whole.
    static constexpr qint64 kMaxFileSize = 64LL * 1024 * 1024;

private:
    struct Contact
    {
        platform::AddressBookContact fields;
        QString uid; // as the card spells it, without "urn:uuid:"; empty when missing or not unique
        QStringList categories;
        QString path;
        int cardIndex = 0;
    };
    struct GroupCard
    {
        QString id;
        QString name;
        QString uid;
        QStringList members; // normalised member UIDs
        bool appleStyle = false;
        QString path;
        int cardIndex = 0;
    };
    struct Membership
    {
        QString groupId;
        QString contactId;
    };

    bool folderReadable() const;
    void load();
    void ensureLoaded();
    void readFile(const QString& path);
    const GroupCard* groupCard(const QString& id) const;
    QList<int> memberIndexes(const platform::AddressBookGroup& group) const;
    int contactByMember(const QString& member) const;
    platform::Result writeNewCards();
    platform::Result addLinesToCards();

    storage::FileStore& m_files;
    QString m_folder;

    bool m_loaded = false;
    bool m_readable = false;
    QList<Contact> m_contacts;
    QHash<QString, int> m_contactByUid;
    QHash<QString, int> m_contactById;
    QList<GroupCard> m_groupCards;
    QStringList m_categoryGroups;

    QList<platform::AddressBookGroup> m_newGroups;
    QList<platform::AddressBookContact> m_newContacts;
    QList<Membership> m_memberships;
};

// Removes "urn:uuid:" and folds case, so that a member reference and a contact's UID compare equal.
QString normalisedUid(const QString& uid);

} // namespace clients

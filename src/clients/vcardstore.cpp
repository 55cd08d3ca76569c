#include "clients/vcardstore.h"

#include "clients/vcard.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QSet>
#include <QStandardPaths>
#include <QUuid>

#include <algorithm>
#include <cerrno>
#include <dirent.h>

namespace clients
{

namespace
{

const QString kCardPrefix = QStringLiteral("card:");
const QString kFilePrefix = QStringLiteral("file:");
const QString kCategoryPrefix = QStringLiteral("category:");
const QString kUrnUuid = QStringLiteral("urn:uuid:");

QString positionKey(const QString& path, int cardIndex)
{
    return kFilePrefix + path + QLatin1Char('#') + QString::number(cardIndex);
}

bool sameName(const QString& a, const QString& b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

QString newUuid()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toLower();
}

// A name counts as a file of the store when it has an extension and is not a half-written temporary.
bool isCardFileName(const QString& name)
{
    if (name.endsWith(QLatin1String(".tmp"), Qt::CaseInsensitive))
        return false;
    return name.lastIndexOf(QLatin1Char('.')) > 0;
}

// The line end used just before a card's END line, so that an inserted line matches the file.
QByteArray lineEndBefore(const QByteArray& bytes, qsizetype offset)
{
    if (offset >= 2 && bytes[offset - 2] == '\r' && bytes[offset - 1] == '\n')
        return "\r\n";
    if (offset >= 1 && bytes[offset - 1] == '\n')
        return "\n";
    if (offset >= 1 && bytes[offset - 1] == '\r')
        return "\r";
    return "\r\n";
}

QByteArray lineInFileStyle(const QString& line, const QByteArray& eol)
{
    QByteArray folded = foldedLine(line);
    if (eol != "\r\n")
        folded.replace("\r\n", eol);
    return folded;
}

} // namespace

QString normalisedUid(const QString& uid)
{
    QString value = uid.trimmed();
    if (value.startsWith(kUrnUuid, Qt::CaseInsensitive))
        value = value.mid(kUrnUuid.size());
    return value.toLower();
}

VCardStore::VCardStore(storage::FileStore& files, QString folder) : m_files(files), m_folder(std::move(folder)) {}

QString VCardStore::defaultFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/contacts");
}

bool VCardStore::folderReadable() const
{
    // Ask the system itself: the permission bits alone do not tell what this process may list.
    DIR* dir = ::opendir(QFile::encodeName(m_folder).constData());
    if (!dir)
        return false;
    ::closedir(dir);
    return true;
}

void VCardStore::ensureLoaded()
{
    if (!m_loaded)
        load();
}

void VCardStore::load()
{
    m_loaded = true;
    m_contacts.clear();
    m_contactByUid.clear();
    m_contactById.clear();
    m_groupCards.clear();
    m_categoryGroups.clear();
    m_readable = folderReadable();
    if (!m_readable)
        return;

    QStringList paths;
    QDirIterator it(m_folder, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        const QFileInfo info = it.fileInfo();
        if (isCardFileName(info.fileName()) && info.size() <= kMaxFileSize)
            paths << info.filePath();
    }
    // Files come in the order of their paths, so the groups keep their order from one read to the next.
    std::sort(paths.begin(), paths.end());
    for (const QString& path : std::as_const(paths))
        readFile(path);

    QSet<QString> groupNames;
    for (const GroupCard& card : std::as_const(m_groupCards))
        groupNames.insert(card.name.toCaseFolded());
    for (const Contact& contact : std::as_const(m_contacts)) {
        for (const QString& category : contact.categories) {
            const QString key = category.toCaseFolded();
            if (groupNames.contains(key))
                continue;
            groupNames.insert(key);
            m_categoryGroups << category;
        }
    }
}

void VCardStore::readFile(const QString& path)
{
    QByteArray bytes;
    if (!m_files.read(path, bytes).ok())
        return; // one unreadable file does not hide the rest of the address book
    const QList<VCard> cards = parseVCards(bytes);
    QSet<QString> groupIds;
    for (const GroupCard& card : std::as_const(m_groupCards))
        groupIds.insert(card.id);

    for (int index = 0; index < cards.size(); ++index) {
        const VCard& card = cards[index];
        const QString rawUid = card.text(QStringLiteral("UID")).trimmed();
        const QString uid = normalisedUid(rawUid);
        const bool apple = card.text(QStringLiteral("X-ADDRESSBOOKSERVER-KIND"))
                               .trimmed()
                               .compare(QLatin1String("group"), Qt::CaseInsensitive) == 0;
        const bool group =
            apple ||
            card.text(QStringLiteral("KIND")).trimmed().compare(QLatin1String("group"), Qt::CaseInsensitive) == 0;

        if (group) {
            GroupCard entry;
            entry.name = card.text(QStringLiteral("FN")).trimmed();
            if (entry.name.isEmpty()) {
                const QStringList n = card.components(QStringLiteral("N"));
                entry.name = n.join(QLatin1Char(' ')).simplified();
            }
            entry.uid = uid;
            entry.appleStyle = apple;
            entry.path = path;
            entry.cardIndex = index;
            entry.id =
                uid.isEmpty() || groupIds.contains(kCardPrefix + uid) ? positionKey(path, index) : kCardPrefix + uid;
            groupIds.insert(entry.id);
            for (const VCardProperty& prop : card.properties) {
                if (prop.name == QLatin1String("MEMBER") || prop.name == QLatin1String("X-ADDRESSBOOKSERVER-MEMBER"))
                    entry.members << normalisedUid(unescapeValue(prop.value, card.isVersion21()));
            }
            m_groupCards << entry;
            continue;
        }

        Contact contact;
        const QStringList n = card.components(QStringLiteral("N"));
        contact.fields.LastName = n.value(0);
        contact.fields.FirstName = n.value(1);
        contact.fields.CompanyName = card.components(QStringLiteral("ORG")).value(0);
        contact.categories = card.listValues(QStringLiteral("CATEGORIES"));
        contact.path = path;
        contact.cardIndex = index;
        const bool uniqueUid = !uid.isEmpty() && !m_contactByUid.contains(uid);
        contact.fields.id = uniqueUid ? uid : positionKey(path, index);
        // Keep the UID as the card spells it, for member lines written later.
        contact.uid = uniqueUid
                          ? (rawUid.startsWith(kUrnUuid, Qt::CaseInsensitive) ? rawUid.mid(kUrnUuid.size()) : rawUid)
                          : QString();
        const int position = int(m_contacts.size());
        if (uniqueUid)
            m_contactByUid.insert(uid, position);
        m_contactById.insert(contact.fields.id, position);
        m_contacts << contact;
    }
}

QList<platform::AddressBookGroup> VCardStore::Groups()
{
    load();
    QList<platform::AddressBookGroup> groups;
    for (const GroupCard& card : std::as_const(m_groupCards))
        groups << platform::AddressBookGroup{card.name, card.id};
    for (const QString& name : std::as_const(m_categoryGroups))
        groups << platform::AddressBookGroup{name, kCategoryPrefix + name};
    return groups;
}

const VCardStore::GroupCard* VCardStore::groupCard(const QString& id) const
{
    for (const GroupCard& card : m_groupCards)
        if (card.id == id)
            return &card;
    return nullptr;
}

int VCardStore::contactByMember(const QString& member) const
{
    // A member may carry a suffix after the UID ("-ABSPlugin", ":ABPerson"): try the whole reference,
    // then shorter ones cut at each dash or colon from the right.
    QString key = member;
    while (!key.isEmpty()) {
        const auto found = m_contactByUid.constFind(key);
        if (found != m_contactByUid.constEnd())
            return found.value();
        const qsizetype cut = std::max(key.lastIndexOf(QLatin1Char('-')), key.lastIndexOf(QLatin1Char(':')));
        if (cut <= 0)
            break;
        key.truncate(cut);
    }
    return -1;
}

QList<int> VCardStore::memberIndexes(const platform::AddressBookGroup& group) const
{
    QString name;
    QSet<int> members;
    if (group.id.startsWith(kCategoryPrefix)) {
        name = group.id.mid(kCategoryPrefix.size());
    } else if (const GroupCard* card = groupCard(group.id)) {
        name = card->name;
        for (const QString& member : card->members) {
            const int index = contactByMember(member);
            if (index >= 0)
                members.insert(index);
        }
    } else {
        return {};
    }
    for (int i = 0; i < m_contacts.size(); ++i) {
        for (const QString& category : m_contacts[i].categories) {
            if (sameName(category, name)) {
                members.insert(i);
                break;
            }
        }
    }
    QList<int> ordered(members.cbegin(), members.cend());
    std::sort(ordered.begin(), ordered.end());
    return ordered;
}

QList<platform::AddressBookContact> VCardStore::GroupContacts(const platform::AddressBookGroup& group)
{
    ensureLoaded();
    QList<platform::AddressBookContact> contacts;
    for (const int index : memberIndexes(group))
        contacts << m_contacts[index].fields;
    return contacts;
}

void VCardStore::Add(platform::AddressBookGroup& group)
{
    group.id = kCardPrefix + newUuid();
    m_newGroups << group;
}

void VCardStore::Add(platform::AddressBookContact& contact)
{
    contact.id = newUuid();
    m_newContacts << contact;
}

void VCardStore::GroupAdd(const platform::AddressBookGroup& group, const platform::AddressBookContact& contact)
{
    if (!group.id.isEmpty() && !contact.id.isEmpty())
        m_memberships << Membership{group.id, contact.id};
}

platform::Result VCardStore::Save()
{
    if (m_newGroups.isEmpty() && m_newContacts.isEmpty() && m_memberships.isEmpty())
        return platform::Result::success();
    ensureLoaded();

    platform::Result result;
    const QFileInfo folder(m_folder);
    if (folder.exists() && (!folder.isDir() || !folderReadable()))
        result = platform::Result::failure(EACCES, QStringLiteral("cannot read ") + m_folder);
    if (result.ok())
        result = writeNewCards();
    if (result.ok())
        result = addLinesToCards();

    m_newGroups.clear();
    m_newContacts.clear();
    m_memberships.clear();
    m_loaded = false;
    return result;
}

platform::Result VCardStore::writeNewCards()
{
    auto groupName = [this](const QString& groupId) -> QString {
        for (const auto& group : std::as_const(m_newGroups))
            if (group.id == groupId)
                return group.Name;
        if (groupId.startsWith(kCategoryPrefix))
            return groupId.mid(kCategoryPrefix.size());
        const GroupCard* card = groupCard(groupId);
        return card ? card->name : QString();
    };
    // A sync tool carries only the cards of a collection, a subfolder of the address book: a contact goes
    // beside the card of the group it joins, or beside a member of a group known by name alone.
    auto groupFolder = [this](const QString& groupId) -> QString {
        if (const GroupCard* card = groupCard(groupId))
            return QFileInfo(card->path).path();
        const QList<int> members = memberIndexes({QString(), groupId});
        return members.isEmpty() ? m_folder : QFileInfo(m_contacts[members.first()].path).path();
    };
    auto cardBytes = [](const QStringList& lines) {
        QByteArray bytes;
        for (const QString& line : lines)
            bytes += foldedLine(line);
        return bytes;
    };

    // Contacts first, so that a group card never names a member that is not on disk yet.
    for (const auto& contact : std::as_const(m_newContacts)) {
        QStringList categories;
        QString folder;
        for (const Membership& membership : std::as_const(m_memberships)) {
            if (membership.contactId != contact.id)
                continue;
            const QString name = groupName(membership.groupId);
            if (!name.isEmpty() && !categories.contains(name, Qt::CaseInsensitive))
                categories << name;
            if (folder.isEmpty())
                folder = groupFolder(membership.groupId);
        }
        const QString formatted = QStringList{contact.FirstName, contact.LastName}.join(QLatin1Char(' ')).trimmed();
        QStringList lines{QStringLiteral("BEGIN:VCARD"),
                          QStringLiteral("VERSION:4.0"),
                          QStringLiteral("UID:") + kUrnUuid + contact.id,
                          QStringLiteral("FN:") + escapeValue(formatted.isEmpty() ? contact.CompanyName : formatted),
                          QStringLiteral("N:") + escapeValue(contact.LastName) + QLatin1Char(';') +
                              escapeValue(contact.FirstName) + QStringLiteral(";;;"),
                          QStringLiteral("ORG:") + escapeValue(contact.CompanyName)};
        if (!categories.isEmpty()) {
            QStringList escaped;
            for (const QString& name : std::as_const(categories))
                escaped << escapeValue(name);
            lines << QStringLiteral("CATEGORIES:") + escaped.join(QLatin1Char(','));
        }
        lines << QStringLiteral("END:VCARD");
        const auto result = m_files.write((folder.isEmpty() ? m_folder : folder) + QLatin1Char('/') + contact.id +
                                              QStringLiteral(".vcf"),
                                          cardBytes(lines));
        if (!result.ok())
            return result;
    }

    for (const auto& group : std::as_const(m_newGroups)) {
        const QString uuid = group.id.mid(kCardPrefix.size());
        QStringList lines{QStringLiteral("BEGIN:VCARD"), QStringLiteral("VERSION:4.0"), QStringLiteral("KIND:group"),
                          QStringLiteral("FN:") + escapeValue(group.Name), QStringLiteral("UID:") + kUrnUuid + uuid};
        for (const Membership& membership : std::as_const(m_memberships)) {
            if (membership.groupId != group.id)
                continue;
            const auto found = m_contactById.constFind(membership.contactId);
            const bool known = found != m_contactById.constEnd() && !m_contacts[found.value()].uid.isEmpty();
            const bool isNew = std::any_of(m_newContacts.cbegin(), m_newContacts.cend(),
                                           [&](const auto& c) { return c.id == membership.contactId; });
            if (isNew || known)
                lines << QStringLiteral("MEMBER:") + kUrnUuid +
                             (isNew ? membership.contactId : m_contacts[found.value()].uid);
        }
        lines << QStringLiteral("END:VCARD");
        const auto result =
            m_files.write(m_folder + QLatin1Char('/') + uuid + QStringLiteral(".vcf"), cardBytes(lines));
        if (!result.ok())
            return result;
    }
    return platform::Result::success();
}

platform::Result VCardStore::addLinesToCards()
{
    // What goes into cards that are already on disk, by file: the card (by UID, or by its place in
    // the file when it has none) and the line to put before its END.
    struct Insertion
    {
        QString uid;
        int cardIndex;
        QString line;
    };
    QMap<QString, QList<Insertion>> byFile;

    for (const Membership& membership : std::as_const(m_memberships)) {
        const bool newGroup = std::any_of(m_newGroups.cbegin(), m_newGroups.cend(),
                                          [&](const auto& g) { return g.id == membership.groupId; });
        const bool newContact = std::any_of(m_newContacts.cbegin(), m_newContacts.cend(),
                                            [&](const auto& c) { return c.id == membership.contactId; });
        const auto found = m_contactById.constFind(membership.contactId);
        const Contact* existing = found == m_contactById.constEnd() ? nullptr : &m_contacts[found.value()];
        if (newGroup && (newContact || (existing && !existing->uid.isEmpty())))
            continue; // the new group card already lists it
        const QString contactUid = newContact ? membership.contactId : (existing ? existing->uid : QString());

        const GroupCard* card = groupCard(membership.groupId);
        if (card && !contactUid.isEmpty()) {
            const QString property =
                card->appleStyle ? QStringLiteral("X-ADDRESSBOOKSERVER-MEMBER:") : QStringLiteral("MEMBER:");
            byFile[card->path] << Insertion{card->uid, card->cardIndex, property + kUrnUuid + contactUid};
        } else if (existing) {
            // A group known by name alone (or a contact without UID): the contact's card names the group.
            QString name = membership.groupId.startsWith(kCategoryPrefix)
                               ? membership.groupId.mid(kCategoryPrefix.size())
                               : (card ? card->name : QString());
            for (const auto& g : std::as_const(m_newGroups))
                if (g.id == membership.groupId)
                    name = g.Name;
            if (!name.isEmpty() && !existing->categories.contains(name, Qt::CaseInsensitive))
                byFile[existing->path] << Insertion{normalisedUid(existing->uid), existing->cardIndex,
                                                    QStringLiteral("CATEGORIES:") + escapeValue(name)};
        }
    }

    for (auto it = byFile.cbegin(); it != byFile.cend(); ++it) {
        QByteArray raw;
        auto result = m_files.read(it.key(), raw);
        if (!result.ok())
            return result;
        QByteArray bytes = normalisedVCardBytes(raw);
        const QList<VCard> cards = parseVCards(bytes);
        QList<QPair<qsizetype, QByteArray>> edits;
        for (const Insertion& insertion : it.value()) {
            int index = -1;
            if (!insertion.uid.isEmpty()) {
                for (int i = 0; i < cards.size() && index < 0; ++i)
                    if (normalisedUid(cards[i].text(QStringLiteral("UID"))) == insertion.uid)
                        index = i;
            } else if (insertion.cardIndex < cards.size()) {
                index = insertion.cardIndex;
            }
            if (index < 0)
                return platform::Result::failure(ENOENT, QStringLiteral("card no longer in ") + it.key());
            const qsizetype at = cards[index].endLine >= 0 ? cards[index].endLine : bytes.size();
            const QByteArray eol = cards[index].endLine >= 0 ? lineEndBefore(bytes, at) : QByteArray("\r\n");
            QByteArray line = lineInFileStyle(insertion.line, eol);
            if (at == bytes.size() && at > 0 && bytes.back() != '\n' && bytes.back() != '\r')
                line.prepend(eol);
            edits << qMakePair(at, line);
        }
        // From the back, so that earlier offsets stay right.
        std::stable_sort(edits.begin(), edits.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
        for (const auto& [at, line] : std::as_const(edits))
            bytes.insert(at, line);
        result = m_files.write(it.key(), bytes);
        if (!result.ok())
            return result;
    }
    return platform::Result::success();
}

} // namespace clients

// Any bytes as a folder of vCard files (split at "\n==\n" into up to eight files, some in a subfolder):
// groups and their members read without a crash, no member invented, and the client group the program
// creates, with a contact added to it, is read back from the folder afterwards.

#include "clients/vcardstore.h"
#include "storage/filestore.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cstdlib>

namespace
{

void writeFolder(const QString& folder, const QByteArray& bytes)
{
    QDir(folder).removeRecursively();
    QDir().mkpath(folder + QStringLiteral("/sub"));
    const QByteArray separator("\n==\n");
    QList<QByteArray> files;
    for (qsizetype from = 0; files.size() < 8;) {
        const qsizetype at = bytes.indexOf(separator, from);
        files << bytes.mid(from, at < 0 ? -1 : at - from);
        if (at < 0)
            break;
        from = at + separator.size();
    }
    for (qsizetype i = 0; i < files.size(); ++i) {
        const QString name =
            QStringLiteral("%1/%2c%3.vcf").arg(folder, i % 3 == 2 ? QStringLiteral("sub/") : QString()).arg(i);
        QFile file(name);
        if (file.open(QIODevice::WriteOnly))
            file.write(files[i]);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static QTemporaryDir root(QDir::tempPath() + QStringLiteral("/fuzz_contacts_XXXXXX"));
    const QString folder = root.filePath(QStringLiteral("contacts"));
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    writeFolder(folder, bytes);
    storage::DiskFileStore files;

    clients::VCardStore store(files, folder);
    const qsizetype begins = bytes.count("BEGIN:") + bytes.count("begin:") + 1;
    for (const platform::AddressBookGroup& group : store.Groups())
        if (store.GroupContacts(group).size() > begins)
            std::abort();

    platform::AddressBookGroup clients{QStringLiteral("Veltrick Clients"), {}};
    store.Add(clients);
    platform::AddressBookContact person{
        QStringLiteral("Ada"), QStringLiteral("Byron"), QStringLiteral("Analytical"), {}};
    store.Add(person);
    store.GroupAdd(clients, person);
    if (!store.Save().ok())
        return 0; // a name the folder cannot hold; nothing was promised

    clients::VCardStore again(files, folder);
    bool found = false;
    for (const platform::AddressBookGroup& group : again.Groups()) {
        if (group.Name.compare(clients.Name, Qt::CaseInsensitive) != 0)
            continue;
        for (const platform::AddressBookContact& member : again.GroupContacts(group))
            found = found || member.CompanyName == person.CompanyName;
    }
    if (!found)
        std::abort();
    return 0;
}

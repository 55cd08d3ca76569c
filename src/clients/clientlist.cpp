#include "clients/clientlist.h"

#include "storage/clients_file.h"

#include <algorithm>

namespace clients
{

QStringList readClientList(const storage::FileStore& files, const QString& path)
{
    QByteArray bytes;
    if (!files.exists(path) || !files.read(path, bytes).ok())
        return {};
    return storage::decodeClientList(bytes);
}

void sortClientNames(QStringList& names)
{
    std::stable_sort(names.begin(), names.end(), [](const QString& a, const QString& b) {
        const int folded = a.compare(b, Qt::CaseInsensitive);
        return folded != 0 ? folded < 0 : a < b;
    });
}

} // namespace clients

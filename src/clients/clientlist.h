#pragma once

#include "storage/filestore.h"

#include <QString>
#include <QStringList>

namespace clients
{

// The client names as the last synchronisation left them: what the client picker's folder and the job
// dialog's client menu show, in file order. No file means no clients, without a message.
QStringList readClientList(const storage::FileStore& files, const QString& path);

// Ascending order of the client list: case does not separate names, and names equal but for case
// keep a fixed order among themselves.
void sortClientNames(QStringList& names);

} // namespace clients

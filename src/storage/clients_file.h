#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace storage
{

// The client names, sorted, as the contacts synchronisation last wrote them: a signed 16-bit count and
// one UTF-8 Pascal string per name. A damaged file gives the names read before the damage.
QStringList decodeClientList(const QByteArray& bytes);
// Names longer than 255 bytes are cut at a character boundary; past 32767 names the rest are left out.
QByteArray encodeClientList(const QStringList& names);

inline const QString kClientsFileName = QStringLiteral("VLK8Contacts");

} // namespace storage

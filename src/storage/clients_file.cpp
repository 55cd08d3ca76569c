#include "storage/clients_file.h"

#include "storage/binary_stream.h"

namespace storage
{

namespace
{
constexpr int kMaxClients = 32767;
}

QStringList decodeClientList(const QByteArray& bytes)
{
    QStringList names;
    ByteReader reader(bytes);
    int count = 0;
    if (!reader.readI16(count) || count <= 0)
        return names;
    // Every name takes at least its length byte.
    names.reserve(qMin<qsizetype>(count, reader.remaining()));
    QByteArrayView name;
    for (int i = 0; i < count && reader.readPascal(name); ++i)
        names.append(QString::fromUtf8(name));
    return names;
}

QByteArray encodeClientList(const QStringList& names)
{
    const int count = static_cast<int>(qMin<qsizetype>(names.size(), kMaxClients));
    QByteArray out;
    out.reserve(2 + count * 24);
    ByteWriter writer(out);
    writer.writeI16(count);
    for (int i = 0; i < count; ++i) {
        bool cut = false;
        writer.writePascal(utf8ForPascal(names[i], cut));
    }
    return out;
}

} // namespace storage

#include "storage/operations_file.h"

#include "storage/binary_stream.h"

namespace storage
{

QByteArray encodeOperations(const OperationList& operations, int* cutFields)
{
    const int count = static_cast<int>(qMin<qsizetype>(operations.size(), kMaxOperations));
    QByteArray out;
    out.reserve(1 + count * 64);
    ByteWriter writer(out);
    writer.writeI8(count);
    int cuts = 0;
    for (int i = 0; i < count; ++i) {
        for (const QString* text : {&operations[i].name, &operations[i].description}) {
            bool cut = false;
            writer.writePascal(utf8ForPascal(*text, cut));
            cuts += cut ? 1 : 0;
        }
    }
    if (cutFields)
        *cutFields = cuts;
    return out;
}

OperationList decodeOperations(const QByteArray& bytes, bool* complete)
{
    OperationList operations;
    ByteReader reader(bytes);
    int count = 0;
    bool whole = reader.readI8(count);
    // A count below 1 is an empty list; the count is at most 127, so reserving it is harmless.
    if (whole && count > 0)
        operations.reserve(count);
    for (int i = 0; whole && i < count; ++i) {
        QByteArrayView name, description;
        whole = reader.readPascal(name) && reader.readPascal(description);
        if (whole)
            operations.append({QString::fromUtf8(name), QString::fromUtf8(description)});
    }
    if (complete)
        *complete = whole;
    return operations;
}

} // namespace storage

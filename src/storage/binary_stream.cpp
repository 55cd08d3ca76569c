#include "storage/binary_stream.h"

namespace storage
{

namespace
{

inline quint8 byteAt(const char* data, qsizetype index)
{
    return static_cast<quint8>(data[index]);
}

} // namespace

bool ByteReader::readI8(int& value)
{
    if (remaining() < 1)
        return false;
    value = static_cast<qint8>(byteAt(m_data, m_pos));
    m_pos += 1;
    return true;
}

bool ByteReader::readI16(int& value)
{
    if (remaining() < 2)
        return false;
    const quint16 raw = static_cast<quint16>(byteAt(m_data, m_pos) << 8 | byteAt(m_data, m_pos + 1));
    value = static_cast<qint16>(raw);
    m_pos += 2;
    return true;
}

bool ByteReader::readI32(qint32& value, bool littleEndian)
{
    if (remaining() < 4)
        return false;
    quint32 raw = 0;
    for (int i = 0; i < 4; ++i) {
        const int index = littleEndian ? 3 - i : i;
        raw = raw << 8 | byteAt(m_data, m_pos + index);
    }
    value = static_cast<qint32>(raw);
    m_pos += 4;
    return true;
}

bool ByteReader::readPascal(QByteArrayView& value)
{
    if (remaining() < 1)
        return false;
    const qsizetype length = byteAt(m_data, m_pos);
    if (remaining() < 1 + length)
        return false;
    value = QByteArrayView(m_data + m_pos + 1, length);
    m_pos += 1 + length;
    return true;
}

void ByteWriter::writeI16(int value)
{
    const auto raw = static_cast<quint16>(value);
    m_out.append(static_cast<char>(raw >> 8));
    m_out.append(static_cast<char>(raw & 0xff));
}

void ByteWriter::writeI32(qint32 value)
{
    const auto raw = static_cast<quint32>(value);
    for (int shift = 24; shift >= 0; shift -= 8)
        m_out.append(static_cast<char>((raw >> shift) & 0xff));
}

void ByteWriter::writePascal(QByteArrayView bytes)
{
    const qsizetype length = qMin<qsizetype>(bytes.size(), kPascalMax);
    m_out.append(static_cast<char>(length));
    m_out.append(bytes.data(), length);
}

qsizetype utf8Prefix(QByteArrayView utf8, qsizetype limit)
{
    if (utf8.size() <= limit)
        return utf8.size();
    qsizetype end = limit;
    // Step back over continuation bytes (10xxxxxx) so that the cut falls before a lead byte.
    while (end > 0 && (static_cast<quint8>(utf8[end]) & 0xc0) == 0x80)
        --end;
    return end;
}

QByteArray utf8ForPascal(const QString& text, bool& cut)
{
    QByteArray utf8 = text.toUtf8();
    const qsizetype keep = utf8Prefix(utf8, kPascalMax);
    if (keep < utf8.size()) {
        utf8.truncate(keep);
        cut = true;
    }
    return utf8;
}

} // namespace storage

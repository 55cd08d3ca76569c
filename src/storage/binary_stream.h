#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <cstdint>

namespace storage
{

// A Pascal string holds one length byte, so never more than this.
inline constexpr int kPascalMax = 255;

// Reads the big-endian fields of the program's binary files without ever stepping past the end: every
// read reports whether the bytes were there, and a failed read leaves the position where it was.
class ByteReader
{
public:
    explicit ByteReader(QByteArrayView bytes) : m_data(bytes.data()), m_size(bytes.size()) {}

    qsizetype position() const { return m_pos; }
    qsizetype remaining() const { return m_size - m_pos; }
    bool atEnd() const { return m_pos >= m_size; }

    bool readI8(int& value);
    bool readI16(int& value);
    bool readI32(qint32& value, bool littleEndian = false);
    // The bytes of one Pascal string, pointing into the buffer.
    bool readPascal(QByteArrayView& value);

private:
    const char* m_data;
    qsizetype m_size;
    qsizetype m_pos = 0;
};

// Appends big-endian fields to a byte array.
class ByteWriter
{
public:
    explicit ByteWriter(QByteArray& out) : m_out(out) {}

    void writeI8(int value) { m_out.append(static_cast<char>(static_cast<qint8>(value))); }
    // Only the low 16 bits of the value are kept.
    void writeI16(int value);
    void writeI32(qint32 value);
    // Bytes longer than a Pascal string can hold must be cut by the caller; this one refuses to write a
    // wrong length and cuts at the byte bound as the very last resort.
    void writePascal(QByteArrayView bytes);

private:
    QByteArray& m_out;
};

// The longest prefix of UTF-8 bytes, at most `limit` long, that ends on a character boundary.
qsizetype utf8Prefix(QByteArrayView utf8, qsizetype limit);

// The UTF-8 form of a text, cut at a character boundary to fit a Pascal string. `cut` is raised when
// anything was lost.
QByteArray utf8ForPascal(const QString& text, bool& cut);

} // namespace storage

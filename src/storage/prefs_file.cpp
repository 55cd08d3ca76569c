#include "storage/prefs_file.h"

#include "storage/binary_stream.h"

#include <QTextCodec>

namespace storage
{

namespace
{

const QString kExportXls = QStringLiteral("xls");
const QString kExportTxt = QStringLiteral("txt");
const char kMacRomanCodec[] = "Apple Roman";

enum class Encoding
{
    Utf8,
    MacRoman,
};

// The one list of the file's fields, in file order: the reader and the writer both walk it, so they
// cannot drift apart.
template <class Visitor> void visitPrefs(Visitor& v, core::AppPrefs& p)
{
    v.number(p.fontsize);                  // 1
    v.text(p.chosefont, Encoding::Utf8);   // 2
    v.flag(p.dateon);                      // 3
    v.text(p.iam, Encoding::Utf8);         // 4
    v.text(p.usrname, Encoding::MacRoman); // 5
    v.number(p.wintop);                    // 6
    v.number(p.winleft);                   // 7
    v.flag(p.expdt);                       // 8
    v.flag(p.exphd);                       // 9
    v.flag(p.explt);                       // 10
    v.flag(p.expbr);                       // 11
    v.flag(p.expbc);                       // 12
    v.flag(p.expnt);                       // 13
    v.number(p.red);                       // 14
    v.number(p.green);                     // 15
    v.number(p.blue);                      // 16
    v.text(p.rmteops, Encoding::Utf8);     // 17
    v.flag(p.nteon);                       // 18
    v.reservedText();                      // 19
    v.flag(p.netlook);                     // 20
    v.text(p.lastdoc, Encoding::Utf8);     // 21
    v.flag(p.autopen);                     // 22
    v.flag(p.warningsign);                 // 23
    v.number(p.waittime);                  // 24
    v.number(p.statusposition);            // 25
    v.flag(p.statusquo);                   // 26
    v.number(p.statusleft);                // 27
    v.reservedNumber();                    // 28
    v.number(p.howmanyscreens);            // 29
    v.number(p.statustrans);               // 30
    v.number(p.dokflash);                  // 31
    v.number(p.killQuit);                  // 32
    v.number(p.winwidth);                  // 33
    v.number(p.winheight);                 // 34
    v.number(p.cls);                       // 35
    v.number(p.presetwinLeft);             // 36
    v.number(p.presetwinTop);              // 37
    v.number(p.presetwinHeight);           // 38
    v.number(p.presetwinWidth);            // 39
    v.exportFormat(p.exportFormat);        // 40
    v.number(p.updatetime);                // 41
    v.number(p.xprtEncoding);              // 42
    v.reservedNumber();                    // 43
}

QTextCodec* macRoman()
{
    return QTextCodec::codecForName(kMacRomanCodec);
}

class PrefsWriter
{
public:
    explicit PrefsWriter(QByteArray& out) : m_writer(out) {}

    void number(const int& value) { m_writer.writeI16(value); }
    void flag(const bool& value) { m_writer.writeI16(value ? 1 : 0); }
    void exportFormat(const QString& value) { m_writer.writeI16(value == kExportXls ? 1 : 0); }
    void reservedNumber() { m_writer.writeI16(0); }
    void reservedText() { m_writer.writePascal({}); }
    void text(const QString& value, Encoding encoding)
    {
        QByteArray bytes = encoding == Encoding::MacRoman ? macRoman()->fromUnicode(value) : value.toUtf8();
        if (bytes.size() > kPascalMax)
            bytes.clear();
        m_writer.writePascal(bytes);
    }

private:
    ByteWriter m_writer;
};

// Fills fields while the bytes last; after the first missing field nothing more is touched.
class PrefsReader
{
public:
    explicit PrefsReader(const QByteArray& bytes) : m_reader(bytes) {}

    int fieldsRead() const { return m_fields; }

    void number(int& value)
    {
        int stored = 0;
        if (take(m_reader.readI16(stored)))
            value = stored;
    }
    void flag(bool& value)
    {
        int stored = 0;
        if (take(m_reader.readI16(stored)))
            value = stored == 1;
    }
    void exportFormat(QString& value)
    {
        int stored = 0;
        if (take(m_reader.readI16(stored)))
            value = stored == 1 ? kExportXls : kExportTxt;
    }
    void reservedNumber()
    {
        int ignored = 0;
        take(m_reader.readI16(ignored));
    }
    void reservedText()
    {
        QByteArrayView ignored;
        take(m_reader.readPascal(ignored));
    }
    void text(QString& value, Encoding encoding)
    {
        QByteArrayView stored;
        if (!take(m_reader.readPascal(stored)))
            return;
        value = encoding == Encoding::MacRoman ? macRoman()->toUnicode(stored.data(), int(stored.size()))
                                               : QString::fromUtf8(stored);
    }

private:
    bool take(bool read)
    {
        m_ok = m_ok && read;
        if (m_ok)
            ++m_fields;
        return m_ok;
    }

    ByteReader m_reader;
    bool m_ok = true;
    int m_fields = 0;
};

} // namespace

QByteArray encodePrefs(const core::AppPrefs& prefs)
{
    QByteArray out;
    out.reserve(512);
    PrefsWriter writer(out);
    core::AppPrefs copy = prefs;
    visitPrefs(writer, copy);
    return out;
}

core::AppPrefs decodePrefs(const QByteArray& bytes, const core::AppPrefs& defaults, int* fieldsRead)
{
    core::AppPrefs prefs = defaults;
    PrefsReader reader(bytes);
    visitPrefs(reader, prefs);
    if (fieldsRead)
        *fieldsRead = reader.fieldsRead();
    return prefs;
}

} // namespace storage

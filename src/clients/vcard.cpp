#include "clients/vcard.h"

#include <QStringDecoder>
#include <QTextCodec>

#include <vector>

namespace clients
{

namespace
{

struct PhysicalLine
{
    qsizetype offset;
    QByteArrayView bytes;
};

// Splits at CRLF, LF or a lone CR (old Mac exports), keeping where each line starts.
std::vector<PhysicalLine> splitLines(const QByteArray& bytes)
{
    std::vector<PhysicalLine> lines;
    const char* data = bytes.constData();
    const qsizetype size = bytes.size();
    qsizetype start = 0;
    for (qsizetype i = 0; i < size; ++i) {
        const char c = data[i];
        if (c != '\n' && c != '\r')
            continue;
        lines.push_back({start, QByteArrayView(data + start, i - start)});
        if (c == '\r' && i + 1 < size && data[i + 1] == '\n')
            ++i;
        start = i + 1;
    }
    if (start < size)
        lines.push_back({start, QByteArrayView(data + start, size - start)});
    return lines;
}

// Where the header of a content line ends: the first colon outside double quotes, -1 if none.
qsizetype headerEnd(QByteArrayView line)
{
    bool quoted = false;
    for (qsizetype i = 0; i < line.size(); ++i) {
        if (line[i] == '"')
            quoted = !quoted;
        else if (line[i] == ':' && !quoted)
            return i;
    }
    return -1;
}

// A 2.1 quoted-printable value goes on past a line that ends in "=", with or without folding blank.
bool isQuotedPrintable(QByteArrayView line)
{
    const qsizetype end = headerEnd(line);
    const QByteArrayView header = end < 0 ? line : line.first(end);
    return QByteArray::fromRawData(header.data(), header.size()).toUpper().contains("QUOTED-PRINTABLE");
}

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

QByteArray decodeQuotedPrintable(QByteArrayView in)
{
    QByteArray out;
    out.reserve(in.size());
    for (qsizetype i = 0; i < in.size(); ++i) {
        const char c = in[i];
        if (c == '=' && i + 2 < in.size()) {
            const int hi = hexValue(in[i + 1]);
            const int lo = hexValue(in[i + 2]);
            if (hi >= 0 && lo >= 0) {
                out += char(hi * 16 + lo);
                i += 2;
                continue;
            }
        }
        if (c == '=' && i == in.size() - 1)
            break; // a soft line break left at the very end
        out += c;
    }
    return out;
}

bool isAscii(QByteArrayView bytes)
{
    for (const char c : bytes)
        if (static_cast<unsigned char>(c) >= 0x80)
            return false;
    return true;
}

// UTF-8 unless the card names another charset. Bytes that are not UTF-8 and carry no charset come from
// an old export in the Windows charset, so they are read as that rather than as replacement marks.
QString decodeText(QByteArrayView bytes, const QString& charset)
{
    if (!charset.isEmpty() && charset.compare(QLatin1String("UTF-8"), Qt::CaseInsensitive) != 0 &&
        charset.compare(QLatin1String("UTF8"), Qt::CaseInsensitive) != 0) {
        if (QTextCodec* codec = QTextCodec::codecForName(charset.toLatin1())) {
            // A wide charset over bytes that are not of it gives halves of surrogate pairs, which no file
            // of ours can hold; they become question marks here, once, as any later write would make them.
            const QString text = codec->toUnicode(bytes.data(), int(bytes.size()));
            return QStringView(text).isValidUtf16() ? text : QString::fromUtf8(text.toUtf8());
        }
    }
    if (isAscii(bytes))
        return QString::fromLatin1(bytes);
    QStringDecoder utf8(QStringDecoder::Utf8);
    QString text = utf8.decode(bytes);
    if (!utf8.hasError())
        return text;
    if (QTextCodec* codec = QTextCodec::codecForName("Windows-1252"))
        return codec->toUnicode(bytes.data(), int(bytes.size()));
    return QString::fromLatin1(bytes);
}

// Splits the header at semicolons outside quotes.
QList<QByteArrayView> splitHeader(QByteArrayView header)
{
    QList<QByteArrayView> parts;
    bool quoted = false;
    qsizetype start = 0;
    for (qsizetype i = 0; i < header.size(); ++i) {
        if (header[i] == '"')
            quoted = !quoted;
        else if (header[i] == ';' && !quoted) {
            parts << header.sliced(start, i - start);
            start = i + 1;
        }
    }
    parts << header.sliced(start);
    return parts;
}

QString unquoted(QByteArrayView value)
{
    QByteArray bytes = value.toByteArray().trimmed();
    if (bytes.size() >= 2 && bytes.startsWith('"') && bytes.endsWith('"'))
        bytes = bytes.mid(1, bytes.size() - 2);
    return decodeText(bytes, QString());
}

bool parseProperty(QByteArrayView line, VCardProperty& property)
{
    const qsizetype colon = headerEnd(line);
    if (colon <= 0)
        return false;
    const QList<QByteArrayView> parts = splitHeader(line.first(colon));
    const QByteArray name = parts.first().toByteArray().trimmed();
    const qsizetype dot = name.lastIndexOf('.');
    property.group = QString::fromLatin1(dot < 0 ? QByteArray() : name.left(dot));
    property.name = QString::fromLatin1(dot < 0 ? name : name.mid(dot + 1)).toUpper();
    if (property.name.isEmpty())
        return false;

    property.parameters.clear();
    for (qsizetype i = 1; i < parts.size(); ++i) {
        const QByteArrayView part = parts[i];
        const qsizetype eq = part.indexOf('=');
        if (eq < 0) {
            const QString bare = QString::fromLatin1(part.toByteArray().trimmed()).toUpper();
            if (bare.isEmpty())
                continue;
            const bool encoding = bare == QLatin1String("QUOTED-PRINTABLE") || bare == QLatin1String("BASE64") ||
                                  bare == QLatin1String("8BIT") || bare == QLatin1String("7BIT");
            property.parameters.append({encoding ? QStringLiteral("ENCODING") : QStringLiteral("TYPE"), bare});
        } else {
            property.parameters.append(
                {QString::fromLatin1(part.first(eq).toByteArray().trimmed()).toUpper(), unquoted(part.sliced(eq + 1))});
        }
    }

    const QByteArrayView raw = line.sliced(colon + 1);
    const QString encoding = property.parameter(QStringLiteral("ENCODING")).toUpper();
    if (encoding == QLatin1String("B") || encoding == QLatin1String("BASE64")) {
        property.value = QString::fromLatin1(raw); // binary data, kept as it stands
    } else if (encoding == QLatin1String("QUOTED-PRINTABLE")) {
        property.value = decodeText(decodeQuotedPrintable(raw), property.parameter(QStringLiteral("CHARSET")));
    } else {
        property.value = decodeText(raw, property.parameter(QStringLiteral("CHARSET")));
    }
    return true;
}

bool isVCardMarker(const VCardProperty& property, const char* marker)
{
    return property.name == QLatin1String(marker) &&
           property.value.trimmed().compare(QLatin1String("VCARD"), Qt::CaseInsensitive) == 0;
}

} // namespace

// UTF-16 files come from some Windows exports.
QByteArray normalisedVCardBytes(const QByteArray& bytes)
{
    if (bytes.startsWith("\xEF\xBB\xBF"))
        return bytes.mid(3);
    if (bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF")) {
        QStringDecoder utf16(bytes.startsWith("\xFF\xFE") ? QStringDecoder::Utf16LE : QStringDecoder::Utf16BE);
        const QString text = utf16.decode(QByteArrayView(bytes).sliced(2));
        return text.toUtf8();
    }
    return bytes;
}

QString VCardProperty::parameter(const QString& parameterName) const
{
    for (const auto& [key, value] : parameters)
        if (key == parameterName)
            return value;
    return {};
}

const VCardProperty* VCard::property(const QString& name) const
{
    for (const auto& prop : properties)
        if (prop.name == name)
            return &prop;
    return nullptr;
}

QString VCard::text(const QString& name) const
{
    const VCardProperty* prop = property(name);
    return prop ? unescapeValue(prop->value, isVersion21()) : QString();
}

QStringList VCard::components(const QString& name) const
{
    const VCardProperty* prop = property(name);
    return prop ? splitValue(prop->value, QLatin1Char(';'), isVersion21()) : QStringList();
}

QStringList VCard::listValues(const QString& name) const
{
    QStringList values;
    for (const auto& prop : properties) {
        if (prop.name != name)
            continue;
        for (const QString& item : splitValue(prop.value, QLatin1Char(','), isVersion21())) {
            const QString trimmed = item.trimmed();
            if (!trimmed.isEmpty())
                values << trimmed;
        }
    }
    return values;
}

QList<VCard> parseVCards(const QByteArray& input)
{
    const QByteArray bytes = normalisedVCardBytes(input);
    const std::vector<PhysicalLine> lines = splitLines(bytes);
    QList<VCard> cards;
    VCard current;
    int depth = 0; // a 2.1 AGENT may hold a whole card inside another
    VCardProperty property;

    for (size_t i = 0; i < lines.size();) {
        const PhysicalLine& first = lines[i];
        QByteArray logical = first.bytes.toByteArray();
        const bool quotedPrintable = isQuotedPrintable(first.bytes);
        ++i;
        while (i < lines.size()) {
            const QByteArrayView next = lines[i].bytes;
            const bool folded = !next.isEmpty() && (next[0] == ' ' || next[0] == '\t');
            if (quotedPrintable && logical.endsWith('=')) {
                logical.chop(1);
                logical += folded ? next.sliced(1) : next;
            } else if (folded) {
                logical += next.sliced(1);
            } else {
                break;
            }
            ++i;
        }
        if (logical.trimmed().isEmpty() || !parseProperty(logical, property))
            continue;

        if (isVCardMarker(property, "BEGIN")) {
            if (depth == 0) {
                current = VCard();
                current.begin = first.offset;
            }
            ++depth;
        } else if (isVCardMarker(property, "END")) {
            if (depth > 0 && --depth == 0) {
                current.endLine = first.offset;
                cards << std::move(current);
            }
        } else if (depth == 1) {
            if (property.name == QLatin1String("VERSION"))
                current.version = property.value.trimmed();
            current.properties << property;
        }
    }
    if (depth > 0)
        cards << std::move(current);
    return cards;
}

QStringList splitValue(QStringView value, QChar separator, bool version21)
{
    QStringList parts;
    QString part;
    part.reserve(value.size());
    for (qsizetype i = 0; i < value.size(); ++i) {
        const QChar c = value[i];
        if (c == QLatin1Char('\\') && i + 1 < value.size()) {
            const QChar next = value[i + 1];
            ++i;
            if (version21) {
                // 2.1 escapes only the semicolon; any other backslash is text (a path, say).
                if (next != QLatin1Char(';'))
                    part += c;
                part += next;
                continue;
            }
            switch (next.unicode()) {
            case '\\':
            case ',':
            case ';':
            case ':':
                part += next;
                break;
            case 'n':
            case 'N':
                part += QLatin1Char('\n');
                break;
            default:
                part += c;
                part += next;
            }
            continue;
        }
        if (!separator.isNull() && c == separator) {
            parts << part;
            part.clear();
            continue;
        }
        part += c;
    }
    parts << part;
    return parts;
}

QString unescapeValue(QStringView value, bool version21)
{
    return splitValue(value, QChar(), version21).constFirst();
}

QString escapeValue(const QString& text)
{
    QString out;
    out.reserve(text.size() + 8);
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        switch (c.unicode()) {
        case '\\':
            out += QLatin1String("\\\\");
            break;
        case ',':
            out += QLatin1String("\\,");
            break;
        case ';':
            out += QLatin1String("\\;");
            break;
        case '\r':
            if (i + 1 < text.size() && text[i + 1] == QLatin1Char('\n'))
                ++i;
            out += QLatin1String("\\n");
            break;
        case '\n':
            out += QLatin1String("\\n");
            break;
        default:
            out += c;
        }
    }
    return out;
}

QByteArray foldedLine(const QString& line)
{
    constexpr qsizetype kLimit = 75;
    const QByteArray utf8 = line.toUtf8();
    QByteArray out;
    qsizetype pos = 0;
    bool firstChunk = true;
    while (true) {
        const qsizetype room = firstChunk ? kLimit : kLimit - 1; // a folded line starts with a blank
        qsizetype cut = qMin(pos + room, utf8.size());
        // Never cut inside a UTF-8 sequence: back up to the start of the character.
        while (cut < utf8.size() && cut > pos && (static_cast<unsigned char>(utf8[cut]) & 0xC0) == 0x80)
            --cut;
        if (!firstChunk)
            out += ' ';
        out += utf8.mid(pos, cut - pos);
        out += "\r\n";
        pos = cut;
        firstChunk = false;
        if (pos >= utf8.size())
            break;
    }
    return out;
}

} // namespace clients

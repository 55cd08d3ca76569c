#include "cli/timesheet_json.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <array>
#include <cstring>
#include <utility>

namespace cli
{

namespace
{

const QString kErrNotObject = QStringLiteral("the input is not a JSON object");
const QString kErrRowsNotArray = QStringLiteral("\"rows\" is not a list");
const QString kErrRowNotObject = QStringLiteral("row %1 is not an object");
const QString kErrNotText = QStringLiteral("\"%1\" of row %2 is not a text");
const QString kErrStartNotText = QStringLiteral("\"%1\" is not a text");

const QString kStartHrs = QStringLiteral("starthrs");
const QString kRead = QStringLiteral("read");
const QString kStartMin = QStringLiteral("startmin");
const QString kRows = QStringLiteral("rows");

// The keys of a row, in the order of the fields in the file.
const std::array<QString, 11> kRowKeys = {
    QStringLiteral("date"),    QStringLiteral("job"),       QStringLiteral("project"), QStringLiteral("hours"),
    QStringLiteral("minutes"), QStringLiteral("operation"), QStringLiteral("client"),  QStringLiteral("run"),
    QStringLiteral("note"),    QStringLiteral("user"),      QStringLiteral("budget"),
};

// The tags that follow the cells in the file, in its order.
constexpr std::array<int, 4> kTagFields = {core::TagRun, core::TagNote, core::TagUser, core::TagBudget};

const QString& rowField(const core::JobRow& row, size_t field)
{
    return field < 7 ? row.cell(int(field)) : row.tag(kTagFields[field - 7]);
}

void setRowField(core::JobRow& row, size_t field, const QString& text)
{
    if (field < 7)
        row.setCell(int(field), text);
    else
        row.setTag(kTagFields[field - 7], text);
}

// Writes raw bytes and JSON strings through a buffer of fixed size that is passed on to the file whenever
// it fills, so that a long list never needs its whole text in memory.
class JsonOut
{
public:
    explicit JsonOut(std::FILE* file) : m_file(file) { m_buffer.resize(kBufferSize); }
    ~JsonOut() { flush(); }

    bool ok() const { return m_ok; }

    void raw(const char* text, qsizetype size)
    {
        reserve(size);
        std::memcpy(m_buffer.data() + m_used, text, size_t(size));
        m_used += size;
    }
    void raw(const char* text) { raw(text, qsizetype(std::strlen(text))); }

    void key(const QString& name)
    {
        string(name);
        raw(": ", 2);
    }

    // A QString as a JSON string in UTF-8.
    void string(const QString& text)
    {
        // At most six bytes per UTF-16 unit (\u00XX), plus the quotes.
        reserve(text.size() * 6 + 2);
        char* p = m_buffer.data() + m_used;
        *p++ = '"';
        const char16_t* s = QStringView(text).utf16();
        const qsizetype size = text.size();
        for (qsizetype i = 0; i < size; ++i) {
            char32_t c = s[i];
            if (c < 0x80) {
                if (c >= 0x20 && c != '"' && c != '\\') {
                    *p++ = char(c);
                    continue;
                }
                *p++ = '\\';
                switch (c) {
                case '"':
                case '\\':
                    *p++ = char(c);
                    break;
                case '\n':
                    *p++ = 'n';
                    break;
                case '\r':
                    *p++ = 'r';
                    break;
                case '\t':
                    *p++ = 't';
                    break;
                default:
                    static constexpr char hex[] = "0123456789abcdef";
                    *p++ = 'u';
                    *p++ = '0';
                    *p++ = '0';
                    *p++ = hex[c >> 4];
                    *p++ = hex[c & 15];
                    break;
                }
                continue;
            }
            if (c >= 0xd800 && c < 0xe000) {
                if (c < 0xdc00 && i + 1 < size && s[i + 1] >= 0xdc00 && s[i + 1] < 0xe000) {
                    c = 0x10000 + ((c - 0xd800) << 10) + (s[i + 1] - 0xdc00);
                    ++i;
                } else {
                    c = 0xfffd;
                }
            }
            if (c < 0x800) {
                *p++ = char(0xc0 | (c >> 6));
            } else if (c < 0x10000) {
                *p++ = char(0xe0 | (c >> 12));
                *p++ = char(0x80 | ((c >> 6) & 0x3f));
            } else {
                *p++ = char(0xf0 | (c >> 18));
                *p++ = char(0x80 | ((c >> 12) & 0x3f));
                *p++ = char(0x80 | ((c >> 6) & 0x3f));
            }
            *p++ = char(0x80 | (c & 0x3f));
        }
        *p++ = '"';
        m_used = p - m_buffer.data();
    }

    void flush()
    {
        if (m_used > 0 && std::fwrite(m_buffer.constData(), 1, size_t(m_used), m_file) != size_t(m_used))
            m_ok = false;
        m_used = 0;
    }

private:
    static constexpr qsizetype kBufferSize = 1 << 20;

    void reserve(qsizetype more)
    {
        if (m_used + more <= m_buffer.size())
            return;
        flush();
        if (more > m_buffer.size())
            m_buffer.resize(more);
    }

    std::FILE* m_file;
    QByteArray m_buffer;
    qsizetype m_used = 0;
    bool m_ok = true;
};

bool readText(const QJsonObject& object, const QString& key, QString& text)
{
    const QJsonValue value = object.value(key);
    if (value.isUndefined() || value.isNull()) {
        text.clear();
        return true;
    }
    if (!value.isString())
        return false;
    text = value.toString();
    return true;
}

} // namespace

bool writeTimesheetJson(const core::Timesheet& sheet, std::FILE* file, const QString& read)
{
    JsonOut out(file);
    out.raw("{");
    if (!read.isEmpty()) {
        out.key(kRead);
        out.string(read);
        out.raw(", ");
    }
    out.key(kStartHrs);
    out.string(sheet.starthrs);
    out.raw(", ");
    out.key(kStartMin);
    out.string(sheet.startmin);
    out.raw(", ");
    out.key(kRows);
    out.raw("[");
    bool first = true;
    for (const core::JobRow& row : sheet.rows) {
        out.raw(first ? "\n{" : ",\n{");
        first = false;
        for (size_t field = 0; field < kRowKeys.size(); ++field) {
            if (field > 0)
                out.raw(", ", 2);
            out.key(kRowKeys[field]);
            out.string(rowField(row, field));
        }
        out.raw("}", 1);
    }
    out.raw(first ? "]}\n" : "\n]}\n");
    out.flush();
    return out.ok() && std::fflush(file) == 0;
}

bool timesheetFromJson(const QByteArray& json, core::Timesheet& sheet, QString& error, QString* read)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        error = parseError.errorString() + QStringLiteral(" at byte ") + QString::number(parseError.offset);
        return false;
    }
    if (!document.isObject()) {
        error = kErrNotObject;
        return false;
    }
    const QJsonObject top = document.object();
    core::Timesheet result;
    QString digest;
    for (const auto& [key, target] : {std::pair{&kStartHrs, &result.starthrs}, std::pair{&kStartMin, &result.startmin},
                                      std::pair{&kRead, &digest}}) {
        if (!readText(top, *key, *target)) {
            error = kErrStartNotText.arg(*key);
            return false;
        }
    }
    const QJsonValue rowsValue = top.value(kRows);
    if (!rowsValue.isUndefined() && !rowsValue.isArray()) {
        error = kErrRowsNotArray;
        return false;
    }
    const QJsonArray rows = rowsValue.toArray();
    result.rows.reserve(size_t(rows.size()));
    for (qsizetype index = 0; index < rows.size(); ++index) {
        const QJsonValue value = rows.at(index);
        if (!value.isObject()) {
            error = kErrRowNotObject.arg(index + 1);
            return false;
        }
        const QJsonObject object = value.toObject();
        core::JobRow& row = result.rows.emplace_back();
        for (size_t field = 0; field < kRowKeys.size(); ++field) {
            QString text;
            if (!readText(object, kRowKeys[field], text)) {
                error = kErrNotText.arg(kRowKeys[field]).arg(index + 1);
                return false;
            }
            setRowField(row, field, text);
        }
    }
    sheet = std::move(result);
    if (read)
        *read = digest;
    return true;
}

} // namespace cli

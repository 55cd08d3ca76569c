#include "storage/timesheet_file.h"

#include "storage/binary_stream.h"
#include "storage/hugepages.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace storage
{

namespace
{

const QString kErrTooShort = QStringLiteral("The file is too short to be a timesheet.");
const QString kErrEndsInRow = QStringLiteral("The file ends early: it breaks off in row %1.");
const QString kErrEndsBeforeStart = QStringLiteral("The file ends early: the start time of the timer is missing.");

constexpr char kBase64Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr int kGroupsPerLine = kBase64LineLength / 4;

// Two base64 characters for every 12 bits, so that a group of three bytes takes two look-ups.
constexpr std::array<std::array<char, 2>, 4096> makeBase64Pairs()
{
    std::array<std::array<char, 2>, 4096> pairs{};
    for (int i = 0; i < 4096; ++i)
        pairs[static_cast<size_t>(i)] = {kBase64Alphabet[i >> 6], kBase64Alphabet[i & 0x3f]};
    return pairs;
}
constexpr auto kBase64Pairs = makeBase64Pairs();
// Every field, line ends and length byte included, takes at most this many bytes.
constexpr qsizetype kMaxFieldBytes = 1 + kPascalMax;
// The smallest row: eleven empty strings.
constexpr qsizetype kMinRowBytes = kFieldsPerRow;

// The UTF-8 of a text, at most kMaxFieldUtf8 bytes and cut only between characters. Returns the byte count
// and raises `cut` when characters were left out.
int toUtf8Field(QStringView text, char* out, bool& cut)
{
    int n = 0;
    const char16_t* s = text.utf16();
    const qsizetype size = text.size();
    for (qsizetype i = 0; i < size; ++i) {
        char32_t c = s[i];
        if (c < 0x80) {
            // Most texts are plain ASCII: copy a run of it in a tight loop.
            if (n == kMaxFieldUtf8) {
                cut = true;
                break;
            }
            out[n++] = static_cast<char>(c);
            while (i + 1 < size && s[i + 1] < 0x80 && n < kMaxFieldUtf8)
                out[n++] = static_cast<char>(s[++i]);
            continue;
        }
        if (c >= 0xd800 && c < 0xe000) {
            if (c < 0xdc00 && i + 1 < size && s[i + 1] >= 0xdc00 && s[i + 1] < 0xe000) {
                c = 0x10000 + ((c - 0xd800) << 10) + (s[i + 1] - 0xdc00);
                ++i;
            } else {
                c = 0xfffd; // a lone surrogate has no UTF-8 form
            }
        }
        const int need = c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4;
        if (n + need > kMaxFieldUtf8) {
            cut = true;
            break;
        }
        switch (need) {
        case 1:
            out[n++] = static_cast<char>(c);
            break;
        case 2:
            out[n++] = static_cast<char>(0xc0 | (c >> 6));
            out[n++] = static_cast<char>(0x80 | (c & 0x3f));
            break;
        case 3:
            out[n++] = static_cast<char>(0xe0 | (c >> 12));
            out[n++] = static_cast<char>(0x80 | ((c >> 6) & 0x3f));
            out[n++] = static_cast<char>(0x80 | (c & 0x3f));
            break;
        default:
            out[n++] = static_cast<char>(0xf0 | (c >> 18));
            out[n++] = static_cast<char>(0x80 | ((c >> 12) & 0x3f));
            out[n++] = static_cast<char>(0x80 | ((c >> 6) & 0x3f));
            out[n++] = static_cast<char>(0x80 | (c & 0x3f));
            break;
        }
    }
    return n;
}

// Base64 of `n` bytes (or of UTF-16 units below 0x80, which are their own UTF-8) with a CR LF between
// lines, written at `p`. Returns the position after it.
template <typename Unit> char* putBase64(char* p, const Unit* in, int n)
{
    int groups = 0;
    int i = 0;
    for (; i + 3 <= n; i += 3) {
        if (groups == kGroupsPerLine) {
            *p++ = '\r';
            *p++ = '\n';
            groups = 0;
        }
        const unsigned v = unsigned(in[i]) << 16 | unsigned(in[i + 1]) << 8 | unsigned(in[i + 2]);
        std::memcpy(p, kBase64Pairs[v >> 12].data(), 2);
        std::memcpy(p + 2, kBase64Pairs[v & 0xfff].data(), 2);
        p += 4;
        ++groups;
    }
    if (i < n) {
        if (groups == kGroupsPerLine) {
            *p++ = '\r';
            *p++ = '\n';
        }
        const unsigned v = unsigned(in[i]) << 16 | (i + 1 < n ? unsigned(in[i + 1]) << 8 : 0u);
        p[0] = kBase64Alphabet[v >> 18];
        p[1] = kBase64Alphabet[(v >> 12) & 0x3f];
        p[2] = i + 1 < n ? kBase64Alphabet[(v >> 6) & 0x3f] : '=';
        p[3] = '=';
        p += 4;
    }
    return p;
}

bool isAscii(const char16_t* s, qsizetype size)
{
    char16_t all = 0;
    for (qsizetype i = 0; i < size; ++i)
        all |= s[i];
    return all < 0x80;
}

// Writes one field as a Pascal string of base64 at `p` and returns the position after it.
char* putField(char* p, QStringView text, int& cuts)
{
    char* const lengthByte = p++;
    const qsizetype size = text.size();
    if (size <= kMaxFieldUtf8 && isAscii(text.utf16(), size)) {
        // The common case: the UTF-16 units are the UTF-8 bytes, encoded without a copy.
        p = putBase64(p, text.utf16(), static_cast<int>(size));
    } else {
        unsigned char utf8[kMaxFieldUtf8 + 4];
        bool cut = false;
        const int n = toUtf8Field(text, reinterpret_cast<char*>(utf8), cut);
        if (cut)
            ++cuts;
        p = putBase64(p, utf8, n);
    }
    *lengthByte = static_cast<char>(p - lengthByte - 1);
    return p;
}

// Base64 symbol values; -1 for the bytes the reader skips (line ends and anything else), -2 for padding.
constexpr std::array<signed char, 256> makeDecodeTable()
{
    std::array<signed char, 256> table{};
    for (auto& v : table)
        v = -1;
    for (int i = 0; i < 64; ++i)
        table[static_cast<unsigned char>(kBase64Alphabet[i])] = static_cast<signed char>(i);
    table['='] = -2;
    return table;
}
constexpr auto kDecodeTable = makeDecodeTable();

// Decodes base64 into `out` (room for 3/4 of the input), skipping line ends, stopping at padding.
int decodeBase64(QByteArrayView in, unsigned char* out)
{
    int n = 0;
    unsigned acc = 0;
    int bits = 0;
    for (const char ch : in) {
        const int v = kDecodeTable[static_cast<unsigned char>(ch)];
        if (v == -2)
            break;
        if (v < 0)
            continue;
        acc = acc << 6 | unsigned(v);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            out[n++] = static_cast<unsigned char>(acc >> bits);
        }
    }
    return n;
}

// Turns the stored bytes of one field into its text. Most texts recur (dates, users, operations, clients,
// hours, job numbers), so recent ones are kept per field, keyed by their stored bytes, and shared: this
// saves most of the decoding and allocation of a load, and the memory of the list.
// The note's place among a row's fields.
constexpr int kNoteField = 8;

class FieldDecoder
{
public:
    // The note and the start time's two texts.
    QString decode(int field, QByteArrayView stored) { return lookUp(field, stored).text; }
    // Any other field of a row as rows hold it, shared with every row that has it.
    core::RowText decodeShared(int field, QByteArrayView stored) { return lookUp(field, stored).shared; }

private:
    struct Slot
    {
        QByteArrayView stored{"", 0};
        QString text;
        core::RowText shared; // the fields rows share
    };

    Slot& lookUp(int field, QByteArrayView stored)
    {
        if (stored.isEmpty())
            return m_empty;
        Slot& slot = m_slots[static_cast<size_t>(field)][hash(stored) & (kSlots - 1)];
        if (stored.size() == slot.stored.size() && std::memcmp(stored.data(), slot.stored.data(), stored.size()) == 0)
            return slot;
        unsigned char buffer[kPascalMax];
        const int n = decodeBase64(stored, buffer);
        slot.stored = stored;
        slot.text = QString::fromUtf8(reinterpret_cast<const char*>(buffer), n);
        slot.shared = field < kFieldsPerRow && field != kNoteField ? core::RowText(slot.text) : core::RowText();
        return slot;
    }

    static constexpr size_t kSlots = 64;

    // The length and the first and last eight bytes: enough to tell recurring texts apart, and cheap. A
    // collision only costs a decode.
    static quint32 hash(QByteArrayView bytes)
    {
        quint64 head = 0, tail = 0;
        const size_t n = std::min<size_t>(8, size_t(bytes.size()));
        std::memcpy(&head, bytes.data(), n);
        std::memcpy(&tail, bytes.data() + bytes.size() - n, n);
        const quint64 h = (head * 0x9e3779b97f4a7c15ull) ^ (tail * 0xc2b2ae3d27d4eb4full) ^ quint64(bytes.size());
        return static_cast<quint32>(h >> 32 ^ h);
    }

    Slot m_empty;
    std::array<std::array<Slot, kSlots>, kFieldsPerRow + 2> m_slots;
};

} // namespace

QByteArray encodeTimesheet(const core::Timesheet& sheet, int* cutFields)
{
    QByteArray out;
    encodeTimesheet(sheet, out, cutFields);
    return out;
}

void encodeTimesheet(const core::Timesheet& sheet, QByteArray& out, int* cutFields)
{
    int cuts = 0;
    const qsizetype rowCount = sheet.ListCount();
    // A guess that fits ordinary rows in one allocation; grown when a row might not fit. A buffer kept
    // from the last save is reused as it stands, its pages already mapped. One that is shared (the
    // caller kept a copy of the last bytes) would be copied at its full size, and grow with each save.
    const qsizetype reusable = out.isDetached() ? out.capacity() : 0;
    out.resize(std::max(reusable, 4 + 2 * kMaxFieldBytes + rowCount * 160));
    char* p = out.data();
    char* end = p + out.size();

    const auto count = static_cast<quint32>(rowCount);
    for (int shift = 24; shift >= 0; shift -= 8)
        *p++ = static_cast<char>((count >> shift) & 0xff);

    // The encoded form of the last text of each field, by its place in `out`.
    struct Memo
    {
        QStringView text;
        qsizetype offset = 0;
        qsizetype length = 0;
    };
    std::array<Memo, kFieldsPerRow> memos;

    for (const core::JobRow& row : sheet.rows) {
        if (end - p < kFieldsPerRow * kMaxFieldBytes + 2 * kMaxFieldBytes) {
            const qsizetype used = p - out.data();
            out.resize(std::max<qsizetype>(out.size() * 3 / 2, used + 16 * kMaxFieldBytes));
            p = out.data() + used;
            end = out.data() + out.size();
        }
        const std::array<const QString*, kFieldsPerRow> fields = {&row.cell(core::CellDate),
                                                                  &row.cell(core::CellJob),
                                                                  &row.cell(core::CellProject),
                                                                  &row.cell(core::CellHours),
                                                                  &row.cell(core::CellMinutes),
                                                                  &row.cell(core::CellOperation),
                                                                  &row.cell(core::CellClient),
                                                                  &row.run.text(),
                                                                  &row.note,
                                                                  &row.user.text(),
                                                                  &row.budget.text()};
        for (size_t field = 0; field < fields.size(); ++field) {
            const QString& text = *fields[field];
            Memo& memo = memos[field];
            // A text equal to the one above it in the list is copied from there, already encoded.
            if (!text.isEmpty() && text.size() == memo.text.size() &&
                (text.constData() == memo.text.data() ||
                 std::memcmp(text.constData(), memo.text.data(), size_t(text.size()) * sizeof(QChar)) == 0)) {
                std::memcpy(p, out.constData() + memo.offset, size_t(memo.length));
                p += memo.length;
                continue;
            }
            char* const start = p;
            p = putField(p, text, cuts);
            memo = {text, start - out.data(), p - start};
        }
    }
    p = putField(p, sheet.starthrs, cuts);
    p = putField(p, sheet.startmin, cuts);
    out.truncate(p - out.data());

    if (cutFields)
        *cutFields = cuts;
}

namespace
{

// One reading of a file: its rows and start time by one byte order's row count, and whether the rows
// and the two trailing strings end exactly at the end of the file.
struct Reading
{
    ReadResult result;
    bool exact = false;
};

Reading readRows(const QByteArray& bytes, qint32 count)
{
    Reading reading;
    ReadResult& result = reading.result;
    ByteReader reader(bytes);
    qint32 skipped = 0;
    reader.readI32(skipped);
    // A negative count is a list without rows; a count beyond what the file could hold is read until the
    // bytes run out, never reserved.
    count = std::max<qint32>(count, 0);
    const qsizetype fitting = std::max<qsizetype>(0, (bytes.size() - 4 - 2) / kMinRowBytes);
    result.sheet.rows.reserve(static_cast<size_t>(std::min<qsizetype>(count, fitting)));
    preferHugePages(result.sheet.rows.data(), result.sheet.rows.capacity() * sizeof(core::JobRow));
    FieldDecoder decoder;
    QByteArrayView fields[kFieldsPerRow];
    for (qint32 index = 0; index < count; ++index) {
        int read = 0;
        while (read < kFieldsPerRow && reader.readPascal(fields[read]))
            ++read;
        // A row cut short by the end of the file keeps the fields that are there, so a date, job and
        // time survive a lost note. Just two fields are the start time of a count larger than the rows
        // written.
        if (read == 2) {
            result.sheet.starthrs = decoder.decode(kFieldsPerRow, fields[0]);
            result.sheet.startmin = decoder.decode(kFieldsPerRow + 1, fields[1]);
        }
        if (read > 2) {
            core::JobRow& row = result.sheet.rows.emplace_back();
            for (int field = 0; field < read; ++field) {
                switch (field) {
                case kNoteField:
                    row.note = decoder.decode(field, fields[field]);
                    break;
                case 7:
                    row.run = decoder.decodeShared(field, fields[field]);
                    break;
                case 9:
                    row.user = decoder.decodeShared(field, fields[field]);
                    break;
                case 10:
                    row.budget = decoder.decodeShared(field, fields[field]);
                    break;
                default:
                    row.cells[static_cast<size_t>(field)] = decoder.decodeShared(field, fields[field]);
                    break;
                }
            }
        }
        if (read < kFieldsPerRow) {
            result.error = kErrEndsInRow.arg(index + 1);
            return reading;
        }
    }

    QByteArrayView hours, minutes;
    if (!reader.readPascal(hours) || !reader.readPascal(minutes)) {
        result.error = kErrEndsBeforeStart;
        return reading;
    }
    result.sheet.starthrs = decoder.decode(kFieldsPerRow, hours);
    result.sheet.startmin = decoder.decode(kFieldsPerRow + 1, minutes);
    result.complete = true;
    reading.exact = reader.atEnd();
    return reading;
}

} // namespace

ReadResult decodeTimesheet(const QByteArray& bytes)
{
    qint32 bigEndian = 0;
    qint32 littleEndian = 0;
    if (!ByteReader(bytes).readI32(bigEndian) || !ByteReader(bytes).readI32(littleEndian, true)) {
        ReadResult result;
        result.error = kErrTooShort;
        return result;
    }
    // Files are written big-endian; a file of the other byte order is the reading that takes the file
    // exactly, rows and start time ending at its end. Where neither does, the one with more rows wins.
    Reading big = readRows(bytes, bigEndian);
    if (big.exact || littleEndian == bigEndian)
        return std::move(big.result);
    Reading little = readRows(bytes, littleEndian);
    if (little.exact || little.result.sheet.ListCount() > big.result.sheet.ListCount())
        return std::move(little.result);
    return std::move(big.result);
}

bool fitsTimesheetField(QStringView text)
{
    char buffer[kMaxFieldUtf8 + 4];
    bool cut = false;
    toUtf8Field(text, buffer, cut);
    return !cut;
}

} // namespace storage

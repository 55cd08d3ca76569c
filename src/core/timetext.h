#pragma once

#include <QDate>
#include <QString>

#include <optional>

namespace core
{

// Text equality as the whole program compares: ignoring case. Most texts differ in length or match
// exactly (rows share one copy of each text, so those are one and the same), so the slower caseless
// compare runs only for the rest.
inline bool sameText(const QString& a, const QString& b)
{
    return a.size() == b.size() && (a.constData() == b.constData() || a == b || a.compare(b, Qt::CaseInsensitive) == 0);
}

// Decimal value of the leading number of a text; a text that starts with no number is 0. Digits past
// kValLimit are not read.
inline constexpr qint64 kValLimit = 1000000000000LL;
qint64 Val(QStringView text);

// At least two digits: 7 -> "07", 125 -> "125".
QString fmt00(qint64 value);

// Minutes as "HH:MM" (hours unlimited), and the spaced "HH : MM" of the small total windows.
QString hhmm(qint64 minutes);
QString hhmmSpaced(qint64 minutes);

// The short date of the locale in force, as rows store it.
QString shortDate(const QDate& date);

// Reads back a short date. A two-digit year goes to the century that puts it nearest to `today`.
std::optional<QDate> parseShortDate(const QString& text, const QDate& today);

// A text of several lines on one line: each run of line ends becomes one blank.
QString oneLine(const QString& text);

// Seconds from 1904-01-01 00:00 local time to the start of the date: the date sort key.
qint64 totalSeconds(const QDate& date);

} // namespace core

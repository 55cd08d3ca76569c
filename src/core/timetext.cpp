#include "core/timetext.h"

#include <QLocale>
#include <QRegularExpression>
#include <QTimeZone>

#include <cstdlib>

namespace core
{

qint64 Val(QStringView text)
{
    qsizetype i = 0;
    while (i < text.size() && text[i].isSpace())
        ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == u'-' || text[i] == u'+')) {
        negative = text[i] == u'-';
        ++i;
    }
    qint64 value = 0;
    for (; i < text.size() && text[i] >= u'0' && text[i] <= u'9'; ++i) {
        value = value * 10 + (text[i].unicode() - u'0');
        // Far beyond any real total: the minutes of 100,000 such rows still add up without overflow.
        if (value >= kValLimit)
            break;
    }
    return negative ? -value : value;
}

QString fmt00(qint64 value)
{
    if (value < 0)
        return QLatin1Char('-') + fmt00(-value);
    return value < 10 ? QStringLiteral("0") + QString::number(value) : QString::number(value);
}

QString hhmm(qint64 minutes)
{
    return fmt00(minutes / 60) + QLatin1Char(':') + fmt00(minutes % 60);
}

QString hhmmSpaced(qint64 minutes)
{
    return fmt00(minutes / 60) + QStringLiteral(" : ") + fmt00(minutes % 60);
}

QString shortDate(const QDate& date)
{
    return QLocale().toString(date, QLocale::ShortFormat);
}

std::optional<QDate> parseShortDate(const QString& text, const QDate& today)
{
    const QLocale locale;
    const QString format = locale.dateFormat(QLocale::ShortFormat);
    QDate date = locale.toDate(text.trimmed(), format);
    if (!date.isValid())
        return std::nullopt;
    if (!format.contains(QLatin1String("yyyy")) && format.contains(QLatin1String("yy"))) {
        // The parser read "26" as 1926; move it to the century nearest today.
        const int yy = date.year() % 100;
        const int century = today.year() - today.year() % 100;
        QDate best;
        for (int c : {century - 100, century, century + 100}) {
            const QDate candidate(c + yy, date.month(), date.day());
            if (!candidate.isValid())
                continue;
            if (!best.isValid() || std::llabs(candidate.daysTo(today)) < std::llabs(best.daysTo(today)))
                best = candidate;
        }
        if (best.isValid())
            date = best;
    }
    return date;
}

QString oneLine(const QString& text)
{
    static const QRegularExpression lineEnds(QStringLiteral("[\\r\\n]+"));
    return text.split(lineEnds, Qt::SkipEmptyParts).join(QLatin1Char(' '));
}

qint64 totalSeconds(const QDate& date)
{
    static const QDateTime epoch(QDate(1904, 1, 1), QTime(0, 0));
    return epoch.secsTo(QDateTime(date, QTime(0, 0)));
}

} // namespace core

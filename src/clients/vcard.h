#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

namespace clients
{

// One content line of a vCard, unfolded, with its transfer encoding and charset undone. The value
// keeps its backslash escapes, because where it splits into components depends on the property.
struct VCardProperty
{
    QString group; // "item1" of "item1.ORG"
    QString name;  // upper case
    // Names in upper case. A bare 2.1 parameter is ENCODING (QUOTED-PRINTABLE, BASE64...) or TYPE.
    QList<QPair<QString, QString>> parameters;
    QString value;

    QString parameter(const QString& parameterName) const;
};

// One vCard and where it stands in the bytes it was read from.
struct VCard
{
    QString version;
    QList<VCardProperty> properties;
    qsizetype begin = 0;    // offset of the BEGIN:VCARD line
    qsizetype endLine = -1; // offset of the END:VCARD line; -1 when the bytes ended first

    bool isVersion21() const { return version == QLatin1String("2.1"); }
    const VCardProperty* property(const QString& name) const;
    // The first property of that name as plain text, escapes undone.
    QString text(const QString& name) const;
    // The first property of that name split into its ';' components, escapes undone.
    QStringList components(const QString& name) const;
    // Every property of that name split at ',' and joined into one list, escapes undone, empty items left out.
    QStringList listValues(const QString& name) const;
};

// The bytes the parser works on: UTF-16 files turned into UTF-8 and a byte order mark dropped. The
// offsets of a parsed card point into these.
QByteArray normalisedVCardBytes(const QByteArray& bytes);

// Reads every vCard (2.1, 3.0, 4.0) from the bytes of one file. Text outside BEGIN/END is skipped; a card
// cut short by the end of the bytes is kept with what it had. Line ends may be CRLF, LF or CR.
QList<VCard> parseVCards(const QByteArray& bytes);

// Undoes the escapes of a text value: \\ \, \; \n \N (in a 2.1 card only \; is an escape).
QString unescapeValue(QStringView value, bool version21);
// Splits a value at separators that are not escaped, then undoes the escapes of each part.
QStringList splitValue(QStringView value, QChar separator, bool version21);

// Escapes a text for a vCard 4.0 value: backslash, comma, semicolon and line ends.
QString escapeValue(const QString& text);
// One content line in UTF-8, folded at 75 octets without cutting a character, ending in CRLF.
QByteArray foldedLine(const QString& line);

} // namespace clients

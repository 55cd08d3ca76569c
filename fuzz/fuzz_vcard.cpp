// Any bytes read as a vCard file: no crash, and every text value written back the way the program
// writes its own cards (escaped, folded at 75 octets) reads back as the same text.

#include "clients/vcard.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    const QList<clients::VCard> cards = clients::parseVCards(bytes);
    // A card needs at least "BEGIN:VCARD".
    if (cards.size() > qsizetype(size) / 11)
        std::abort();
    for (const clients::VCard& card : cards) {
        for (const clients::VCardProperty& property : card.properties) {
            const QString text = clients::unescapeValue(property.value, card.version == QLatin1String("2.1"));
            const QByteArray line = clients::foldedLine(QStringLiteral("NOTE:") + clients::escapeValue(text));
            for (const QByteArray& physical : line.split('\n'))
                if (physical.size() > 76) // 75 octets and the CR
                    std::abort();
            const QByteArray card4 = "BEGIN:VCARD\r\nVERSION:4.0\r\n" + line + "END:VCARD\r\n";
            const QList<clients::VCard> again = clients::parseVCards(card4);
            if (again.size() != 1 || again[0].text(QStringLiteral("NOTE")) != text)
                std::abort();
        }
    }
    return 0;
}

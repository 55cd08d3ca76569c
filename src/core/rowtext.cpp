#include "core/rowtext.h"

#include <QHash>

namespace core
{

struct RowText::Node
{
    const QString text;
    qsizetype uses = 0;
};

namespace
{

// The table of texts in use, keyed by a view of each entry's own text. Made once and never destroyed,
// so that a row in a static object may still let go of its texts as the program ends.
QHash<QStringView, RowText::Node*>& table()
{
    static auto* texts = new QHash<QStringView, RowText::Node*>;
    return *texts;
}

const QString kEmpty;

} // namespace

RowText::RowText(const QString& text)
{
    if (text.isEmpty())
        return;
    auto& texts = table();
    auto entry = texts.constFind(QStringView(text));
    if (entry == texts.cend()) {
        auto* node = new Node{text};
        // The key views the entry's own copy, which lives as long as the entry.
        entry = texts.insert(QStringView(node->text), node);
    }
    m_node = *entry;
    retain();
}

RowText& RowText::operator=(const RowText& other)
{
    if (m_node != other.m_node) {
        release();
        m_node = other.m_node;
        retain();
    }
    return *this;
}

RowText& RowText::operator=(RowText&& other) noexcept
{
    if (this != &other) {
        release();
        m_node = other.m_node;
        other.m_node = nullptr;
    }
    return *this;
}

const QString& RowText::text() const
{
    return m_node ? m_node->text : kEmpty;
}

qsizetype RowText::distinctTexts()
{
    return table().size();
}

void RowText::retain()
{
    if (m_node)
        ++m_node->uses;
}

void RowText::release()
{
    if (m_node && --m_node->uses == 0) {
        table().remove(QStringView(m_node->text));
        delete m_node;
    }
    m_node = nullptr;
}

} // namespace core

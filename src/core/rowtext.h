#pragma once

#include <QString>

namespace core
{

// A text held by a row. A timesheet repeats a few hundred dates, some dozens of jobs and projects and a
// handful of times, operations, clients and users, so every distinct text is kept once, in one table,
// and a row holds a pointer to it: a row takes 144 bytes where a QString for each text took 384, and
// that memory is most of what reading, keeping and walking 100,000 rows costs. Rows live on the main
// thread; so does the table.
class RowText
{
public:
    RowText() = default;          // the empty text
    RowText(const QString& text); // NOLINT(google-explicit-constructor): cells are set from texts
    RowText(const RowText& other) : m_node(other.m_node) { retain(); }
    RowText(RowText&& other) noexcept : m_node(other.m_node) { other.m_node = nullptr; }
    RowText& operator=(const RowText& other);
    RowText& operator=(RowText&& other) noexcept;
    ~RowText() { release(); }

    const QString& text() const;
    operator const QString&() const { return text(); } // NOLINT(google-explicit-constructor)

    bool isEmpty() const { return !m_node; }
    void clear() { release(); }

    // One entry per distinct text: the same text is the same entry.
    bool operator==(const RowText& other) const { return m_node == other.m_node; }
    bool operator==(const QString& other) const { return text() == other; }

    // How many distinct texts the rows of the program hold, for the benchmarks.
    static qsizetype distinctTexts();

    struct Node; // an entry of the table, known only to it

private:
    void retain();
    void release();

    Node* m_node = nullptr;
};

} // namespace core

#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace storage
{

// The user's operations list in the preferences folder; a group file at `rmteops` has the same form.
inline const QString kOperationsFileName = QStringLiteral("VK8 Opps List");

// The count is one signed byte, so the list holds no more than this.
inline constexpr int kMaxOperations = 127;

// A type of task, as a row's operation cell holds it, with an optional description.
struct Operation
{
    QString name, description;

    bool operator==(const Operation&) const = default;
};
using OperationList = QList<Operation>;

// The bytes of an operations file, texts in UTF-8. Only the first kMaxOperations are written; a text
// longer than 255 bytes is cut at a character boundary and counted in `cutFields`.
QByteArray encodeOperations(const OperationList& operations, int* cutFields = nullptr);

// Reads an operations file; a short file gives the operations read so far and `complete` false.
OperationList decodeOperations(const QByteArray& bytes, bool* complete = nullptr);

} // namespace storage

#pragma once

#include <QString>

namespace platform
{

// The outcome of a file or socket operation: code 0 is success; otherwise an errno-like code and a text.
struct Result
{
    // A write refused because another program changed the file since this one last read or wrote it.
    static constexpr int kChangedElsewhere = -409;

    int code = 0;
    QString message;

    bool ok() const { return code == 0; }
    static Result success() { return {}; }
    static Result failure(int code, const QString& message) { return {code == 0 ? -1 : code, message}; }
};

} // namespace platform

#pragma once

#include <QDateTime>

namespace platform
{

// The one source of "now". Every time the program reads comes from here, so tests can set any instant.
class Clock
{
public:
    virtual ~Clock() = default;
    virtual QDateTime now() const = 0;
};

class SystemClock : public Clock
{
public:
    QDateTime now() const override { return QDateTime::currentDateTime(); }
};

} // namespace platform

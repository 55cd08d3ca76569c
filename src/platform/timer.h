#pragma once

#include <functional>
#include <memory>

namespace platform
{

// A timer with the three modes the windows use: 0 off, 1 fires once then turns itself off, 2 repeats.
class Timer
{
public:
    enum Mode
    {
        Off = 0,
        Single = 1,
        Multiple = 2
    };

    virtual ~Timer() = default;
    virtual void setMode(Mode mode) = 0;
    virtual Mode mode() const = 0;
    virtual int period() const = 0;

    std::function<void()> action;
};

// Makes timers, so that a test can hand out timers it fires by hand.
class TimerFactory
{
public:
    virtual ~TimerFactory() = default;
    virtual std::unique_ptr<Timer> create(int periodMs) = 0;
};

} // namespace platform

#pragma once

#include <QString>

#include <functional>

namespace platform
{

// Passing notices of the desktop: a title and a text that the user may click.
class Notifier
{
public:
    virtual ~Notifier() = default;
    // Shows a notice. The answer is its key, or 0 when the desktop has no notice service.
    virtual unsigned notify(const QString& title, const QString& body) = 0;
    virtual void withdraw(unsigned id) = 0;

    // Set by the program: the notice of this key was clicked.
    std::function<void(unsigned id)> activated;
};

} // namespace platform

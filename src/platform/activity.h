#pragma once

namespace platform
{

// Whether the person at the machine has touched the keyboard or the pointer: asked once a tick by the
// idle warning.
class ActivityProbe
{
public:
    enum class Answer
    {
        Input,   // keyboard or pointer input since the last question
        NoInput, // none
        Unknown  // nothing on this desktop can tell; the warning must not guess
    };

    virtual ~ActivityProbe() = default;
    // Input since the previous question; the first question counts from the start or the last restart.
    virtual Answer inputSinceLastCheck() = 0;
    // The next question counts from now.
    virtual void restart() = 0;
    // Whether anything on this desktop can tell, for the preferences to say so.
    virtual bool available() = 0;
};

} // namespace platform

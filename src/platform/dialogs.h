#pragma once

#include "platform/report.h"

#include <QString>
#include <QStringList>

namespace platform
{

// The three-button question: an action button, an optional alternate and an optional cancel.
struct Question
{
    QString message;
    QString explanation;
    QString action;    // caption of the default button
    QString alternate; // empty: no alternate button
    bool cancel = true;
    // A third answer in place of Cancel, answered as Cancel. Escape and the close box then answer
    // nothing: each of the three buttons does something.
    QString other;
    bool caution = true;
};

enum class Answer
{
    Action,
    Alternate,
    Cancel
};

// A modal window of the program: a plain form that the view shows and that records the caption of the
// button which closed it. The form's name tells the dialogs service which view to build.
class ModalForm
{
public:
    virtual ~ModalForm() = default;
    virtual QString formName() const = 0;
    QString ButtonPressed;
};

// Everything that stops the user with a window: message boxes, questions, modal windows, file choosers.
class Dialogs
{
public:
    virtual ~Dialogs() = default;
    virtual void message(const QString& text) = 0;
    virtual Answer ask(const Question& question) = 0;
    virtual void showModal(ModalForm& form) = 0;
    // Empty result: cancelled.
    virtual QString saveFile(const QString& title, const QString& prompt, const QString& dir,
                             const QString& suggestedName, const QString& filter) = 0;
    virtual QString openFile(const QString& title, const QString& dir, const QString& filter) = 0;
    // The print dialog, then the report on the printer or PDF file chosen there; false: cancelled.
    virtual bool print(const Report& report) = 0;
};

} // namespace platform

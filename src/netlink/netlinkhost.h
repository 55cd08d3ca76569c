#pragma once

#include "core/timesheet.h"

#include <QString>

namespace netlink
{

// What the server needs of the window that owns it: the list it shows, the run flag, the style sheet,
// the address property it keeps up to date, and the shared status line with its clearing timer.
class NetLinkHost
{
public:
    virtual ~NetLinkHost() = default;
    virtual const core::Timesheet& ListBox1() const = 0;
    virtual bool running() const = 0;
    virtual const QString& styleSheetTxt() const = 0;
    // The window's ipnumber: written on each connection, read into the page title.
    virtual QString& ipnumber() = 0;
    // Shows dataprogress and puts the text in datastream.
    virtual void setStatus(const QString& datastream) = 0;
    // Starts Timer2 in one-shot mode; when it fires the window empties the status line.
    virtual void startTimer2() = 0;
};

} // namespace netlink

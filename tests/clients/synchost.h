#pragma once

#include "clients/clientsync.h"

#include <QStringList>

namespace testing
{

// The main window as the synchronisation sees it, recording what it was asked to do.
class RecordingSyncHost : public clients::SyncHost
{
public:
    bool contactsAccess() const override { return access; }
    void setContactsAccess(bool on) override { access = on; }
    void resetClientList() override { ++resets; }
    void setStatus(const QString& datastream) override { status << datastream; }
    void startTimer2() override { ++timer2Starts; }
    void refreshClientList() override { ++refreshes; }

    bool access = false;
    int resets = 0;
    QStringList status;
    int timer2Starts = 0;
    int refreshes = 0;
};

} // namespace testing

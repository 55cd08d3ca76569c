#pragma once

#include "clients/clientlist.h"
#include "clients/clientsync.h"
#include "clients/vcardstore.h"
#include "support/fakes.h"
#include "support/memorystore.h"

namespace testing
{

// The main window as the synchronisation sees it, recording what it was asked to do.
struct RecordingSyncHost : clients::SyncHost
{
    bool contactsAccess() const override { return access; }
    void setContactsAccess(bool on) override { access = on; }
    void resetClientList() override { ++resets; }
    void setStatus(const QString& datastream) override { status << datastream; }
    void startTimer2() override { ++timer2Starts; }
    void refreshClientList() override { ++refreshes; }
    bool access = false;
    int resets = 0, timer2Starts = 0, refreshes = 0;
    QStringList status;
};

// One synchronisation of a folder of real cards into a client list file in memory.
struct SyncRig
{
    explicit SyncRig(const QString& folder) : book(disk, folder) {}
    QStringList listFile() const { return clients::readClientList(prefs, kListFile); }
    inline static const QString kListFile = QStringLiteral("/prefs/VLK8Contacts");
    storage::DiskFileStore disk;
    clients::VCardStore book;
    ScriptedDialogs dialogs;
    FakeDesktop desktop;
    MemoryFileStore prefs;
    RecordingSyncHost host;
    clients::ClientSync sync{book, dialogs, desktop, prefs, kListFile, host};
};

} // namespace testing

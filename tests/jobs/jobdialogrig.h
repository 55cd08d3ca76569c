#pragma once

// A main window with the job operations around it, on fakes: files in memory, a clock that stands
// still, scripted dialogs and timers fired by hand.
#include "clients/clientview.h"
#include "core/mainwndo.h"
#include "core/timetext.h"
#include "jobs/jobops.h"
#include "storage/clients_file.h"
#include "storage/operations_file.h"
#include "support/fakes.h"
#include "support/memorystore.h"

#include <functional>
#include <memory>

namespace testing
{

// Rebuilds the client view for real, as the program does, since the dialog reads it back.
class JobRigMainHooks : public core::MainwndoHooks
{
public:
    clients::ClientView* view = nullptr;

    void populatelistbox2() override { view->rebuildFollowingListBox1(); }
};

// Records which of the other windows the dialog asked for.
class JobRigHooks : public jobs::SpecialwHooks
{
public:
    core::Mainwndo* w = nullptr;
    bool grantAccess = false;
    QStringList calls;

    void editOperations() override { calls << QStringLiteral("editOperations"); }
    void editPresetJobs() override { calls << QStringLiteral("editPresetJobs"); }
    void joblistupdate() override { calls << QStringLiteral("joblistupdate"); }
    void syncaddressbook2() override { w->contactsAccess = grantAccess; }
    // The user adds `added` (nothing when empty); the sync that follows writes it into the client list.
    QString showAddressadd() override
    {
        calls << QStringLiteral("showAddressadd");
        if (!added.isEmpty() && onAdd)
            onAdd(added);
        return added;
    }
    QString added;
    std::function<void(const QString&)> onAdd;
};

struct JobRig
{
    inline static const QString kFolder = QStringLiteral("/prefs/");

    core::AppPrefs prefs;
    FakeClock clock;
    FakeDesktop desktop;
    ScriptedDialogs dialogs;
    FakeTimers timers;
    MemoryFileStore files;
    storage::PresetJobList joblst;
    JobRigMainHooks mainHooks;
    JobRigHooks hooks;
    jobs::FileSources sources{files, prefs, QStringLiteral("/prefs"), joblst};
    platform::EventGate gate;
    core::Mainwndo w{prefs, {clock, desktop, dialogs, timers, mainHooks, gate}};
    clients::ClientView view{w, {desktop, mainHooks, files, kFolder + storage::kClientsFileName}};
    jobs::JobServices services{w, mainHooks, prefs, clock, desktop, dialogs, timers, sources, hooks, view};
    jobs::JobOps ops{services};

    JobRig()
    {
        mainHooks.view = &view;
        hooks.w = &w;
        prefs.usrname = QStringLiteral("Ann");
    }

    void writeOperations(const storage::OperationList& list)
    {
        files.files[kFolder + storage::kOperationsFileName] = storage::encodeOperations(list);
    }
    void writeClients(const QStringList& names)
    {
        files.files[kFolder + storage::kClientsFileName] = storage::encodeClientList(names);
    }

    // A dialog made and opened as the operations make it, for tests of the form on its own.
    std::unique_ptr<jobs::specialw> makeDialog(bool& openFlag)
    {
        auto d = std::make_unique<jobs::specialw>(services, openFlag);
        d->Event_Open();
        return d;
    }

    // Plays the user in the next job dialog.
    void play(std::function<void(jobs::specialw&)> user)
    {
        dialogs.expectModal(jobs::specialw::kFormName, [user = std::move(user)](platform::ModalForm& form) {
            user(static_cast<jobs::specialw&>(form));
        });
    }

    static FakeTimer& timer(platform::Timer& t) { return static_cast<FakeTimer&>(t); }

    // Fills the fields a valid new job needs, with "Design" from the operations menu.
    static void fillValid(jobs::specialw& d)
    {
        d.enterjob = QStringLiteral("j100");
        d.enterclient = QStringLiteral("Website");
        d.popup.caption = QStringLiteral("Design");
    }

    // Saves with OK and lets the closing timer fire, as the event loop would.
    static void saveAndClose(jobs::specialw& d)
    {
        d.okjob2.visible ? d.okjob2_Action() : d.okjob_Action();
        timer(d.specialtimer()).fire();
    }

    static core::JobRow row(const QDate& date, const QString& job, const QString& hours, const QString& run)
    {
        core::JobRow r;
        r.cells = {core::shortDate(date), job, "Project " + job, hours, "00", "Design", "Acme"};
        r.user = QStringLiteral("Bob");
        r.note = QStringLiteral("a note");
        r.run = run;
        return r;
    }
};

} // namespace testing

#pragma once

#include "core/appprefs.h"
#include "core/mainwndo.h"
#include "platform/clock.h"
#include "platform/desktop.h"
#include "platform/dialogs.h"
#include "platform/timer.h"
#include "storage/filestore.h"
#include "storage/operations_file.h"
#include "storage/preset_file.h"

#include <QList>
#include <QObject>
#include <QStringList>

#include <array>
#include <memory>
#include <optional>

namespace clients
{
class ClientView;
}

namespace jobs
{

// One row of a menu button. Separators are rows too: MenuValue counts them.
struct MenuRow
{
    QString text;
    bool separator = false;

    bool operator==(const MenuRow&) const = default;
};

// A menu button of the job dialog: its rows, the row chosen last and the caption it shows.
struct MenuButton
{
    QList<MenuRow> rows;
    int MenuValue = -1;
    QString caption;
};

// Menus show a literal "&" as "&&": every text that goes into a menu is doubled, and undone on the way out.
QString menuText(const QString& text);
QString fromMenuText(const QString& text);

// Where the job dialog's menus come from.
class SpecialwSources
{
public:
    virtual ~SpecialwSources() = default;
    // The operations file in use; nothing when that file does not exist.
    virtual std::optional<storage::OperationList> operations() const = 0;
    // The client list file; nothing when it does not exist.
    virtual std::optional<QStringList> clients() const = 0;
    // The preset jobs list in memory, shared with the preset jobs window.
    virtual storage::PresetJobList& joblst() = 0;
};

// The menus from the program's files: the group operations file at `rmteops` when one is set, else the
// user's own, and the client list; the preset jobs are the list the preset window holds in memory.
class FileSources : public SpecialwSources
{
public:
    FileSources(const storage::FileStore& files, const core::AppPrefs& prefs, QString prefFolder,
                storage::PresetJobList& joblst);

    std::optional<storage::OperationList> operations() const override;
    std::optional<QStringList> clients() const override;
    storage::PresetJobList& joblst() override { return m_joblst; }

    QString operationsPath() const;
    QString clientsPath() const;

private:
    const storage::FileStore& m_files;
    const core::AppPrefs& m_prefs;
    QString m_prefFolder;
    storage::PresetJobList& m_joblst;
};

// What the job dialog asks of windows built elsewhere. Each does nothing until the composition wires it.
class SpecialwHooks
{
public:
    virtual ~SpecialwHooks() = default;
    // "Edit Operations": the preferences window, modally, on its operations tab.
    virtual void editOperations() {}
    // "Edit Preset Job List": the preset jobs window, modally.
    virtual void editPresetJobs() {}
    // The preset list in memory changed: store it and bring the budgets up to date.
    virtual void joblistupdate() {}
    // Reads the client group of the contacts into the client list file and sets Mainwndo::contactsAccess.
    virtual void syncaddressbook2() {}
    // "Add New Client": the add-contact sheet, modally. The answer is the client added, or empty.
    virtual QString showAddressadd() { return {}; }
};

// What the job dialog and the operations that open it work with.
struct JobServices
{
    core::Mainwndo& main;
    core::MainwndoHooks& mainHooks; // the same hooks the main window was built with
    core::AppPrefs& prefs;
    platform::Clock& clock;
    platform::Desktop& desktop;
    platform::Dialogs& dialogs;
    platform::TimerFactory& timers;
    SpecialwSources& sources;
    SpecialwHooks& hooks;
    clients::ClientView& clientView;
};

// The job details dialog as a form: the fields of one job, the menus that fill them, the key filters,
// the date stepper, the checks, and the save into the main window's list.
class specialw : public QObject, public platform::ModalForm
{
    Q_OBJECT

public:
    inline static const QString kFormName = QStringLiteral("specialw");

    inline static const QString kWintitle = QStringLiteral("Please enter your Job details:");
    inline static const QString kWintitleE = QStringLiteral("Edit your selected Job details:");
    inline static const QString kWintitleD = QStringLiteral("Duplicate Job:");

    inline static const QString kJobNo = QStringLiteral("Job No:");
    inline static const QString kProject = QStringLiteral("Project:");
    inline static const QString kOperation = QStringLiteral("Operation:");
    inline static const QString kUser = QStringLiteral("User:");
    inline static const QString kClient = QStringLiteral("Client:");
    inline static const QString kTheDots = QStringLiteral(":");
    inline static const QString kDay = QStringLiteral("Day");
    inline static const QString kNoChoice = QStringLiteral("-- --");
    // What a screen reader calls the controls that have no label of their own.
    inline static const QString kDateLater = QStringLiteral("Next Day");
    inline static const QString kDateEarlier = QStringLiteral("Previous Day");
    inline static const QString kJobChoices = QStringLiteral("Preset Job choices");
    inline static const QString kJobChoicesKey = QStringLiteral("Alt+Down shows the preset jobs");
    inline static const QString kHours = QStringLiteral("Hours");
    inline static const QString kMinutes = QStringLiteral("Minutes");

    inline static const QString kDaySunday = QStringLiteral("Sun");
    inline static const QString kDayMonday = QStringLiteral("Mon");
    inline static const QString kDayTuesday = QStringLiteral("Tue");
    inline static const QString kDayWedneday = QStringLiteral("Wed");
    inline static const QString kDayThursday = QStringLiteral("Thu");
    inline static const QString kDayFriday = QStringLiteral("Fri");
    inline static const QString kDaySaturday = QStringLiteral("Sat");

    inline static const QString kRefreshList = QStringLiteral("Refresh List");
    inline static const QString kEditOperations = QStringLiteral("Edit Operations");
    inline static const QString kEditPresetJob = QStringLiteral("Edit Preset Job List");
    inline static const QString kAddPresetJobList = QStringLiteral("Add to Preset Job List");
    inline static const QString kSyncAddressBook = QStringLiteral("Sync with Address Book");
    inline static const QString kSyncContacts = QStringLiteral("Sync with Contacts");
    inline static const QString kAddNewClient = QStringLiteral("Add New Client");
    inline static const QString kNoClients = QStringLiteral("No Clients Found");

    inline static const QString kMinsLess = QStringLiteral("Minutes must be less than 60.");
    inline static const QString kEnterDatainEveryBox = QStringLiteral("Please enter data in every box.");
    inline static const QString kChooseOperation =
        QStringLiteral("Please choose an operation type from the drop down list.");
    inline static const QString kEnterValidDate = QStringLiteral("Please enter a valid date - Today is ");
    inline static const QString kSingleClientList = QStringLiteral("Single Client List: ");
    inline static const QString kSameClientName = QStringLiteral(
        "To Add or Edit a job while the Single Client List is active, you must use the same client name.");
    inline static const QString kNSUNotifiAlertMsg =
        QStringLiteral("Single Client Selected: You must select All Clients from the Client List before you can "
                       "edit your Preset Jobs List.");
    // Typing limits of the text fields, in characters.
    static constexpr int kDateFieldLimit = 10;
    static constexpr int kEnterjobLimit = 16;
    static constexpr int kEnterclientLimit = 30;
    static constexpr int kNmepopupLimit = 20;
    static constexpr int kSphrsLimit = 3;
    static constexpr int kSpminLimit = 2;

    static constexpr int kTimerPeriod = 200;

    // Note colours, RGB.
    static constexpr unsigned kNotesBackLight = 0xFFFCDF;
    static constexpr unsigned kNotesTextLight = 0x000000;
    static constexpr unsigned kNotesBackDark = 0xFF9933;
    static constexpr unsigned kNotesTextDark = 0x424242;

    // `openFlag` is up from Event_Open until the dialog closes, for the windows that refresh its menus.
    specialw(JobServices services, bool& openFlag);
    ~specialw() override;

    QString formName() const override { return kFormName; }

    // The weekday caption of a date.
    static QString dayCaption(const QDate& date);

    // Fields: all text while the dialog is open.
    QString wintitle;
    QString dateField;
    QString dateDay = kDay;
    QString enterjob;
    QString enterjobMask; // ">" once the field has had the focus: typing goes upper case
    MenuButton choosejob;
    MenuButton popupclnt{{}, -1, kNoChoice};
    QString enterclient;
    MenuButton popup{{}, -1, kNoChoice};
    QString nmepopup;
    QString sphrs = QStringLiteral("00");
    QString spmin = QStringLiteral("00");
    QString NotesArea;
    QString noteWarning; // says why typed note text was refused; empty otherwise
    unsigned NotesAreaBackground = kNotesBackLight;
    unsigned NotesAreaTextColor = kNotesTextLight;
    core::Control okjob{Tr::MWButtonOK};
    core::Control okjob2{Tr::MWButtonOK, true, false};
    core::Control canceljob{Tr::MWButtonCancel};
    QString bp; // "okjob" or "okjob2": the save button pressed last
    bool closed = false;

    platform::Timer& specialtimer() { return *m_specialtimer; }
    platform::Timer& captionTimer() { return *m_captionTimer; }

    // Opening: the menus, the client preset and the user; the Command-key watch starts.
    void Event_Open();
    void NotesArea_Open(bool dark);
    void refreshOppsList();
    // Synchronises the contacts, then rebuilds the client menu from the file.
    void refreshClientList();
    // The client menu from the file as it stands, for a synchronisation that has just run elsewhere.
    void rebuildClientMenu();
    void refreshJobsList();

    // A row of a menu was chosen.
    void popup_Action(int row);
    void popupclnt_Action(int row);
    void choosejob_Action(int row);

    // Key filters of the time fields: true when the key is swallowed.
    bool sphrs_KeyDown(QChar key);
    bool spmin_KeyDown(QChar key);
    void spmin_TextChange();
    void enterjob_GotFocus();
    // The note as typed; false when it was refused for its length and the field keeps its old text.
    bool NotesArea_TextChange(const QString& text);

    void dateArrows_Up() { stepDate(1); }
    void dateArrows_Down() { stepDate(-1); }

    void captionTimer_Action();
    void okjob_Action();
    void okjob2_Action();
    void setdata();
    void onErrActivate();
    void specialtimer_Action();
    void canceljob_Action();
    // Whatever ended the dialog: the timers stop and the open flag falls. Safe to call twice.
    void closeWindow();

signals:
    void changed();        // the form changed fields, captions or menus by itself
    void closeRequested(); // the window is to go

private:
    void fillOpps(const storage::OperationList& operations);
    void fillClients(const std::optional<QStringList>& names);
    bool timeKeyDown(QChar key);
    void stepDate(int days);
    void fail(const QString& message);

    JobServices m_s;
    bool& m_openFlag;
    bool m_noClients = false; // the client menu was built without a client list file
    std::unique_ptr<platform::Timer> m_specialtimer;
    std::unique_ptr<platform::Timer> m_captionTimer;
};

} // namespace jobs

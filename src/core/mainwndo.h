#pragma once

#include "core/appprefs.h"
#include "core/measure.h"
#include "core/menuitems.h"
#include "core/texts.h"
#include "core/timesheet.h"
#include "platform/clock.h"
#include "platform/desktop.h"
#include "platform/dialogs.h"
#include "platform/eventgate.h"
#include "platform/result.h"
#include "platform/timer.h"

#include <QObject>
#include <QRect>
#include <QSet>
#include <QStringList>

#include <memory>

namespace core
{

// What the main window asks of the subsystems above the core. Each call does nothing until the
// subsystem that answers it is wired in by the composition.
class MainwndoHooks
{
public:
    virtual ~MainwndoHooks() = default;
    // Writes the document to its file; the failure comes back for the window to report.
    virtual platform::Result writeTimesheet(const QString& path, const Timesheet& sheet)
    {
        Q_UNUSED(path);
        Q_UNUSED(sheet);
        return platform::Result::success();
    }
    // A save found the file changed by another program and did not write: the user is to choose. Runs as
    // an event of its own, after the one whose save was refused.
    virtual void changedElsewhere() {}
    // Save As for a document that has no file yet.
    virtual void saveAs() {}
    virtual void budgetcheck() {}
    virtual void budgetcheck2() {}
    // Every job of the timesheet against its budget, as a walk of the selection over every row would.
    virtual void checkAllBudgets() {}
    virtual void populatelistbox2() {}
    virtual void menuControl() {}
    virtual void statusUpDateDark() {}
    // The user has been away for the set minutes with the job running: beep and show the warning.
    virtual void alertnoactive() {}
    // The window is going: the preset window, Net Link, the tray item and the status strip go with it.
    virtual void windowClosing() {}
};

// The rollover question: a new row dated today, or leave the job stopped on its old row.
class Dupitwndo : public platform::ModalForm
{
public:
    explicit Dupitwndo(AppPrefs& prefs) : m_prefs(prefs) {}
    QString formName() const override { return QStringLiteral("dupitwndo"); }

    void dupeit_Action() { ButtonPressed = Tr::MWButtonOK; }
    void Cancel_Action() { ButtonPressed = Tr::MWButtonCancel; }
    // The tick takes effect at once, whichever button follows.
    void dontshow_Action(bool ticked) { m_prefs.warningsign = !ticked; }
    bool dontshowTicked() const { return !m_prefs.warningsign; }

private:
    AppPrefs& m_prefs;
};

// The state of a control of the main window that the logic drives.
struct Control
{
    QString caption;
    bool enabled = true;
    bool visible = true;

    bool operator==(const Control&) const = default;
};

// The main window as logic: the open timesheet, the run state, the timing engine, the totals, the
// rollover and the close. The Qt view shows its fields and forwards clicks, keys and timer ticks.
class Mainwndo : public QObject
{
    Q_OBJECT

public:
    struct Services
    {
        platform::Clock& clock;
        platform::Desktop& desktop;
        platform::Dialogs& dialogs;
        platform::TimerFactory& timers;
        MainwndoHooks& hooks;
        // Ticks that arrive while another event is under way wait here until it ends.
        platform::EventGate& gate;
    };

    static constexpr unsigned kIndecatorRunning = 0x00BE00;
    static constexpr unsigned kIndecatorStopped = 0xFF0000;
    // The size the window is made with, kept when its saved place is on no screen.
    static constexpr int kCreatedWidth = 501;
    static constexpr int kCreatedHeight = 400;

    inline static const QString kSCQuestionTxt1 = QStringLiteral("Do you want to save changes to ");
    inline static const QString kSCQuestionTxt2 = QStringLiteral(" before closing?");
    inline static const QString kSCWarningTxt =
        QStringLiteral("If you don't choose Save, your unsaved changes will be lost.");
    inline static const QString kDSWrite = QStringLiteral("Writing Data");
    inline static const QString kUntitled = QStringLiteral("untitled");
    inline static const QString kAppTitle = QStringLiteral("Veltrick");
    // What a screen reader calls the list, which has no label on screen.
    inline static const QString kListBox1Name = QStringLiteral("Timesheet");

    Mainwndo(AppPrefs& prefs, Services services);
    ~Mainwndo() override;

    // The lists. ListBox1 is the document and the only source of truth; ListBox2 a client's copy.
    Timesheet ListBox1;
    Timesheet ListBox2;

    // Document and run state.
    QString xpath;
    QString myfilename = kUntitled;
    bool boxchange = false;
    bool running = false;
    // The minutes the timer put on rows, by timing key, since the last save that reached the file.
    QHash<QString, qint64> timedSinceSave;
    QString stophrs, stopmin;
    std::optional<int> stopoffset; // of the clock at the stop, as ListBox1.startoffset is at the start
    bool dateschanged = false;
    QString ipnumber;
    bool toplist = false;
    bool listboxGray = false;
    int sortdirection = 1;
    bool contactsAccess = false;
    QString daytimetotal = QStringLiteral("00:00");
    QString clientnameselected;
    bool budgetNotice = false;
    QStringList trackListindex;
    qint64 budgetTotalMins = 0;
    bool minime = false;
    QString jobtotal = QStringLiteral("00:00");
    QString selecteddaytotal = QStringLiteral("00:00");
    QString LB2ClientName;
    bool noteWinOpen = false;

    // Controls the logic drives. The status strip's run button follows runButton.
    Control runButton{Tr::MWStartButtonFs, false};
    unsigned indecator = kIndecatorStopped;
    Control ListBox1Ctl;
    bool ListBox1ScrollBar = true;
    Control ListBox2Ctl{QString(), true, false};
    Control clientlist2;
    Control njButton2;
    Control addClient2;
    Control statusStart;
    Control notebox{QString(), true, false};
    QString runtotal;
    QString datastream;
    bool dataprogress = false;
    QString title = kAppTitle;
    QRect geometry; // left, top, width, height of the window: restored, and brought up to date at the close
    int clientlist2Width = 152;

    platform::Timer& Timer2() { return *m_timer2; }
    platform::Timer& Timer3() { return *m_timer3; }
    platform::Timer& Timer4() { return *m_timer4; }

    // The enable procedure of the window's commands; later steps override earlier ones.
    void Event_EnableMenuItems(MenuItems& items) const;
    // Whether a command of the window may run now, by the same procedure: handlers ask before acting.
    bool allows(Item item) const;
    // The window's items that are on by themselves while the window answers them.
    static void autoEnabled(MenuItems& items);

    // Timing engine.
    void gostart();
    // Where a restarted count begins: the clock's minute, or the minute the last stop measured to. A job
    // that goes on at once after a stop (a recovered timer, Continue after the idle warning, a switch of
    // job) takes the latter, so that a save running past a minute between the two drops nothing.
    enum class From
    {
        Clock,
        LastStop
    };
    void allcont(From from = From::Clock);
    void Allstop();
    void livecount();
    // Whether the selected row is dated today: time can only go on such a row.
    bool selectedIsToday() const;
    void setstop();
    void setcont();
    void runButton_Action();
    // Space with a row selected is the run button.
    bool takesKey(QChar key) const { return key == QLatin1Char(' ') && ListBox1.ListIndex >= 0; }
    bool Event_KeyDown(QChar key);
    void _statusStart_Action();
    void _statusStop_Action();

    // Selection and row checks. The selection moved: ListBox1_Change follows. While a job runs its row
    // stays selected, whoever asks: the answer is false and the views are told to show it again.
    bool setListIndex(int index);
    // A row goes into ListBox1 without moving the selection off the row it is on.
    void insertRow(int index, JobRow row);
    void ListBox1_Change();
    void rowcheck();
    void datechecker();
    // The single-client view, while it shows, made again from ListBox1's rows and selection.
    void rebuildClientRows();
    void dupejob();

    // Totals.
    void Uptotal();
    void Uptotal2(int list);
    void totaltimetoday(int list);
    void totalJobTime();
    void totalSelectedDay();
    void _totaltime2_Action();
    void _totaldy2_Action();

    // Document. autosave answers true when the rows are in the file; a document without a file stays
    // dirty, and its Save is Save As.
    bool autosave();
    void _save_Action();
    void Windowfilename();
    void deleteall();
    void markChanged(); // a row was edited: the document is dirty
    void checkAllBudgets() { m_s.hooks.checkAllBudgets(); }

    // Window events.
    bool Event_CancelClose(); // true: the close stops
    void Event_Close();
    void Event_Minimize() { minime = true; }
    void Event_Restore() { minime = false; }
    void Timer2_Action();
    void Timer4_Action();                    // the idle check
    void setDatastream(const QString& text); // the status line and its spinner, until Timer2 clears them
    void showStatus(const QString& text);    // the same, with Timer2 started at once
    void showNotice(const QString& text);    // the status line alone, until the next status: to be read

    Timesheet& shownList() { return ListBox2Ctl.visible ? ListBox2 : ListBox1; }

signals:
    void controlsChanged();   // captions, enabled states, labels
    void rowsReset();         // rows inserted, removed or reordered
    void rowChanged(int row); // cells of one row of ListBox1
    void selectionChanged();  // ListIndex of ListBox1 moved
    void focusRequested(int list);
    void closing();      // the window's place is about to be stored: the view says where it is
    void emptying();     // the document's rows are about to go: the window closes or another is read in
    void opened();       // a timesheet has been read into the window, or made by New
    void marksChanged(); // the budget marks of rows changed: the lists paint them again

private:
    void selectRow(int index);
    ClockMinute started() const { return {ListBox1.starthrs, ListBox1.startmin, ListBox1.startoffset}; }
    // The clock minutes since the start onto the selected row, counted as not yet in the file.
    ClockMinute measureSelected(const QDateTime& now);
    void setStart(const ClockMinute& start);
    void keepStop(const ClockMinute& stop);
    void setRunButtons(bool enabled);
    void startRunning(); // save, then the running state with its timers
    void runByCaption(); // the run button's choice: first start, stop or start
    void startTimers(platform::Timer::Mode mode);
    void notifyRow();
    qint64 listMinutes(const Timesheet& list);
    void timerTick(platform::Timer& timer, void (Mainwndo::*handler)());

    AppPrefs& m_prefs;
    Services m_s;
    std::unique_ptr<platform::Timer> m_timer2, m_timer3, m_timer4;
    QSet<const platform::Timer*> m_tickWaiting; // timers with a tick held back by a walk or a modal window
    bool m_saving = false;
    bool m_saveAgain = false;
};

} // namespace core

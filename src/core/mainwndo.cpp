#include "core/mainwndo.h"

#include "core/measure.h"
#include "core/timetext.h"
#include "core/totalwindows.h"
#include "platform/yieldgate.h"

#include <QFileInfo>

namespace core
{

Mainwndo::Mainwndo(AppPrefs& prefs, Services services)
    : m_prefs(prefs), m_s(services), m_timer2(m_s.timers.create(1000)), m_timer3(m_s.timers.create(60000)),
      m_timer4(m_s.timers.create(60000))
{
    m_timer2->action = [this] { Timer2_Action(); };
    m_timer3->action = [this] { timerTick(*m_timer3, &Mainwndo::livecount); };
    m_timer4->action = [this] { timerTick(*m_timer4, &Mainwndo::Timer4_Action); };
    clientlist2Width = prefs.cls;
    Uptotal2(1);
}

Mainwndo::~Mainwndo() = default;

void Mainwndo::timerTick(platform::Timer& timer, void (Mainwndo::*handler)())
{
    // A tick that arrives inside a walk or a modal window waits for it to end, so that no minute is
    // written into rows that are being read or changed. A tick only reads the clock, so one waiting tick
    // of a timer stands for all it missed: a burst of them would save again and again, and ask the idle
    // check within a second whether there was input, as if a minute had passed between the questions.
    if (m_tickWaiting.contains(&timer))
        return;
    m_tickWaiting.insert(&timer);
    m_s.gate.post(this, [this, &timer, handler] {
        m_tickWaiting.remove(&timer);
        // A stop that came first has measured already and turned the timer off.
        if (timer.mode() != platform::Timer::Off)
            (this->*handler)();
    });
}

void Mainwndo::Event_EnableMenuItems(MenuItems& m) const
{
    m.on({Item::save, Item::duplicate, Item::edjobmenu, Item::totaltime2, Item::exportmenu, Item::totaldy2,
          Item::printit, Item::nujobmenu2, Item::zerorow, Item::notey, Item::FilePrintLayout, Item::clearjb2,
          Item::shwnts, Item::statusStart});
    m.off({Item::clozeit, Item::switchit, Item::statusStop, Item::EditCopy, Item::EditCut});
    if (!njButton2.enabled)
        m.off({Item::nujobmenu2});
    if (!xpath.isEmpty())
        m.on({Item::clozeit, Item::switchit, Item::exportmenu});
    if (!boxchange)
        m.off({Item::save});
    if (running) {
        m.off({Item::zerorow, Item::notey, Item::clearjb2, Item::exportmenu, Item::duplicate, Item::edjobmenu,
               Item::totaltime2, Item::totaldy2, Item::nujobmenu2, Item::statusStart, Item::syncAddressBook,
               Item::FileAddNewClient});
        m.on({Item::clozeit, Item::switchit, Item::statusStop});
    }
    if (dateschanged) {
        m.off({Item::exportmenu, Item::duplicate, Item::edjobmenu, Item::totaltime2, Item::totaldy2, Item::nujobmenu2});
        m.on({Item::clozeit, Item::switchit});
    }
    if (ListBox1.ListIndex == -1)
        m.off({Item::duplicate, Item::edjobmenu, Item::totaltime2, Item::totaldy2, Item::notey, Item::clearjb2,
               Item::zerorow, Item::statusStart, Item::statusStop});
}

void Mainwndo::autoEnabled(MenuItems& items)
{
    items.on({Item::FileAddNewClient, Item::syncAddressBook, Item::statusStart, Item::statusStop});
}

bool Mainwndo::allows(Item item) const
{
    MenuItems items;
    autoEnabled(items);
    Event_EnableMenuItems(items);
    return items.enabled(item);
}

void Mainwndo::Timer4_Action()
{
    if (m_prefs.waittime == 0)
        return;
    using Answer = platform::ActivityProbe::Answer;
    const Answer answer = m_s.desktop.activity().inputSinceLastCheck();
    // Where nothing can tell whether the user is there, no warning rather than a false one.
    if (answer == Answer::Unknown)
        return;
    if (answer == Answer::NoInput && !xpath.isEmpty() && running) {
        ++m_prefs.checktime;
    } else {
        m_prefs.checktime = 1;
        const QPoint mouse = m_s.desktop.mousePosition();
        m_prefs.positionx = mouse.x();
        m_prefs.positiony = mouse.y();
    }
    if (m_prefs.checktime >= m_prefs.waittime) {
        m_timer4->setMode(platform::Timer::Off);
        m_s.hooks.alertnoactive();
    }
}

// ---- timing engine ----

void Mainwndo::startTimers(platform::Timer::Mode mode)
{
    m_timer3->setMode(mode);
    m_timer4->setMode(mode);
}

void Mainwndo::setRunButtons(bool enabled)
{
    runButton.enabled = enabled;
    emit controlsChanged();
}

void Mainwndo::notifyRow()
{
    if (ListBox1.hasSelection())
        emit rowChanged(ListBox1.ListIndex);
}

void Mainwndo::gostart()
{
    if (!ListBox1.hasSelection())
        return;
    const QDateTime now = m_s.clock.now();
    if (xpath.isEmpty())
        autosave();
    setStart(clockMinute(now));
    JobRow& row = ListBox1.selected();
    row.run = kRunRunning;
    row.setCell(CellDate, shortDate(now.date())); // a first start moves the row to today
    notifyRow();
    setstop();
    autosave();
    running = true;
    startTimers(platform::Timer::Multiple);
    m_s.hooks.statusUpDateDark();
    m_s.hooks.menuControl();
}

void Mainwndo::startRunning()
{
    autosave();
    running = true;
    setstop();
    startTimers(platform::Timer::Multiple);
    m_s.hooks.statusUpDateDark();
}

void Mainwndo::allcont(From from)
{
    if (!ListBox1.hasSelection())
        return;
    if (selectedIsToday()) {
        setStart(from == From::LastStop && !stophrs.isEmpty() ? ClockMinute{stophrs, stopmin, stopoffset}
                                                              : clockMinute(m_s.clock.now()));
        ListBox1.selected().run = kRunRunning;
        notifyRow();
        startRunning();
    } else {
        // Time cannot go on a row of another day.
        datechecker();
        if (dateschanged) {
            // The new row was made and started without a question; bring the window into line.
            dateschanged = false;
            startRunning();
        }
    }
    // A cancelled rollover leaves nothing running, and then the client list need not wait for a stop.
    clientlist2.enabled = !running;
    emit controlsChanged();
    m_s.hooks.menuControl();
}

void Mainwndo::Allstop()
{
    startTimers(platform::Timer::Off);
    if (ListBox1.hasSelection()) {
        keepStop(measureSelected(m_s.clock.now()));
        notifyRow();
    }
    autosave(); // clears boxchange when the stop reached the file; a failed write leaves it dirty
    setcont();
    running = false;
    if (!ListBox2Ctl.visible) {
        ListBox1Ctl.enabled = true;
        ListBox1ScrollBar = true;
        emit focusRequested(1);
    } else {
        ListBox2Ctl.enabled = true;
        emit focusRequested(2);
    }
    clientlist2.enabled = true;
    emit controlsChanged();
    m_s.hooks.budgetcheck();
    m_s.hooks.statusUpDateDark();
    m_s.hooks.menuControl();
}

void Mainwndo::livecount()
{
    if (!ListBox1.hasSelection())
        return;
    const QDateTime now = m_s.clock.now();
    const ClockMinute tick = measureSelected(now);
    keepStop(tick);
    // The next count starts at this tick on both paths, so the stop inside the rollover below finds
    // nothing more to add to the old row.
    setStart(tick);
    notifyRow();
    if (!selectedIsToday()) {
        datechecker();
    } else {
        ListBox1.selected().run = kRunRunning;
        running = true;
        boxchange = true;
    }
    autosave();
}

ClockMinute Mainwndo::measureSelected(const QDateTime& now)
{
    JobRow& row = ListBox1.selected();
    const qint64 before = row.minutes();
    const ClockMinute tick = measure(row, started(), now);
    timedSinceSave[row.timingKey()] += row.minutes() - before;
    return tick;
}

void Mainwndo::setStart(const ClockMinute& start)
{
    ListBox1.starthrs = start.hrs;
    ListBox1.startmin = start.min;
    ListBox1.startoffset = start.offset;
}

void Mainwndo::keepStop(const ClockMinute& stop)
{
    stophrs = stop.hrs;
    stopmin = stop.min;
    stopoffset = stop.offset;
}

bool Mainwndo::selectedIsToday() const
{
    return ListBox1.hasSelection() && sameText(ListBox1.selected().cell(CellDate), shortDate(m_s.clock.now().date()));
}

void Mainwndo::setstop()
{
    runButton.caption = Tr::MWStartButtonStop;
    indecator = kIndecatorRunning;
    njButton2.enabled = false;
    ListBox1Ctl.enabled = false;
    ListBox2Ctl.enabled = false;
    clientlist2.enabled = false;
    statusStart.enabled = false;
    addClient2.enabled = false;
    emit controlsChanged();
}

void Mainwndo::setcont()
{
    runButton.caption = Tr::MWStartButtonSt;
    indecator = kIndecatorStopped;
    njButton2.enabled = true;
    statusStart.enabled = true;
    addClient2.enabled = true;
    emit controlsChanged();
}

void Mainwndo::runByCaption()
{
    // The button is off while a save or the rollover question is under way, and with no row selected.
    if (!runButton.enabled || !ListBox1.hasSelection())
        return;
    if (runButton.caption == Tr::MWStartButtonFs)
        gostart();
    else if (runButton.caption == Tr::MWStartButtonStop)
        Allstop();
    else
        allcont();
}

void Mainwndo::runButton_Action()
{
    runByCaption();
    m_s.hooks.menuControl();
    rowcheck();
}

bool Mainwndo::Event_KeyDown(QChar key)
{
    if (!takesKey(key))
        return false;
    // Space is the run button, with the button's state.
    runByCaption();
    return true;
}

void Mainwndo::_statusStart_Action()
{
    // Not on a running row: a start there would move the start time without measuring.
    if (!allows(Item::statusStart) || !runButton.enabled)
        return;
    if (runButton.caption == Tr::MWStartButtonFs)
        gostart();
    else
        allcont();
    m_s.hooks.menuControl();
    rowcheck();
}

void Mainwndo::_statusStop_Action()
{
    if (!allows(Item::statusStop))
        return;
    if (runButton.caption == Tr::MWStartButtonStop)
        Allstop();
    m_s.hooks.menuControl();
    rowcheck();
}

// ---- selection, row checks and the day rollover ----

bool Mainwndo::setListIndex(int index)
{
    if (index < -1 || index >= ListBox1.ListCount())
        index = -1;
    if (running && index != ListBox1.ListIndex) {
        // Every tick charges the selected row: while a job runs, its row stays the selected one.
        emit selectionChanged();
        return false;
    }
    selectRow(index);
    return true;
}

void Mainwndo::selectRow(int index)
{
    ListBox1.ListIndex = index;
    emit selectionChanged();
    ListBox1_Change();
}

void Mainwndo::insertRow(int index, JobRow row)
{
    ListBox1.InsertRow(index, std::move(row));
    if (ListBox1.ListIndex >= index)
        ++ListBox1.ListIndex;
}

void Mainwndo::ListBox1_Change()
{
    budgetNotice =
        ListBox1.hasSelection() && trackListindex.contains(ListBox1.selected().cell(CellJob), Qt::CaseInsensitive);
    rowcheck();
    m_s.hooks.budgetcheck();
}

void Mainwndo::rowcheck()
{
    if (!ListBox1.hasSelection()) {
        notebox.caption.clear();
        runButton.enabled = false;
    } else {
        const JobRow& row = ListBox1.selected();
        notebox.caption = row.note;
        if (row.run == kRunRunning) {
            setstop();
            running = true;
        } else if (row.run == kRunNever) {
            runButton.caption = Tr::MWStartButtonFs;
        } else {
            runButton.caption = Tr::MWStartButtonSt;
        }
        runButton.enabled = true;
    }
    emit controlsChanged();
    m_s.hooks.menuControl();
}

void Mainwndo::datechecker()
{
    dateschanged = true;
    setRunButtons(false);
    if (m_prefs.warningsign) {
        if (running)
            Allstop(); // stop first, so that no tick arrives while the question is open
        Dupitwndo dialog(m_prefs);
        ListBox1Ctl.enabled = false;
        ListBox1ScrollBar = false;
        njButton2.enabled = false;
        emit controlsChanged();
        m_s.desktop.beep();
        m_s.dialogs.showModal(dialog);
        if (dialog.ButtonPressed == Tr::MWButtonOK) {
            dupejob();
            dateschanged = false;
            setRunButtons(true);
            allcont();
        } else {
            // Cancel, or the window closed some other way: the job stays stopped on its old row.
            ListBox1Ctl.enabled = !ListBox2Ctl.visible;
            ListBox1ScrollBar = true;
            njButton2.enabled = true;
            setRunButtons(ListBox1.hasSelection());
            dateschanged = false;
        }
    } else {
        dupejob();
        setRunButtons(true);
        allcont();
    }
}

void Mainwndo::dupejob()
{
    if (!ListBox1.hasSelection())
        return;
    const QDateTime now = m_s.clock.now();
    const JobRow& old = ListBox1.selected();
    JobRow copy;
    copy.setCell(CellDate, shortDate(now.date()));
    for (int c : {CellJob, CellProject, CellOperation, CellClient})
        copy.setCell(c, old.cell(c));
    copy.setCell(CellHours, QStringLiteral("00"));
    copy.setCell(CellMinutes, QStringLiteral("00"));
    copy.user = old.user;
    copy.run = kRunRunning; // the note stays behind: it belongs to the old day
    setStart(clockMinute(now));
    insertRow(0, std::move(copy));
    emit rowsReset();
    selectRow(0); // the engine's own move: the running job goes on in the new row
    rebuildClientRows();
}

void Mainwndo::rebuildClientRows()
{
    if (ListBox2Ctl.visible)
        m_s.hooks.populatelistbox2();
}

// ---- totals ----

qint64 Mainwndo::listMinutes(const Timesheet& list)
{
    platform::EventGate::Scope walk(m_s.gate);
    platform::YieldGate gate(m_s.desktop);
    qint64 total = 0;
    for (const JobRow& row : list.rows) {
        total += row.minutes();
        gate.step();
    }
    return total;
}

void Mainwndo::Uptotal()
{
    Uptotal2(1);
}

void Mainwndo::Uptotal2(int list)
{
    const Timesheet& sheet = list == 1 ? ListBox1 : ListBox2;
    const qint64 total = listMinutes(sheet);
    totaltimetoday(list == 1 ? 1 : 2);
    runtotal = Tr::MWListTotals + hhmm(total) + Tr::MWListToday + daytimetotal + Tr::MWListTotalsEntries +
               fmt00(sheet.ListCount());
    emit controlsChanged();
}

void Mainwndo::totaltimetoday(int list)
{
    if (list != 1 && list != 2) {
        daytimetotal = QStringLiteral("00:00");
        return;
    }
    const Timesheet& sheet = list == 1 ? ListBox1 : ListBox2;
    if (!sheet.hasSelection()) {
        daytimetotal = QStringLiteral("00:00");
        return;
    }
    const QString today = shortDate(m_s.clock.now().date());
    platform::EventGate::Scope walk(m_s.gate);
    platform::YieldGate gate(m_s.desktop);
    qint64 total = 0;
    for (const JobRow& row : sheet.rows) {
        if (sameText(row.cell(CellDate), today))
            total += row.minutes();
        gate.step();
    }
    daytimetotal = hhmm(total);
}

void Mainwndo::totalJobTime()
{
    if (ListBox1.hasSelection())
        jobtotal = hhmm(sumWhere(ListBox1, CellJob, ListBox1.selected().cell(CellJob)));
}

void Mainwndo::totalSelectedDay()
{
    if (ListBox1.hasSelection())
        selecteddaytotal = hhmm(sumWhere(ListBox1, CellDate, ListBox1.selected().cell(CellDate)));
}

void Mainwndo::_totaltime2_Action()
{
    Ttljobtme window;
    window.Event_Open(ListBox1);
    m_s.dialogs.showModal(window);
}

void Mainwndo::_totaldy2_Action()
{
    Ttldaytme window;
    window.Event_Open(ListBox1);
    m_s.dialogs.showModal(window);
}

// ---- document ----

bool Mainwndo::autosave()
{
    // The walks below yield to the event loop, where a tick could ask for another save: that one
    // runs once this one ends, never inside it.
    if (m_saving) {
        m_saveAgain = true;
        return false;
    }
    m_saving = true;
    platform::EventGate::Scope walk(m_s.gate);
    bool saved = false;
    do {
        m_saveAgain = false;
        const bool buttonsWere = runButton.enabled;
        setRunButtons(false);
        dataprogress = true;
        datastream = kDSWrite;
        if (!xpath.isEmpty()) {
            const platform::Result written = m_s.hooks.writeTimesheet(xpath, ListBox1);
            if (!written.ok()) {
                // The rows stay in memory and the document is dirty, whatever it was: the file lags behind
                // them, so a close asks. The next save tries again.
                boxchange = true;
                if (written.code == platform::Result::kChangedElsewhere) {
                    // Not a fault of the disk: the question comes once this event is over; timing goes on.
                    m_s.gate.post(this, [this] { m_s.hooks.changedElsewhere(); });
                    datastream = written.message;
                } else {
                    m_s.desktop.beep();
                    m_s.dialogs.message(Tr::MWErrorWriteFail);
                    datastream = Tr::MWDSWriteError;
                }
                m_timer2->setMode(platform::Timer::Single);
                setRunButtons(buttonsWere);
                saved = false;
                continue;
            }
        }
        saved = !xpath.isEmpty();
        m_timer2->setMode(platform::Timer::Single);
        if (toplist && ListBox1.hasSelection() && ListBox2.hasSelection()) {
            for (int c : {CellHours, CellMinutes})
                ListBox2.selected().setCell(c, ListBox1.selected().cell(c));
        }
        if (ListBox2Ctl.visible) {
            Uptotal2(2);
            m_s.hooks.budgetcheck2();
        } else {
            Uptotal2(1);
            m_s.hooks.budgetcheck();
        }
        if (!xpath.isEmpty())
            m_prefs.lastdoc = xpath;
        Windowfilename();
        // Only rows that are in a file are safe: without one the document stays dirty, so that closing
        // it still asks.
        if (saved) {
            boxchange = false;
            timedSinceSave.clear();
        }
        setRunButtons(buttonsWere);
    } while (m_saveAgain);
    m_saving = false;
    return saved;
}

void Mainwndo::_save_Action()
{
    if (xpath.isEmpty())
        m_s.hooks.saveAs();
    else
        autosave();
}

void Mainwndo::Windowfilename()
{
    myfilename = xpath.isEmpty() ? kUntitled : QFileInfo(xpath).fileName();
    title = xpath.isEmpty() ? kAppTitle : myfilename;
    emit controlsChanged();
}

void Mainwndo::deleteall()
{
    emit emptying();
    ListBox1.DeleteAllRows();
    setStart({});
    timedSinceSave.clear();
    ListBox2.DeleteAllRows();
    xpath.clear();
    title = kAppTitle;
    emit rowsReset();
    emit selectionChanged();
    Uptotal();
    rowcheck();
}

void Mainwndo::markChanged()
{
    boxchange = true;
    m_s.hooks.menuControl();
}

// ---- window events ----

bool Mainwndo::Event_CancelClose()
{
    if (!boxchange)
        return false;
    m_s.desktop.beep();
    platform::Question question;
    question.message = kSCQuestionTxt1 + QLatin1Char('"') + myfilename + QLatin1Char('"') + kSCQuestionTxt2;
    question.explanation = kSCWarningTxt;
    question.action = Tr::SaveMenuText;
    question.alternate = Tr::MWButtonDontSave;
    switch (m_s.dialogs.ask(question)) {
    case platform::Answer::Action:
        // A save that did not happen (Save As cancelled, the disk refused) keeps the window open.
        _save_Action();
        return boxchange;
    case platform::Answer::Alternate:
        return false;
    case platform::Answer::Cancel:
        return true;
    }
    return true;
}

void Mainwndo::Event_Close()
{
    if (running && m_prefs.killQuit) {
        Allstop();
        autosave();
    }
    emit closing();
    if (geometry.isValid()) {
        m_prefs.wintop = geometry.top();
        m_prefs.winleft = geometry.left();
        m_prefs.winheight = geometry.height();
        m_prefs.winwidth = geometry.width();
    }
    m_prefs.cls = clientlist2Width;
    m_timer2->setMode(platform::Timer::Off);
    startTimers(platform::Timer::Off);
    deleteall();
    m_s.hooks.windowClosing();
}

void Mainwndo::Timer2_Action()
{
    m_timer2->setMode(platform::Timer::Off);
    datastream.clear();
    dataprogress = false;
    emit controlsChanged();
}

void Mainwndo::setDatastream(const QString& text)
{
    datastream = text;
    dataprogress = true;
    emit controlsChanged();
}

void Mainwndo::showNotice(const QString& text)
{
    m_timer2->setMode(platform::Timer::Off);
    datastream = text;
    dataprogress = false;
    emit controlsChanged();
}

void Mainwndo::showStatus(const QString& text)
{
    setDatastream(text);
    m_timer2->setMode(platform::Timer::Single);
}

} // namespace core

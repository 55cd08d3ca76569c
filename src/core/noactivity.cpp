#include "core/noactivity.h"

#include "core/mainwndo.h"
#include "core/texts.h"
#include "core/timetext.h"

#include <algorithm>

namespace core
{

namespace
{
constexpr int kMinuteMs = 60000;
}

noactivity::noactivity(Mainwndo& window, const AppPrefs& prefs, platform::TimerFactory& timers)
    : m_window(window), m_prefs(prefs), m_inactivTmr(timers.create(kMinuteMs))
{
    // The inactive time counts on while the window is open, whatever else waits behind it.
    m_inactivTmr->action = [this] { InactivTmr_Action(); };
}

noactivity::~noactivity() = default;

void noactivity::Event_Open()
{
    const JobRow* row = m_window.ListBox1.hasSelection() ? &m_window.ListBox1.selected() : nullptr;
    StaticText1 = kNAWinWarningTxt + QString::number(m_prefs.waittime) + kNAWinTimeSetMinutes;
    // A job started after the user had already gone has less time than the idle span: it shows 00:00.
    const qint64 stopped = std::max<qint64>(0, (row ? row->minutes() : 0) - m_prefs.waittime);
    alrthr = fmt00(stopped / 60);
    alrtmn = fmt00(stopped % 60);
    inacH = fmt00(0);
    inacM = fmt00(m_prefs.waittime);
    ButtonPressed.clear(); // open until a button names itself here
    m_inactivTmr->setMode(platform::Timer::Multiple);
    emit changed();
}

void noactivity::InactivTmr_Action()
{
    const qint64 minutes = Val(inacH) * 60 + Val(inacM) + 1;
    inacH = fmt00(minutes / 60);
    inacM = fmt00(minutes % 60);
    emit changed();
    // The job's cells keep growing behind the window and reach the file. A change of day waits for the
    // answer: the rollover question would otherwise move the job to a new row under this window.
    if (m_window.running && m_window.selectedIsToday())
        m_window.livecount();
}

void noactivity::PushButton1_Action()
{
    // The idle time stays in the row and the job runs on; the watch starts again with the job.
    m_window.Allstop();
    m_window.allcont(Mainwndo::From::LastStop);
    close(Tr::MWButtonContinue);
}

void noactivity::PushButton2_Action()
{
    resetRow();
    close(Tr::MWButtonReset);
}

void noactivity::PushButton3_Action()
{
    resetRow();
    close(Tr::MWButtonNew);
}

void noactivity::Event_Close()
{
    if (ButtonPressed.isEmpty())
        PushButton1_Action();
}

void noactivity::resetRow()
{
    const int row = m_window.ListBox1.ListIndex;
    m_window.Allstop();
    if (row >= 0 && row < m_window.ListBox1.ListCount()) {
        JobRow& reset = m_window.ListBox1.row(row);
        const qint64 timed = reset.minutes();
        reset.setCell(CellHours, alrthr);
        reset.setCell(CellMinutes, alrtmn);
        m_window.timedSinceSave[reset.timingKey()] += reset.minutes() - timed; // the idle time is not timed
        emit m_window.rowChanged(row);
    }
    m_window.autosave();
}

void noactivity::close(const QString& button)
{
    m_inactivTmr->setMode(platform::Timer::Off);
    ButtonPressed = button;
    emit closeRequested();
}

} // namespace core

#pragma once

#include "core/appprefs.h"
#include "platform/dialogs.h"
#include "platform/timer.h"

#include <QObject>

#include <memory>

namespace core
{

class Mainwndo;

// The idle warning: the job's time when activity stopped, the inactive time counting up while the
// window is open, and the three answers. New is finished by the caller once the window is closed: the
// job dialog opens with the inactive time.
class noactivity : public QObject, public platform::ModalForm
{
    Q_OBJECT

public:
    inline static const QString kNAWinTitle = QStringLiteral("No Activity Warning!");
    inline static const QString kNAWinWarningTxt =
        QStringLiteral("Veltrick is set to notify you when your computer has been idle for more than ");
    inline static const QString kNAWinTimeSetMinutes = QStringLiteral(" mins.");
    inline static const QString kNAWinActivityStopped = QStringLiteral("Activity stopped at:");
    inline static const QString kNAWinTimeSet = QStringLiteral("Inactive time:");
    inline static const QString kNAWinMainText = QStringLiteral(
        "Click Continue - to include the period of inactivity and carry on adding time to the selected job."
        "\n\nClick Reset - to stop timing the selected job, remove the period of inactivity and reset the "
        "job's elapsed time to the time shown above.\n\nClick New - to Reset the selected job's elapsed time to "
        "the time shown above and then add the period of inactivity to a new job.");

    noactivity(Mainwndo& window, const AppPrefs& prefs, platform::TimerFactory& timers);
    ~noactivity() override;
    QString formName() const override { return QStringLiteral("noactivity"); }

    void Event_Open();
    void InactivTmr_Action();
    void PushButton1_Action(); // Continue
    void PushButton2_Action(); // Reset
    void PushButton3_Action(); // New
    // The window went without an answer (its close box): the job runs on, as with Continue.
    void Event_Close();

    QString StaticText1;
    QString alrthr, alrtmn; // the job's time when activity stopped
    QString inacH, inacM;   // inactive time so far

signals:
    void changed();
    void closeRequested();

private:
    // Stops the job and sets its time back to the time shown.
    void resetRow();
    void close(const QString& button);

    Mainwndo& m_window;
    const AppPrefs& m_prefs;
    std::unique_ptr<platform::Timer> m_inactivTmr;
};

} // namespace core

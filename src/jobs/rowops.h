#pragma once

#include "core/mainwndo.h"
#include "jobs/listtexts.h"
#include "platform/clock.h"
#include "platform/desktop.h"
#include "platform/dialogs.h"

#include <QRect>

namespace clients
{
class ClientView;
}

namespace jobs
{

// The confirmation window of delete and reset: four delete scopes, or a plain question for a reset.
class Aresure : public platform::ModalForm
{
public:
    inline static const QString kASWinTitle = QStringLiteral("Delete Job");
    inline static const QString kASWinDesc = QStringLiteral("OK to Delete selected job?");
    inline static const QString kASWinRadOne = QStringLiteral("Delete Selected Job.");
    inline static const QString kASWinRadTwo = QStringLiteral("Delete All jobs with selected Job No.");
    inline static const QString kASWinRadThree = QStringLiteral("Delete All jobs with selected Date.");
    inline static const QString kASWinRadFour = QStringLiteral("Delete All jobs with selected Month.");
    static constexpr int kDeleteHeight = 234;
    static constexpr int kResetHeight = 140;
    static constexpr int kWidth = 420;

    QString formName() const override { return QStringLiteral("aresure"); }

    QString title = kASWinTitle;
    QString question = kASWinDesc;
    QString Okay = Tr::MWButtonDelete; // caption of the OK button
    bool GroupBox1 = true;             // the four radio buttons are on show
    bool delseljob = true;
    bool delalljobs = false;
    bool delalljobdate = false;
    bool delallmonth = false;
    int height = kDeleteHeight;
    int top = 0;
    int left = 0;

    // Centres the window on the screen.
    void Event_Open(const QRect& screen);
    void Okay_Action() { ButtonPressed = Tr::MWButtonOK; }
    void Cancel_Action() { ButtonPressed = Tr::MWButtonCancel; }
    // One radio on, the others off.
    void choose(bool Aresure::*radio);
};

// Deleting and zeroing rows of the main window: deletejb with its four scopes and the row reset.
class RowOps
{
public:
    struct Services
    {
        platform::Clock& clock;
        platform::Desktop& desktop;
        platform::Dialogs& dialogs;
        core::MainwndoHooks& hooks;
        clients::ClientView& clientView;
    };

    RowOps(core::Mainwndo& window, Services services) : m_w(window), m_s(services) {}

    void deletejb();
    // Resets the selected row, or all rows while Alt is held when the command runs.
    void _zerorow_Action();

private:
    void resetRow(core::JobRow& row, const QString& today);
    void afterRemoval(int removedAt);

    core::Mainwndo& m_w;
    Services m_s;
};

} // namespace jobs

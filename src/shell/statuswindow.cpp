#include "shell/statuswindow.h"

#include "clients/clientview.h"
#include "platform/yieldgate.h"

#include <QSet>

#include <algorithm>

namespace shell
{

statuswindow::statuswindow(Services services) : m_s(services)
{
    Top = m_s.prefs.statusposition;
    Left = m_s.prefs.statusleft;
    statusUpDateDark();
}

void statuswindow::statusResize()
{
    labelWidth = textWidth ? textWidth(statustext) : static_cast<int>(statustext.size() * kCharWidth);
    Width = std::clamp(labelWidth + kBesideLabel, kMinWidth, kMaxWidth);
    emit changed();
}

void statuswindow::setText(const QString& text)
{
    statustext = text;
    statusResize();
}

void statuswindow::show()
{
    opacity = m_s.prefs.statustrans / 100.0;
    visible = true;
    emit changed();
}

void statuswindow::hide(bool park)
{
    visible = false;
    if (park) {
        Top = kParkedTop;
        Left = kParkedLeft;
    }
    emit changed();
}

bool statuswindow::besideWindow() const
{
    static const core::AppPrefs created;
    return (Left == created.statusleft && Top == created.statusposition) || (Left == kParkedLeft && Top == kParkedTop);
}

void statuswindow::setOpacity(double value)
{
    opacity = value;
    emit changed();
}

void statuswindow::statusUpDateDark()
{
    const bool dark = m_s.desktop.darkAppearance();
    if (m_s.window.running)
        background = dark ? kRunningDark : kRunningLight;
    else
        background = dark ? kStoppedDark : kStoppedLight;
    emit changed();
}

QList<statuswindow::SwitchItem> statuswindow::statustext_ConstructContextualMenu()
{
    const core::Timesheet& list = m_s.window.shownList();
    QList<SwitchItem> items;
    QSet<QString> taken;
    platform::YieldGate gate(m_s.desktop);
    for (int r = 0; r < list.ListCount(); ++r) {
        const core::JobRow& row = list.row(r);
        const QString text = row.cell(core::CellJob) + QStringLiteral(" - ") + row.cell(core::CellProject) +
                             QStringLiteral(" - ") + row.cell(core::CellOperation);
        // Jobs that differ only in case are one job, as everywhere else in the program.
        const QString key = text.toCaseFolded();
        if (!taken.contains(key)) {
            taken.insert(key);
            items.append({text, r});
        }
        gate.step();
    }
    return items;
}

void statuswindow::statustext_ContextualMenuAction(int tag)
{
    core::Mainwndo& w = m_s.window;
    const bool wasRunning = w.running;
    if (wasRunning)
        w.Allstop();
    // The chosen row of the list on show; in a client's view its row in the whole list follows.
    if (w.ListBox2Ctl.visible)
        m_s.clientView.setListBox2Index(tag);
    else
        w.setListIndex(tag);
    if (wasRunning)
        w.allcont(core::Mainwndo::From::LastStop);
    w.rowcheck();
}

void VLKMenulet::setImage(Image value)
{
    if (image == value)
        return;
    image = value;
    emit changed();
}

} // namespace shell

#pragma once

#include "core/mainwndo.h"
#include "platform/desktop.h"

#include <QList>
#include <QObject>
#include <QString>

#include <functional>

namespace clients
{
class ClientView;
}

namespace shell
{

// The floating strip that shows the selected job and a run button over every other window.
class statuswindow : public QObject
{
    Q_OBJECT

public:
    inline static const QString kNoJobBullet = QStringLiteral("-- Veltrick \u2022 No Job Selected --");

    static constexpr int kCreatedWidth = 380;
    static constexpr int kMinWidth = 132;
    static constexpr int kMaxWidth = 640;
    static constexpr int kButtonWidth = 80;
    // The label takes this many pixels a character, and the window this much beside the label.
    static constexpr double kCharWidth = 5.6;
    static constexpr int kBesideLabel = 112;
    // Where the strip goes when it is switched off.
    static constexpr int kParkedTop = 38;
    static constexpr int kParkedLeft = 0;

    static constexpr unsigned kCreatedBack = 0xFFDCDC;
    static constexpr unsigned kRunningDark = 0x00BE00;
    static constexpr unsigned kRunningLight = 0xDCFFDC;
    static constexpr unsigned kStoppedDark = 0xFF0000;
    static constexpr unsigned kStoppedLight = 0xFFDCDC;

    struct Services
    {
        core::Mainwndo& window;
        clients::ClientView& clientView;
        core::AppPrefs& prefs;
        platform::Desktop& desktop;
    };

    // One entry of the job-switch menu: the job's line and the row it stands for in the list on show.
    struct SwitchItem
    {
        QString text;
        int tag = -1;
        bool operator==(const SwitchItem&) const = default;
    };

    explicit statuswindow(Services services);

    QString statustext = kNoJobBullet;
    int labelWidth = kCreatedWidth - kBesideLabel;
    int Width = kCreatedWidth;
    int Top = 0;
    int Left = 0;
    double opacity = 1.0;
    unsigned background = kCreatedBack;
    bool visible = false;

    // The width follows the text, within the strip's limits. The view measures the text in its font;
    // until it does, a character counts 5.6 pixels.
    void statusResize();
    std::function<int(const QString&)> textWidth;
    void setText(const QString& text);
    // Shown with the opacity of the settings, or hidden and parked at the top left.
    void show();
    void hide(bool park);
    void setOpacity(double value);
    // At the place a strip is made with, or parked, it stands beside the timesheet window's frame and
    // follows it; a place the user drags it to is its own.
    bool besideWindow() const;
    // The background by the run state and the desktop's appearance.
    void statusUpDateDark();

    // The distinct jobs of the list on show, each pointing at its first row.
    QList<SwitchItem> statustext_ConstructContextualMenu();
    // Switches to the job of the chosen entry: a running job stops and the chosen one goes on.
    void statustext_ContextualMenuAction(int tag);

signals:
    void changed();

private:
    Services m_s;
};

// The tray item: a clock with a coloured dot, a tool tip with the job, and a small menu.
class VLKMenulet : public QObject
{
    Q_OBJECT

public:
    inline static const QString kMLTStart = QStringLiteral("Start");
    inline static const QString kMLTStop = QStringLiteral("Stop");
    inline static const QString kMLTTimesheet = QStringLiteral("Show Timesheet");
    inline static const QString kNoTime = QStringLiteral("--:--");

    enum class Image
    {
        StatusUnavailable,        // red: stopped
        StatusAvailable,          // green: running
        StatusPartiallyAvailable, // yellow: the menu is open
    };

    struct MenuItem
    {
        QString title; // empty: a separator
        bool enabled = true;
        bool operator==(const MenuItem&) const = default;
    };

    QString Title = kNoTime;
    QString ToolTip = statuswindow::kNoJobBullet;
    Image image = Image::StatusUnavailable;
    QList<MenuItem> Menu;
    QString notice; // a budget notice that no notice service could show

    // The tool tip as the tray shows it: the clock above the job, and a notice under it.
    QString trayToolTip() const
    {
        return Title + QLatin1Char('\n') + ToolTip + (notice.isEmpty() ? QString() : QLatin1Char('\n') + notice);
    }
    void setImage(Image value);

signals:
    void changed();
};

} // namespace shell

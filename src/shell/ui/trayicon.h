#pragma once

#include "shell/program.h"
#include "shell/statusnotifier.h"

#include <QIcon>
#include <QImage>
#include <QMenu>
#include <QSystemTrayIcon>

#include <memory>

namespace shell::ui
{

// The tray item on screen, whenever a tray comes: the StatusNotifierItem where a watcher is on the bus,
// else Qt's tray icon, which docks in an XEmbed tray as one appears. Where no tray ever comes nothing
// shows and nothing else changes.
class TrayIcon : public QObject
{
    Q_OBJECT

public:
    TrayIcon(VLKMenulet& form, Program& program, QObject* parent = nullptr);

    // The icon of a state and a time: the hours over the minutes on a square of the state's colour.
    static QImage drawIcon(VLKMenulet::Image image, const QString& time, int size);
    // Qt's tray icon, while no watcher is there to take the item.
    QSystemTrayIcon* icon() const { return m_icon.get(); }
    StatusNotifierItem& item() { return m_item; }
    QMenu& menu() { return m_menu; }
    void refresh();

private:
    void onHostChanged(bool hosted);

    VLKMenulet& m_form;
    Program& m_program;
    StatusNotifierItem m_item;
    std::unique_ptr<QSystemTrayIcon> m_icon;
    QMenu m_menu;
    bool m_menuOpen = false;
    QIcon m_drawn;
    QString m_drawnFor; // the state and time of m_drawn: the icon is drawn again only when they change
};

} // namespace shell::ui

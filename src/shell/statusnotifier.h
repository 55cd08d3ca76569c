#pragma once

#include "shell/statuswindow.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QPoint>

#include <optional>

class QDBusServiceWatcher;

namespace shell
{

class ItemAdaptor;
class MenuAdaptor;
class Program;

// The tray item as a StatusNotifierItem on the session bus, for the trays that take their items from a
// StatusNotifierWatcher (Plasma, GNOME's AppIndicator extension and others). Qt's own tray icon speaks
// that protocol too, but without the label, which is where those trays show the time beside the icon.
// The menu goes over com.canonical.dbusmenu, with the form's items.
class StatusNotifierItem : public QObject
{
    Q_OBJECT

public:
    inline static const QString kWatcher = QStringLiteral("org.kde.StatusNotifierWatcher");
    inline static const QString kId = QStringLiteral("veltrick");
    inline static const QString kTitle = QStringLiteral("Veltrick");
    // The widest label, so that the tray keeps its room as the minutes go by.
    inline static const QString kLabelGuide = QStringLiteral("00:00");

    // One size of the icon: ARGB32 pixels row by row, each in network byte order.
    struct Pixmap
    {
        int width = 0;
        int height = 0;
        QByteArray argb;
    };

    StatusNotifierItem(VLKMenulet& form, Program& program, QObject* parent = nullptr);
    ~StatusNotifierItem() override;

    // Puts the item on the bus and asks whether a watcher is there: hostChanged answers, at once where
    // there is no session bus.
    void start();
    bool hosted() const { return m_hosted.value_or(false); }
    const QString& serviceName() const { return m_service; }
    void setIcon(const QList<Pixmap>& sizes);

signals:
    // A watcher came or went: the item shows in its tray, or the desktop needs another kind of icon.
    void hostChanged(bool hosted);
    // The tray asks for the menu at this point of the screen.
    void contextMenuRequested(const QPoint& at);
    // The tray opened or closed the menu it draws itself.
    void menuOpened(bool open);

private:
    friend class ItemAdaptor;
    friend class MenuAdaptor;

    void setHost(bool present);
    void sync();
    void run(const QString& title);
    bool isMenuItem(int id) const { return id > 0 && id <= m_menu.size(); }
    QVariantMap properties(int id, const QStringList& names = {}) const;
    void menuEvent(int id, const QString& eventId);

    VLKMenulet& m_form;
    Program& m_program;
    QString m_service;
    ItemAdaptor* m_itemAdaptor = nullptr;
    QObject m_menuObject; // the menu's object on the bus
    MenuAdaptor* m_menuAdaptor = nullptr;
    QDBusServiceWatcher* m_watcher = nullptr;
    std::optional<bool> m_hosted; // unknown until the bus answers
    QList<Pixmap> m_icon;
    QString m_label;
    QString m_toolTip;
    QList<VLKMenulet::MenuItem> m_menu; // the menu as the tray last heard of it
    uint m_revision = 1;
};

} // namespace shell

#include "shell/statusnotifier.h"

#include "shell/program.h"

#include <QCoreApplication>
#include <QDBusAbstractAdaptor>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

namespace shell
{

namespace
{
const QString kItemPath = QStringLiteral("/StatusNotifierItem");
const QString kMenuPath = QStringLiteral("/MenuBar");
const QString kWatcherPath = QStringLiteral("/StatusNotifierWatcher");
const QString kLabel = QStringLiteral("label");
const QString kEnabled = QStringLiteral("enabled");
const QString kType = QStringLiteral("type");
const QString kChildrenDisplay = QStringLiteral("children-display");
} // namespace

// The item's tool tip: an icon name, its pixmaps, a title and a text.
struct ToolTip
{
    QString iconName;
    QList<StatusNotifierItem::Pixmap> images;
    QString title;
    QString text;
};

// A menu item's properties by its id.
struct MenuItemProperties
{
    int id = 0;
    QVariantMap properties;
};

// Properties that an item no longer has.
struct MenuItemRemoved
{
    int id = 0;
    QStringList names;
};

// An item with its children, each in a variant as the protocol has it.
struct MenuLayout
{
    int id = 0;
    QVariantMap properties;
    QList<MenuLayout> children;
};

struct MenuEvent
{
    int id = 0;
    QString eventId;
    QDBusVariant data;
    uint timestamp = 0;
};

QDBusArgument& operator<<(QDBusArgument& arg, const StatusNotifierItem::Pixmap& pixmap)
{
    arg.beginStructure();
    arg << pixmap.width << pixmap.height << pixmap.argb;
    arg.endStructure();
    return arg;
}

const QDBusArgument& operator>>(const QDBusArgument& arg, StatusNotifierItem::Pixmap& pixmap)
{
    arg.beginStructure();
    arg >> pixmap.width >> pixmap.height >> pixmap.argb;
    arg.endStructure();
    return arg;
}

QDBusArgument& operator<<(QDBusArgument& arg, const ToolTip& tip)
{
    arg.beginStructure();
    arg << tip.iconName << tip.images << tip.title << tip.text;
    arg.endStructure();
    return arg;
}

const QDBusArgument& operator>>(const QDBusArgument& arg, ToolTip& tip)
{
    arg.beginStructure();
    arg >> tip.iconName >> tip.images >> tip.title >> tip.text;
    arg.endStructure();
    return arg;
}

QDBusArgument& operator<<(QDBusArgument& arg, const MenuItemProperties& item)
{
    arg.beginStructure();
    arg << item.id << item.properties;
    arg.endStructure();
    return arg;
}

const QDBusArgument& operator>>(const QDBusArgument& arg, MenuItemProperties& item)
{
    arg.beginStructure();
    arg >> item.id >> item.properties;
    arg.endStructure();
    return arg;
}

QDBusArgument& operator<<(QDBusArgument& arg, const MenuItemRemoved& item)
{
    arg.beginStructure();
    arg << item.id << item.names;
    arg.endStructure();
    return arg;
}

const QDBusArgument& operator>>(const QDBusArgument& arg, MenuItemRemoved& item)
{
    arg.beginStructure();
    arg >> item.id >> item.names;
    arg.endStructure();
    return arg;
}

QDBusArgument& operator<<(QDBusArgument& arg, const MenuLayout& item)
{
    arg.beginStructure();
    arg << item.id << item.properties;
    arg.beginArray(QMetaType::fromType<QDBusVariant>());
    for (const MenuLayout& child : item.children)
        arg << QDBusVariant(QVariant::fromValue(child));
    arg.endArray();
    arg.endStructure();
    return arg;
}

const QDBusArgument& operator>>(const QDBusArgument& arg, MenuLayout& item)
{
    arg.beginStructure();
    arg >> item.id >> item.properties;
    arg.beginArray();
    item.children.clear();
    while (!arg.atEnd()) {
        QDBusVariant child;
        arg >> child;
        item.children.append(qdbus_cast<MenuLayout>(child.variant()));
    }
    arg.endArray();
    arg.endStructure();
    return arg;
}

QDBusArgument& operator<<(QDBusArgument& arg, const MenuEvent& event)
{
    arg.beginStructure();
    arg << event.id << event.eventId << event.data << event.timestamp;
    arg.endStructure();
    return arg;
}

const QDBusArgument& operator>>(const QDBusArgument& arg, MenuEvent& event)
{
    arg.beginStructure();
    arg >> event.id >> event.eventId >> event.data >> event.timestamp;
    arg.endStructure();
    return arg;
}

} // namespace shell

Q_DECLARE_METATYPE(shell::StatusNotifierItem::Pixmap)
Q_DECLARE_METATYPE(shell::ToolTip)
Q_DECLARE_METATYPE(shell::MenuItemProperties)
Q_DECLARE_METATYPE(shell::MenuItemRemoved)
Q_DECLARE_METATYPE(shell::MenuLayout)
Q_DECLARE_METATYPE(shell::MenuEvent)

namespace shell
{

// The adaptors spell their argument types out in full: QtDBus finds a type by the name it is declared
// with, and an alias's name is not the registered one.

// org.kde.StatusNotifierItem over the item.
class ItemAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category)
    Q_PROPERTY(QString Id READ id)
    Q_PROPERTY(QString Title READ title)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(QString IconName READ iconName)
    Q_PROPERTY(QList<shell::StatusNotifierItem::Pixmap> IconPixmap READ iconPixmap)
    Q_PROPERTY(shell::ToolTip ToolTip READ toolTip)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu)
    Q_PROPERTY(QDBusObjectPath Menu READ menu)
    Q_PROPERTY(QString XAyatanaLabel READ label)
    Q_PROPERTY(QString XAyatanaLabelGuide READ labelGuide)

public:
    explicit ItemAdaptor(StatusNotifierItem& item) : QDBusAbstractAdaptor(&item), m_item(item) {}

    QString category() const { return QStringLiteral("ApplicationStatus"); }
    QString id() const { return StatusNotifierItem::kId; }
    QString title() const { return StatusNotifierItem::kTitle; }
    QString status() const { return QStringLiteral("Active"); }
    QString iconName() const { return {}; } // the icon is drawn: it carries the time
    QList<StatusNotifierItem::Pixmap> iconPixmap() const { return m_item.m_icon; }
    ToolTip toolTip() const
    {
        // The clock as the title, the job and any notice under it.
        return {{}, {}, m_item.m_form.Title, m_item.m_form.trayToolTip().section(QLatin1Char('\n'), 1)};
    }
    bool itemIsMenu() const { return false; } // a click shows the timesheet; the menu is the other button's
    QDBusObjectPath menu() const { return QDBusObjectPath(kMenuPath); }
    QString label() const { return m_item.m_label; }
    QString labelGuide() const { return StatusNotifierItem::kLabelGuide; }

public slots:
    void Activate(int, int) { m_item.run(VLKMenulet::kMLTTimesheet); }
    void SecondaryActivate(int, int) {} // the middle button does nothing, as on Qt's tray icon
    void ContextMenu(int x, int y) { emit m_item.contextMenuRequested(QPoint(x, y)); }
    void Scroll(int, const QString&) {}

signals:
    void NewIcon();
    void NewToolTip();
    void NewTitle();
    void NewStatus(const QString& status);
    void XAyatanaNewLabel(const QString& label, const QString& guide);

private:
    StatusNotifierItem& m_item;
};

// com.canonical.dbusmenu over the form's menu: the root (id 0) and its items, numbered from 1 in order.
class MenuAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version READ version)
    Q_PROPERTY(QString TextDirection READ textDirection)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(QStringList IconThemePath READ iconThemePath)

public:
    MenuAdaptor(QObject& object, StatusNotifierItem& item) : QDBusAbstractAdaptor(&object), m_item(item) {}

    uint version() const { return 3; }
    QString textDirection() const { return QStringLiteral("ltr"); }
    QString status() const { return QStringLiteral("normal"); }
    QStringList iconThemePath() const { return {}; }

public slots:
    uint GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames, shell::MenuLayout& layout)
    {
        layout = {parentId, m_item.properties(parentId, propertyNames), {}};
        if (parentId == 0 && recursionDepth != 0)
            for (int id = 1; id <= m_item.m_menu.size(); ++id)
                layout.children.append({id, m_item.properties(id, propertyNames), {}});
        return m_item.m_revision;
    }
    QList<shell::MenuItemProperties> GetGroupProperties(const QList<int>& ids, const QStringList& propertyNames)
    {
        QList<MenuItemProperties> items;
        for (int id : ids)
            if (id == 0 || m_item.isMenuItem(id))
                items.append({id, m_item.properties(id, propertyNames)});
        return items;
    }
    QDBusVariant GetProperty(int id, const QString& name)
    {
        return QDBusVariant(m_item.properties(id, {name}).value(name));
    }
    void Event(int id, const QString& eventId, const QDBusVariant&, uint) { m_item.menuEvent(id, eventId); }
    QList<int> EventGroup(const QList<shell::MenuEvent>& events)
    {
        QList<int> unknown;
        for (const MenuEvent& event : events) {
            if (event.id == 0 || m_item.isMenuItem(event.id))
                m_item.menuEvent(event.id, event.eventId);
            else
                unknown.append(event.id);
        }
        return unknown;
    }
    // The items are up to date before the menu shows: the form changes them as the run state changes.
    bool AboutToShow(int) { return false; }
    QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors)
    {
        for (int id : ids)
            if (id != 0 && !m_item.isMenuItem(id))
                idErrors.append(id);
        return {};
    }

signals:
    void LayoutUpdated(uint revision, int parent);
    void ItemsPropertiesUpdated(const QList<shell::MenuItemProperties>& updatedProps,
                                const QList<shell::MenuItemRemoved>& removedProps);

private:
    StatusNotifierItem& m_item;
};

StatusNotifierItem::StatusNotifierItem(VLKMenulet& form, Program& program, QObject* parent)
    : QObject(parent), m_form(form), m_program(program),
      m_service(QStringLiteral("org.kde.StatusNotifierItem-%1-1").arg(QCoreApplication::applicationPid())),
      m_itemAdaptor(new ItemAdaptor(*this)), m_menuAdaptor(new MenuAdaptor(m_menuObject, *this))
{
    m_label = m_form.Title;
    m_toolTip = m_form.trayToolTip();
    m_menu = m_form.Menu;
    connect(&m_form, &VLKMenulet::changed, this, &StatusNotifierItem::sync);
}

StatusNotifierItem::~StatusNotifierItem()
{
    if (!m_watcher)
        return;
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.unregisterService(m_service);
    bus.unregisterObject(kItemPath);
    bus.unregisterObject(kMenuPath);
}

void StatusNotifierItem::start()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        setHost(false);
        return;
    }
    qDBusRegisterMetaType<Pixmap>();
    qDBusRegisterMetaType<QList<Pixmap>>();
    qDBusRegisterMetaType<ToolTip>();
    qDBusRegisterMetaType<MenuItemProperties>();
    qDBusRegisterMetaType<QList<MenuItemProperties>>();
    qDBusRegisterMetaType<MenuItemRemoved>();
    qDBusRegisterMetaType<QList<MenuItemRemoved>>();
    qDBusRegisterMetaType<MenuLayout>();
    qDBusRegisterMetaType<MenuEvent>();
    qDBusRegisterMetaType<QList<MenuEvent>>();
    bus.registerObject(kItemPath, this);
    bus.registerObject(kMenuPath, &m_menuObject);
    bus.registerService(m_service);
    // A panel that starts after the program (a login, a restarted panel) brings its watcher then, and a
    // watcher that restarts has forgotten the items: each new owner of the name is told of the item.
    m_watcher = new QDBusServiceWatcher(kWatcher, bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString&, const QString& owner) { setHost(!owner.isEmpty()); });
    auto* asked =
        new QDBusPendingCallWatcher(bus.interface()->asyncCall(QStringLiteral("NameHasOwner"), kWatcher), this);
    connect(asked, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* call) {
        call->deleteLater();
        const QDBusPendingReply<bool> reply = *call;
        if (!m_hosted) // a change of owner on the way has answered already, and later
            setHost(reply.isValid() && reply.value());
    });
}

void StatusNotifierItem::setHost(bool present)
{
    if (present) {
        QDBusMessage call = QDBusMessage::createMethodCall(kWatcher, kWatcherPath, kWatcher,
                                                           QStringLiteral("RegisterStatusNotifierItem"));
        call << m_service;
        QDBusConnection::sessionBus().asyncCall(call);
    }
    if (m_hosted == present)
        return;
    m_hosted = present;
    emit hostChanged(present);
}

void StatusNotifierItem::setIcon(const QList<Pixmap>& sizes)
{
    m_icon = sizes;
    emit m_itemAdaptor->NewIcon();
}

void StatusNotifierItem::sync()
{
    if (m_form.Title != m_label) {
        m_label = m_form.Title;
        emit m_itemAdaptor->XAyatanaNewLabel(m_label, kLabelGuide);
    }
    if (QString tip = m_form.trayToolTip(); tip != m_toolTip) {
        m_toolTip = std::move(tip);
        emit m_itemAdaptor->NewToolTip();
    }
    if (m_form.Menu == m_menu)
        return;
    // Items that only change their text or state are sent as such; a menu of another shape is laid
    // out anew.
    const QList<VLKMenulet::MenuItem> old = std::exchange(m_menu, m_form.Menu);
    bool sameShape = old.size() == m_menu.size();
    for (int i = 0; sameShape && i < old.size(); ++i)
        sameShape = old[i].title.isEmpty() == m_menu[i].title.isEmpty();
    if (!sameShape) {
        emit m_menuAdaptor->LayoutUpdated(++m_revision, 0);
        return;
    }
    QList<MenuItemProperties> changed;
    for (int i = 0; i < old.size(); ++i)
        if (old[i] != m_menu[i])
            changed.append({i + 1, properties(i + 1)});
    emit m_menuAdaptor->ItemsPropertiesUpdated(changed, {});
}

void StatusNotifierItem::run(const QString& title)
{
    // The call is answered first: a command may open a modal window, whose loop would hold the answer.
    QMetaObject::invokeMethod(
        this, [this, title] { m_program.StatusItemHandler(title); }, Qt::QueuedConnection);
}

QVariantMap StatusNotifierItem::properties(int id, const QStringList& names) const
{
    QVariantMap all;
    if (id == 0) {
        all.insert(kChildrenDisplay, QStringLiteral("submenu"));
    } else if (isMenuItem(id)) {
        const VLKMenulet::MenuItem& item = m_menu[id - 1];
        if (item.title.isEmpty()) {
            all.insert(kType, QStringLiteral("separator"));
        } else {
            // An underscore marks the access key there: one in a job's name is doubled to show as itself.
            all.insert(kLabel, QString(item.title).replace(QLatin1Char('_'), QStringLiteral("__")));
            all.insert(kEnabled, item.enabled);
        }
    }
    if (names.isEmpty())
        return all;
    QVariantMap asked;
    for (const QString& name : names)
        if (all.contains(name))
            asked.insert(name, all.value(name));
    return asked;
}

void StatusNotifierItem::menuEvent(int id, const QString& eventId)
{
    if (id == 0 && (eventId == QLatin1String("opened") || eventId == QLatin1String("closed")))
        emit menuOpened(eventId == QLatin1String("opened"));
    else if (eventId == QLatin1String("clicked") && isMenuItem(id) && m_menu[id - 1].enabled &&
             !m_menu[id - 1].title.isEmpty())
        run(m_menu[id - 1].title);
}

} // namespace shell

#include "statusnotifier.moc"

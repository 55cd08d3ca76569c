#include "shell/ui/trayicon.h"

#include <QPainter>
#include <QtEndian>

namespace shell::ui
{

namespace
{

// The state's colour, and the colour of the digits that reads on it.
struct Colours
{
    QColor dot;
    QColor digits;
};

Colours coloursOf(VLKMenulet::Image image)
{
    switch (image) {
    case VLKMenulet::Image::StatusAvailable:
        return {QColor::fromRgb(0x1FB32E), Qt::black};
    case VLKMenulet::Image::StatusPartiallyAvailable:
        return {QColor::fromRgb(0xF2C200), Qt::black};
    case VLKMenulet::Image::StatusUnavailable:
        break;
    }
    return {QColor::fromRgb(0xE02020), Qt::white};
}

StatusNotifierItem::Pixmap toPixmap(const QImage& image)
{
    const QImage argb = image.convertToFormat(QImage::Format_ARGB32);
    StatusNotifierItem::Pixmap pixmap{argb.width(), argb.height(), QByteArray(argb.width() * argb.height() * 4, 0)};
    for (int y = 0; y < argb.height(); ++y)
        qToBigEndian<quint32>(argb.constScanLine(y), argb.width(), pixmap.argb.data() + y * argb.width() * 4);
    return pixmap;
}

} // namespace

TrayIcon::TrayIcon(VLKMenulet& form, Program& program, QObject* parent)
    : QObject(parent), m_form(form), m_program(program), m_item(form, program)
{
    connect(&m_form, &VLKMenulet::changed, this, &TrayIcon::refresh);
    // While its menu is open the item shows the yellow dot.
    connect(&m_menu, &QMenu::aboutToShow, this, [this] {
        m_menuOpen = true;
        refresh();
    });
    connect(&m_menu, &QMenu::aboutToHide, this, [this] {
        m_menuOpen = false;
        refresh();
    });
    connect(&m_item, &StatusNotifierItem::menuOpened, this, [this](bool open) {
        m_menuOpen = open;
        refresh();
    });
    connect(&m_item, &StatusNotifierItem::contextMenuRequested, this, [this](const QPoint& at) { m_menu.popup(at); });
    connect(&m_item, &StatusNotifierItem::hostChanged, this, &TrayIcon::onHostChanged);
    refresh();
    m_item.start();
}

QImage TrayIcon::drawIcon(VLKMenulet::Image image, const QString& time, int size)
{
    QImage icon(size, size, QImage::Format_ARGB32_Premultiplied);
    icon.fill(Qt::transparent);
    QPainter painter(&icon);
    painter.setRenderHint(QPainter::Antialiasing);
    const Colours colours = coloursOf(image);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colours.dot);
    painter.drawRoundedRect(QRectF(0, 0, size, size), size / 5.0, size / 5.0);
    // Two digits a line: "HH:MM" on one line would leave three or four pixels a digit at tray size, and
    // clock hands cannot tell five past one from five to eleven there.
    const QString hours = time.section(QLatin1Char(':'), 0, 0);
    const QString minutes = time.section(QLatin1Char(':'), 1);
    QFont font;
    font.setBold(true);
    font.setStretch(QFont::Condensed);
    font.setPixelSize(qRound(size * 0.5));
    // Hours past 99 shrink the digits to stay inside the square.
    const qreal room = size * 0.9;
    const qreal widest =
        std::max(QFontMetricsF(font).horizontalAdvance(hours), QFontMetricsF(font).horizontalAdvance(minutes));
    if (widest > room)
        font.setPixelSize(std::max(1, int(font.pixelSize() * room / widest)));
    painter.setFont(font);
    painter.setPen(colours.digits);
    const qreal half = size / 2.0;
    const qreal overlap = size / 32.0; // the lines close up a little: each has room above its digits
    painter.drawText(QRectF(0, 0, size, half + overlap), Qt::AlignCenter, hours);
    painter.drawText(QRectF(0, half - overlap, size, half), Qt::AlignCenter, minutes);
    return icon;
}

void TrayIcon::refresh()
{
    const VLKMenulet::Image image = m_menuOpen ? VLKMenulet::Image::StatusPartiallyAvailable : m_form.image;
    const QString drawnFor = QString::number(int(image)) + m_form.Title;
    if (drawnFor != m_drawnFor) {
        m_drawnFor = drawnFor;
        m_drawn = QIcon();
        QList<StatusNotifierItem::Pixmap> pixmaps;
        for (int size : {16, 22, 24, 32, 48, 64}) {
            const QImage drawn = drawIcon(image, m_form.Title, size);
            m_drawn.addPixmap(QPixmap::fromImage(drawn));
            if (size == 16 || size == 22 || size == 32)
                pixmaps.append(toPixmap(drawn));
        }
        m_item.setIcon(pixmaps);
        if (m_icon)
            m_icon->setIcon(m_drawn);
    }
    if (m_icon)
        m_icon->setToolTip(m_form.trayToolTip());
    if (m_menuOpen)
        return; // the menu is not rebuilt under the pointer
    // The chosen item is still being triggered when the menu hides and when its command changes the
    // menu: the old items go once the event loop is back, not under QMenu's feet.
    for (QAction* old : m_menu.actions()) {
        m_menu.removeAction(old);
        old->deleteLater();
    }
    for (const VLKMenulet::MenuItem& item : m_form.Menu) {
        if (item.title.isEmpty()) {
            m_menu.addSeparator();
            continue;
        }
        QString text = item.title;
        QAction* action = m_menu.addAction(text.replace(QLatin1Char('&'), QStringLiteral("&&")));
        action->setEnabled(item.enabled);
        const QString title = item.title;
        connect(action, &QAction::triggered, this, [this, title] { m_program.StatusItemHandler(title); });
    }
}

void TrayIcon::onHostChanged(bool hosted)
{
    // One icon at a time. Qt picks its kind of tray icon once, at the first it makes, and would make a
    // StatusNotifierItem of its own where a watcher is: its icon is made only where none is.
    if (hosted) {
        m_icon.reset();
        return;
    }
    if (m_icon)
        return;
    m_icon = std::make_unique<QSystemTrayIcon>(m_drawn);
    m_icon->setToolTip(m_form.trayToolTip());
    m_icon->setContextMenu(&m_menu);
    connect(m_icon.get(), &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger)
            m_program.StatusItemHandler(VLKMenulet::kMLTTimesheet);
    });
    m_icon->show();
}

} // namespace shell::ui

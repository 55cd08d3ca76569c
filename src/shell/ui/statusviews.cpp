#include "shell/ui/statusviews.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>

namespace shell::ui
{

namespace
{

QColor rgb(unsigned value)
{
    return QColor::fromRgb(value);
}

QColor dotColour(VLKMenulet::Image image)
{
    switch (image) {
    case VLKMenulet::Image::StatusAvailable:
        return rgb(0x1FB32E);
    case VLKMenulet::Image::StatusPartiallyAvailable:
        return rgb(0xF2C200);
    case VLKMenulet::Image::StatusUnavailable:
        break;
    }
    return rgb(0xE02020);
}

} // namespace

StatusWindowView::StatusWindowView(statuswindow& form, core::Mainwndo& window, Program& program)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint), m_form(form), m_formAlive(&form),
      m_window(window), m_program(program)
{
    setObjectName(QStringLiteral("statuswindow"));
    setWindowTitle(core::Mainwndo::kAppTitle);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAutoFillBackground(true);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(6, 2, 2, 2);
    layout->setSpacing(6);
    m_text = new QLabel(this);
    m_text->setObjectName(QStringLiteral("statustext"));
    QFont small = m_text->font();
    small.setPointSizeF(small.pointSizeF() * 0.9);
    m_text->setFont(small);
    m_text->setContextMenuPolicy(Qt::CustomContextMenu);
    m_text->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_text->setTextInteractionFlags(Qt::NoTextInteraction);
    // A job is shown as typed: "<b>" in a project is text, and the width measured for it is the width drawn.
    m_text->setTextFormat(Qt::PlainText);
    m_run = new QPushButton(this);
    m_run->setObjectName(QStringLiteral("StatusRunButton"));
    m_run->setFixedWidth(statuswindow::kButtonWidth);
    m_run->setFocusPolicy(Qt::NoFocus);
    layout->addWidget(m_text, 1);
    layout->addWidget(m_run);
    connect(m_run, &QPushButton::clicked, this, [this] { m_program.runButton(); });
    connect(m_text, &QLabel::customContextMenuRequested, this, &StatusWindowView::showSwitchMenu);
    form.textWidth = [this](const QString& text) { return m_text->fontMetrics().horizontalAdvance(text) + 8; };
    form.statusResize();
    connect(&form, &statuswindow::changed, this, &StatusWindowView::refresh);
    connect(&window, &core::Mainwndo::controlsChanged, this, &StatusWindowView::refresh);
    refresh();
}

StatusWindowView::~StatusWindowView()
{
    if (m_formAlive)
        m_formAlive->textWidth = nullptr;
}

void StatusWindowView::refresh()
{
    m_text->setText(m_form.statustext);
    // The button mirrors the main window's run button: caption and state.
    m_run->setText(m_window.runButton.caption);
    m_run->setEnabled(m_window.runButton.enabled);
    QPalette palette = this->palette();
    const QColor back = rgb(m_form.background);
    palette.setColor(QPalette::Window, back);
    palette.setColor(QPalette::WindowText, back.lightness() < 140 ? Qt::white : Qt::black);
    setPalette(palette);
    setWindowOpacity(m_form.opacity);
    setFixedSize(m_form.Width, sizeHint().height());
    if (!m_dragging)
        move(m_form.Left, m_form.Top);
    setVisible(m_form.visible);
}

void StatusWindowView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) {
        m_dragging = true;
        m_grab = event->globalPosition().toPoint() - frameGeometry().topLeft();
    }
    QWidget::mousePressEvent(event);
}

void StatusWindowView::mouseMoveEvent(QMouseEvent* event)
{
    if (m_dragging)
        move(event->globalPosition().toPoint() - m_grab);
    QWidget::mouseMoveEvent(event);
}

void StatusWindowView::mouseReleaseEvent(QMouseEvent* event)
{
    if (m_dragging) {
        m_dragging = false;
        m_form.Left = x();
        m_form.Top = y();
    }
    QWidget::mouseReleaseEvent(event);
}

void StatusWindowView::showSwitchMenu(const QPoint& at)
{
    QMenu menu(this);
    for (const statuswindow::SwitchItem& item : m_form.statustext_ConstructContextualMenu()) {
        QString text = item.text;
        menu.addAction(text.replace(QLatin1Char('&'), QStringLiteral("&&")))->setData(item.tag);
        menu.addSeparator();
    }
    if (QAction* chosen = menu.exec(m_text->mapToGlobal(at)))
        m_program.switchJob(chosen->data().toInt());
}

TrayIcon::TrayIcon(VLKMenulet& form, Program& program, QObject* parent)
    : QObject(parent), m_form(form), m_program(program)
{
    m_icon.setContextMenu(&m_menu);
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
    connect(&m_icon, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger)
            m_program.StatusItemHandler(VLKMenulet::kMLTTimesheet);
    });
    refresh();
    m_icon.show();
}

QIcon TrayIcon::drawIcon(VLKMenulet::Image image)
{
    QIcon icon;
    for (int size : {16, 22, 24, 32, 48, 64}) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        const qreal edge = size / 16.0;
        const QRectF face(edge, edge, size - 2 * edge, size - 2 * edge);
        painter.setPen(QPen(QColor(0, 0, 0, 150), edge));
        painter.setBrush(dotColour(image));
        painter.drawEllipse(face);
        // Clock hands at three o'clock, white so that they read on every dot; hands at ten past ten
        // would read as a tick mark at tray size.
        const QPointF centre = face.center();
        painter.setPen(QPen(Qt::white, std::max<qreal>(1.5, size / 9.0), Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(centre, centre + QPointF(0, -size * 0.3));
        painter.drawLine(centre, centre + QPointF(size * 0.22, 0));
        icon.addPixmap(pixmap);
    }
    return icon;
}

void TrayIcon::refresh()
{
    m_icon.setIcon(drawIcon(m_menuOpen ? VLKMenulet::Image::StatusPartiallyAvailable : m_form.image));
    m_icon.setToolTip(m_form.trayToolTip());
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

} // namespace shell::ui

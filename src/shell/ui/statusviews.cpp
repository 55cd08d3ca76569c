#include "shell/ui/statusviews.h"

#include "core/ui/contrast.h"
#include "core/ui/onscreen.h"
#include "platform/qt/qtplatform.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QMouseEvent>
#include <QPushButton>

namespace shell::ui
{

namespace
{

// Beside a window's frame, never over it: to its right at the height of its title bar, else to its
// left, below or above it; on a screen too small for any of those, over the foot of the window, away
// from the buttons of its title bar.
QRect besideFrame(const QRect& frame, const QSize& size)
{
    constexpr int kGap = 4;
    const QRect places[] = {
        {QPoint(frame.right() + 1 + kGap, frame.top()), size},
        {QPoint(frame.left() - kGap - size.width(), frame.top()), size},
        {QPoint(frame.left(), frame.bottom() + 1 + kGap), size},
        {QPoint(frame.left(), frame.top() - kGap - size.height()), size},
    };
    for (const QRect& place : places)
        if (core::ui::onScreen(place, false) == place)
            return place;
    return {QPoint(frame.right() - size.width(), frame.bottom() - size.height()), size};
}

} // namespace

StatusWindowView::StatusWindowView(statuswindow& form, core::Mainwndo& window, Program& program, QWidget* beside)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint), m_form(form), m_formAlive(&form),
      m_window(window), m_program(program), m_beside(beside)
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
    // A strip in the task bar would read as a second timesheet window.
    platform::qt::keepOffTaskbar(*this);
    if (m_beside)
        m_beside->installEventFilter(this);
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
    const QColor back = QColor::fromRgb(m_form.background);
    palette.setColor(QPalette::Window, back);
    palette.setColor(QPalette::WindowText, core::ui::readableOn(Qt::black, back)); // or the nearest grey that reads
    setPalette(palette);
    setWindowOpacity(m_form.opacity);
    setFixedSize(m_form.Width, sizeHint().height());
    if (!m_dragging)
        move(place());
    setVisible(m_form.visible);
}

QPoint StatusWindowView::place() const
{
    QRect wanted(QPoint(m_form.Left, m_form.Top), size());
    if (m_form.besideWindow() && m_beside)
        wanted = besideFrame(core::ui::frameOf(*m_beside), size());
    return core::ui::onScreen(wanted, false).topLeft();
}

bool StatusWindowView::eventFilter(QObject* watched, QEvent* event)
{
    // Beside the timesheet window, the strip goes where the window goes.
    const QEvent::Type type = event->type();
    if (watched == m_beside && (type == QEvent::Move || type == QEvent::Resize || type == QEvent::Show) &&
        m_form.besideWindow() && !m_dragging)
        move(place());
    return QWidget::eventFilter(watched, event);
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

} // namespace shell::ui

#include "platform/qt/qtplatform.h"

#include "platform/qt/reportprinter.h"

#include <QApplication>
#include <QCursor>
#include <QDesktopServices>
#include <QFileDialog>
#include <QGuiApplication>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QScreen>
#include <QUrl>
#include <QtGui/qguiapplication_platform.h>

#include <xcb/xcb.h>

#include <array>
#include <cstdlib>
#include <cstring>

namespace platform::qt
{

QtTimer::QtTimer(int periodMs)
{
    m_timer.setInterval(periodMs);
    QObject::connect(&m_timer, &QTimer::timeout, [this] {
        if (m_mode == Single)
            setMode(Off);
        if (action)
            action();
    });
}

void QtTimer::setMode(Mode mode)
{
    m_mode = mode;
    if (mode == Off) {
        m_timer.stop();
        return;
    }
    m_timer.setSingleShot(mode == Single);
    m_timer.start(); // a new mode starts a full period, as a re-armed timer should
}

QWidget* QtDialogs::parentWindow()
{
    return QApplication::activeWindow();
}

void QtDialogs::message(const QString& text)
{
    QMessageBox box(QMessageBox::Warning, QStringLiteral("Veltrick"), text, QMessageBox::Ok, parentWindow());
    box.exec();
}

Answer QtDialogs::ask(const Question& question)
{
    QMessageBox box(question.caution ? QMessageBox::Warning : QMessageBox::Question, QStringLiteral("Veltrick"),
                    question.message, QMessageBox::NoButton, parentWindow());
    box.setInformativeText(question.explanation);
    QPushButton* action = box.addButton(question.action, QMessageBox::AcceptRole);
    QPushButton* alternate =
        question.alternate.isEmpty() ? nullptr : box.addButton(question.alternate, QMessageBox::DestructiveRole);
    QPushButton* cancel = !question.other.isEmpty() ? box.addButton(question.other, QMessageBox::ActionRole)
                          : question.cancel         ? box.addButton(QMessageBox::Cancel)
                                                    : nullptr;
    box.setDefaultButton(action);
    if (cancel && question.other.isEmpty())
        box.setEscapeButton(cancel);
    box.exec();
    if (box.clickedButton() == action)
        return Answer::Action;
    if (alternate && box.clickedButton() == alternate)
        return Answer::Alternate;
    return Answer::Cancel;
}

void QtDialogs::showModal(ModalForm& form)
{
    const auto found = m_views.find(form.formName());
    if (found != m_views.end())
        found->second(form, parentWindow());
}

QString QtDialogs::saveFile(const QString& title, const QString& prompt, const QString& dir,
                            const QString& suggestedName, const QString& filter)
{
    QFileDialog dialog(parentWindow(), title, dir, filter);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setLabelText(QFileDialog::FileName, prompt);
    dialog.selectFile(suggestedName);
    dialog.setDefaultSuffix(QStringLiteral("vlk"));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return {};
    return dialog.selectedFiles().constFirst();
}

QString QtDialogs::openFile(const QString& title, const QString& dir, const QString& filter)
{
    return QFileDialog::getOpenFileName(parentWindow(), title, dir, filter);
}

bool QtDialogs::print(const Report& report)
{
    // With no printer installed the dialog still offers a PDF file.
    QPrinter printer(QPrinter::HighResolution);
    QPrintDialog dialog(&printer, parentWindow());
    if (dialog.exec() != QDialog::Accepted)
        return false;
    paintReport(printer, report);
    return true;
}

void QtDesktop::beep()
{
    QApplication::beep();
}

bool QtDesktop::ctrlDown() const
{
    return QGuiApplication::queryKeyboardModifiers().testFlag(Qt::ControlModifier);
}

bool QtDesktop::altDown() const
{
    return QGuiApplication::queryKeyboardModifiers().testFlag(Qt::AltModifier);
}

QPoint QtDesktop::mousePosition() const
{
    return QCursor::pos();
}

QList<QRect> QtDesktop::screens() const
{
    QList<QRect> result;
    if (QScreen* primary = QGuiApplication::primaryScreen())
        result << primary->availableGeometry();
    for (QScreen* screen : QGuiApplication::screens())
        if (screen != QGuiApplication::primaryScreen())
            result << screen->availableGeometry();
    return result;
}

bool QtDesktop::openUrl(const QString& url)
{
    return QDesktopServices::openUrl(QUrl::fromUserInput(url));
}

bool QtDesktop::darkAppearance() const
{
    return QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
}

void QtDesktop::processEvents()
{
    // Repaints and timers may run; clicks and keys wait, so no command starts inside a walk.
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void keepOffTaskbar(QWidget& window)
{
    auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    xcb_connection_t* connection = x11 ? x11->connection() : nullptr;
    if (!connection)
        return;
    // The three names are asked for at once: one round trip to the server, not three.
    const std::array<const char*, 3> names{"_NET_WM_STATE", "_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER"};
    std::array<xcb_intern_atom_cookie_t, 3> asked{};
    for (size_t i = 0; i < names.size(); ++i)
        asked[i] = xcb_intern_atom(connection, 0, uint16_t(strlen(names[i])), names[i]);
    std::array<xcb_atom_t, 3> atoms{};
    for (size_t i = 0; i < names.size(); ++i) {
        xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(connection, asked[i], nullptr);
        atoms[i] = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
        free(reply);
    }
    xcb_change_property(connection, XCB_PROP_MODE_APPEND, xcb_window_t(window.winId()), atoms[0], XCB_ATOM_ATOM, 32, 2,
                        &atoms[1]);
    xcb_flush(connection);
}

} // namespace platform::qt

#pragma once

#include "core/mainwndo.h"

#include <QMainWindow>

#include <functional>

class QFrame;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QTreeView;

namespace core::ui
{

class TimesheetModel;

// The main window on screen: shows the form's fields and passes clicks, keys and window events on.
class MainwndoView : public QMainWindow
{
    Q_OBJECT

public:
    MainwndoView(Mainwndo& form, const AppPrefs& prefs, QWidget* parent = nullptr);

    // Asked when the user closes the window; false keeps it open.
    std::function<bool()> closeRequested;

    QTreeView* ListBox1() const { return m_list; }
    QPushButton* runButton() const { return m_runButton; }
    QLabel* runtotal() const { return m_runtotal; }

signals:
    // The client list file was rewritten: the client picker reloads it.
    void clientListChanged();
    void njButton2Clicked();

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void refresh();
    void showSelection();
    void layoutColumns();
    void keepGeometry();
    void followAppearance(); // light or dark, from the palette

    static constexpr unsigned kStripBack = 0xFFFFE5;
    static constexpr unsigned kStripBackDark = 0xFF9933;
    static constexpr unsigned kStripText = 0x5A5A5A;

    Mainwndo& m_form;
    TimesheetModel* m_model;
    QTreeView* m_list;
    QLineEdit* m_notebox;
    QPushButton* m_runButton;
    QPushButton* m_njButton2;
    QFrame* m_indecator;
    QLabel* m_runtotal;
    QLabel* m_datastream;
    QProgressBar* m_dataprogress;
    bool m_closing = false;
};

} // namespace core::ui

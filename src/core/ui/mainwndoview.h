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

class JobColumns;
class TimesheetModel;

// The main window on screen: shows the form's fields and passes clicks, keys and window events on.
class MainwndoView : public QMainWindow
{
    Q_OBJECT

public:
    MainwndoView(Mainwndo& form, const AppPrefs& prefs, QWidget* parent = nullptr);

    // Asked when the user closes the window; false keeps it open for now.
    std::function<bool()> closeRequested;
    // A key the window did not use otherwise; true when it was taken.
    std::function<bool(QChar)> keyDown;

    QTreeView* ListBox1() const { return m_list; }
    QPushButton* runButton() const { return m_runButton; }
    QLabel* runtotal() const { return m_runtotal; }
    TimesheetModel* model() const { return m_model; }

signals:
    void runButtonClicked();
    void njButton2Clicked();

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void refresh();
    void showSelection();
    void keepGeometry();
    bool takeKey(const QKeyEvent* event);
    void followAppearance(); // light or dark, from the palette

    static constexpr unsigned kStripBack = 0xFFFFE5;
    static constexpr unsigned kStripBackDark = 0xFF9933;
    static constexpr unsigned kStripText = 0x5A5A5A;

    Mainwndo& m_form;
    TimesheetModel* m_model;
    QTreeView* m_list;
    JobColumns* m_columns;
    QLineEdit* m_notebox;
    QPushButton* m_runButton;
    QPushButton* m_njButton2;
    QFrame* m_indecator;
    QLabel* m_runtotal;
    QLabel* m_datastream;
    QProgressBar* m_dataprogress;
    bool m_closing = false;
    bool m_placed = false; // brought onto the screens, at its first show
};

} // namespace core::ui

#pragma once

#include "jobs/jobdialog.h"

#include <QDialog>

class QAbstractButton;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QToolButton;

namespace platform::qt
{
class QtDialogs;
}

namespace jobs::ui
{

// The job dialog on screen: shows the form's fields and passes typing, keys, menu choices and clicks on.
class specialwView : public QDialog
{
    Q_OBJECT

public:
    explicit specialwView(specialw& form, QWidget* parent = nullptr);

    QLineEdit* dateField() const { return m_dateField; }
    QLabel* dateDay() const { return m_dateDay; }
    QToolButton* dateUp() const { return m_dateUp; }
    QToolButton* dateDown() const { return m_dateDown; }
    QLineEdit* enterjob() const { return m_enterjob; }
    QToolButton* choosejob() const { return m_choosejob; }
    QLineEdit* enterclient() const { return m_enterclient; }
    QPushButton* popupclnt() const { return m_popupclnt; }
    QPushButton* popup() const { return m_popup; }
    QLineEdit* nmepopup() const { return m_nmepopup; }
    QLineEdit* sphrs() const { return m_sphrs; }
    QLineEdit* spmin() const { return m_spmin; }
    QPlainTextEdit* NotesArea() const { return m_notes; }
    QPushButton* okjob() const { return m_okjob; }
    QPushButton* okjob2() const { return m_okjob2; }
    QPushButton* canceljob() const { return m_canceljob; }

    void reject() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void refresh();
    void showText(QLineEdit* edit, const QString& text, int limit);
    void attachMenu(QAbstractButton* button, MenuButton specialw::*menu, void (specialw::*action)(int));
    void followNotesColours();

    specialw& m_form;
    QLabel* m_wintitle;
    QLineEdit* m_dateField;
    QToolButton* m_dateUp;
    QToolButton* m_dateDown;
    QLabel* m_dateDay;
    QLineEdit* m_enterjob;
    QToolButton* m_choosejob;
    QLineEdit* m_enterclient;
    QPushButton* m_popupclnt;
    QPushButton* m_popup;
    QLineEdit* m_nmepopup;
    QLineEdit* m_sphrs;
    QLineEdit* m_spmin;
    QPlainTextEdit* m_notes;
    QLabel* m_noteWarning;
    QPushButton* m_okjob;
    QPushButton* m_okjob2;
    QPushButton* m_canceljob;
    bool m_refreshing = false;
};

// Shows the job dialog modally on the window in front.
void runSpecialw(specialw& form, QWidget* parent);

// Registers the job dialog's view with the dialogs service.
void registerSpecialwView(platform::qt::QtDialogs& dialogs);

} // namespace jobs::ui

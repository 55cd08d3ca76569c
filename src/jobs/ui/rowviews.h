#pragma once

#include "jobs/notes.h"
#include "jobs/rowops.h"

#include <QDialog>

class QGroupBox;
class QLabel;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;

namespace platform::qt
{
class QtDialogs;
}

namespace jobs::ui
{

// The delete and reset question on screen; the pressed button goes back into the form.
class AresureView : public QDialog
{
    Q_OBJECT

public:
    AresureView(Aresure& form, QWidget* parent = nullptr);

    QRadioButton* radio(int which) const { return m_radios[which]; }
    QPushButton* Okay() const { return m_okay; }
    QPushButton* Cancel() const { return m_cancel; }
    QGroupBox* GroupBox1() const { return m_group; }

private:
    Aresure& m_form;
    QGroupBox* m_group;
    QRadioButton* m_radios[4];
    QPushButton* m_okay;
    QPushButton* m_cancel;
};

// The note editor on screen: refuses input the file could not hold and shows the room left.
class NotewinView : public QDialog
{
    Q_OBJECT

public:
    NotewinView(Notewin& form, QWidget* parent = nullptr);

    QPlainTextEdit* EditField1() const { return m_edit; }
    QLabel* roomLabel() const { return m_room; }
    QPushButton* saveit() const { return m_save; }

    void reject() override; // closing the window saves: there is no cancel

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void textEdited();
    void showRoom();

    Notewin& m_form;
    QPlainTextEdit* m_edit;
    QLabel* m_room;
    QPushButton* m_save;
};

// Registers the views of the row operations' windows: aresure and notewin.
void registerRowViews(platform::qt::QtDialogs& dialogs);

} // namespace jobs::ui

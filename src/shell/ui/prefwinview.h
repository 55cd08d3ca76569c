#pragma once

#include "shell/prefwin.h"

#include <QDialog>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QSlider;
class QTabWidget;
class QTreeWidget;

namespace platform::qt
{
class QtDialogs;
}

namespace shell::ui
{

// The preferences window on screen: shows the form's fields and passes every change on at once.
// It asks for no close button; Escape, and the desktop's close where it gives one anyway, take its one way
// out, `Saveprefa`.
class PrefwinView : public QDialog
{
    Q_OBJECT

public:
    // Fills the form from the settings; `fonts` are the font families offered in the font pop-up.
    PrefwinView(prefwin& form, const QStringList& fonts, QWidget* parent = nullptr);

    void reject() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* buildGeneral();
    QWidget* buildOperations();
    QWidget* buildExport();
    // Runs a handler of the form, shows the outcome, and closes when the form says so.
    template <typename Handler> void forward(Handler handler);
    void refresh();
    void applyListFont();
    void keepColumnWidth();

    prefwin& m_form;
    bool m_refreshing = false;
    bool m_columnSet = false;
    storage::OperationList m_shownList;
    QStringList m_shownFonts;

    QTabWidget* m_tabs;
    QPushButton* m_save;

    QLineEdit* m_EditField1;
    QComboBox* m_noactivpop;
    QLabel* m_noactivNote;
    QComboBox* m_lstfont;
    QComboBox* m_Typesize;
    QCheckBox* m_recentsheet;
    QCheckBox* m_enablewarn;
    QCheckBox* m_stopOnQuit;
    QCheckBox* m_netconnect;
    QPushButton* m_restartWeb;
    QCheckBox* m_statusshow;
    QSlider* m_Slider1;
    QLabel* m_Transvalue;
    QComboBox* m_checkupdates;
    QPushButton* m_stripes;

    QTreeWidget* m_opplistnow;
    QLabel* m_StaticText1;
    QLabel* m_StaticText11;
    QLineEdit* m_newopp;
    QLineEdit* m_newdesc;
    QPushButton* m_addnew;
    QPushButton* m_killthis;
    QPushButton* m_exportlist;
    QPushButton* m_Canvas1;

    QCheckBox* m_xdate;
    QCheckBox* m_xheader;
    QCheckBox* m_xnotes;
    QCheckBox* m_xtotal;
    QCheckBox* m_xblnkrow;
    QCheckBox* m_xblnkcol;
    QRadioButton* m_prefRadioExcel;
    QRadioButton* m_prefRadioText;
    QComboBox* m_formatMenu;
};

// Shows `prefwin` forms through the dialogs service, with the system's font families.
void registerPrefwinView(platform::qt::QtDialogs& dialogs);

} // namespace shell::ui

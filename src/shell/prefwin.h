#pragma once

#include "core/appprefs.h"
#include "platform/desktop.h"
#include "platform/dialogs.h"
#include "shell/export.h"
#include "storage/filestore.h"
#include "storage/operations_file.h"

#include <QString>
#include <QStringList>

namespace shell
{

// What the preferences window asks of the rest of the program. Each call does nothing until the
// composition wires it.
class PrefwinHooks
{
public:
    virtual ~PrefwinHooks() = default;
    // A timesheet window is open (App.mywindowcount is 1).
    virtual bool timesheetOpen() const { return false; }
    // App.windScreen: the screen the window is centred on.
    virtual int windScreen() const { return 0; }
    // Net Link of the open timesheet window: stop listening, or listen (again) on port 2000.
    virtual void netLinkStop() {}
    virtual void netLinkListen() {}
    // The status strip: shown; hidden and parked at top 38, left 0; opacity 0.2 to 1.0.
    virtual void showStatusWindow() {}
    virtual void hideStatusWindow() {}
    virtual void setStatusOpacity(double opacity) { Q_UNUSED(opacity); }
    // The lists of the open timesheet window take the list font; "System" means the default font.
    virtual void applyListFont(const QString& font, int size)
    {
        Q_UNUSED(font);
        Q_UNUSED(size);
    }
    // An open job dialog reloads its operations menu.
    virtual void refreshOppsList() {}
    // The lists take the stripe colour of the settings.
    virtual void applyStripes() {}
    // Writes the settings file (App.saveprefs).
    virtual void saveprefs() {}
};

// The preferences window as logic: three tabs of controls that write their setting into the
// settings at once, the operations list editor, and the one way out, `Saveprefa`.
class prefwin : public platform::ModalForm
{
public:
    struct Services
    {
        core::AppPrefs& prefs;
        platform::Dialogs& dialogs;
        platform::Desktop& desktop;
        storage::FileStore& files;
        PrefwinHooks& hooks;
        QString operationsFile; // the local list, "VK8 Opps List" in the settings folder
        QString desktopFolder;  // where `exportlist` puts its copy
    };

    // A check box, slider, button or text field as far as the logic drives it.
    struct CheckBox
    {
        bool Value = false;
        bool Enabled = true;
    };
    struct Slider
    {
        int Value = 100;
        bool Enabled = true;
    };
    struct Button
    {
        QString Caption;
        bool Enabled = true;
        bool Default = false;
    };
    struct Field
    {
        QString Text;
        bool Enabled = true;
        bool Visible = true;
    };

    inline static const QString kPrefTitle = QStringLiteral("Veltrick - Preferences");
    inline static const QString kPrefTab1 = QStringLiteral("General");
    inline static const QString kPrefTab2 = QStringLiteral("Operation List");
    inline static const QString kPrefTab3 = QStringLiteral("Export Options");
    inline static const QString kPrefSaveButton = QStringLiteral("Save Preferences");
    inline static const QString kPrefAddOperation = QStringLiteral("Please add an Operation to the list.");

    // General tab.
    inline static const QString kPrefDefaultUser = QStringLiteral("Default User Name:");
    inline static const QString kPrefNoActivity = QStringLiteral("No Activity Warning:");
    inline static const QString kPrefNoActivityUnavailable =
        QStringLiteral("This desktop does not tell when you are away, so the warning cannot come.");
    inline static const QString kPrefFontTxt = QStringLiteral("Font:");
    inline static const QString kPrefFontSize = QStringLiteral("Font Size:");
    inline static const QString kPrefAutoOpen = QStringLiteral("Auto Open Recent Timesheet");
    inline static const QString kPrefWarnings = QStringLiteral("Show Warning Dialogs");
    inline static const QString kPrefStopTOQ = QStringLiteral("Stop timer on Close");
    inline static const QString kPrefNetLnk = QStringLiteral("Net Link");
    inline static const QString kPrefConnectButton = QStringLiteral("Connect");
    inline static const QString kPrefStatusSho = QStringLiteral("Show Status Window");
    inline static const QString kPrefWinTrans = QStringLiteral("Status Window Opacity:");
    inline static const QString kPrefDefaultFont = QStringLiteral("System Default");
    inline static const QString kPrefUpdateLabel = QStringLiteral("Check for Updates:");
    inline static const QString kPrefCUOff = QStringLiteral("Off");
    inline static const QString kPrefCULaunch = QStringLiteral("On Launch");
    inline static const QString kPrefCUDay = QStringLiteral("Daily");
    inline static const QString kPrefCUWeek = QStringLiteral("Weekly");
    inline static const QString kPrefStripes = QStringLiteral("Stripe Colour");
    inline static const QString kPrefSelectColor = QStringLiteral("Select a Colour");
    inline static const QString kPrefUpdatesNote =
        QStringLiteral("Updates come from your system's package manager; Veltrick does not look for them itself.");
    inline static const QStringList kNoactivRows = {QStringLiteral("OFF"), QStringLiteral(" 5 Min"),
                                                    QStringLiteral("10 Min"), QStringLiteral("15 Min")};
    static constexpr int kNoactivMinutes[] = {0, 5, 10, 15};
    inline static const QStringList kTypesizeRows = {QStringLiteral("9 pt"), QStringLiteral("10 pt"),
                                                     QStringLiteral("11 pt"), QStringLiteral("12 pt")};
    // The settings value that stands for the toolkit's default font.
    inline static const QString kSystemFont = QStringLiteral("System");

    // Operation List tab.
    inline static const QString kPrefNOTxt = QStringLiteral("New Operation:");
    inline static const QString kPrefDescTxt = QStringLiteral("Description:");
    inline static const QString kPSAddBtn = QStringLiteral("Add");
    inline static const QString kPrefAddChange = QStringLiteral("Change");
    inline static const QString kPrefRemoveBtn = QStringLiteral("Remove");
    inline static const QString kXPButtonExport = QStringLiteral("Export");
    inline static const QString kPrefButtonUser = QStringLiteral("User Operation List");
    inline static const QString kPrefButtonGroup = QStringLiteral("Group Operation List");
    inline static const QString kPrefGStatus = QStringLiteral("** Group Operation List Active **");
    inline static const QString kPrefGStatusError = QStringLiteral("** Group Operation List [file not found] **");
    inline static const QString kPrefGroupDlgTitle = QStringLiteral("Choose the Group Operation List");
    inline static const QString kPrefCopyMessage =
        QStringLiteral("A copy of your current Operation List has been created on your Desktop.");
    inline static const QString kPrefCopyName = QStringLiteral("Veltrick Operations.txt");
    inline static const QString kPrefCopyFailed = QStringLiteral("The copy of your Operation List could not be "
                                                                 "written to your Desktop.");
    inline static const QString kPrefListFull =
        QStringLiteral("The Operation List is full: it holds at most 127 operations. Please remove one before "
                       "adding another.");
    inline static const QString kPrefOpsWriteError = QStringLiteral("Error - Could not Write the Operation List!");
    inline static const QString kPrefOpsReadError = QStringLiteral("Error - Could not Read the Operation List!");
    inline static const QString kPrefOpsCut =
        QStringLiteral("An operation was too long to be stored in the Operation List and has been shortened there.");
    static constexpr int kNameLength = 20;
    static constexpr int kDescriptionLength = 90;

    // Export Options tab.
    inline static const QString kPrefExportHead = QStringLiteral("What goes into an exported timesheet:");
    inline static const QString kPrefEOReportDate = QStringLiteral("Include report date");
    inline static const QString kPrefEOColumn = QStringLiteral("Include column headings");
    inline static const QString kPrefEONote = QStringLiteral("Include Notes");
    inline static const QString kPrefEOTotal = QStringLiteral("Include Total");
    inline static const QString kPrefEOSprShtDesc = QStringLiteral("Export Format");
    inline static const QString kPrefEOBlkRow = QStringLiteral("Insert blank row");
    inline static const QString kPrefEOBlkCol = QStringLiteral("Insert blank column");
    inline static const QString kPrefMSExcelFile = QStringLiteral("Export as Microsoft Excel file");
    inline static const QString kPrefTextFile = QStringLiteral("Export as Text file");
    inline static const QString kPrefFileFormat = QStringLiteral("Text Encoding for Export:");
    inline static const QStringList& kFormatRows = kEncodingRows;

    static constexpr int Width = 400;
    static constexpr int Height = 463;
    static constexpr int kSliderMinimum = 20;
    static constexpr int kSliderMaximum = 100;

    explicit prefwin(Services services);
    QString formName() const override { return QStringLiteral("prefwin"); }
    const core::AppPrefs& prefs() const { return m_prefs; }

    // The Desktop folder, or the home folder where there is none.
    static QString defaultDesktopFolder();
    // The text with every character that MacRoman cannot hold left out.
    static QString macRomanOnly(const QString& text);

    // Window.
    int TabPanel1 = 0; // set before showing to open on a chosen tab
    int Top = 0;
    int Left = 0;
    bool closed() const { return ButtonPressed == kPrefSaveButton; }

    // General tab.
    QString EditField1;
    int noactivpop = 0;
    // Beside the pop-up: why the warning cannot work here, or empty.
    QString noactivNote;
    QStringList lstfont; // an empty row is a separator
    int lstfontValue = 0;
    int Typesize = 1;
    CheckBox recentsheet, enablewarn, stopOnQuit, netconnect, statusshow;
    Button restartWeb{kPrefConnectButton, false};
    Slider Slider1{kSliderMaximum, false};
    QString Transvalue = QStringLiteral("100%");
    int checkupdates = 0;

    // Operation List tab.
    storage::OperationList opplistnow;
    int opplistnowIndex = -1;
    bool opplistnowEnabled = true;
    Field newopp, newdesc;
    Field StaticText1{kPrefNOTxt};
    Field StaticText11{kPrefDescTxt};
    Button addnew{kPSAddBtn, false};
    Button killthis{kPrefRemoveBtn, false};
    Button exportlist{kXPButtonExport, true};
    int Canvas1 = 0; // 0 the user's own list, 1 the group list at rmteops

    // Export Options tab.
    CheckBox xdate, xheader, xnotes, xtotal, xblnkrow, xblnkcol;
    bool prefRadioExcel = false;
    bool prefRadioText = false;
    int formatMenu = 0;

    // Fills the controls from the settings. The view gives the system's font families.
    void Event_Open(const QStringList& systemFonts);
    void TabPanel1_Change(int tab) { TabPanel1 = tab; }

    void EditField1_TextChange(const QString& text) { EditField1 = text.left(kNameLength); }
    void noactivpop_Change(int row);
    void lstfont_Change(int row);
    void Typesize_Change(int row);
    void recentsheet_Action(bool on);
    void enablewarn_Action(bool on);
    void stopOnQuit_Action(bool on);
    void netconnect_Action(bool on);
    void restartWeb_Action();
    void statusshow_Action(bool on);
    void Slider1_ValueChanged(int value);
    void checkupdates_Change(int row);
    // The colour well: the colour chosen in the picker, each part 0 to 255, stripes the lists at once.
    void stripes_Action(int red, int green, int blue);

    void readlocaljob();
    bool oplistupdate();            // false: the file could not be written, and the user has been told
    bool newopp_KeyDown(QChar key); // true: the key is swallowed
    void newopp_TextChange(const QString& text);
    void newdesc_TextChange(const QString& text) { newdesc.Text = text.left(kDescriptionLength); }
    void opplistnow_Change(int row);
    void opplistnow_DoubleClick() { opplistnow_Change(-1); }
    void addnew_Action();
    void killthis_Action();
    void exportlist_Action();
    void Canvas1_Action(int choice);

    void xdate_Action(bool on);
    void xheader_Action(bool on);
    void xnotes_Action(bool on);
    void xtotal_Action(bool on);
    void xblnkrow_Action(bool on);
    void xblnkcol_Action(bool on);
    void prefRadioExcel_Action();
    void prefRadioText_Action();
    void formatMenu_Change(int row);

    void Saveprefa_Action();
    void cleanupprefs();

private:
    void lstfont_Open(const QStringList& systemFonts);
    void Typesize_Open();
    void showGroupList(bool found);
    bool writeOperations(const storage::OperationList& list);

    core::AppPrefs& m_prefs;
    Services m_s;
    bool m_toldCut = false;
};

} // namespace shell

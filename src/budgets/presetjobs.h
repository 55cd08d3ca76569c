#pragma once

#include "core/appprefs.h"
#include "platform/desktop.h"
#include "platform/dialogs.h"
#include "storage/filestore.h"
#include "storage/preset_file.h"

#include <QObject>

#include <functional>

namespace budgets
{

// The preset jobs window as logic: the list of job numbers with their projects and hour budgets, held
// in memory for the whole run and written to "VK8JobsList" after every change; the edit row under it;
// the export and imports.
class preSetJobsWin : public QObject, public platform::ModalForm
{
    Q_OBJECT

public:
    inline static const QString kPSJWindowTitle = QStringLiteral("Veltrick - Preset Jobs");
    inline static const QString kPSEditJobs = QStringLiteral("Edit Preset Jobs");
    inline static const QString kPSBudgetHours = QStringLiteral("Budget Hrs");
    inline static const QString kPSTotalUsedHours = QStringLiteral("Closed Total Hrs");
    inline static const QString kPSUsedHours = QStringLiteral("+ Active Timesheet Hrs");
    inline static const QString kPSJobNotxt = QStringLiteral("Job No:");
    inline static const QString kPSProjectTxt = QStringLiteral("Project:");
    inline static const QString kPSBudgetHTxt = QStringLiteral("Budget:");
    inline static const QString kPSBudgetTotal = QStringLiteral("Closed Total:");
    inline static const QString kPSBgtHrsTxt = QStringLiteral("Hrs");
    inline static const QString kPSAddBtn = QStringLiteral("Add");
    inline static const QString kPSChangeBtn = QStringLiteral("Change");
    inline static const QString kPSDelBtn = QStringLiteral("Delete");
    inline static const QString kPSExportBtn = QStringLiteral("Export");
    inline static const QString kPSImportBtn = QStringLiteral("Import...");
    inline static const QString kPSImport6Btn = QStringLiteral("Import VLK6 List");
    inline static const QString kPSUpdateBudgets = QStringLiteral("Update Budgets");
    inline static const QString kPSExportDialogText =
        QStringLiteral("A copy of your current Preset Jobs List has been created on your Desktop.");
    inline static const QString kPSExportFileName = QStringLiteral("Veltrick Preset Jobs.txt");
    inline static const QString kPSImportFilter = QStringLiteral("Text files (*.txt *.text *.tsv);;All files (*)");
    inline static const QString kCue = QStringLiteral("-- --");
    inline static const QString kWriteFail = QStringLiteral("Error - Could not Write the Preset Jobs file!");
    inline static const QString kFieldsCut =
        QStringLiteral("Some imported fields were too long for the Preset Jobs list and have been shortened.");

    static constexpr int kJobLimit = 16;
    static constexpr int kProjectLimit = 30;

    // A text field of the edit row.
    struct Field
    {
        QString Text;
        bool Enabled = true;
    };

    enum class Focus
    {
        None,
        EditField2,
        EditField3,
        EditField4,
        EditField5
    };

    struct Services
    {
        storage::FileStore& files;
        core::AppPrefs& prefs;
        platform::Desktop& desktop;
        platform::Dialogs& dialogs;
        QString folder;        // the settings folder
        QString desktopFolder; // where the export goes
        // After the list was stored: the open timesheet's budgets and the job dialog's menu follow.
        std::function<void()> dependants;
        // "Update Budgets": the active hours into the closed totals.
        std::function<void()> updateBudgets;
        // A budget was changed: the selected job may be warned again.
        std::function<void()> budgetNoticeReset;
    };

    preSetJobsWin(storage::PresetJobList& joblst, Services services);
    QString formName() const override { return QStringLiteral("preSetJobsWin"); }
    const core::AppPrefs& prefs() const { return m_s.prefs; }

    storage::PresetJobList& joblst;
    int ListIndex = -1;
    int columnCount = storage::kPresetColumns;
    Field EditField2, EditField3, EditField4, EditField5{{}, false};
    QString addjobCaption = kPSAddBtn;
    bool addjobEnabled = false;
    bool killjobEnabled = false;
    // Where the window sends the focus next, set only where it moves the focus itself; the view puts it
    // there once and clears it, so that typing in a field leaves the focus in that field.
    Focus focus = Focus::EditField2;
    bool visible = false;
    int Left = 0, Top = 0, Width = 0, Height = 0;

    // Return presses addjob only while there is a project: after a change the fields are empty, and a
    // Return then would overwrite the selected job with nothing.
    bool addjobDefault() const { return !EditField3.Text.isEmpty(); }
    // Typing stops at the field's limit, but the selected job's own text, longer when it was imported,
    // is shown and stored whole.
    int jobLimit() const;
    int projectLimit() const;

    // The list of the settings folder, read when the main window is made.
    void readlocalprst();
    void readlocal5prst();
    // A text import chosen by the user, which replaces the list.
    void readserverprst();
    // Stores the list and brings what depends on it up to date; false when the file could not be written.
    bool joblistupdate();
    void exportList();

    void joblst_Change(int row);
    void joblst_DoubleClick();
    void EditField2_TextChange(const QString& text);
    void EditField3_TextChange(const QString& text);
    void EditField4_TextChange(const QString& text);
    void EditField5_TextChange(const QString& text);
    // The job number refuses ":", which the job dialog's menu splits on; the hours take digits only.
    bool EditField2_KeyDown(QChar key);
    bool hoursKeyDown(QChar key);
    void addjob_Action();
    void killjob_Action();
    // The export and import commands of the small button under the list.
    void ExpImp_Action(const QString& command);
    // Shown, and the window's place from the settings; hidden, and its place back to them.
    void show();
    void Event_CancelClose();
    // Selects the entry of a job number, as a click on a notice asks.
    void selectJob(const QString& job);

signals:
    void changed();
    // The list's rows were replaced or reordered: views show them anew.
    void rowsReset();
    // Shown or hidden.
    void visibilityChanged();

private:
    bool emptyJobFirst(Field& field, const QString& text);
    const storage::PresetJob* selectedJob() const;
    void clearEditRow();
    QString filePath(const QString& name) const;

    Services m_s;
    bool m_toldCut = false;
};

} // namespace budgets

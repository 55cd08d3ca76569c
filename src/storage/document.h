#pragma once

#include "core/app.h"
#include "storage/backups.h"
#include "storage/filestore.h"

namespace storage
{

// The timesheet document around the main window: reading a file in, New and Save As, the writes of
// every save, and the settings file at start and quit.
class Document
{
public:
    inline static const QString kAppNewSheetPrompt = QStringLiteral("Please enter a filename for your new Timesheet");
    inline static const QString kAppSuggestFileName = QStringLiteral("Untitled Timesheet");
    inline static const QString kAppNewSheetDlgTitle = QStringLiteral("Save Timesheet As");
    inline static const QString kAppOpenDlgTitle = QStringLiteral("Open Timesheet");
    inline static const QString kAppNoAccess = QStringLiteral("Access denied!");
    inline static const QString kAppNoAccessTxt =
        QStringLiteral("Sorry, I can't write your Timesheet file in that location.");
    inline static const QString kAppTimerNotStopped = QStringLiteral("The timer was not stopped for the Job in Row ");
    inline static const QString kAppElapsedTime =
        QStringLiteral(". The time elapsed while Veltrick was closed will be added to this jobs total.");
    inline static const QString kAppPrefsError = QStringLiteral("Error - Could not Write Preference File!");
    inline static const QString kNoteCut =
        QStringLiteral("A note was too long to be stored in the timesheet file and has been shortened there.");
    inline static const QString kAppOpenOldExplain = QStringLiteral(
        "Are you sure you want to convert an existing timesheet to the new format?\n\nPlease choose your old "
        "timesheet file from the following dialog. Once your timesheet is converted and open in the main window, you "
        "must choose Save As... from the File menu to make a copy of it in the new file format before you start to "
        "use it.\n");
    inline static const QString kSWQuestion = QStringLiteral("Update Budget Totals?");
    inline static const QString kSWExplain = QStringLiteral(
        "Add the Used hours from this Timesheet to the Total Used Hours in your Preset Jobs list.\n\nChoose [OK] "
        "ONLY if you have finished working in this Timesheet and you want to update your existing Budget totals "
        "before starting a New Timesheet.\n\nThis operation can not be undone.");
    inline static const QString kFileFilter = QStringLiteral("Veltrick Timesheet (*.vlk)");

    Document(core::App& app, FileStore& files, platform::Dialogs& dialogs, platform::Desktop& desktop,
             platform::Clock& clock, QString documentsFolder);

    // Reads App::thisdoc into the main window, recovering a timer that was left running.
    void sesame();
    // New and Save As: asks for a file and writes the window's rows into it.
    void newSaveAs();
    // The Open command: asks for a file and reads it.
    void open();
    // "Convert Older VLK Timesheet…": reads a file of either byte order into an unsaved list, which the
    // user then keeps with Save As.
    void openOld();
    // "Close && Total Budgets…": true when the user chose OK and the budgets are to be totalled.
    bool switchitConfirmed();
    platform::Result writeTimesheet(const QString& path, const core::Timesheet& sheet);

    void readPrefs(core::AppPrefs& prefs);
    void saveprefs(const core::AppPrefs& prefs);

private:
    // The message of a timesheet that could not be read whole.
    void loadFailed(const QString& path);

    core::App& m_app;
    FileStore& m_files;
    platform::Dialogs& m_dialogs;
    platform::Desktop& m_desktop;
    platform::Clock& m_clock;
    Backups m_backups;
    QString m_documents;
    bool m_toldCut = false;
    QByteArray m_buffer; // the bytes of the last save, kept so the next one needs no new memory
};

} // namespace storage

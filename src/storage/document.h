#pragma once

#include "core/app.h"
#include "storage/backups.h"
#include "storage/filestore.h"

#include <QHash>
#include <QSet>

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
    // Another program or computer wrote the file since this one read or wrote it.
    inline static const QString kChangedQuestion =
        QStringLiteral("\u201c%1\u201d was changed by another program or computer since Veltrick last saved it.");
    inline static const QString kChangedExplain = QStringLiteral(
        "Open Theirs reads the file as it is now: a running job stops, and its minutes since the last save are "
        "added to it. Keep Mine saves this list over it and keeps the other version beside it. Until you choose, "
        "this list is kept as \u201c%1\u201d.");
    inline static const QString kOpenTheirs = QStringLiteral("Open Theirs");
    inline static const QString kKeepMine = QStringLiteral("Keep Mine");
    inline static const QString kSaveMineAs = QStringLiteral("Save Mine As\u2026");
    inline static const QString kNotSaved = QStringLiteral("Not saved: changed elsewhere");
    inline static const QString kTheirsName = QStringLiteral("%1 (changed elsewhere %2).vlk");
    inline static const QString kMineName = QStringLiteral("%1 (mine %2).vlk");
    inline static const QString kCarriedTo =
        QStringLiteral("The %1 timed here since the last save was added to row %2 of the file read.");
    inline static const QString kCarriedNew = QStringLiteral(
        "The %1 timed here since the last save was put on a new row %2: the file read has no row of that date, "
        "job, project and operation.");
    inline static const QString kCarriedOff =
        QStringLiteral("The %1 taken off here since the last save came off row %2 of the file read.");
    inline static const QString kMineNotKept = QStringLiteral(
        "This list could not be kept beside the file (%1), and the file as it is now lacks some of its rows: "
        "Open Theirs would lose them. Make room, or choose Keep Mine or Save Mine As.");
    inline static const QString kChangedDamaged = QStringLiteral(
        "The file as it is now does not read whole. Keep Mine saves this list over it and keeps it beside. Until "
        "you choose, this list is kept as \u201c%1\u201d.");
    inline static const QString kMineKept =
        QStringLiteral("This list as it was is kept as \u201c%1\u201d: it has rows the file read does not.");
    inline static const QString kTheirsKept = QStringLiteral("The other version is kept as \u201c%1\u201d.");
    inline static const QString kReread = QStringLiteral("Changed elsewhere and read again");
    inline static const QString kConflictCopy =
        QStringLiteral("A sync conflict copy is in the folder: \u201c%1\u201d. File \u25b8 Open offers it once this "
                       "timesheet is closed.");

    Document(core::App& app, FileStore& files, platform::Dialogs& dialogs, platform::Desktop& desktop,
             platform::Clock& clock, QString documentsFolder);

    // Whether a running mark in a file read is timed on here: at an open it was left by a crash or a quit of
    // this program; in another version read again it is this program's own from an earlier save, already
    // carried, or another computer's timing.
    enum class Marks
    {
        Recovered,
        Stopped
    };
    // Reads App::thisdoc into the main window, recovering a timer that was left running.
    void sesame(Marks marks = Marks::Recovered);
    // New and Save As: asks for a file and writes the window's rows into it.
    void newSaveAs();
    // The Open command: asks for a file and reads it.
    void open();
    // "Convert Older VLK Timesheet…": reads a file of either byte order into an unsaved list, which the
    // user then keeps with Save As.
    void openOld();
    // "Close && Total Budgets…": true when the user chose OK and the budgets are to be totalled.
    bool switchitConfirmed();
    // The save of the open timesheet, every minute's included. A file that another program changed since
    // it was read or written is not written over: the result says so, and this list goes beside it until
    // the user chooses (changedElsewhere), so that a kill meanwhile loses neither version.
    platform::Result writeTimesheet(const QString& path, const core::Timesheet& sheet);
    // The question, once a save was refused: open theirs, keep mine, or save mine under another name.
    void changedElsewhere();
    // The file or its folder changed on disk: a clean timesheet is read again, one with changes in memory
    // asks; a sync tool's conflict copy of it is told of once.
    void checkDisk();

    void readPrefs(core::AppPrefs& prefs);
    void saveprefs(const core::AppPrefs& prefs);

    // Where Open Theirs put the minutes timed here: what to tell the user, and the first row.
    struct Carried
    {
        QStringList told;
        int firstRow = -1;
    };

private:
    // What the document's file was when last read or written here.
    struct OnDisk
    {
        QString path;
        FileStamp stamp;
        size_t digest = 0; // of the bytes, for this run only
    };

    // The message of a timesheet that could not be read whole.
    void loadFailed(const QString& path);
    // Writes with no look at what is on disk: the user chose the file, or chose to write over it.
    platform::Result writeOver(const QString& path, const core::Timesheet& sheet);
    // Writes the window's rows to a file the user chose and makes it the open timesheet.
    bool saveAsChosen(const QString& chosen);
    void know(const QString& path, const FileStamp& stamp, const QByteArray& bytes);
    // The other writer's version, as last found, is the one known: the file may be written over it.
    void knowTheirs();
    void writeFailed(const platform::Result& result);
    // True when the file at the known path holds other bytes than were last read or written; they are
    // kept in m_theirs.
    bool changedOnDisk(const QString& path);
    // This list, beside the file, while the user has not chosen.
    void keepMine(const QString& path, const core::Timesheet& sheet);
    // Reads the file again into the window, timing nothing that its running mark says.
    void reread(const QString& path);
    void openTheirs();
    void keepMineOver();
    void saveMineAs();
    void dropMine();
    void noticeConflictCopies(const QString& path);

    core::App& m_app;
    FileStore& m_files;
    platform::Dialogs& m_dialogs;
    platform::Desktop& m_desktop;
    platform::Clock& m_clock;
    Backups m_backups;
    QString m_documents;
    bool m_toldCut = false;
    QByteArray m_buffer; // the bytes of the last save, kept so the next one needs no new memory
    OnDisk m_known;
    QByteArray m_theirs; // the other writer's version, as last found
    FileStamp m_theirsStamp;
    QString m_mine; // the copy of this list beside the file, while the question waits
    platform::Result m_mineKept;
    bool m_choosing = false;
    QSet<QString> m_toldCopies;
    QString m_copyOffered; // the newest conflict copy told of: File > Open starts there
};

// Whether `name`, in the same folder, is a copy that a sync tool made of `fileName` when two computers
// changed it at once.
bool isConflictCopy(const QString& fileName, const QString& name);

} // namespace storage

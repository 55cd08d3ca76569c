#pragma once

#include "core/appprefs.h"
#include "core/mainwndo.h"
#include "core/texts.h"
#include "platform/clock.h"
#include "platform/dialogs.h"
#include "shell/export.h"
#include "storage/filestore.h"

#include <QStringList>

namespace shell
{

// Print Options…: what heads the first printed page.
class printsetup : public platform::ModalForm
{
public:
    inline static const QString kPSWinDesc =
        QStringLiteral("These items will be added to the top of the first printed page:");
    inline static const QString kPSWinPageTitle = QStringLiteral("Title text:");
    inline static const QString kPSWinShowDate = QStringLiteral("Show Date");
    inline static const QString kPSWinDefaultTxt = QStringLiteral("Veltrick printed on");

    explicit printsetup(core::AppPrefs& prefs) : m_prefs(prefs) {}
    QString formName() const override { return QStringLiteral("printsetup"); }

    void Event_Open();
    void saveme_Action(); // the settings reach the file with the next save of the preferences

    QString shetitle;
    bool Checkdate = true;

private:
    core::AppPrefs& m_prefs;
};

// The choice of rows that the print and export windows share.
class RowChoice : public platform::ModalForm
{
public:
    inline static const QString kPWSelectRow =
        QStringLiteral("You must select a row in the Timesheet before you can choose this option.");
    inline static const QString kPWTickRow =
        QStringLiteral("You must tick at least one row of the list before you can use a custom selection.");
    // The radio buttons, in the order of `Scope`; the print window shows the first four.
    inline static const QStringList kScopeCaptions = {
        QStringLiteral("All Jobs"), QStringLiteral("All Jobs with the selected Job Number"),
        QStringLiteral("All Jobs with the selected Date"), QStringLiteral("All Jobs with the selected Client"),
        QStringLiteral("Custom selection")};

    RowChoice(const core::Timesheet& list, platform::Dialogs& dialogs) : m_list(list), m_dialogs(dialogs) {}

    // A radio button: one that needs a selected row, with none, says so and leaves the choice as it was.
    void RadioButton_Action(Scope scope);
    // The rows of a custom selection, ticked one by one.
    void tick(int row, bool on);

    Scope scope = Scope::All;
    QList<int> ticked;
    const core::Timesheet& list() const { return m_list; }

protected:
    // The rows to print or export; a custom selection with nothing ticked says so and gives nothing.
    std::optional<std::vector<int>> chosenRows();
    const core::Timesheet& m_list;
    platform::Dialogs& m_dialogs;
};

// Print...: the rows of the chosen scope as a report on paper or in a PDF file.
class pntops : public RowChoice
{
public:
    inline static const QString kPWWinTitle = QStringLiteral("Veltrick Print");

    pntops(const core::Timesheet& list, const core::AppPrefs& prefs, platform::Dialogs& dialogs, QString longDate)
        : RowChoice(list, dialogs), m_prefs(prefs), m_longDate(std::move(longDate))
    {}
    QString formName() const override { return QStringLiteral("pntops"); }

    void PushButton1_Action(); // Print: the print dialog, then the report
    void PushButton2_Action() { ButtonPressed = Tr::MWButtonCancel; }

private:
    const core::AppPrefs& m_prefs;
    QString m_longDate;
};

// Export...: the rows of the chosen scope as a file that spreadsheets open.
class xpops : public RowChoice
{
public:
    inline static const QString kXPWinTitle = QStringLiteral("Veltrick Export");
    inline static const QString kXPButtonExport = QStringLiteral("Export");
    inline static const QString kXPFileFormat = QStringLiteral("Text Encoding:");
    inline static const QString kXPFileNameDesc = QStringLiteral(" Exported");
    inline static const QString kDSExportingData = QStringLiteral("Exporting Data");
    inline static const QString kXPReplaced =
        QStringLiteral("Characters the text encoding cannot hold, written as \"?\": ");
    inline static const QString kXPWriteFailed = QStringLiteral("The export could not be written.");

    struct Services
    {
        core::Mainwndo& window;
        const core::AppPrefs& prefs;
        platform::Dialogs& dialogs;
        storage::FileStore& files;
        const platform::Clock& clock;
        QString folder; // where the save dialog opens when the timesheet has no file
    };

    explicit xpops(Services s) : RowChoice(s.window.ListBox1, s.dialogs), m_s(s) {}
    QString formName() const override { return QStringLiteral("xpops"); }

    void Event_Open();
    void formatMenu_Change(int row); // this export only: the setting stays
    void PushButton1_Action();       // Export: the save dialog, then the file
    void PushButton2_Action() { ButtonPressed = Tr::MWButtonCancel; }

    int formatMenu = 1;
    Encoding VKEncode = Encoding::Utf8;

private:
    Services m_s;
};

} // namespace shell

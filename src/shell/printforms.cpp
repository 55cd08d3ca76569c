#include "shell/printforms.h"

#include "core/timetext.h"

#include <QFileInfo>

namespace shell
{

void printsetup::Event_Open()
{
    shetitle = m_prefs.iam;
    Checkdate = m_prefs.dateon;
}

void printsetup::saveme_Action()
{
    m_prefs.iam = shetitle;
    m_prefs.dateon = Checkdate;
    ButtonPressed = Tr::SaveMenuText;
}

// ---- the choice of rows ----

void RowChoice::RadioButton_Action(Scope chosen)
{
    if (chooseRows(m_list, chosen, ticked))
        scope = chosen;
    else
        m_dialogs.message(kPWSelectRow);
}

void RowChoice::tick(int row, bool on)
{
    ticked.removeAll(row);
    if (on && row >= 0 && row < m_list.ListCount())
        ticked.append(row);
}

std::optional<std::vector<int>> RowChoice::chosenRows()
{
    // The selection may have gone since the choice (a row deleted behind the window): then all rows.
    std::vector<int> rows = chooseRows(m_list, scope, ticked).value_or(*chooseRows(m_list, Scope::All));
    if (scope == Scope::Custom && rows.empty()) {
        m_dialogs.message(kPWTickRow);
        return std::nullopt;
    }
    return rows;
}

// ---- print ----

void pntops::PushButton1_Action()
{
    const std::optional<std::vector<int>> rows = chosenRows();
    if (!rows)
        return;
    m_dialogs.print(buildReport(m_list, *rows, m_prefs, m_longDate));
    ButtonPressed = Tr::MWButtonPrint;
}

// ---- export ----

void xpops::Event_Open()
{
    scope = Scope::All;
    ticked.clear();
    VKEncode = exportEncoding(m_s.prefs);
    formatMenu = int(VKEncode);
}

void xpops::formatMenu_Change(int row)
{
    if (row < 0 || row >= kEncodingRows.size())
        return;
    formatMenu = row;
    VKEncode = Encoding(row);
}

void xpops::PushButton1_Action()
{
    // Asked before the save dialog: an empty choice is no reason to pick a file.
    const std::optional<std::vector<int>> rows = chosenRows();
    if (!rows)
        return;
    ExportOptions options = ExportOptions::fromPrefs(m_s.prefs);
    options.encoding = VKEncode;
    const QString extension = options.xls ? QStringLiteral("xls") : QStringLiteral("txt");
    const QFileInfo sheet(m_s.window.xpath);
    const QString name = (sheet.fileName().isEmpty() ? core::Mainwndo::kAppTitle : sheet.completeBaseName()) +
                         kXPFileNameDesc + QLatin1Char('.') + extension;
    const QString filter = options.xls ? QStringLiteral("Spreadsheet (*.xls)") : QStringLiteral("Text (*.txt)");
    const QString folder = sheet.fileName().isEmpty() ? m_s.folder : sheet.absolutePath();
    const QString path = m_s.dialogs.saveFile(kXPWinTitle, kXPButtonExport, folder, name, filter);
    if (path.isEmpty())
        return; // the window stays, for another choice or Cancel

    m_s.window.setDatastream(kDSExportingData);
    int replaced = 0;
    const QByteArray bytes = exportBytes(m_list, *rows, options, core::shortDate(m_s.clock.now().date()), &replaced);
    const platform::Result written = m_s.files.write(path, bytes);
    if (!written.ok()) {
        m_s.window.showStatus(QString());
        m_s.dialogs.message(kXPWriteFailed + QStringLiteral("\n\n") + written.message);
        return;
    }
    // Told once, where the user looks after an export.
    m_s.window.showStatus(replaced > 0 ? kXPReplaced + QString::number(replaced) : QString());
    ButtonPressed = kXPButtonExport;
}

} // namespace shell

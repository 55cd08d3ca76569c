#include "shell/prefwin.h"

#include "platform/yieldgate.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>
#include <QStandardPaths>
#include <QTextCodec>

namespace shell
{

namespace
{

// A check box that stands for one setting: the box and the setting change together, at once.
void tick(prefwin::CheckBox& box, bool& setting, bool on)
{
    box.Value = on;
    setting = on;
}

// A text of the copy on the Desktop: the tab and line breaks are the copy's own separators.
QString copyCell(QString text)
{
    for (QChar& c : text)
        if (c == QLatin1Char('\t') || c == QLatin1Char('\n') || c == QLatin1Char('\r'))
            c = QLatin1Char(' ');
    return text;
}

} // namespace

prefwin::prefwin(Services services) : m_prefs(services.prefs), m_s(std::move(services)) {}

QString prefwin::defaultDesktopFolder()
{
    const QString desktop = QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
    return !desktop.isEmpty() && QFileInfo(desktop).isDir() ? desktop : QDir::homePath();
}

QString prefwin::macRomanOnly(const QString& text)
{
    QTextCodec* codec = QTextCodec::codecForName("Apple Roman");
    if (!codec)
        return text;
    QString kept;
    kept.reserve(text.size());
    for (const QChar c : text) {
        // Half of a surrogate pair is never MacRoman, so characters beyond the BMP go as a whole.
        if (!c.isSurrogate() && codec->canEncode(c))
            kept += c;
    }
    return kept;
}

// ---- window ----

void prefwin::Event_Open(const QStringList& systemFonts)
{
    readlocaljob();
    EditField1 = m_prefs.usrname.left(kNameLength);

    xblnkcol.Value = m_prefs.expbc;
    xblnkrow.Value = m_prefs.expbr;
    xdate.Value = m_prefs.expdt;
    xheader.Value = m_prefs.exphd;
    xtotal.Value = m_prefs.explt;
    xnotes.Value = m_prefs.expnt;
    recentsheet.Value = m_prefs.autopen;
    enablewarn.Value = m_prefs.warningsign;
    stopOnQuit.Value = m_prefs.killQuit == 1;
    netconnect.Value = m_prefs.netlook;
    restartWeb.Enabled = netconnect.Value;

    prefRadioExcel = m_prefs.exportFormat == QLatin1String("xls");
    prefRadioText = !prefRadioExcel;

    // An odd stored value leaves the pop-up on the row it was made with.
    for (int row = 0; row < kNoactivRows.size(); ++row)
        if (m_prefs.waittime == kNoactivMinutes[row])
            noactivpop = row;
    noactivNote = m_s.desktop.activity().available() ? QString() : kPrefNoActivityUnavailable;
    formatMenu = int(exportEncoding(m_prefs));
    checkupdates = m_prefs.updatetime >= 0 && m_prefs.updatetime <= 3 ? m_prefs.updatetime : 0;
    Typesize_Open();
    lstfont_Open(systemFonts);

    const QList<QRect> screens = m_s.desktop.screens();
    if (!screens.isEmpty()) {
        const int index = m_s.hooks.windScreen();
        const QRect screen = index >= 0 && index < screens.size() ? screens[index] : screens.first();
        Top = screen.top() + screen.height() / 2 - Height / 2;
        Left = screen.left() + screen.width() / 2 - Width / 2;
    }

    // The slider shows the stored opacity without writing it back.
    Slider1.Value = qBound(kSliderMinimum, m_prefs.statustrans, kSliderMaximum);
    Transvalue = QString::number(Slider1.Value) + QLatin1Char('%');
    if (m_s.hooks.timesheetOpen()) {
        statusshow.Enabled = true;
        statusshow.Value = m_prefs.statusquo;
        Slider1.Enabled = statusshow.Value;
    } else {
        // Without a timesheet there is no strip to show or to make transparent.
        statusshow.Enabled = false;
        Slider1.Enabled = false;
    }
}

void prefwin::Saveprefa_Action()
{
    if (opplistnow.isEmpty()) {
        m_s.desktop.beep();
        TabPanel1 = 1;
        m_s.dialogs.message(kPrefAddOperation);
        return;
    }
    cleanupprefs();
}

void prefwin::cleanupprefs()
{
    // The window stays open when the list cannot be stored, so that nothing typed into it is lost.
    if (Canvas1 == 0) {
        if (!oplistupdate())
            return;
    } else if (!m_s.files.exists(m_s.operationsFile)) {
        // A first start straight onto a group list: its rows become the user's own list to start from.
        if (!writeOperations(opplistnow))
            return;
    }
    m_prefs.usrname = macRomanOnly(EditField1.left(kNameLength));
    if (m_s.hooks.timesheetOpen())
        m_s.hooks.applyListFont(m_prefs.chosefont, m_prefs.fontsize);
    m_s.hooks.saveprefs();
    ButtonPressed = kPrefSaveButton;
}

// ---- General tab ----

void prefwin::Typesize_Open()
{
    if (m_prefs.fontsize == 10)
        Typesize = 1;
    else if (m_prefs.fontsize < 10)
        Typesize = 0;
    else if (m_prefs.fontsize > 11)
        Typesize = 3;
    else
        Typesize = 2;
}

void prefwin::Typesize_Change(int row)
{
    if (row < 0 || row >= kTypesizeRows.size())
        return;
    Typesize = row;
    m_prefs.fontsize = 9 + row;
}

void prefwin::lstfont_Open(const QStringList& systemFonts)
{
    const bool system = m_prefs.chosefont == kSystemFont;
    lstfont = {system ? kPrefDefaultFont : m_prefs.chosefont, QString()};
    platform::YieldGate gate(m_s.desktop);
    // A family the system knows from several foundries comes as "Family [Foundry]": it is one family.
    QSet<QString> listed;
    for (QString family : systemFonts) {
        const qsizetype foundry = family.indexOf(QStringLiteral(" ["));
        if (foundry > 0 && family.endsWith(QLatin1Char(']')))
            family.truncate(foundry);
        if (!family.isEmpty() && !listed.contains(family.toCaseFolded())) {
            listed.insert(family.toCaseFolded());
            lstfont << family;
        }
        gate.step();
    }
    if (!system)
        lstfont << QString() << kPrefDefaultFont;
    lstfontValue = 0;
}

void prefwin::lstfont_Change(int row)
{
    if (row < 0 || row >= lstfont.size() || lstfont[row].isEmpty())
        return;
    // The first row always names the current font.
    const QString chosen = lstfont[row];
    lstfont.insert(0, chosen);
    lstfont.removeAt(1);
    lstfontValue = 0;
    m_prefs.chosefont = chosen == kPrefDefaultFont ? kSystemFont : chosen;
}

void prefwin::noactivpop_Change(int row)
{
    noactivpop = row >= 0 && row < kNoactivRows.size() ? row : 0;
    m_prefs.waittime = kNoactivMinutes[noactivpop];
    // The idle watch counts from this moment, not from input or a position seen long ago.
    m_s.desktop.activity().restart();
    const QPoint mouse = m_s.desktop.mousePosition();
    m_prefs.positionx = mouse.x();
    m_prefs.positiony = mouse.y();
}

void prefwin::recentsheet_Action(bool on)
{
    tick(recentsheet, m_prefs.autopen, on);
}

void prefwin::enablewarn_Action(bool on)
{
    tick(enablewarn, m_prefs.warningsign, on);
}

void prefwin::stopOnQuit_Action(bool on)
{
    stopOnQuit.Value = on;
    m_prefs.killQuit = on ? 1 : 0;
}

void prefwin::netconnect_Action(bool on)
{
    netconnect.Value = on;
    m_prefs.netlook = on;
    restartWeb.Enabled = on;
    // Switching on only allows listening; the Connect button starts it.
    if (!on && m_s.hooks.timesheetOpen())
        m_s.hooks.netLinkStop();
}

void prefwin::restartWeb_Action()
{
    if (restartWeb.Enabled && m_s.hooks.timesheetOpen())
        m_s.hooks.netLinkListen();
}

void prefwin::statusshow_Action(bool on)
{
    if (!statusshow.Enabled)
        return;
    statusshow.Value = on;
    m_prefs.statusquo = on;
    if (on) {
        m_s.hooks.showStatusWindow();
        Slider1.Enabled = true;
        Slider1.Value = qBound(kSliderMinimum, m_prefs.statustrans, kSliderMaximum);
        Transvalue = QString::number(Slider1.Value) + QLatin1Char('%');
    } else {
        m_s.hooks.hideStatusWindow();
        Slider1.Enabled = false;
    }
}

void prefwin::Slider1_ValueChanged(int value)
{
    if (!Slider1.Enabled)
        return;
    Slider1.Value = qBound(kSliderMinimum, value, kSliderMaximum);
    m_s.hooks.setStatusOpacity(Slider1.Value / 100.0);
    m_prefs.statustrans = Slider1.Value;
    Transvalue = QString::number(Slider1.Value) + QLatin1Char('%');
}

void prefwin::stripes_Action(int red, int green, int blue)
{
    m_prefs.red = std::clamp(red, 0, 255);
    m_prefs.green = std::clamp(green, 0, 255);
    m_prefs.blue = std::clamp(blue, 0, 255);
    m_s.hooks.applyStripes();
}

void prefwin::checkupdates_Change(int row)
{
    // Kept for the settings file only: the system's package manager brings new versions.
    if (row < 0 || row > 3)
        return;
    checkupdates = row;
    m_prefs.updatetime = row;
}

// ---- Operation List tab ----

void prefwin::readlocaljob()
{
    // Opening the window ends any use of a group list; the next save stores the path empty.
    m_prefs.rmteops.clear();
    Canvas1 = 0;
    StaticText11.Visible = true;
    newdesc.Enabled = true;
    newopp.Enabled = true;
    newopp.Visible = true;
    opplistnowEnabled = true;
    StaticText1.Text = kPrefNOTxt;

    opplistnow.clear();
    if (m_s.files.exists(m_s.operationsFile)) {
        QByteArray bytes;
        const platform::Result read = m_s.files.read(m_s.operationsFile, bytes);
        if (read.ok())
            opplistnow = storage::decodeOperations(bytes);
        else
            m_s.dialogs.message(kPrefOpsReadError + QStringLiteral("\n\n") + read.message);
    }
    opplistnow_Change(-1);
    exportlist.Enabled = !opplistnow.isEmpty();
}

void prefwin::Canvas1_Action(int choice)
{
    if (choice == 0) {
        readlocaljob();
        return;
    }
    if (choice != 1)
        return;
    const QString start = m_prefs.rmteops.isEmpty() ? QDir::homePath() : QFileInfo(m_prefs.rmteops).absolutePath();
    const QString path = m_s.dialogs.openFile(kPrefGroupDlgTitle, start, QString());
    if (path.isEmpty())
        return; // cancelled: the list shown stays
    m_prefs.rmteops = path;
    opplistnow.clear();
    bool found = false;
    if (m_s.files.exists(path)) {
        QByteArray bytes;
        found = m_s.files.read(path, bytes).ok();
        if (found)
            opplistnow = storage::decodeOperations(bytes);
    }
    showGroupList(found);
}

void prefwin::showGroupList(bool found)
{
    // The group's list is shared and read-only here: this window writes only the user's own file.
    Canvas1 = 1;
    opplistnow_Change(-1);
    StaticText1.Text = found ? kPrefGStatus : kPrefGStatusError;
    StaticText11.Visible = false;
    newopp.Enabled = false;
    newopp.Visible = false;
    newdesc.Enabled = false;
    opplistnowEnabled = false;
    addnew.Enabled = false;
    addnew.Default = false;
    exportlist.Enabled = !opplistnow.isEmpty();
}

bool prefwin::writeOperations(const storage::OperationList& list)
{
    int cut = 0;
    const platform::Result written = m_s.files.write(m_s.operationsFile, storage::encodeOperations(list, &cut));
    if (!written.ok()) {
        m_s.desktop.beep();
        m_s.dialogs.message(kPrefOpsWriteError + QStringLiteral("\n\n") + written.message);
        return false;
    }
    if (cut > 0 && !m_toldCut) {
        m_toldCut = true;
        m_s.dialogs.message(kPrefOpsCut);
    }
    return true;
}

bool prefwin::oplistupdate()
{
    if (Canvas1 != 0)
        return true; // a group list shown here is never written over the user's own
    if (!writeOperations(opplistnow))
        return false;
    m_s.hooks.refreshOppsList();
    return true;
}

bool prefwin::newopp_KeyDown(QChar key)
{
    if (key != QLatin1Char('-'))
        return false;
    m_s.desktop.beep();
    return true;
}

void prefwin::newopp_TextChange(const QString& text)
{
    QString name = text.left(kNameLength);
    // A "-" pasted in is dropped like a typed one.
    if (name.contains(QLatin1Char('-'))) {
        m_s.desktop.beep();
        name.remove(QLatin1Char('-'));
    }
    newopp.Text = name;
    addnew.Enabled = newopp.Enabled && !name.isEmpty();
    addnew.Default = addnew.Enabled;
}

void prefwin::opplistnow_Change(int row)
{
    if (row >= 0 && row < opplistnow.size() && opplistnowEnabled) {
        opplistnowIndex = row;
        killthis.Enabled = true;
        newdesc.Text = opplistnow[row].description;
        newopp_TextChange(opplistnow[row].name);
        addnew.Caption = kPrefAddChange;
    } else {
        opplistnowIndex = -1;
        killthis.Enabled = false;
        newdesc.Text.clear();
        newopp_TextChange(QString());
        addnew.Caption = kPSAddBtn;
    }
}

void prefwin::addnew_Action()
{
    if (Canvas1 != 0 || newopp.Text.isEmpty())
        return;
    const storage::Operation operation{newopp.Text.left(kNameLength), newdesc.Text.left(kDescriptionLength)};
    if (opplistnowIndex >= 0 && opplistnowIndex < opplistnow.size()) {
        opplistnow[opplistnowIndex] = operation;
    } else {
        // The file counts its rows in one signed byte.
        if (opplistnow.size() >= storage::kMaxOperations) {
            m_s.desktop.beep();
            m_s.dialogs.message(kPrefListFull);
            return;
        }
        opplistnow.append(operation);
    }
    opplistnow_Change(-1);
    exportlist.Enabled = true;
    oplistupdate();
}

void prefwin::killthis_Action()
{
    if (Canvas1 != 0 || opplistnowIndex < 0 || opplistnowIndex >= opplistnow.size())
        return;
    opplistnow.removeAt(opplistnowIndex);
    opplistnow_Change(-1);
    exportlist.Enabled = !opplistnow.isEmpty();
    oplistupdate();
}

void prefwin::exportlist_Action()
{
    QString text;
    platform::YieldGate gate(m_s.desktop);
    for (const storage::Operation& operation : std::as_const(opplistnow)) {
        text += copyCell(operation.name) + QLatin1Char('\t') + copyCell(operation.description) + QLatin1Char('\n');
        gate.step();
    }
    const platform::Result written =
        m_s.files.write(m_s.desktopFolder + QLatin1Char('/') + kPrefCopyName, text.toUtf8());
    if (!written.ok()) {
        m_s.desktop.beep();
        m_s.dialogs.message(kPrefCopyFailed + QStringLiteral("\n\n") + written.message);
        return;
    }
    m_s.dialogs.message(kPrefCopyMessage);
}

// ---- Export Options tab ----

void prefwin::xdate_Action(bool on)
{
    tick(xdate, m_prefs.expdt, on);
}

void prefwin::xheader_Action(bool on)
{
    tick(xheader, m_prefs.exphd, on);
}

void prefwin::xnotes_Action(bool on)
{
    tick(xnotes, m_prefs.expnt, on);
}

void prefwin::xtotal_Action(bool on)
{
    tick(xtotal, m_prefs.explt, on);
}

void prefwin::xblnkrow_Action(bool on)
{
    tick(xblnkrow, m_prefs.expbr, on);
}

void prefwin::xblnkcol_Action(bool on)
{
    tick(xblnkcol, m_prefs.expbc, on);
}

void prefwin::prefRadioExcel_Action()
{
    prefRadioExcel = true;
    prefRadioText = false;
    m_prefs.exportFormat = QStringLiteral("xls");
}

void prefwin::prefRadioText_Action()
{
    prefRadioExcel = false;
    prefRadioText = true;
    m_prefs.exportFormat = QStringLiteral("txt");
}

void prefwin::formatMenu_Change(int row)
{
    if (row < 0 || row >= kFormatRows.size())
        return;
    formatMenu = row;
    m_prefs.xprtEncoding = row;
}

} // namespace shell

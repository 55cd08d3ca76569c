#pragma once

#include "core/appprefs.h"
#include "core/mainwndo.h"
#include "platform/desktop.h"
#include "platform/dialogs.h"

#include <QRect>

namespace clients
{
class ClientView;
}

namespace jobs
{

// Every editor of a note takes the same limit: the note must fit its field of the timesheet file. A
// change that makes it no longer fit is refused, unless the note does not grow, so that a long note
// written elsewhere can still be shortened.
bool noteTakes(const QString& before, const QString& after);
// The room left in a note, in plain characters; a letter with an accent or a symbol takes two to four.
int noteRoomLeft(const QString& note);
inline const QString kNoteRoomLeft = QStringLiteral("Room left: %1 characters");
// Said when typing stops at the limit; %1 is the limit in plain characters.
inline const QString kNoteFull =
    QStringLiteral("The note is full: it holds %1 plain letters or digits, fewer with accents or symbols.");
QString noteFullText();

// The note editor of the selected row. The only way out is saveit: closing the window saves too.
class Notewin : public platform::ModalForm
{
public:
    inline static const QString kNWTitleTxt = QStringLiteral("Notes:");
    inline static const QString kNWDescriptionTxt = QStringLiteral("Notes for the selected job:");
    inline static const QString kNWSaveTxt = QStringLiteral("Save");
    inline static const QString kNWSaved = QStringLiteral("saveit");

    // Colours of the text field, as 0xRRGGBB.
    static constexpr unsigned kFieldBack = 0xFFFCDF;
    static constexpr unsigned kFieldText = 0x000000;
    static constexpr unsigned kFieldBackDark = 0xFF9933;
    static constexpr unsigned kFieldTextDark = 0x424242;
    static constexpr int kWidth = 400;
    static constexpr int kHeight = 220;

    // What a key does in the text field.
    enum class Key
    {
        Type,      // goes into the text
        Swallow,   // beeps and goes nowhere
        Save,      // presses saveit
        SelectAll, // selects all text
    };

    explicit Notewin(platform::Desktop& desktop) : m_desktop(desktop) {}
    QString formName() const override { return QStringLiteral("notewin"); }

    QString EditField1;
    int top = 0;
    int left = 0;
    bool full = false; // the last input was refused: the view says so

    void Event_Open(const QString& note, const QRect& screen);
    // The text the field would hold after an input. Refused when the note would no longer fit the file,
    // unless it does not grow (a long note written elsewhere can still be shortened).
    bool EditField1_TextChange(const QString& proposed);
    Key EditField1_KeyDown(int key, bool shift, bool ctrl);
    void saveit_Action() { ButtonPressed = kNWSaved; }
    int roomLeft() const { return noteRoomLeft(EditField1); }
    QString roomLeftText() const { return kNoteRoomLeft.arg(std::max(0, roomLeft())); }
    // The text saveit stores: all of it, or the longest start of it that fits.
    QString savedText() const;

private:
    platform::Desktop& m_desktop;
};

// Notes of the main window: the editor, the note strip under the list and its menu item.
class Notes
{
public:
    struct Services
    {
        platform::Desktop& desktop;
        platform::Dialogs& dialogs;
        clients::ClientView& clientView;
    };

    Notes(core::Mainwndo& window, core::AppPrefs& prefs, Services services) : m_w(window), m_prefs(prefs), m_s(services)
    {}

    // Shows notewin for the selected row; saving writes the note tag, the strip and ListBox2's copy.
    void _notey_Action();
    void saveit_Action(const QString& text);
    // Toggles the strip by the menu item's text; the answer is the item's new text.
    QString _shwnts_Action(const QString& itemText);
    // At start-up: the strip as it was left.
    void restoreStrip();

private:
    core::Mainwndo& m_w;
    core::AppPrefs& m_prefs;
    Services m_s;
};

} // namespace jobs

#include "jobs/notes.h"

#include "clients/clientview.h"
#include "storage/timesheet_file.h"

namespace jobs
{

bool noteTakes(const QString& before, const QString& after)
{
    return storage::fitsTimesheetField(after) || after.toUtf8().size() <= before.toUtf8().size();
}

int noteRoomLeft(const QString& note)
{
    return storage::kMaxFieldUtf8 - static_cast<int>(note.toUtf8().size());
}

QString noteFullText()
{
    return kNoteFull.arg(storage::kMaxFieldUtf8);
}

void Notewin::Event_Open(const QString& note, const QRect& screen)
{
    EditField1 = note;
    full = false;
    top = screen.height() / 2 - kHeight / 2;
    left = screen.width() / 2 - kWidth / 2;
}

bool Notewin::EditField1_TextChange(const QString& proposed)
{
    if (!noteTakes(EditField1, proposed)) {
        full = true;
        return false;
    }
    full = false;
    EditField1 = proposed;
    return true;
}

Notewin::Key Notewin::EditField1_KeyDown(int key, bool shift, bool ctrl)
{
    if (key == Qt::Key_Enter) {
        m_desktop.beep();
        return Key::Swallow;
    }
    if (key == Qt::Key_Return && shift)
        return Key::Save;
    if (key == Qt::Key_A && ctrl)
        return Key::SelectAll;
    return Key::Type;
}

QString Notewin::savedText() const
{
    if (storage::fitsTimesheetField(EditField1))
        return EditField1;
    // Cut at a character boundary: drop whole code points from the end until it fits.
    QString text = EditField1;
    while (!text.isEmpty() && !storage::fitsTimesheetField(text)) {
        text.chop(1);
        if (!text.isEmpty() && text.back().isHighSurrogate())
            text.chop(1);
    }
    return text;
}

void Notes::_notey_Action()
{
    if (!m_w.allows(core::Item::notey))
        return;
    Notewin notewin(m_s.desktop);
    const QList<QRect> screens = m_s.desktop.screens();
    notewin.Event_Open(m_w.ListBox1.selected().note, screens.isEmpty() ? QRect() : screens.first());
    m_w.noteWinOpen = true;
    m_s.dialogs.showModal(notewin);
    // Whatever closed the window, the text goes into the note: there is no cancel.
    saveit_Action(notewin.savedText());
}

void Notes::saveit_Action(const QString& text)
{
    m_w.noteWinOpen = false;
    if (!m_w.ListBox1.hasSelection())
        return;
    const int row = m_w.ListBox1.ListIndex;
    m_w.ListBox1.row(row).note = text;
    m_w.notebox.caption = text;
    emit m_w.rowChanged(row);
    emit m_w.controlsChanged();
    m_w.markChanged();
    if (m_w.ListBox2Ctl.visible)
        m_s.clientView.rebuildKeepingIndex(); // so that the copy in ListBox2 carries the note
}

QString Notes::_shwnts_Action(const QString& itemText)
{
    const bool show = itemText == Tr::VMShowNotes;
    m_w.notebox.visible = show;
    m_prefs.nteon = show;
    emit m_w.controlsChanged();
    return show ? Tr::VMHideNotes : Tr::VMShowNotes;
}

void Notes::restoreStrip()
{
    m_w.notebox.visible = m_prefs.nteon;
    emit m_w.controlsChanged();
}

} // namespace jobs

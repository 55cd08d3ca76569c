#pragma once

#include "core/mainwndo.h"
#include "platform/desktop.h"
#include "storage/filestore.h"

#include <QObject>
#include <QStringList>

#include "core/texts.h"

#include <algorithm>

namespace clients
{

// The client picker beside the lists and the single-client view it opens: ListBox2, a rebuilt copy of
// one client's rows of ListBox1, which stays the only source of truth.
class ClientView : public QObject
{
    Q_OBJECT

public:
    struct Services
    {
        platform::Desktop& desktop;
        core::MainwndoHooks& hooks;
        const storage::FileStore& files;
        QString clientsPath; // "VLK8Contacts" in the settings folder
    };

    // Row colours of clientlist2 and of the bar between the two lists, as 0xRRGGBB.
    static constexpr unsigned kClientRowLight = 0xD8DEE1;
    static constexpr unsigned kClientRowDark = 0x333333;
    static constexpr unsigned kDragbarRest = 0xEDEDED;
    static constexpr unsigned kDragbarRestDark = 0x784600;
    static constexpr unsigned kDragbarDragged = 0xB4B4B4;
    static constexpr unsigned kDragbarDraggedDark = 0xBE6400;

    // Bounds of the client column's width, and of the bar between the lists within the window.
    static constexpr int kClientWidthMin = 90;
    static constexpr int kClientWidthMax = 300;
    static constexpr int kDragbarTopMargin = 80;
    static constexpr int kDragbarBottomMargin = 100;
    static constexpr int kWindowMinHeight = 400;

    ClientView(core::Mainwndo& window, Services services);

    // clientlist2: row 0 is the folder, the names its children (rows 1 and on) while it is open.
    int clientlist2RowCount() const { return 1 + static_cast<int>(m_children.size()); }
    QString clientlist2Row(int row) const { return row == 0 ? Tr::MWClientListf : m_children.value(row - 1); }
    int clientlist2ListIndex() const { return m_clientIndex; }
    QString clientlist2Text() const { return m_clientIndex < 0 ? QString() : clientlist2Row(m_clientIndex); }
    bool expanded() const { return m_expanded; }
    bool dragbarVisible() const { return m_dragbarVisible; }

    void clientlist2_Open();
    void clientlist2_ExpandRow();
    void clientlist2_CollapseRow();
    // The selection of clientlist2 moved: clientlist2_Change follows when it really moved.
    void setClientlist2Index(int index);
    void clientlist2_Change();

    void populatelistbox2();
    // The program or the user selected a row of ListBox2 (-1: none); ListBox2_Change follows.
    void setListBox2Index(int index);
    void ListBox2_Change();
    // Marks of the rows of ListBox2; answered by the budget tracking once it is wired.
    void budgetcheck2() { m_s.hooks.budgetcheck2(); }

    // ListBox2 rebuilt after an edit of ListBox1, its selection kept by index.
    void rebuildKeepingIndex();
    // ListBox2 rebuilt with ListBox1's selected row selected in it, when that row is the client's.
    void rebuildFollowingListBox1();

    // invisibledragbarV: a drag is taken only while the pointer stands between the bounds.
    bool invisibledragbarV_MouseDrag(int pointerX, int dx);
    static int clampClientWidth(int width) { return std::clamp(width, kClientWidthMin + 1, kClientWidthMax - 1); }
    // dragbar: the window's minimum height after a drag ends.
    static int dragbarMinHeight(int listBox2Height) { return std::max(kWindowMinHeight, listBox2Height + 100); }
    static bool dragbarAccepts(int pointerY, int windowHeight)
    {
        return pointerY > kDragbarTopMargin && pointerY < windowHeight - kDragbarBottomMargin;
    }

signals:
    void clientRowsChanged();        // rows or selection of clientlist2
    void listBox2Reset();            // ListBox2 rebuilt or reordered
    void listBox2SelectionChanged(); // ListIndex of ListBox2 moved
    void viewToggled();              // ListBox2 and the bar shown or hidden

private:
    void selectListBox2Quietly(int index);

    core::Mainwndo& m_w;
    Services m_s;
    QStringList m_children;
    int m_clientIndex = -1;
    bool m_expanded = false;
    bool m_dragbarVisible = false;
};

} // namespace clients

#pragma once

#include "clients/clientview.h"
#include "core/appprefs.h"

#include <QSplitter>

class QLabel;
class QTreeView;
class QTreeWidget;

namespace core::ui
{
class TimesheetModel;
}

namespace clients::ui
{

// The list area of the main window: clientlist2 on the left, and on the right ListBox2 above the given
// ListBox1. The handle beside the client list is invisibledragbarV, the one between the lists dragbar.
class ClientPane : public QSplitter
{
    Q_OBJECT

public:
    inline static const QString kAddClient = QStringLiteral("Add New Client...");
    // What a screen reader calls the two lists, which have no label on screen.
    inline static const QString kClientList = QStringLiteral("Client List");
    inline static const QString kListBox2Name = QStringLiteral("Single Client List");

    ClientPane(ClientView& view, core::Mainwndo& window, const core::AppPrefs& prefs, QWidget* listBox1,
               QWidget* parent = nullptr);

    QTreeWidget* clientlist2() const { return m_clients; }
    QTreeView* ListBox2() const { return m_listBox2; }
    QSplitter* dragbar() const { return m_lists; }
    QLabel* addClient2() const { return m_addClient; }
    core::ui::TimesheetModel* listBox2Model() const { return m_model; }

signals:
    void addClientClicked(); // addClient2_MouseDown

protected:
    void changeEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showClientRows();
    void showListBox2Selection();
    void refresh();
    void paintColours();

    ClientView& m_view;
    core::Mainwndo& m_w;
    QTreeWidget* m_clients = nullptr;
    QLabel* m_addClient = nullptr;
    QSplitter* m_lists = nullptr;
    QTreeView* m_listBox2 = nullptr;
    core::ui::TimesheetModel* m_model = nullptr;
    bool m_showing = false;
};

} // namespace clients::ui

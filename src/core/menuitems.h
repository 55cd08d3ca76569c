#pragma once

#include <QString>

#include <array>
#include <initializer_list>

namespace core
{

// The program's commands, named after their menu items. Menus, keys, buttons, the tray and the lists'
// context menus all reach a command through one of these names, and so through one enabled state.
enum class Item : int
{
    nusheet,
    open,
    clozeit,
    switchit,
    openOld,
    save,
    saveAs,
    presetJobs,
    exportmenu,
    FileAddNewClient,
    syncAddressBook,
    FilePrintLayout,
    printit,
    FileQuit,
    EditCut,
    EditCopy,
    EditPaste,
    nujobmenu2,
    duplicate,
    edjobmenu,
    notey,
    zerorow,
    clearjb2,
    totaltime2,
    totaldy2,
    shwnts,
    webo,
    statusStart,
    statusStop,
    helpon2,
    aboutme,
    nineprefs,
};

inline constexpr int kItemCount = static_cast<int>(Item::nineprefs) + 1;

// The item's name as the program calls it, for messages of the tests.
QString itemName(Item item);
// The key that runs the item, in the portable text form ("Ctrl+Shift+W"); empty when it has none.
QString itemKey(Item item);

// The enabled state and the caption of every command at one moment. Nothing here is kept between two
// moments: the enable procedures of the application and the main window work it out each time.
class MenuItems
{
public:
    MenuItems(); // every item off, with its usual caption

    bool enabled(Item item) const { return m_on[index(item)]; }
    void set(Item item, bool on) { m_on[index(item)] = on; }
    void on(std::initializer_list<Item> items);
    void off(std::initializer_list<Item> items);

    const QString& caption(Item item) const { return m_caption[index(item)]; }
    void setCaption(Item item, const QString& caption) { m_caption[index(item)] = caption; }

    bool operator==(const MenuItems&) const = default;

private:
    static size_t index(Item item) { return static_cast<size_t>(item); }
    std::array<bool, kItemCount> m_on{};
    std::array<QString, kItemCount> m_caption;
};

} // namespace core

#include "core/menuitems.h"

#include "core/texts.h"

namespace core
{

namespace
{

struct ItemText
{
    const char* name;
    const QString* caption;
    const char* key;
};

// In the order of the enumeration.
const std::array<ItemText, kItemCount>& itemTexts()
{
    static const std::array<ItemText, kItemCount> texts{{
        {"nusheet", &Tr::FMNewTimesheet, "Ctrl+N"},
        {"open", &Tr::FMOpenTimesheet, "Ctrl+O"},
        {"clozeit", &Tr::FMCloseTimesheet, "Ctrl+W"},
        {"switchit", &Tr::FMSwitchTimesheet, "Ctrl+Shift+W"},
        {"openOld", &Tr::FMOpenOld, ""},
        {"save", &Tr::SaveMenuText, "Ctrl+S"},
        {"saveAs", &Tr::SaveAsMenuText, "Ctrl+Shift+S"},
        {"presetJobs", &Tr::FMPresetJobs, "Ctrl+B"},
        {"exportmenu", &Tr::FMExport, "Ctrl+T"},
        {"FileAddNewClient", &Tr::FMAddClient, ""},
        {"syncAddressBook", &Tr::FMSyncClients, ""},
        {"FilePrintLayout", &Tr::PrintOpsMenuText, ""},
        {"printit", &Tr::PrintMenuText, "Ctrl+P"},
        {"FileQuit", &Tr::QuitMenuText, "Ctrl+Q"},
        {"EditCut", &Tr::EMCut, "Ctrl+X"},
        {"EditCopy", &Tr::EMCopy, "Ctrl+C"},
        {"EditPaste", &Tr::EMPaste, "Ctrl+V"},
        {"nujobmenu2", &Tr::EMAddJob, "Ctrl+J"},
        {"duplicate", &Tr::EMDupeJob, "Ctrl+D"},
        {"edjobmenu", &Tr::EMJobDetails, "Ctrl+F"},
        {"notey", &Tr::EMJobNotes, "Ctrl+E"},
        {"zerorow", &Tr::EMReset, "Ctrl+R"},
        {"clearjb2", &Tr::EMDeleteJob, ""},
        {"totaltime2", &Tr::EMJobTotal, "Ctrl+A"},
        {"totaldy2", &Tr::EMDayTotal, "Ctrl+L"},
        {"shwnts", &Tr::VMShowNotes, ""},
        {"webo", &Tr::VMViewInBrowser, ""},
        {"statusStart", &Tr::CMStart, ""},
        {"statusStop", &Tr::CMStop, ""},
        {"helpon2", &Tr::OnlineHelpText, ""},
        {"aboutme", &Tr::AboutMenuText, ""},
        {"nineprefs", &Tr::PrefMenuText, "Ctrl+,"},
    }};
    return texts;
}

} // namespace

QString itemName(Item item)
{
    return QString::fromLatin1(itemTexts()[static_cast<size_t>(item)].name);
}

QString itemKey(Item item)
{
    return QString::fromLatin1(itemTexts()[static_cast<size_t>(item)].key);
}

MenuItems::MenuItems()
{
    for (size_t i = 0; i < m_caption.size(); ++i)
        m_caption[i] = *itemTexts()[i].caption;
}

void MenuItems::on(std::initializer_list<Item> items)
{
    for (Item item : items)
        set(item, true);
}

void MenuItems::off(std::initializer_list<Item> items)
{
    for (Item item : items)
        set(item, false);
}

} // namespace core

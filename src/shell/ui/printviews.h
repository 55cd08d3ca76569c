#pragma once

namespace platform::qt
{
class QtDialogs;
}

namespace shell::ui
{

// The windows of print and export: Print Options..., Print... and Export....
void registerPrintViews(platform::qt::QtDialogs& dialogs);

} // namespace shell::ui

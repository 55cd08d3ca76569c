#pragma once

namespace platform::qt
{
class QtDialogs;
}

namespace clients::ui
{

// Registers the view of the add-contact window.
void registerAddressaddView(platform::qt::QtDialogs& dialogs);

} // namespace clients::ui

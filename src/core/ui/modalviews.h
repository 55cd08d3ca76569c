#pragma once

namespace platform::qt
{
class QtDialogs;
}

namespace core::ui
{

// Registers the views of the core's modal windows: the rollover question and the two total windows.
void registerModalViews(platform::qt::QtDialogs& dialogs);

} // namespace core::ui

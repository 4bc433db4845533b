// Windows remember where they stood, under keys of the settings' section "Main".
#pragma once

#include <string>

#include "engine/ports.h"
#include "platform/form.h"

namespace vantrel::app {

/// Moves the window to the position stored as window + "Top" and window + "Left" (where it is now when
/// nothing is stored yet), kept on the screen.
void restorePosition(platform::Form& form, engine::SettingsPort& settings, const std::string& window);

void savePosition(const platform::Form& form, engine::SettingsPort& settings, const std::string& window);

}  // namespace vantrel::app

// Windows that the operator can keep above all others: settings "frmMainOnTop" and "frmLogOnTop".
#pragma once

#include "engine/ports.h"
#include "platform/form.h"

namespace vantrel::app {

/// What the setting says of the window.
bool wantsOnTop(const platform::Form& form, engine::SettingsPort& settings);

/// Turns the setting around; the window follows with applyOnTop.
void toggleOnTop(const platform::Form& form, engine::SettingsPort& settings);

/// Puts the window above the others, or back among them, and ticks the menu item accordingly.
void applyOnTop(platform::Form& form, platform::MenuItem& item, engine::SettingsPort& settings);

}  // namespace vantrel::app

// Windows and controls by the names that scripts use.
#pragma once

#include <string>

#include "headless/json_values.h"
#include "platform/form.h"

namespace vantrel::headless {

/// "frmMain"; throws CommandError when there is none.
platform::Form& requiredForm(const platform::Screen& screen, const std::string& name);

/// "frmMain.cmdRun"; throws CommandError when there is none.
platform::Control& requiredControl(const platform::Screen& screen, const std::string& path);

/// The control as this kind of control; throws CommandError when it is of another kind.
template <typename Kind>
Kind& requiredKind(platform::Control& control, const char* kindName) {
    if (auto* kind = dynamic_cast<Kind*>(&control)) return *kind;
    throw CommandError(control.name() + " is not a " + kindName);
}

}  // namespace vantrel::headless

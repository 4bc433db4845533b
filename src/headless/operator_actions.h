// What an operator's hands can do to the windows, as handlers for the event loop.
#pragma once

#include <functional>
#include <string>

#include "platform/form.h"

namespace vantrel::headless {

/// Something the operator is about to do. `delivered` tells whether the control can be reached at this
/// moment; `act` does it.
struct OperatorAction {
    bool delivered = false;
    std::function<void()> act;
};

// Each throws CommandError when controls of this kind don't take the action. Using a control makes its window
// the active one first.

/// Buttons, menu items, check boxes and option buttons.
OperatorAction click(platform::Control& control);
/// The window itself, beside its controls.
OperatorAction click(platform::Form& form);
/// Text boxes and the texts of lists.
OperatorAction type(platform::Control& control, const std::string& text);
OperatorAction key(platform::TextBox& box, int code);
OperatorAction leave(platform::Control& control);
/// Throws CommandError when the list has no such entry.
OperatorAction choose(platform::ComboBox& list, const std::string& item);
/// Check boxes, menu items with a check mark, and option buttons (which can't be cleared).
OperatorAction check(platform::Control& control, int value);
OperatorAction close(platform::Form& form);

}  // namespace vantrel::headless

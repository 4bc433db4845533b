// Which keys a box for numbers lets through: what TextBox::keyFilter takes.
#pragma once

namespace vantrel::platform {

/// Backspace, Enter, "#" and digits; 0 for every other character code.
int wholeNumberKey(int code);

/// The same, and a point; a comma becomes a point.
int decimalNumberKey(int code);

}  // namespace vantrel::platform

// Numbers as INDI writes them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vantrel::hosts::indi {

/// A decimal number, or a sexagesimal one of two or three fields between colons, semicolons or blanks
/// ("-0:30:36"). Nothing when it is neither, or isn't finite.
std::optional<double> readNumber(std::string_view text);

/// With a point and as many digits as it takes to read the same value, without an exponent.
std::string writeNumber(double value);

}  // namespace vantrel::hosts::indi

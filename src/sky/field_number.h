// Numbers in the columns of text tables.
#pragma once

#include <optional>
#include <string_view>

namespace vantrel::sky {

/// The text without the blanks around it.
std::string_view trimmed(std::string_view text);

/// The number in a field, blanks around it and a plus sign aside: nothing when the field is blank, NaN when
/// something else than a number stands there.
std::optional<double> fieldNumber(std::string_view field);

}  // namespace vantrel::sky

// Numbers in the columns of text tables.
#pragma once

#include <optional>
#include <string_view>

namespace vantrel::sky {

/// The number in a field, blanks around it and a plus sign aside: nothing when the field is blank, NaN when
/// something else than a number stands there.
std::optional<double> fieldNumber(std::string_view field);

}  // namespace vantrel::sky

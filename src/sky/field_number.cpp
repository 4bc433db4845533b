#include "sky/field_number.h"

#include <charconv>
#include <cmath>
#include <limits>

#include "platform/text.h"

namespace vantrel::sky {

std::optional<double> fieldNumber(std::string_view field) {
    field = platform::withoutBlanks(field);
    if (field.empty()) return std::nullopt;
    if (field.front() == '+') field.remove_prefix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), value);
    const bool isNumber = error == std::errc() && end == field.data() + field.size() && std::isfinite(value);
    return isNumber ? value : std::numeric_limits<double>::quiet_NaN();
}

}  // namespace vantrel::sky

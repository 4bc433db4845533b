#include "sky/field_number.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace vantrel::sky {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const auto first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::optional<double> fieldNumber(std::string_view field) {
    field = trimmed(field);
    if (field.empty()) return std::nullopt;
    if (field.front() == '+') field.remove_prefix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), value);
    const bool isNumber = error == std::errc() && end == field.data() + field.size() && std::isfinite(value);
    return isNumber ? value : std::numeric_limits<double>::quiet_NaN();
}

}  // namespace vantrel::sky

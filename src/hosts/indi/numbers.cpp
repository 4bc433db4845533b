#include "hosts/indi/numbers.h"

#include <array>
#include <charconv>
#include <cmath>

#include "platform/text.h"

namespace vantrel::hosts::indi {
namespace {

std::optional<double> readUnsigned(std::string_view text) {
    double value = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool whole = failure == std::errc() && end == text.data() + text.size();
    if (!whole || !std::isfinite(value) || std::signbit(value)) return std::nullopt;
    return value;
}

}  // namespace

std::optional<double> readNumber(std::string_view text) {
    const std::string number = platform::trimmed(text);
    std::string_view rest = number;
    const bool negative = rest.starts_with('-');
    if (negative || rest.starts_with('+')) rest.remove_prefix(1);
    double value = 0;
    for (const double unit : {1.0, 60.0, 3600.0}) {
        const auto end = rest.find_first_of(":; ");
        const auto field = readUnsigned(rest.substr(0, end));
        if (!field) return std::nullopt;
        value += *field / unit;
        if (end == std::string_view::npos) return negative ? -value : value;
        rest.remove_prefix(end + 1);
    }
    return std::nullopt;
}

std::string writeNumber(double value) {
    std::array<char, 512> digits;
    const auto written =
        std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed);
    return written.ec == std::errc() ? std::string(digits.data(), written.ptr) : "0";
}

}  // namespace vantrel::hosts::indi

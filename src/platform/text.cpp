#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <limits>

#include "platform/errors.h"

namespace vantrel::platform {
namespace {

/// A number's decimal digits without a point; its value is 0.DIGITS times ten to the `exponent`.
struct Decimal {
    std::string digits;
    int exponent = 0;
};

Decimal toDecimal(double magnitude) {
    std::array<char, 32> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), magnitude,
                                      std::chars_format::scientific, 14);
    const std::string_view text(buffer.data(), static_cast<std::size_t>(result.ptr - buffer.data()));
    const auto e = text.find('e');
    Decimal decimal;
    for (char c : text.substr(0, e))
        if (c != '.') decimal.digits += c;
    int power = 0;
    auto first = text.substr(e + 1);
    if (first.front() == '+') first.remove_prefix(1);
    std::from_chars(first.data(), first.data() + first.size(), power);
    decimal.exponent = power + 1;
    return decimal;
}

/// The digits up to `places` after the point, halves rounded away from zero; at least one digit is left.
/// The last `places` characters of the result are the fraction.
std::string roundedDigits(const Decimal& decimal, std::size_t places) {
    const int kept = decimal.exponent + static_cast<int>(places);
    std::string digits = kept > 0 ? decimal.digits.substr(0, static_cast<std::size_t>(kept)) : std::string();
    digits.resize(static_cast<std::size_t>(std::max(kept, 0)), '0');
    const bool up = kept >= 0 && kept < static_cast<int>(decimal.digits.size()) &&
                    decimal.digits[static_cast<std::size_t>(kept)] >= '5';
    if (up) {
        std::size_t i = digits.size();
        while (i > 0 && digits[i - 1] == '9') digits[--i] = '0';
        if (i > 0)
            ++digits[i - 1];
        else
            digits.insert(digits.begin(), '1');
    }
    if (digits.size() < places) digits.insert(0, places - digits.size(), '0');
    return digits;
}

std::size_t countZeros(std::string_view part) {
    return static_cast<std::size_t>(std::count(part.begin(), part.end(), '0'));
}

bool isSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

/// How many characters at the start of the text form a number.
std::size_t numberLength(std::string_view text) {
    std::size_t i = 0;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
    const std::size_t start = i;
    while (i < text.size() && isDigit(text[i])) ++i;
    std::size_t digits = i - start;
    if (i < text.size() && (text[i] == '.' || text[i] == ',')) {
        std::size_t j = i + 1;
        while (j < text.size() && isDigit(text[j])) ++j;
        digits += j - i - 1;
        if (digits > 0) i = j;
    }
    if (digits == 0) return 0;
    if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
        std::size_t j = i + 1;
        if (j < text.size() && (text[j] == '+' || text[j] == '-')) ++j;
        const std::size_t first = j;
        while (j < text.size() && isDigit(text[j])) ++j;
        if (j > first) i = j;
    }
    return i;
}

std::optional<double> convert(std::string_view text) {
    std::string plain(text);
    std::replace(plain.begin(), plain.end(), ',', '.');
    const char* first = plain.data();
    if (plain.front() == '+') ++first;
    double value = 0;
    const auto result = std::from_chars(first, plain.data() + plain.size(), value);
    if (result.ec != std::errc() || !std::isfinite(value)) return std::nullopt;
    return value;
}

template <typename Integer>
Integer toInteger(double value) {
    const double rounded = std::nearbyint(value);
    if (!(rounded >= std::numeric_limits<Integer>::min() && rounded <= std::numeric_limits<Integer>::max()))
        throw runTimeError(error_number::kOverflow);
    return static_cast<Integer>(rounded);
}

bool startsCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }

}  // namespace

std::string formatNumber(double value, std::string_view pattern) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value > 0 ? "inf" : "-inf";

    const auto point = pattern.find('.');
    const std::string_view whole = pattern.substr(0, point);
    const std::string_view fraction = point == std::string_view::npos ? "" : pattern.substr(point + 1);

    std::string digits = roundedDigits(toDecimal(std::abs(value)), fraction.size());
    std::string shownFraction = digits.substr(digits.size() - fraction.size());
    std::string shownWhole = digits.substr(0, digits.size() - fraction.size());
    shownWhole.erase(0, std::min(shownWhole.find_first_not_of('0'), shownWhole.size()));
    if (shownWhole.size() < countZeros(whole))
        shownWhole.insert(0, countZeros(whole) - shownWhole.size(), '0');

    const auto lastZero = fraction.rfind('0');
    const std::size_t least = lastZero == std::string_view::npos ? 0 : lastZero + 1;
    while (shownFraction.size() > least && shownFraction.back() == '0') shownFraction.pop_back();

    std::string text = shownWhole;
    if (point != std::string_view::npos) text += "." + shownFraction;
    const bool onlyZeros = text.find_first_of("123456789") == std::string::npos;
    return value < 0 && !onlyZeros ? "-" + text : text;
}

std::string toText(double value) {
    std::array<char, 32> buffer{};
    const auto result =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::general, 15);
    std::string text(buffer.data(), result.ptr);
    return text == "-0" ? "0" : text;
}

std::optional<double> parseNumber(std::string_view text) {
    const std::string plain = trimmed(text);
    if (plain.empty() || numberLength(plain) != plain.size()) return std::nullopt;
    return convert(plain);
}

double toNumber(std::string_view text) {
    if (const auto value = parseNumber(text)) return *value;
    throw runTimeError(error_number::kTypeMismatch);
}

double leadingNumber(std::string_view text) {
    const std::string plain = trimmed(text);
    const std::size_t length = numberLength(plain);
    if (length == 0) return 0;
    return convert(std::string_view(plain).substr(0, length)).value_or(0);
}

std::int16_t toInt16(double value) { return toInteger<std::int16_t>(value); }
std::int32_t toInt32(double value) { return toInteger<std::int32_t>(value); }

std::string toLower(std::string_view text) {
    std::string lower(text);
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return lower;
}

std::string toUpper(std::string_view text) {
    std::string upper(text);
    for (char& c : upper)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return upper;
}

bool equalIgnoringCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && toLower(a) == toLower(b);
}

bool containsIgnoringCase(std::string_view text, std::string_view part) {
    return toLower(text).find(toLower(part)) != std::string::npos;
}

std::string_view withoutBlanks(std::string_view text) {
    while (!text.empty() && isSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && isSpace(text.back())) text.remove_suffix(1);
    return text;
}

std::string trimmed(std::string_view text) { return std::string(withoutBlanks(text)); }

std::string joinLines(std::initializer_list<std::string_view> lines) {
    std::string joined;
    const char* separator = "";
    for (const std::string_view line : lines) {
        joined += separator;
        joined += line;
        separator = kCrLf;
    }
    return joined;
}

std::string firstCharacters(std::string_view text, std::size_t count) {
    std::size_t end = 0;
    for (; end < text.size(); ++end)
        if (startsCharacter(text[end]) && count-- == 0) break;
    return std::string(text.substr(0, end));
}

std::string lastCharacters(std::string_view text, std::size_t count) {
    std::size_t begin = text.size();
    while (begin > 0 && count > 0)
        if (startsCharacter(text[--begin])) --count;
    return std::string(text.substr(begin));
}

}  // namespace vantrel::platform

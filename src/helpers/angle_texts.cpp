#include "helpers/angle_texts.h"

#include <cctype>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <vector>

#include "platform/text.h"

namespace vantrel::helpers {
namespace {

using platform::isDigit;

std::int64_t powerOfTen(int exponent) {
    std::int64_t power = 1;
    while (exponent-- > 0) power *= 10;
    return power;
}

std::string padded(std::int64_t number, std::size_t digits) {
    std::string text = std::to_string(number);
    return text.size() < digits ? std::string(digits - text.size(), '0') + text : text;
}

/// |value| in its last places, rounded half away from zero.
std::int64_t inLastPlaces(double value, int placesPerUnit, int decimals) {
    if (!(std::abs(value) <= 1e6))
        throw std::invalid_argument("The angle must be between -1000000 and 1000000");
    if (decimals < 0 || decimals > 9)
        throw std::invalid_argument("The number of decimals must be between 0 and 9");
    return std::llround(std::abs(value) * placesPerUnit * static_cast<double>(powerOfTen(decimals)));
}

/// Two digits, and the decimals behind a point.
std::string withDecimals(std::int64_t places, int decimals) {
    const std::int64_t scale = powerOfTen(decimals);
    std::string text = padded(places / scale, 2);
    if (decimals > 0) text += "." + padded(places % scale, static_cast<std::size_t>(decimals));
    return text;
}

std::string signOf(double value, std::int64_t places) { return value < 0 && places != 0 ? "-" : ""; }

/// The number that starts at the place, which is left behind it. A decimal sign counts only before a digit.
double takeNumber(std::string_view text, std::size_t& place) {
    std::string digits;
    bool seenPoint = false;
    for (; place < text.size(); ++place) {
        const bool isPoint = (text[place] == '.' || text[place] == ',') && !seenPoint &&
                             place + 1 < text.size() && isDigit(text[place + 1]);
        if (!isPoint && !isDigit(text[place])) break;
        seenPoint = seenPoint || isPoint;
        digits += isPoint ? '.' : text[place];
    }
    const auto number = platform::parseNumber(digits);
    if (!number)
        throw std::invalid_argument("There is a number too large for an angle in \"" + std::string(text) +
                                    "\"");
    return *number;
}

}  // namespace

std::string formatSeconds(double value, const Delimiters& delimiters, int decimals) {
    const std::int64_t places = inLastPlaces(value, 3600, decimals);
    const std::int64_t minute = 60 * powerOfTen(decimals);
    return signOf(value, places) + padded(places / (60 * minute), 2) + delimiters.units +
           padded(places / minute % 60, 2) + delimiters.minutes + withDecimals(places % minute, decimals) +
           delimiters.seconds;
}

std::string formatMinutes(double value, const Delimiters& delimiters, int decimals) {
    const std::int64_t places = inLastPlaces(value, 60, decimals);
    const std::int64_t unit = 60 * powerOfTen(decimals);
    return signOf(value, places) + padded(places / unit, 2) + delimiters.units +
           withDecimals(places % unit, decimals) + delimiters.minutes;
}

double parseSexagesimal(std::string_view text) {
    std::vector<double> numbers;
    bool negative = false;
    for (std::size_t place = 0; place < text.size() && numbers.size() < 3;) {
        const bool startsNumber =
            isDigit(text[place]) || ((text[place] == '.' || text[place] == ',') && place + 1 < text.size() &&
                                     isDigit(text[place + 1]));
        if (startsNumber) {
            numbers.push_back(takeNumber(text, place));
            continue;
        }
        negative = negative || (text[place] == '-' && numbers.empty());
        ++place;
    }
    double value = 0;
    double unit = 1;
    for (const double number : numbers) {
        value += number / unit;
        unit *= 60;
    }
    return negative ? -value : value;
}

}  // namespace vantrel::helpers

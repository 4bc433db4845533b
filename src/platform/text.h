// Numbers as text and text as numbers, the way the program's windows and log lines show and read them.
// Nothing here looks at the locale: a log line and a stored setting read the same everywhere.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace vantrel::platform {

inline constexpr const char* kCrLf = "\r\n";

/// The value in a fixed pattern of '0' and '#' with at most one point, such as "0.0000" or "00.000". Rounds
/// halves away from zero on the value's 15 significant decimal digits. A result that shows only zeros has no
/// minus sign. Infinite values and NaN give "inf", "-inf" and "nan".
std::string formatNumber(double value, std::string_view pattern);

/// The shortest general form with up to 15 significant digits: 4 as "4", 0.3 as "0.3".
std::string toText(double value);

/// The whole text as a number: optional blanks, sign, digits, point (or a comma in its place), exponent.
/// Nothing when it is not one, or is beyond the range of a double.
std::optional<double> parseNumber(std::string_view text);

/// As parseNumber, but throws the run-time failure 13 (type mismatch) when the text is not a number.
double toNumber(std::string_view text);

/// The number at the start of the text; 0 when it starts with none.
double leadingNumber(std::string_view text);

/// Nearest integer, halves to the even neighbour; run-time failure 6 (overflow) outside the 16-bit range.
std::int16_t toInt16(double value);
/// The same for 32 bits.
std::int32_t toInt32(double value);

/// The names of members, sections and keys are compared without regard to case.
std::string toLower(std::string_view text);
std::string toUpper(std::string_view text);
bool equalIgnoringCase(std::string_view a, std::string_view b);
bool containsIgnoringCase(std::string_view text, std::string_view part);

/// 0 to 9.
inline bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// The text without the blanks around it (spaces, tabs, ends of lines), as a part of what was given.
std::string_view withoutBlanks(std::string_view text);
/// The same as a text of its own.
std::string trimmed(std::string_view text);

/// The lines with CR LF between them.
std::string joinLines(std::initializer_list<std::string_view> lines);

/// The first or last so many characters of a text in UTF-8; the whole text when it has no more.
std::string firstCharacters(std::string_view text, std::size_t count);
std::string lastCharacters(std::string_view text, std::size_t count);

}  // namespace vantrel::platform

#include "hosts/server_text.h"

#include <charconv>
#include <cstdint>

#include "platform/text.h"

namespace vantrel::hosts {

namespace {

constexpr std::size_t kMostBytes = 1000;
constexpr std::size_t kMostCharacters = 300;

/// Bytes of the character that begins the text, 0 when none does. RFC 3629.
std::size_t characterLength(std::string_view text) {
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    const std::uint32_t first = byte(0);
    if (first < 0x80U) return 1;
    const std::size_t length = first < 0xC2U   ? 0
                               : first < 0xE0U ? 2
                               : first < 0xF0U ? 3
                               : first < 0xF5U ? 4
                                               : 0;
    if (length == 0 || length > text.size()) return 0;
    std::uint32_t code = first & (0x7FU >> length);
    for (std::size_t at = 1; at < length; ++at) {
        if ((byte(at) & 0xC0U) != 0x80U) return 0;
        code = code << 6U | (byte(at) & 0x3FU);
    }
    const bool tooLong = (length == 3 && code < 0x800U) || (length == 4 && code < 0x10000U);
    const bool isSurrogate = code >= 0xD800U && code < 0xE000U;
    return tooLong || isSurrogate || code > 0x10FFFFU ? 0 : length;
}

bool isControl(char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; }

}  // namespace

std::string oneLine(std::string_view words) {
    std::string line;
    for (std::string_view rest = words.substr(0, kMostBytes); !rest.empty();) {
        const std::size_t length = characterLength(rest);
        if (length == 0)
            line += '?';
        else if (length == 1 && isControl(rest.front()))
            line += ' ';
        else
            line += rest.substr(0, length);
        rest.remove_prefix(length == 0 ? 1 : length);
    }
    return platform::trimmed(platform::firstCharacters(line, kMostCharacters));
}

std::optional<int> parsePort(std::string_view text) {
    constexpr int kHighest = 65535;
    int port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    const bool whole = error == std::errc() && end == text.data() + text.size();
    return whole && 0 < port && port <= kHighest ? std::optional(port) : std::nullopt;
}

}  // namespace vantrel::hosts

// What a fuzz input stands for: a text, or several files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace vantrel::fuzz {

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// Stands between the files of an input that holds several.
inline constexpr std::string_view kNextFile = "<->";

/// The pieces of the input between the marks: exactly `count`, the missing ones empty.
inline std::vector<std::string_view> pieces(std::string_view input, std::size_t count) {
    std::vector<std::string_view> parts;
    while (parts.size() + 1 < count) {
        const auto mark = input.find(kNextFile);
        parts.push_back(input.substr(0, mark));
        input = mark == std::string_view::npos ? std::string_view{} : input.substr(mark + kNextFile.size());
    }
    parts.push_back(input);
    return parts;
}

}  // namespace vantrel::fuzz

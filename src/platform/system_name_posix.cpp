#include <fstream>
#include <string_view>

#include <sys/utsname.h>

#include "platform/system_name.h"
#include "platform/text.h"

namespace vantrel::platform {
namespace {

/// A value as a shell reads it: perhaps in quotes, a backslash before what would mean something else.
std::string unquoted(std::string value) {
    const bool quoted =
        value.size() >= 2 && value.front() == value.back() && (value.front() == '"' || value.front() == '\'');
    if (quoted) value = value.substr(1, value.size() - 2);
    std::string plain;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] == '\\' && i + 1 < value.size()) ++i;
        plain += value[i];
    }
    return plain;
}

std::string prettyName(const std::filesystem::path& file) {
    constexpr std::string_view kKey = "PRETTY_NAME=";
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);)
        if (line.starts_with(kKey)) return unquoted(trimmed(line.substr(kKey.size())));
    return {};
}

}  // namespace

std::string systemName(const std::filesystem::path& root) {
    for (const char* file : {"etc/os-release", "usr/lib/os-release"})
        if (std::string name = prettyName(root / file); !name.empty()) return name;
    utsname names{};
    if (::uname(&names) != 0) return {};
    return std::string(names.sysname) + " " + names.release;
}

}  // namespace vantrel::platform

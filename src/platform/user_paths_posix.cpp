#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "platform/text.h"
#include "platform/user_machine.h"
#include "platform/whole_file.h"

namespace vantrel::platform {
namespace {

namespace fs = std::filesystem;

/// A base directory; the standard ignores relative ones.
fs::path baseDirectory(const Environment& environment, const std::string& name, const fs::path& usual) {
    const fs::path named = environment(name).value_or("");
    return named.is_absolute() ? named : usual;
}

/// Empty when it can't be read.
std::string textOf(const fs::path& userDirs) {
    constexpr std::size_t kMostBytes = 1'000'000;
    try {
        return contentsOf(userDirs, kMostBytes);
    } catch (const std::system_error&) {
        return "";
    }
}

/// The value of a line such as XDG_DOCUMENTS_DIR="$HOME/Documents".
std::optional<fs::path> documentsOf(const fs::path& userDirs, const fs::path& home) {
    constexpr std::string_view kKey = "XDG_DOCUMENTS_DIR=\"";
    constexpr std::string_view kHome = "$HOME";
    std::istringstream stream(textOf(userDirs));
    std::optional<fs::path> found;
    for (std::string line; std::getline(stream, line);) {
        const std::string plain = trimmed(line);
        if (!plain.starts_with(kKey) || plain.back() != '"' || plain.size() == kKey.size()) continue;
        const std::string value = plain.substr(kKey.size(), plain.size() - kKey.size() - 1);
        if (value.starts_with('/'))
            found = value;
        else if (value == kHome || value.starts_with(std::string(kHome) + "/"))
            found = home.string() + value.substr(kHome.size());
    }
    return found;
}

/// A name that can stand in a folder text.
std::string asFolderName(std::string name) {
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == '/' || c == '\\' || c == ':'; }, '_');
    return name.empty() ? "user" : name;
}

}  // namespace

std::optional<std::string> processEnvironment(const std::string& name) {
    const char* value = std::getenv(name.c_str());
    if (value == nullptr) return std::nullopt;
    return value;
}

UserPaths desktopPaths(const Environment& environment) {
    const fs::path home = environment("HOME").value_or("");
    if (!home.is_absolute()) throw std::runtime_error("The environment names no home directory");
    const fs::path config = baseDirectory(environment, "XDG_CONFIG_HOME", home / ".config");
    const fs::path data = baseDirectory(environment, "XDG_DATA_HOME", home / ".local" / "share");
    const fs::path runtime = baseDirectory(environment, "XDG_RUNTIME_DIR", data / "vantrel");
    return {.userName = asFolderName(environment("USER").value_or(home.filename().string())),
            .settings = config / "vantrel" / "settings",
            .drives = data / "vantrel" / "drives",
            .documents = documentsOf(config / "user-dirs.dirs", home).value_or(home / "Documents"),
            .lock = runtime / "vantrel.lock",
            .cache = cacheFolder(environment),
            .data = dataFolder(environment)};
}

std::filesystem::path cacheFolder(const Environment& environment) {
    const fs::path home = environment("HOME").value_or("");
    const fs::path usual = home.is_absolute() ? home / ".cache" : fs::path();
    const fs::path base = baseDirectory(environment, "XDG_CACHE_HOME", usual);
    return base.empty() ? base : base / "vantrel";
}

std::filesystem::path dataFolder(const Environment& environment) {
    const fs::path home = environment("HOME").value_or("");
    const fs::path usual = home.is_absolute() ? home / ".local" / "share" : fs::path();
    const fs::path base = baseDirectory(environment, "XDG_DATA_HOME", usual);
    return base.empty() ? base : base / "vantrel";
}

}  // namespace vantrel::platform

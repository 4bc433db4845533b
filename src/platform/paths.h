// Texts of paths. Inside of the program they are UTF-8, whatever the system's are.
#pragma once

#include <filesystem>
#include <string>

namespace vantrel::platform {

/// On some systems a path made of a plain text would take it for another encoding.
inline std::filesystem::path pathOf(const std::string& text) {
    return std::filesystem::path(std::u8string(text.begin(), text.end()));
}

/// `path` with an ending added to its name.
inline std::filesystem::path withEnding(std::filesystem::path path, const char* ending) {
    return path += ending;
}

/// The name under which C libraries can open the file.
std::string libraryName(const std::filesystem::path& path);

}  // namespace vantrel::platform

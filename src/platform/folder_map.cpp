#include "platform/folder_map.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <system_error>

#include "platform/paths.h"
#include "platform/text.h"

namespace vantrel::platform {
namespace {

bool isSlash(char c) { return c == '\\' || c == '/'; }

bool hasDrive(std::string_view text) {
    const char c = text.empty() ? ' ' : text.front();
    const bool letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    return letter && text.size() >= 2 && text[1] == ':';
}

std::string withBackslashes(std::string text) {
    std::replace(text.begin(), text.end(), '/', '\\');
    return text;
}

std::filesystem::path appended(std::filesystem::path base, std::string_view rest) {
    std::string part;
    const auto add = [&] {
        if (!part.empty() && part != "." && part != "..") base /= pathOf(part);
        part.clear();
    };
    for (char c : rest) {
        if (isSlash(c))
            add();
        else if (c != '\0')
            part += c;
    }
    add();
    return base;
}

}  // namespace

void FolderMap::map(const std::string& folder, std::filesystem::path real) {
    std::string plain = withBackslashes(folder);
    while (!plain.empty() && plain.back() == '\\') plain.pop_back();
    mappings_.push_back({plain, std::move(real)});
}

std::filesystem::path FolderMap::real(const std::string& folder) const {
    if (!folder.empty() && folder.front() == '/') return pathOf(folder);
    const std::string plain = withBackslashes(folder);
    for (const Mapping& mapping : mappings_) {
        const std::size_t length = mapping.folder.size();
        const bool inside = equalIgnoringCase(plain.substr(0, length), mapping.folder) &&
                            (plain.size() == length || plain[length] == '\\');
        if (inside) return appended(mapping.real, std::string_view(plain).substr(length));
    }
    if (drives_.empty()) {
        if (plain.starts_with("\\\\")) return pathOf(plain);  // of a computer in the network
        const std::string drive = hasDrive(plain) ? plain.substr(0, 2) : "C:";
        return appended(pathOf(drive + "\\"), hasDrive(plain) ? plain.substr(2) : plain);
    }
    if (!hasDrive(plain)) return appended(drives_ / "c", plain);
    return appended(drives_ / toLower(plain.substr(0, 1)), std::string_view(plain).substr(2));
}

std::string FolderMap::text(const std::filesystem::path& real) const {
    const auto below = [&](const std::filesystem::path& base) -> std::optional<std::string> {
        const std::string path = real.lexically_normal().generic_string();
        std::string root = base.lexically_normal().generic_string();
        while (root.size() > 1 && root.back() == '/') root.pop_back();
        if (path == root) return "";
        if (path.starts_with(root + "/")) return withBackslashes(path.substr(root.size()));
        return std::nullopt;
    };
    for (const Mapping& mapping : mappings_)
        if (const auto rest = below(mapping.real)) return mapping.folder + *rest;
    if (const auto rest = below(drives_);
        !drives_.empty() && rest && rest->size() >= 2 && (rest->size() == 2 || (*rest)[2] == '\\'))
        return toUpper(rest->substr(1, 1)) + ":" + (rest->size() == 2 ? "\\" : rest->substr(2));
    return real.string();
}

std::optional<std::filesystem::path> existingImage(const FolderMap& folders, const std::string& name) {
    std::error_code ignored;
    for (const char* ending : {"", ".fit"}) {
        auto file = folders.real(name + ending);
        if (std::filesystem::is_regular_file(file, ignored)) return file;
    }
    return std::nullopt;
}

std::string joinFolder(const std::string& folder, const std::string& name) {
    return !folder.empty() && isSlash(folder.back()) ? folder + name : folder + "\\" + name;
}

}  // namespace vantrel::platform

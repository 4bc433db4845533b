#include "catalogs/catalog_folder.h"

#include <system_error>

#include "platform/text.h"

namespace vantrel::catalogs {

namespace fs = std::filesystem;

CatalogFolder::CatalogFolder(fs::path path) : path_(std::move(path)) {
    std::error_code error;
    for (fs::directory_iterator at(path_, error), end; !error && at != end; at.increment(error)) {
        const std::string name = platform::toLower(at->path().filename().string());
        entries_.try_emplace(name.substr(0, name.find(';')), at->path());
    }
}

std::optional<fs::path> CatalogFolder::file(const std::string& name) const {
    const auto found = entries_.find(name);
    std::error_code ignored;
    if (found == entries_.end() || !fs::is_regular_file(found->second, ignored)) return std::nullopt;
    return found->second;
}

std::optional<CatalogFolder> CatalogFolder::folder(const std::string& name) const {
    const auto found = entries_.find(name);
    std::error_code ignored;
    if (found == entries_.end() || !fs::is_directory(found->second, ignored)) return std::nullopt;
    return CatalogFolder(found->second);
}

std::vector<CatalogFolder> CatalogFolder::withSubfolders() const {
    std::vector<CatalogFolder> all{*this};
    for (const auto& [name, path] : entries_) {
        std::error_code ignored;
        if (fs::is_directory(path, ignored)) all.emplace_back(path);
    }
    return all;
}

}  // namespace vantrel::catalogs

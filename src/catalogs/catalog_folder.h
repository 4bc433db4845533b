// A folder of a star catalogue, whose names are found without regard to case and to the ";1" that some discs
// put behind them.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vantrel::catalogs {

class CatalogFolder {
  public:
    /// Lists the folder's own entries. One that can't be listed counts as empty.
    explicit CatalogFolder(std::filesystem::path path);

    const std::filesystem::path& path() const { return path_; }

    /// The file of this name (in lower case).
    std::optional<std::filesystem::path> file(const std::string& name) const;

    /// The folder of this name (in lower case).
    std::optional<CatalogFolder> folder(const std::string& name) const;

    /// Names in lower case, and what they stand for, in the names' order.
    const std::map<std::string, std::filesystem::path>& entries() const { return entries_; }

    /// This folder and those in it.
    std::vector<CatalogFolder> withSubfolders() const;

  private:
    std::filesystem::path path_;
    std::map<std::string, std::filesystem::path> entries_;
};

}  // namespace vantrel::catalogs

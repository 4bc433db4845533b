// Folder texts with drive letters and backslashes, as the program's windows and settings hold them, and the
// real paths behind them.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace vantrel::platform {

/// Each drive letter is a folder below one drives folder; single folders can be mapped elsewhere (the
/// profile's documents to the desktop's own). Names are otherwise kept as they are. A text that begins with
/// "/" is a real path already. Folder names never lead out of their drive: ".." parts are dropped. Without a
/// drives folder the texts are the system's own.
class FolderMap {
  public:
    explicit FolderMap(std::filesystem::path drives) : drives_(std::move(drives)) {}

    /// From now on `folder` ("C:\Users\me\Documents") stands for the real folder. Matched without regard to
    /// case.
    void map(const std::string& folder, std::filesystem::path real);

    std::filesystem::path real(const std::string& folder) const;

    /// The drive letters are the system's own: other programs find files by the same texts.
    bool areSystems() const { return drives_.empty(); }

    /// The text for a real path: of a mapped folder or drive where it lies in one, else the path itself.
    std::string text(const std::filesystem::path& real) const;

  private:
    struct Mapping {
        std::string folder;  // without a trailing backslash
        std::filesystem::path real;
    };
    std::filesystem::path drives_;
    std::vector<Mapping> mappings_;
};

/// The real file of an image: of this name or, for a name without an ending, with the ".fit" that the
/// program that saved it added. Nothing when there is neither.
std::optional<std::filesystem::path> existingImage(const FolderMap& folders, const std::string& name);

/// folder + "\" + name, without doubling a backslash that is already there.
std::string joinFolder(const std::string& folder, const std::string& name);

}  // namespace vantrel::platform

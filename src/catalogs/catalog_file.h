// One file of a star catalogue, read by pieces. Not mapped: a disc that is taken out must be a failed read.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

#include "platform/input_file.h"

namespace vantrel::catalogs {

/// Long stretches are read in pieces of so many.
inline constexpr std::size_t kBytesAtATime = 65'536;

class CatalogFile {
  public:
    /// Throws CatalogError when there is no such file that can be read.
    explicit CatalogFile(std::filesystem::path path);

    const std::filesystem::path& path() const { return path_; }
    std::uint64_t size() const { return file_.size(); }

    /// Fills the bytes from this place on. Throws CatalogError when the file ends before that.
    void read(std::uint64_t offset, std::span<unsigned char> into) const;
    std::string text(std::uint64_t offset, std::size_t length) const;

    /// Throws a CatalogError that names the file: "FILE is damaged: WHY".
    [[noreturn]] void damaged(const std::string& why) const;

  private:
    std::filesystem::path path_;
    platform::InputFile file_;
};

}  // namespace vantrel::catalogs

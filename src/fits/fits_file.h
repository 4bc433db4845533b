// The bytes of a FITS file, as it is or packed by gzip.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <span>
#include <string>

#include "fits/gzip_unpacking.h"
#include "fits/raw_file.h"

namespace vantrel::fits {

class FitsFile {
  public:
    /// Throws FitsError when the file can't be read, or is no regular file.
    explicit FitsFile(const std::filesystem::path& path);
    /// A file that came as bytes; the name is for messages. Throws FitsError without memory.
    FitsFile(const std::string& name, std::span<const std::byte> bytes);

    const std::filesystem::path& path() const { return path_; }
    bool isUnpacked() const { return unpacking_.has_value(); }

    /// Whether the file has so many bytes. Those of a packed file must be reached before they can be read:
    /// see GzipUnpacking.
    bool reach(std::size_t bytes);

    /// Fills `out` from the offset on. Throws FitsError when the file can't be read or ends before.
    void read(std::size_t offset, std::span<std::byte> out) const { bytes().read(offset, out); }

    /// A name under which this process and its children can open what has been reached.
    std::filesystem::path nameToOpen() const;

  private:
    const RawFile& bytes() const { return unpacking_ ? unpacking_->unpacked() : file_; }

    std::filesystem::path path_;
    RawFile file_;
    std::optional<GzipUnpacking> unpacking_;
};

}  // namespace vantrel::fits

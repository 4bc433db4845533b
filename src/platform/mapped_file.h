// A file's bytes in memory, read on demand by the operating system.
#pragma once

#include <cstddef>
#include <filesystem>
#include <span>

namespace vantrel::platform {

class MappedFile {
  public:
    /// Maps the file for reading. Throws std::system_error when it can't be opened or is not a regular file.
    /// With readAll the pages are fetched at once, which is quicker when all of them will be read.
    explicit MappedFile(const std::filesystem::path& path, bool readAll = false);
    ~MappedFile();
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    std::span<const std::byte> bytes() const { return {data_, size_}; }

  private:
    const std::byte* data_ = nullptr;
    std::size_t size_ = 0;
};

}  // namespace vantrel::platform

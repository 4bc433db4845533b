// The bytes of a file.
#pragma once

#include <cstddef>
#include <filesystem>
#include <span>

#include "platform/input_file.h"

namespace vantrel::fits {

class RawFile {
  public:
    /// Opens a file for reading. Throws FitsError when it can't be, or is no regular file.
    explicit RawFile(const std::filesystem::path& path);
    /// More than any image of a camera takes; what is unpacked into memory mustn't be more.
    static constexpr std::size_t kMostInMemory = 1'000'000'000;

    /// An empty file in memory; the path is for messages. Throws FitsError when the system has none.
    static RawFile inMemory(const std::filesystem::path& path);
    RawFile(const RawFile&) = delete;
    RawFile& operator=(const RawFile&) = delete;

    std::size_t size() const { return static_cast<std::size_t>(file_.size()); }
    const platform::InputFile& bytes() const { return file_; }

    /// Fills `out` from the offset on. Throws FitsError when the file can't be read or ends before.
    void read(std::size_t offset, std::span<std::byte> out) const;
    /// Writes behind what is there; for files in memory. Throws FitsError when there is no room.
    void append(std::span<const std::byte> bytes);

    /// Whether it begins as files packed by gzip do (RFC 1952).
    bool isGzip() const;

  private:
    struct InMemory {};
    RawFile(const std::filesystem::path& path, InMemory);

    std::filesystem::path path_;
    platform::InputFile file_;
};

}  // namespace vantrel::fits

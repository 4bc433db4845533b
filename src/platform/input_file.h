// The bytes of a file, read by pieces.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>

namespace vantrel::platform {

class InputFile {
  public:
    /// Opens it for reading and waits for nobody, not even at a pipe that nobody writes to. Throws
    /// std::system_error, as all that can fail does here.
    explicit InputFile(const std::filesystem::path& path);
    /// An empty file that goes with its object, in memory where the system can.
    static InputFile temporary();
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    enum class Kind { kRegular, kFolder, kOther };
    Kind kind() const { return kind_; }
    /// As it was opened, and with what was appended.
    std::uint64_t size() const { return size_; }

    /// Reads from the offset on until `out` is full or the file ends; how many bytes there were.
    std::size_t read(std::uint64_t offset, std::span<std::byte> out) const;
    /// Writes behind what is there; for temporary files.
    void append(std::span<const std::byte> bytes);

    /// The name under which this process can open it once more.
    std::filesystem::path nameToOpen() const;
    /// A descriptor for a C library, which closes it; at the file's beginning.
    int libraryDescriptor() const;

  private:
    explicit InputFile(std::intptr_t handle, std::filesystem::path path = {});

    std::intptr_t handle_;
    std::filesystem::path path_;  // where files have no other name
    bool temporary_ = false;
    Kind kind_ = Kind::kRegular;
    std::uint64_t size_ = 0;
};

}  // namespace vantrel::platform

// Files made of a fuzz input, in a folder of the process's own that goes with it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include <stdlib.h>

namespace vantrel::fuzz {

class ScratchFolder {
  public:
    /// In memory where the system has a place for that.
    ScratchFolder() {
        const std::filesystem::path memory = "/dev/shm";
        std::error_code ignored;
        const bool inMemory = std::filesystem::is_directory(memory, ignored);
        std::string pattern =
            (inMemory ? memory : std::filesystem::temp_directory_path()) / "vantrel-fuzz-XXXXXX";
        path_ = ::mkdtemp(pattern.data());
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::filesystem::path& path() const { return path_; }

    /// (Over)writes a file, in folders that are made for it.
    std::filesystem::path write(const std::filesystem::path& name, std::string_view bytes) const {
        const std::filesystem::path file = path_ / name;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary | std::ios::trunc)
            .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return file;
    }

  private:
    std::filesystem::path path_;
};

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// Stands between the files of an input that holds several.
inline constexpr std::string_view kNextFile = "<->";

/// The pieces of the input between the marks: exactly `count`, the missing ones empty.
inline std::vector<std::string_view> pieces(std::string_view input, std::size_t count) {
    std::vector<std::string_view> parts;
    while (parts.size() + 1 < count) {
        const auto mark = input.find(kNextFile);
        parts.push_back(input.substr(0, mark));
        input = mark == std::string_view::npos ? std::string_view{} : input.substr(mark + kNextFile.size());
    }
    parts.push_back(input);
    return parts;
}

}  // namespace vantrel::fuzz

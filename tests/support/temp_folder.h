// An empty folder of the test's own that goes with it.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

namespace vantrel::test {

/// (Over)writes a file, in folders that are made for it.
inline std::filesystem::path writeFile(const std::filesystem::path& file, std::string_view bytes) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary | std::ios::trunc)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return file;
}

class TempFolder {
  public:
    explicit TempFolder(const std::filesystem::path& parent = std::filesystem::temp_directory_path()) {
        std::random_device number;
        do {
            path_ = parent / ("vantrel-" + std::to_string(number()));
        } while (!std::filesystem::create_directory(path_));
    }
    /// Where thousands of small files cost least: in memory, if the system has a place for that.
    static std::filesystem::path quickPlace() {
        std::error_code ignored;
        const std::filesystem::path memory = "/dev/shm";
        return std::filesystem::is_directory(memory, ignored) ? memory
                                                              : std::filesystem::temp_directory_path();
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }
    std::filesystem::path write(const std::string& name, std::string_view bytes) const {
        return writeFile(path_ / name, bytes);
    }

  private:
    std::filesystem::path path_;
};

inline std::string contentsOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace vantrel::test

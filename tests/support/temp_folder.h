// An empty folder of the test's own that goes with it.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>
#include <stdlib.h>

namespace vantrel::test {

class TempFolder {
  public:
    explicit TempFolder(const std::filesystem::path& parent = testing::TempDir()) {
        std::string pattern = parent / "vantrel-XXXXXX";
        path_ = ::mkdtemp(pattern.data());
    }
    /// Where thousands of small files cost least: in memory, if the system has a place for that.
    static std::filesystem::path quickPlace() {
        std::error_code ignored;
        const bool inMemory = std::filesystem::is_directory("/dev/shm", ignored);
        return inMemory ? std::filesystem::path("/dev/shm") : std::filesystem::path(testing::TempDir());
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

  private:
    std::filesystem::path path_;
};

inline std::string contentsOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace vantrel::test

// Downloaded documents, kept on disk so that the same question is asked once.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace vantrel::catalogs {

class PageCache {
  public:
    /// An empty folder keeps nothing. The folder is made when something is kept; beyond so many bytes the
    /// oldest documents go.
    explicit PageCache(std::filesystem::path folder, std::uintmax_t mostBytes = 256U << 20U);

    std::optional<std::string> find(const std::string& question) const;

    /// A disk that is full or can't be written to keeps nothing; that is no failure.
    void keep(const std::string& question, const std::string& document) const;

  private:
    std::filesystem::path fileOf(const std::string& question) const;
    void makeRoom() const;

    std::filesystem::path folder_;
    std::uintmax_t mostBytes_;
};

}  // namespace vantrel::catalogs

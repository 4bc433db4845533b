// Solves pictures from files with the built-in engine and its star catalogue.
//
// A file is read first, then solved: by the world coordinates in its header if it has any, then by what its
// header tells of telescope and optics, at last over the whole sky at any scale.
#pragma once

#include <filesystem>
#include <memory>

#include "platform/background.h"
#include "platform/folder_map.h"
#include "platform/picture_solver.h"
#include "sky/star_catalog.h"
#include "solver/star_patterns.h"

namespace vantrel::station {

class FileSolver final : public platform::PictureSolver {
  public:
    /// What is given must outlive this; `cache` is the folder for star patterns, `data` that of a deeper
    /// catalogue.
    FileSolver(platform::Background& background, const platform::FolderMap& folders,
               std::filesystem::path cache, std::filesystem::path data);
    /// Work under way ends soon after.
    ~FileSolver() override;

    void solve(const std::string& file, std::optional<double> scale, Listener listener) override;
    void giveUp() override;

  private:
    struct Job;

    void solveRead(const std::shared_ptr<Job>& job);

    platform::Background& background_;
    const platform::FolderMap& folders_;
    std::filesystem::path cache_, data_;
    std::shared_ptr<const solver::StarPatterns> patterns_;  // once a picture needed them
    std::shared_ptr<Job> job_;                              // the last
    platform::BackgroundWork work_;
};

}  // namespace vantrel::station

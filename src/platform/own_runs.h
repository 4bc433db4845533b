// Further runs of this program beside it, with arguments of their own.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vantrel::platform {

class OwnRuns {
  public:
    OwnRuns();
    ~OwnRuns();
    OwnRuns(const OwnRuns&) = delete;
    OwnRuns& operator=(const OwnRuns&) = delete;

    /// Starts one; throws std::system_error when that can't be. `number` is the caller's name for it.
    void start(std::size_t number, const std::vector<std::string>& arguments);

    std::size_t running() const;

    struct Ended {
        std::size_t number = 0;
        std::optional<int> status;  // nothing when it crashed
    };
    /// Waits until one has ended.
    Ended waitForOne();

    /// What an ended one wrote to standard output goes to this program's.
    void copyOutput(std::size_t number);

  private:
    struct Run;
    std::map<std::size_t, Run> runs_;
};

/// Whether somebody reads standard error at a terminal.
bool isWatched();

}  // namespace vantrel::platform

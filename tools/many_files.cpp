#include "many_files.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <thread>

#include "platform/own_runs.h"

namespace vantrel::tools {

namespace {

class Progress {
  public:
    explicit Progress(std::size_t files) : files_(files) {}
    ~Progress() {
        if (shown_ && done_ > 0) std::fputc('\n', stderr);
    }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void add(bool solved) {
        ++done_;
        solved_ += solved;
        if (shown_) std::fprintf(stderr, "\r%zu of %zu done, %zu solved", done_, files_, solved_);
    }

  private:
    bool shown_ = platform::isWatched();
    std::size_t files_, done_ = 0, solved_ = 0;
};

}  // namespace

int solveMany(const std::vector<std::string>& options, const std::vector<std::string>& files, bool plain) {
    constexpr int kRunning = -1, kUnusable = 2;
    const std::size_t atOnce = std::max(1U, std::thread::hardware_concurrency());
    std::vector<int> statuses(files.size(), kRunning);
    platform::OwnRuns runs;
    Progress progress(files.size());
    std::size_t next = 0, told = 0;
    int worst = 0;
    while (told < files.size()) {
        for (; next < files.size() && runs.running() < atOnce; ++next) {
            std::vector<std::string> arguments = options;
            arguments.push_back(files[next]);
            runs.start(next, arguments);
        }
        const auto [number, status] = runs.waitForOne();
        statuses[number] = status.value_or(kUnusable);
        progress.add(statuses[number] == 0);
        worst = std::max(worst, statuses[number]);
        for (; told < files.size() && statuses[told] != kRunning; ++told) {
            if (!plain) std::printf("%s:\n", files[told].c_str());
            runs.copyOutput(told);
        }
    }
    return worst;
}

}  // namespace vantrel::tools

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/own_runs.h"

namespace vantrel::platform {

struct OwnRuns::Run {
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> output{std::tmpfile(), &std::fclose};
    pid_t id = 0;  // 0: it has ended
};

OwnRuns::OwnRuns() = default;
OwnRuns::~OwnRuns() = default;

void OwnRuns::start(std::size_t number, const std::vector<std::string>& arguments) {
    Run run;
    if (!run.output) throw std::system_error(errno, std::generic_category(), "no temporary file");
    std::vector<std::string> all = {"vantrel-solve"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    std::vector<char*> texts;
    texts.reserve(all.size() + 1);
    for (std::string& argument : all) texts.push_back(argument.data());
    texts.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ::fileno(run.output.get()), STDOUT_FILENO);
    const int failed = ::posix_spawn(&run.id, "/proc/self/exe", &actions, nullptr, texts.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failed != 0) throw std::system_error(failed, std::generic_category(), "no further process");
    runs_.insert_or_assign(number, std::move(run));
}

std::size_t OwnRuns::running() const {
    return static_cast<std::size_t>(
        std::count_if(runs_.begin(), runs_.end(), [](const auto& entry) { return entry.second.id != 0; }));
}

OwnRuns::Ended OwnRuns::waitForOne() {
    for (;;) {
        int status = 0;
        const pid_t id = ::waitpid(-1, &status, 0);
        const auto ended = std::find_if(runs_.begin(), runs_.end(),
                                        [&](const auto& entry) { return entry.second.id == id; });
        if (ended == runs_.end()) continue;
        ended->second.id = 0;
        return {ended->first, WIFEXITED(status) ? std::optional(WEXITSTATUS(status)) : std::nullopt};
    }
}

void OwnRuns::copyOutput(std::size_t number) {
    const auto run = runs_.find(number);
    if (run == runs_.end()) return;
    std::FILE* file = run->second.output.get();
    char buffer[4096];
    std::rewind(file);
    for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, file)) > 0;)
        std::fwrite(buffer, 1, n, stdout);
    std::fflush(stdout);
    runs_.erase(run);
}

bool isWatched() { return ::isatty(STDERR_FILENO) != 0; }

}  // namespace vantrel::platform

#include "many_files.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <map>
#include <memory>
#include <system_error>
#include <thread>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantrel::tools {

namespace {

using TemporaryFile = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

struct Job {
    TemporaryFile output{nullptr, &std::fclose};
    int status = -1;  ///< below 0 while it runs
};

pid_t start(std::vector<std::string> arguments, Job& job) {
    job.output.reset(std::tmpfile());
    if (!job.output) throw std::system_error(errno, std::generic_category(), "no temporary file");
    std::vector<char*> texts;
    for (std::string& argument : arguments) texts.push_back(argument.data());
    texts.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ::fileno(job.output.get()), STDOUT_FILENO);
    pid_t id = 0;
    const int failed = ::posix_spawn(&id, "/proc/self/exe", &actions, nullptr, texts.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failed != 0) throw std::system_error(failed, std::generic_category(), "no further process");
    return id;
}

void copyOut(std::FILE* file) {
    char buffer[4096];
    std::rewind(file);
    for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, file)) > 0;)
        std::fwrite(buffer, 1, n, stdout);
    std::fflush(stdout);
}

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
    bool shown_ = ::isatty(STDERR_FILENO) != 0;
    std::size_t files_, done_ = 0, solved_ = 0;
};

}  // namespace

int solveMany(const std::vector<std::string>& options, const std::vector<std::string>& files, bool plain) {
    constexpr int kUnusable = 2;
    const std::size_t atOnce = std::max(1U, std::thread::hardware_concurrency());
    std::vector<Job> jobs(files.size());
    std::map<pid_t, std::size_t> running;
    Progress progress(files.size());
    std::size_t next = 0, told = 0;
    int worst = 0;
    while (told < files.size()) {
        while (next < files.size() && running.size() < atOnce) {
            std::vector<std::string> arguments = {"vantrel-solve"};
            arguments.insert(arguments.end(), options.begin(), options.end());
            arguments.push_back(files[next]);
            running[start(std::move(arguments), jobs[next])] = next;
            ++next;
        }
        int status = 0;
        const pid_t ended = ::waitpid(-1, &status, 0);
        const auto job = running.find(ended);
        if (job == running.end()) continue;
        jobs[job->second].status = WIFEXITED(status) ? WEXITSTATUS(status) : kUnusable;
        progress.add(jobs[job->second].status == 0);
        worst = std::max(worst, jobs[job->second].status);
        running.erase(job);
        for (; told < files.size() && jobs[told].status >= 0; ++told) {
            if (!plain) std::printf("%s:\n", files[told].c_str());
            copyOut(jobs[told].output.get());
            jobs[told].output.reset();
        }
    }
    return worst;
}

}  // namespace vantrel::tools

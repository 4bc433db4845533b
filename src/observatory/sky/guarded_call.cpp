#include "observatory/sky/guarded_call.h"

#include <cerrno>
#include <csignal>
#include <fstream>
#include <system_error>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantrel::observatory {

namespace {

constexpr unsigned kSecondsAllowed = 120;
constexpr rlim_t kBytesAllowed = rlim_t{4} << 30U;

void writeAll(int pipe, const std::string& text) {
    for (std::size_t done = 0; done < text.size();) {
        const auto n = ::write(pipe, text.data() + done, text.size() - done);
        if (n <= 0 && errno != EINTR) return;
        if (n > 0) done += static_cast<std::size_t>(n);
    }
}

/// Lets the process have kBytesAllowed more than it has.
void limitMemory() {
    rlim_t pages = 0;
    if (!(std::ifstream("/proc/self/statm") >> pages)) return;
    const rlim_t bytes = pages * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE)) + kBytesAllowed;
    const rlimit limit{bytes, bytes};
    ::setrlimit(RLIMIT_AS, &limit);
}

[[noreturn]] void child(const std::function<std::string()>& call, int pipe) {
    for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGALRM}) std::signal(signal, SIG_DFL);
    const rlimit noCore{0, 0};
    ::setrlimit(RLIMIT_CORE, &noCore);
    limitMemory();
    ::alarm(kSecondsAllowed);
    std::string answer;
    try {
        answer = std::string("+").append(call());
    } catch (const std::exception& e) {
        answer = std::string("-") + e.what();
    }
    writeAll(pipe, answer);
    ::_exit(0);
}

std::string readAll(int pipe) {
    std::string text;
    char buffer[65536];
    for (;;) {
        const auto n = ::read(pipe, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return text;
        text.append(buffer, static_cast<std::size_t>(n));
    }
}

}  // namespace

std::string callGuarded(const std::function<std::string()>& call, const std::string& onCrash) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
    const pid_t id = ::fork();
    if (id < 0) {
        const int error = errno;
        ::close(ends[0]);
        ::close(ends[1]);
        throw std::system_error(error, std::generic_category(), "fork");
    }
    if (id == 0) {
        ::close(ends[0]);
        child(call, ends[1]);
    }
    ::close(ends[1]);
    const std::string answer = readAll(ends[0]);
    ::close(ends[0]);
    int status = 0;
    while (::waitpid(id, &status, 0) < 0 && errno == EINTR) {
    }
    if (answer.empty() || !WIFEXITED(status) || WEXITSTATUS(status) != 0) throw GuardedCallFailed(onCrash);
    if (answer.front() != '+') throw GuardedCallFailed(answer.substr(1));
    return answer.substr(1);
}

}  // namespace vantrel::observatory

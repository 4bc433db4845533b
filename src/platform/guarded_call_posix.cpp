#include <cerrno>
#include <csignal>
#include <fstream>
#include <system_error>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/guarded_call.h"

namespace vantrel::platform {

namespace {

void writeAll(int pipe, const std::string& text) {
    for (std::size_t done = 0; done < text.size();) {
        const auto n = ::write(pipe, text.data() + done, text.size() - done);
        if (n <= 0 && errno != EINTR) return;
        if (n > 0) done += static_cast<std::size_t>(n);
    }
}

/// Lets the process have so many bytes more than it has.
void limitMemory(rlim_t more) {
    rlim_t pages = 0;
    if (!(std::ifstream("/proc/self/statm") >> pages)) return;
    const rlim_t bytes = pages * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE)) + more;
    const rlimit limit{bytes, bytes};
    ::setrlimit(RLIMIT_AS, &limit);
}

/// A busy machine gives the process a part of its time only; one that waits for a disk takes none of it.
void limitTime(unsigned seconds) {
    constexpr unsigned kOfTheClock = 6;
    const rlimit limit{seconds, seconds + 1};  // at the first the process is told, at the second killed
    ::setrlimit(RLIMIT_CPU, &limit);
    ::alarm(kOfTheClock * seconds);
}

[[noreturn]] void child(const GuardLimits& limits, const std::function<std::string()>& call, int pipe) {
    for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGALRM, SIGXCPU})
        std::signal(signal, SIG_DFL);
    const rlimit noCore{0, 0};
    ::setrlimit(RLIMIT_CORE, &noCore);
    limitMemory(limits.bytes);
    limitTime(limits.seconds);
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

[[noreturn]] void failBySignal(int signal) {
    if (signal == SIGXCPU || signal == SIGALRM) throw GuardedCallTookTooLong("The call took too long");
    throw GuardedCallCrashed("The call was ended by signal " + std::to_string(signal));
}

}  // namespace

std::string callGuarded(const GuardLimits& limits, const std::function<std::string()>& call) {
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
        child(limits, call, ends[1]);
    }
    ::close(ends[1]);
    const std::string answer = readAll(ends[0]);
    ::close(ends[0]);
    int status = 0;
    while (::waitpid(id, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFSIGNALED(status)) failBySignal(WTERMSIG(status));
    if (answer.empty()) throw GuardedCallCrashed("The call ended without an answer");
    if (answer.front() != '+') throw GuardedCallFailed(answer.substr(1));
    return answer.substr(1);
}

}  // namespace vantrel::platform

#include "hosts/real_server/indi_server.h"

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "hosts/loopback_server.h"

namespace vantrel::test {

namespace fs = std::filesystem;

IndiServer::IndiServer(std::vector<std::string> drivers)
    : drivers_(std::move(drivers)), port_(LoopbackServer().port()) {
    start();
}

IndiServer::~IndiServer() { kill(); }

void IndiServer::start() {
    process_ = ::fork();
    if (process_ < 0) throw std::runtime_error("no process for indiserver");
    if (process_ == 0) run();
}

/// In the new process, which leads a group of its own, so that its drivers end with it.
void IndiServer::run() const {
    ::setpgid(0, 0);
    const int log = ::open((folder_ / "log").c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    ::dup2(log, STDOUT_FILENO);
    ::dup2(log, STDERR_FILENO);
    ::setenv("HOME", folder_.path().c_str(), 1);
    ::setenv("PATH", (std::string(VANTREL_INDI_PROGRAMS) + ":" + std::getenv("PATH")).c_str(), 1);
    ::setenv("LD_PRELOAD", VANTREL_LOOPBACK_ONLY, 1);
    std::vector<std::string> words = {"indiserver", "-p", std::to_string(port_), "-u", folder_ / "socket"};
    words.insert(words.end(), drivers_.begin(), drivers_.end());
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    ::execvp("indiserver", arguments.data());
    ::_exit(127);
}

void IndiServer::kill() {
    if (process_ < 0) return;
    ::kill(-process_, SIGKILL);
    ::waitpid(std::exchange(process_, -1), nullptr, 0);
}

void IndiServer::killDriver(const std::string& driver) const { ::kill(driverProcess(driver), SIGKILL); }

void IndiServer::freeze(bool frozen) const { ::kill(-process_, frozen ? SIGSTOP : SIGCONT); }

pid_t IndiServer::driverProcess(const std::string& driver) const {
    for (const auto& entry : fs::directory_iterator("/proc")) {
        std::ifstream command(entry.path() / "cmdline"), status(entry.path() / "stat");
        std::string name, word;
        std::getline(command, name, '\0');
        if (fs::path(name).filename() != driver) continue;
        // pid (name) state parent ...: the names of drivers have no blanks
        for (int field = 0; field < 4; ++field) status >> word;
        if (word == std::to_string(process_)) return std::stoi(entry.path().filename());
    }
    throw std::runtime_error("the server has no driver " + driver);
}

}  // namespace vantrel::test

// The tests' Alpaca server in Python as a process of its own.
#pragma once

#include <array>
#include <stdexcept>
#include <string>

#include <nlohmann/json.hpp>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantrel::test {

class AlpacaServerProcess {
  public:
    using Json = nlohmann::json;

    explicit AlpacaServerProcess(const Json& settings = Json::object()) {
        std::array<int, 2> input{};
        std::array<int, 2> output{};
        if (::pipe(input.data()) != 0 || ::pipe(output.data()) != 0) throw std::runtime_error("no pipe");
        const std::string set = settings.dump();
        child_ = ::fork();
        if (child_ == 0) {
            ::dup2(input[0], STDIN_FILENO);
            ::dup2(output[1], STDOUT_FILENO);
            for (const int end : {input[0], input[1], output[0], output[1]}) ::close(end);
            ::execlp(VANTREL_PYTHON, VANTREL_PYTHON, VANTREL_ALPACA_SERVER, "--set", set.c_str(), nullptr);
            ::_exit(127);
        }
        ::close(input[0]);
        ::close(output[1]);
        input_ = input[1];
        const Json ready = Json::parse(lineFrom(output[0]));
        ::close(output[0]);
        port = ready.at("port");
    }
    ~AlpacaServerProcess() {
        ::close(input_);
        ::waitpid(child_, nullptr, 0);
    }
    AlpacaServerProcess(const AlpacaServerProcess&) = delete;
    AlpacaServerProcess& operator=(const AlpacaServerProcess&) = delete;

    int port = 0;

  private:
    static std::string lineFrom(int descriptor) {
        std::string line;
        for (char c = 0; ::read(descriptor, &c, 1) == 1 && c != '\n';) line += c;
        return line;
    }

    pid_t child_;
    int input_ = -1;
};

}  // namespace vantrel::test

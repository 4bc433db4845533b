// The test server in Python as a process of its own.
#pragma once

#include <array>
#include <stdexcept>
#include <string>

#include <nlohmann/json.hpp>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/http/http_transfers.h"

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
        discoveryPort = ready.at("discoveryPort");
    }
    ~AlpacaServerProcess() {
        ::close(input_);
        ::waitpid(child_, nullptr, 0);
    }
    AlpacaServerProcess(const AlpacaServerProcess&) = delete;
    AlpacaServerProcess& operator=(const AlpacaServerProcess&) = delete;

    /// Uses the server's private door: "set", "away", "restart".
    void put(const std::string& door, const Json& what = Json::object()) {
        use({.method = platform::HttpRequest::Method::kPut, .url = url(door), .form = what.dump()});
    }
    void set(const Json& settings) { put("set", settings); }

    int port = 0;
    int discoveryPort = 0;

  private:
    static std::string lineFrom(int descriptor) {
        std::string line;
        for (char c = 0; ::read(descriptor, &c, 1) == 1 && c != '\n';) line += c;
        return line;
    }

    std::string url(const std::string& door) const {
        return "http://127.0.0.1:" + std::to_string(port) + "/private/" + door;
    }

    static std::string use(platform::HttpRequest request) {
        request.limits.whole = platform::Milliseconds{10'000};
        platform::HttpTransfers transfers;
        const auto transfer = transfers.start(request);
        while (!transfer->isOver())
            if (!transfers.move()) transfers.waitForMovement(platform::Milliseconds{100});
        return transfer->take().body;
    }

    pid_t child_;
    int input_ = -1;
};

}  // namespace vantrel::test

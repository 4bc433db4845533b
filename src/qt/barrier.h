// Keeps exceptions out of the toolkit's code, which can't pass them on.
#pragma once

#include <exception>
#include <functional>
#include <string>
#include <utility>

namespace vantrel::qt {

/// Every handler that the toolkit calls runs inside one. What a handler throws is reported, and the program
/// goes on.
class Barrier {
  public:
    explicit Barrier(std::function<void(const std::string&)> report) : report_(std::move(report)) {}

    template <typename Handler>
    void run(Handler&& handler) const noexcept {
        try {
            handler();
        } catch (const std::exception& error) {
            report(error.what());
        } catch (...) {
            report("unknown failure");
        }
    }

  private:
    void report(const std::string& text) const noexcept {
        try {
            report_(text);
        } catch (...) {  // nobody is left to tell
        }
    }

    std::function<void(const std::string&)> report_;
};

}  // namespace vantrel::qt

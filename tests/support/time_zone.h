// The machine's time zone, for as long as a test needs it.
#pragma once

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

namespace vantrel::test {

class TimeZone {
  public:
    explicit TimeZone(const std::string& name) {
        if (const char* before = std::getenv("TZ")) before_ = before;
        ::setenv("TZ", name.c_str(), 1);
        ::tzset();
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;
    ~TimeZone() {
        before_ ? ::setenv("TZ", before_->c_str(), 1) : ::unsetenv("TZ");
        ::tzset();
    }

  private:
    std::optional<std::string> before_;
};

}  // namespace vantrel::test

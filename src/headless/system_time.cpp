#include "headless/system_time.h"

#include <algorithm>

#include <poll.h>

namespace vantrel::headless {

using namespace platform;

Instant SystemTime::now() {
    return std::chrono::time_point_cast<Milliseconds>(std::chrono::system_clock::now());
}

SystemTime::SystemTime(Instant start, std::function<int()> watched)
    : start_(start), began_(std::chrono::steady_clock::now()), watched_(std::move(watched)) {}

Milliseconds SystemTime::sinceStart() const {
    return std::chrono::duration_cast<Milliseconds>(std::chrono::steady_clock::now() - began_);
}

void SystemTime::passUntil(Instant instant) {
    constexpr Milliseconds kLongestRest{60'000};
    const Milliseconds rest = std::clamp(instant - utc(), Milliseconds{0}, kLongestRest);
    pollfd watched{watched_(), POLLIN, 0};  // a negative descriptor is ignored
    ::poll(&watched, 1, static_cast<int>(rest.count()));
}

}  // namespace vantrel::headless

#include "headless/system_time.h"

#include <algorithm>

#include "platform/descriptors.h"

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
    wait(std::clamp(instant - utc(), Milliseconds{0}, kLongestRest), watched_());
}

std::vector<int> SystemTime::readable() { return wait(Milliseconds{0}, -1); }

std::vector<int> SystemTime::wait(Milliseconds longest, int another) {
    std::vector<int> watched = descriptors_;
    watched.push_back(another);
    std::vector<int> found = waitForInput(watched, longest);
    std::erase(found, another);
    return found;
}

}  // namespace vantrel::headless

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
    wait(std::clamp(instant - utc(), Milliseconds{0}, kLongestRest), watched_());
}

std::vector<int> SystemTime::readable() { return wait(Milliseconds{0}, -1); }

std::vector<int> SystemTime::wait(Milliseconds longest, int another) {
    std::vector<pollfd> watched;
    for (const int descriptor : descriptors_) watched.push_back({descriptor, POLLIN, 0});
    watched.push_back({another, POLLIN, 0});  // a negative descriptor is ignored
    const int ready = ::poll(watched.data(), watched.size(), static_cast<int>(longest.count()));
    watched.pop_back();
    std::vector<int> found;
    for (const pollfd& one : watched)
        if (ready > 0 && one.revents != 0) found.push_back(one.fd);
    return found;
}

}  // namespace vantrel::headless

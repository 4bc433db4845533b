// The machine's own time, for runs in which the night takes as long as a night.
#pragma once

#include <chrono>
#include <functional>
#include <vector>

#include "platform/queued_event_loop.h"

namespace vantrel::headless {

/// Counts from a start instant by the machine's steady clock, so that it never runs backwards.
class SystemTime : public platform::TimeKeeper {
  public:
    static platform::Instant now();

    /// `watched` names the descriptor whose input ends a wait early; -1 for none.
    SystemTime(platform::Instant start, std::function<int()> watched);

    platform::Instant utc() const override { return start_ + sinceStart(); }
    platform::Milliseconds sinceStart() const override;
    void passUntil(platform::Instant instant) override;
    void watch(const std::vector<int>& descriptors) override { descriptors_ = descriptors; }
    std::vector<int> readable() override;

  private:
    /// Waits for input at most so long; those of watch() that have some.
    std::vector<int> wait(platform::Milliseconds longest, int another);

    platform::Instant start_;
    std::chrono::steady_clock::time_point began_;
    std::function<int()> watched_;
    std::vector<int> descriptors_;
};

}  // namespace vantrel::headless

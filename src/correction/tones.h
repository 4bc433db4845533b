// Tones that come faster the nearer the axis is to the pole, for hands that are at the bolts while the screen
// is out of sight.
#pragma once

#include <functional>
#include <optional>

#include "platform/event_loop.h"
#include "platform/timer.h"

namespace vantrel::correction {

class Tones {
  public:
    Tones(platform::EventLoop& loop, std::function<void()> sound);

    /// How many tolerances the axis is off; nothing, or less than one, is silence.
    void tell(std::optional<double> tolerances);

  private:
    void tick();

    platform::EventLoop& loop_;
    std::function<void()> sound_;
    platform::Timer tick_;
    platform::Milliseconds interval_{0}, last_{0};
};

}  // namespace vantrel::correction

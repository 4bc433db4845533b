// Whether a mount is still on its way, where its own word isn't enough.
#pragma once

#include <optional>

#include "hosts/mount_position.h"
#include "platform/clock.h"

namespace vantrel::hosts::alpaca {

/// Right after the command some mounts still say that they don't slew. So a slew is under way until the mount
/// said so and then no more, or stands at its target, or didn't move for two seconds.
class SlewLatch {
  public:
    /// Nothing for a place that isn't known.
    SlewLatch(platform::Milliseconds now, std::optional<MountPosition> from, const MountPosition& to)
        : start_(now), from_(from), to_(to) {}

    enum class Verdict { kSlewing, kOver, kTookNoNotice };

    /// What the mount says, and where it says that it is.
    Verdict judge(platform::Milliseconds now, bool saysSlewing, const std::optional<MountPosition>& where);

  private:
    platform::Milliseconds start_;
    std::optional<MountPosition> from_;
    MountPosition to_;
    bool seen_ = false;
};

}  // namespace vantrel::hosts::alpaca

#include "hosts/alpaca/slew_latch.h"

namespace vantrel::hosts::alpaca {

namespace {

constexpr platform::Milliseconds kGrace{2000};
constexpr double kNear = 1.0 / 60;  // degrees

bool areNear(const std::optional<MountPosition>& a, const std::optional<MountPosition>& b) {
    return a && b && separation(*a, *b) < kNear;
}

}  // namespace

SlewLatch::Verdict SlewLatch::judge(platform::Milliseconds now, bool saysSlewing,
                                    const std::optional<MountPosition>& where) {
    seen_ = seen_ || saysSlewing;
    if (saysSlewing) return Verdict::kSlewing;
    if (seen_) return Verdict::kOver;
    const bool arrived = areNear(where, to_) && !areNear(from_, to_);
    if (arrived) return Verdict::kOver;
    if (now - start_ < kGrace) return Verdict::kSlewing;
    const bool stoodStill = areNear(where, from_) && !areNear(where, to_);
    return stoodStill ? Verdict::kTookNoNotice : Verdict::kOver;
}

}  // namespace vantrel::hosts::alpaca

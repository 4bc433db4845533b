#include "hosts/alpaca/slew_latch.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vantrel::hosts::alpaca {

namespace {

constexpr platform::Milliseconds kGrace{2000};
constexpr double kNear = 1.0 / 60;  // degrees

bool areNear(const std::optional<EquatorialPosition>& a, const std::optional<EquatorialPosition>& b) {
    return a && b && separation(*a, *b) < kNear;
}

}  // namespace

double separation(const EquatorialPosition& a, const EquatorialPosition& b) {
    // The haversine formula, which is exact for small angles as well.
    constexpr double kDegree = std::numbers::pi / 180;
    const double dec = std::sin((a.declination - b.declination) / 2 * kDegree);
    const double ra = std::sin((a.rightAscension - b.rightAscension) / 2 * 15 * kDegree);
    const double square =
        dec * dec + std::cos(a.declination * kDegree) * std::cos(b.declination * kDegree) * ra * ra;
    return 2 * std::asin(std::sqrt(std::min(1.0, square))) / kDegree;
}

SlewLatch::Verdict SlewLatch::judge(platform::Milliseconds now, bool saysSlewing,
                                    const std::optional<EquatorialPosition>& where) {
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

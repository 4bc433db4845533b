#include "devices/slew_watch.h"

#include "engine/sky_geometry.h"
#include "platform/text.h"

namespace vantrel::devices {
namespace {

using platform::Milliseconds;

constexpr Milliseconds kStandstill{60'000};
constexpr Milliseconds kLongestSlew{15 * 60'000};
constexpr double kStill = 0.003;  // degrees
constexpr double kAstray = 0.25;  // degrees: mounts that are sloppy stop within some minutes of arc

double separation(const SlewWatch::Position& a, const SlewWatch::Position& b) {
    return engine::separation({a.ra, a.dec}, {b.ra, b.dec});
}

}  // namespace

std::string SlewWatch::complaint(Milliseconds now, const Position& position) {
    if (separation(position, last_) > kStill) {
        last_ = position;
        lastMove_ = now;
    }
    if (now - lastMove_ > kStandstill) return "says that it is slewing, but hasn't moved for a minute";
    if (now - begun_ > kLongestSlew) return "has been slewing for a quarter of an hour";
    return {};
}

std::string SlewWatch::complaintAtEnd(const Position& position) const {
    const double astray = separation(position, target_);
    if (!(astray > kAstray)) return {};
    return "stopped " + platform::formatNumber(astray, "0.00") + " degrees from where it was sent";
}

}  // namespace vantrel::devices

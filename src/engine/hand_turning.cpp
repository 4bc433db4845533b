#include "engine/hand_turning.h"

#include <algorithm>
#include <cmath>

#include "engine/angles.h"
#include "engine/run_exits.h"
#include "engine/waiting.h"
#include "platform/text.h"

namespace vantrel::engine {

using platform::formatNumber;
using platform::joinLines;

namespace {

/// Of the wanted turn. More does no harm.
constexpr double kEnough = 0.9;

/// Seconds. A camera that is gone fails at once, again and again.
constexpr double kBetweenLooks = 0.2;

}  // namespace

double turnedEastward(const TakenPlate& from, const TakenPlate& to) {
    return signedHours((from.exposedLst - from.ra) - (to.exposedLst - to.ra)) * 15;
}

bool standsStill(const TakenPlate& before, const TakenPlate& after) {
    constexpr double kSteady = 10. / 3600;  // degrees: what solving and seeing leave
    constexpr double kDrift = 0.5 / 3600;   // degrees a second: tracking about an axis that is a degree off
    const double seconds = signedHours(after.exposedLst - before.exposedLst) * 3600;
    const double amongStars = separation({before.ra, before.dec}, {after.ra, after.dec});
    const double onGround =
        separation({before.exposedLst - before.ra, before.dec}, {after.exposedLst - after.ra, after.dec});
    return std::min(amongStars, onGround) < kSteady + kDrift * std::max(seconds, 0.0);
}

std::optional<TakenPlate> HandTurning::first(const MeasurementPlan& plan) {
    const EquatorialPosition anywhere{.RA = services_.telescope.SiderealTime(), .Dec = 0};
    const auto start = services_.telescope.readingIfKnown().value_or(anywhere);
    return taker_.take(taker_.at(1, start, Pointing::kByHand), plan.exposures, {});
}

TakenPlate HandTurning::next(const MeasurementPlan& plan, std::span<const TakenPlate> before) {
    const double wanted = plan.slew * 15;  // degrees
    const TakenPlate& last = before.back();
    const int number = last.number + 1;
    double direction = plan.eastward ? 1 : -1;
    if (before.size() > 1) direction = turnedEastward(before[before.size() - 2], last) > 0 ? 1 : -1;
    const std::string way = direction > 0 ? "east" : "west";
    const auto degrees = [](double angle) { return formatNumber(angle, "0.0"); };

    tell("", "Turn the axis " + way + " by " + degrees(wanted) + " degrees");
    TakenPlate seen = last;
    for (;; WaitSeconds(services_.loop, kBetweenLooks)) {
        const auto picture = look(number, seen);
        if (!picture) {
            tell("No solution", "Hold still, or turn on " + way);
            continue;
        }
        const double eastward = turnedEastward(last, *picture);
        const double turned = before.size() > 1 ? eastward * direction : std::abs(eastward);
        const bool still = standsStill(seen, *picture);
        seen = *picture;
        const bool enough = turned >= kEnough * wanted;
        tell("Turned " + degrees(turned) + " of " + degrees(wanted) + " degrees",
             !enough ? "Go on turning " + way
             : still ? "The plate is taken"
                     : "Stop here, and hold still");
        if (!enough || !still) continue;
        if (plan.exposures == 1) return seen;
        const TakenPlate here = taker_.at(number, {.RA = seen.ra, .Dec = seen.dec}, Pointing::kByHand);
        if (const auto plate = taker_.take(here, plan.exposures, {})) return *plate;
    }
}

/// One picture, looked for near the last one first.
std::optional<TakenPlate> HandTurning::look(int number, const TakenPlate& near) {
    return taker_.take(taker_.at(number, {.RA = near.ra, .Dec = near.dec}, Pointing::kByHand), 1, {});
}

void HandTurning::tell(const std::string& progress, const std::string& advice) {
    panel_.txtInstructions.setAlignment(platform::Alignment::kLeft);
    panel_.txtInstructions.setText(
        joinLines({"Turn the mount by hand", "about its right ascension axis only", "", progress, advice}));
    if (!progress.empty()) services_.log.AddToLog(progress + ": " + advice);
}

}  // namespace vantrel::engine

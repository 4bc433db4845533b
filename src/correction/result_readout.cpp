#include "correction/result_readout.h"

#include <array>
#include <cmath>

#include "engine/angles.h"
#include "platform/color.h"
#include "platform/text.h"

namespace vantrel::correction {

using engine::shortAngle;
using platform::formatNumber;

namespace {

/// What can't be seen on the smallest of the adjusters' scales.
constexpr double kNothing = 1. / 60;  // arc-minutes

/// What is wrong on either side, and what to do about it.
struct Ways {
    const char* adjuster;
    const char* ifPositive;
    const char* ifNegative;
};
constexpr Ways kAzimuth{"Azimuth", "too far east: turn west", "too far west: turn east"};
constexpr Ways kElevation{"Elevation", "too high: lower", "too low: raise"};

std::string right(const Ways& ways) { return std::string(ways.adjuster) + " is right"; }

std::string advice(const Ways& ways, double arcMinutes) {
    if (std::abs(arcMinutes) < kNothing) return right(ways);
    return std::string(ways.adjuster) + " " + shortAngle(arcMinutes) + " " +
           (arcMinutes > 0 ? ways.ifPositive : ways.ifNegative);
}

/// What is to be done stands behind the colon.
std::string move(const Ways& ways, double arcMinutes) {
    if (std::abs(arcMinutes) < kNothing) return right(ways);
    const std::string words = arcMinutes > 0 ? ways.ifPositive : ways.ifNegative;
    return words.substr(words.find(": ") + 2) + " " + shortAngle(arcMinutes);
}

}  // namespace

std::string azimuthAdvice(const engine::AxisOffset& offset) { return advice(kAzimuth, offset.azimuth); }

std::string elevationAdvice(const engine::AxisOffset& offset) { return advice(kElevation, offset.elevation); }

std::string azimuthMove(const engine::AxisOffset& offset) { return move(kAzimuth, offset.azimuth); }

std::string elevationMove(const engine::AxisOffset& offset) { return move(kElevation, offset.elevation); }

std::string boltTurns(double arcMinutes, double perTurn) {
    if (!(perTurn > 0) || std::abs(arcMinutes) < kNothing) return "";
    constexpr int kEighths = 8;
    const auto eighths = std::lround(std::abs(arcMinutes) / perTurn * kEighths);
    if (eighths == 0) return "less than an eighth of a turn";
    constexpr std::array kParts = {"",
                                   "an eighth of a turn",
                                   "a quarter turn",
                                   "three eighths of a turn",
                                   "half a turn",
                                   "five eighths of a turn",
                                   "three quarters of a turn",
                                   "seven eighths of a turn"};
    if (eighths < kEighths) return kParts[static_cast<std::size_t>(eighths)];
    return formatNumber(static_cast<double>(eighths) / kEighths, "0.0#") +
           (eighths == kEighths ? " turn" : " turns");
}

ResultReadout::ResultReadout(ResultPanel& panel, const platform::Clock& clock,
                             std::function<std::optional<double>()> needed)
    : panel_(panel), clock_(clock), needed_(std::move(needed)) {
    toleranceChanged_ = panel_.txtTolerance.changed.subscribe([this] { judge(); });
    judge();
}

void ResultReadout::clear() {
    result_.reset();
    panel_.picDial.clear();
    for (platform::Label* label : {&panel_.lblAzimuthAdvice, &panel_.lblElevationAdvice, &panel_.lblTotal})
        label->setCaption("");
    judge();
}

void ResultReadout::show(const engine::AxisOffset& offset, double distance, std::optional<double> sigma) {
    result_ = Result{.distance = distance, .sigma = sigma};
    panel_.lblAzimuthAdvice.setCaption(azimuthAdvice(offset));
    panel_.lblElevationAdvice.setCaption(elevationAdvice(offset));
    panel_.lblTotal.setCaption("Total " + shortAngle(distance) +
                               (sigma ? " ± " + formatNumber(*sigma, "0.0") + "″" : "") + ", measured at " +
                               platform::formatTime(platform::civilLocal(clock_.utc()), "HH:mm"));
    judge();
}

void ResultReadout::showFailure() {
    clear();
    tellVerdict("No valid result", platform::color::kRed);
}

double ResultReadout::tolerance() const {
    constexpr double kUsual = 2;
    const double typed = platform::leadingNumber(panel_.txtTolerance.text());
    if (typed > 0) return typed;
    return (needed_ ? needed_() : std::nullopt).value_or(kUsual);
}

/// Good is only what two sigma leave no doubt about.
void ResultReadout::judge() {
    if (!result_) return tellVerdict("No measurement yet");
    const double doubt = 2 * result_->sigma.value_or(0) / 60;
    const std::string limit = shortAngle(tolerance());
    if (result_->distance + doubt <= tolerance())
        tellVerdict("Good: within " + limit, platform::color::kDarkGreen);
    else if (result_->distance - doubt <= tolerance())
        tellVerdict("Uncertain: about " + limit);
    else
        tellVerdict("Not yet within " + limit);
}

void ResultReadout::tellVerdict(const std::string& words, std::optional<platform::Color> lamp) {
    panel_.lblVerdict.setCaption(words);
    panel_.lblVerdict.setBackColor(lamp.value_or(platform::color::kIndicatorOffBack));
    panel_.lblVerdict.setForeColor(lamp ? platform::color::kBlack : platform::color::kIndicatorOffFore);
}

}  // namespace vantrel::correction

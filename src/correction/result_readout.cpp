#include "correction/result_readout.h"

#include <array>
#include <cmath>

#include "engine/angles.h"
#include "platform/color.h"
#include "platform/text.h"

namespace vantrel::correction {

using engine::shortAngle;
using platform::formatNumber;
using platform::Words;

namespace {

/// What can't be seen on the smallest of the adjusters' scales.
constexpr double kNothing = 1. / 60;  // arc-minutes

bool isNothing(double arcMinutes) { return std::abs(arcMinutes) < kNothing; }

/// What is to be done stands behind the colon.
std::string move(const std::string& advice, double arcMinutes) {
    if (isNothing(arcMinutes)) return advice;
    return advice.substr(advice.find(": ") + 2) + " " + shortAngle(arcMinutes);
}

}  // namespace

Words azimuthAdvice(const engine::AxisOffset& offset) {
    if (isNothing(offset.azimuth)) return Words::tr("Azimuth is right");
    const std::string angle = shortAngle(offset.azimuth);
    return offset.azimuth > 0 ? Words::tr("Azimuth %1 too far east: turn west", {angle})
                              : Words::tr("Azimuth %1 too far west: turn east", {angle});
}

Words elevationAdvice(const engine::AxisOffset& offset) {
    if (isNothing(offset.elevation)) return Words::tr("Elevation is right");
    const std::string angle = shortAngle(offset.elevation);
    return offset.elevation > 0 ? Words::tr("Elevation %1 too high: lower", {angle})
                                : Words::tr("Elevation %1 too low: raise", {angle});
}

std::string azimuthMove(const engine::AxisOffset& offset) {
    return move(azimuthAdvice(offset).english(), offset.azimuth);
}

std::string elevationMove(const engine::AxisOffset& offset) {
    return move(elevationAdvice(offset).english(), offset.elevation);
}

std::string boltTurns(double arcMinutes, double perTurn) {
    if (!(perTurn > 0) || isNothing(arcMinutes)) return "";
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
    const std::string doubt = sigma ? " ± " + formatNumber(*sigma, "0.0") + "″" : "";
    panel_.lblTotal.setCaption(Words::tr(
        "Total %1, measured at %2",
        {shortAngle(distance) + doubt, platform::formatTime(platform::civilLocal(clock_.utc()), "HH:mm")}));
    judge();
}

void ResultReadout::showFailure() {
    clear();
    tellVerdict(Words::tr("No valid result"), platform::color::kRed);
}

double ResultReadout::tolerance() const {
    constexpr double kUsual = 2;
    const double typed = platform::leadingNumber(panel_.txtTolerance.text());
    if (typed > 0) return typed;
    return (needed_ ? needed_() : std::nullopt).value_or(kUsual);
}

/// Good is only what two sigma leave no doubt about.
void ResultReadout::judge() {
    if (!result_) return tellVerdict(Words::tr("No measurement yet"));
    const double doubt = 2 * result_->sigma.value_or(0) / 60;
    const std::string limit = shortAngle(tolerance());
    if (result_->distance + doubt <= tolerance())
        tellVerdict(Words::tr("Good: within %1", {limit}), platform::color::kDarkGreen);
    else if (result_->distance - doubt <= tolerance())
        tellVerdict(Words::tr("Uncertain: about %1", {limit}));
    else
        tellVerdict(Words::tr("Not yet within %1", {limit}));
}

void ResultReadout::tellVerdict(const Words& words, std::optional<platform::Color> lamp) {
    panel_.lblVerdict.setCaption(words);
    panel_.lblVerdict.setBackColor(lamp.value_or(platform::color::kIndicatorOffBack));
    panel_.lblVerdict.setForeColor(lamp ? platform::color::kBlack : platform::color::kIndicatorOffFore);
}

}  // namespace vantrel::correction

#include "engine/progress.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/text.h"

namespace vantrel::engine {

using platform::formatNumber;
using platform::Words;

namespace {

constexpr platform::Milliseconds kTick{250};  // so that no second is left out

std::size_t at(Stage stage) { return static_cast<std::size_t>(stage); }

Words doingIt(Stage stage, const Words& subject) {
    const bool alone = subject.empty();
    switch (stage) {
        case Stage::kSlew:
            return alone ? Words::tr("Slewing") : Words::tr("%1: slewing", {subject});
        case Stage::kReturn:
            return alone ? Words::tr("Slewing back") : Words::tr("%1: slewing back", {subject});
        case Stage::kSettle:
            return alone ? Words::tr("Settling") : Words::tr("%1: settling", {subject});
        case Stage::kExpose:
            return alone ? Words::tr("Exposing") : Words::tr("%1: exposing", {subject});
        default:
            return alone ? Words::tr("Solving") : Words::tr("%1: solving", {subject});
    }
}

Words stopping(Stage stage) {
    switch (stage) {
        case Stage::kSlew:
        case Stage::kReturn:
            return Words::tr("Stopping after the slew");
        case Stage::kSettle:
            return Words::tr("Stopping");
        case Stage::kExpose:
            return Words::tr("Stopping after the exposure");
        default:
            return Words::tr("Stopping after the solution");
    }
}

std::string duration(double seconds) {
    constexpr long kMinute = 60;  // seconds
    const long whole = std::lround(std::ceil(seconds));
    if (whole < kMinute) return std::to_string(whole) + " s";
    return std::to_string(whole / kMinute) + " min " + std::to_string(whole % kMinute) + " s";
}

}  // namespace

Progress::Progress(RunPanel& panel, const RunState& state, platform::EventLoop& loop)
    : panel_(panel), state_(state), loop_(loop), tick_(loop, kTick) {
    tick_.onTick = [this] { show(); };
}

void Progress::begin(std::vector<PlannedStage> stages) {
    ahead_ = std::move(stages);
    foreseen_ = !ahead_.empty();
    subject_ = {};
    began_ = loop_.clock().sinceStart();
    fraction_ = 0;
    say("", 0);
}

void Progress::rest(const Words& words) {
    tick_.setEnabled(false);
    say(words, 1);
}

void Progress::end(const Words& words) {
    ahead_.clear();
    tick_.setEnabled(false);
    say(words, 0);
}

void Progress::enter(const PlannedStage& stage) {
    const auto planned = std::ranges::find(ahead_, stage.stage, &PlannedStage::stage);
    if (planned != ahead_.end()) ahead_.erase(ahead_.begin(), planned + 1);
    now_ = stage;
    entered_ = loop_.clock().sinceStart();
    tick_.setEnabled(true);
    show();
}

void Progress::leave(bool done) {
    tick_.setEnabled(false);
    if (!done || state_.StopRequested || now_.stage == Stage::kSettle) return;
    learned_[at(now_.stage)] = std::max(secondsSince(entered_) - now_.seconds, 0.0);
}

void Progress::show() {
    if (state_.StopRequested) return say(stopping(now_.stage), fraction_);
    const double elapsed = secondsSince(entered_);
    const Words what = doing(elapsed);
    double left = std::max(expected(now_) - elapsed, 0.0);
    if (!foreseen_) return say(what, elapsed / std::max(elapsed + left, 1.0));
    for (const PlannedStage& stage : ahead_) left += expected(stage);
    const double passed = secondsSince(began_);
    if (passed > 0) fraction_ = std::max(fraction_, passed / (passed + left));
    say(left > 0 ? Words::tr("%1; about %2 left", {what, duration(left)}) : what, fraction_);
}

Words Progress::doing(double elapsed) const {
    Words what = doingIt(now_.stage, subject_);
    if (now_.seconds <= 0) return what;
    const double shown = std::floor(std::min(elapsed, now_.seconds));
    return Words::tr("%1, %2 of %3 s", {what, formatNumber(shown, "0"), platform::toText(now_.seconds)});
}

double Progress::expected(const PlannedStage& stage) const {
    return stage.seconds + learned_[at(stage.stage)];
}

double Progress::secondsSince(platform::Milliseconds instant) const {
    return std::chrono::duration<double>(loop_.clock().sinceStart() - instant).count();
}

void Progress::say(const Words& words, double fraction) {
    panel_.lblProgress.setCaption(words);
    panel_.lblProgress.setToolTip(words);  // whole, where the line is too short
    panel_.gaugeProgress.setFraction(fraction);
}

}  // namespace vantrel::engine

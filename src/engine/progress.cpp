#include "engine/progress.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <utility>

#include "platform/text.h"

namespace vantrel::engine {

using platform::formatNumber;

namespace {

constexpr platform::Milliseconds kTick{250};  // so that no second is left out

struct Words {
    const char* doing;
    const char* stopping;
};

constexpr std::array<Words, 5> kWords{{{"slewing", "Stopping after the slew"},
                                       {"slewing back", "Stopping after the slew"},
                                       {"settling", "Stopping"},
                                       {"exposing", "Stopping after the exposure"},
                                       {"solving", "Stopping after the solution"}}};

std::size_t at(Stage stage) { return static_cast<std::size_t>(stage); }

std::string capital(std::string words) {
    if (!words.empty()) words.front() = static_cast<char>(std::toupper(words.front()));
    return words;
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
    subject_.clear();
    began_ = loop_.clock().sinceStart();
    fraction_ = 0;
    say("", 0);
}

void Progress::rest(const std::string& words) {
    tick_.setEnabled(false);
    say(words, 1);
}

void Progress::end(const std::string& words) {
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
    if (state_.StopRequested) return say(kWords[at(now_.stage)].stopping, fraction_);
    const double elapsed = secondsSince(entered_);
    const std::string what = subject_.empty() ? capital(doing(elapsed)) : subject_ + ": " + doing(elapsed);
    double left = std::max(expected(now_) - elapsed, 0.0);
    if (!foreseen_) return say(what, elapsed / std::max(elapsed + left, 1.0));
    for (const PlannedStage& stage : ahead_) left += expected(stage);
    const double passed = secondsSince(began_);
    if (passed > 0) fraction_ = std::max(fraction_, passed / (passed + left));
    say(left > 0 ? what + "; about " + duration(left) + " left" : what, fraction_);
}

std::string Progress::doing(double elapsed) const {
    const std::string what = kWords[at(now_.stage)].doing;
    if (now_.seconds <= 0) return what;
    const double shown = std::floor(std::min(elapsed, now_.seconds));
    return what + ", " + formatNumber(shown, "0") + " of " + platform::toText(now_.seconds) + " s";
}

double Progress::expected(const PlannedStage& stage) const {
    return stage.seconds + learned_[at(stage.stage)];
}

double Progress::secondsSince(platform::Milliseconds instant) const {
    return std::chrono::duration<double>(loop_.clock().sinceStart() - instant).count();
}

void Progress::say(const std::string& words, double fraction) {
    panel_.lblProgress.setCaption(words);
    panel_.lblProgress.setToolTip(words);  // whole, where the line is too short
    panel_.gaugeProgress.setFraction(fraction);
}

}  // namespace vantrel::engine

#include "hosts/adjusted_camera.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <stdexcept>
#include <utility>

#include "platform/text.h"

namespace vantrel::hosts {

using platform::CameraLevel;
using platform::CameraRange;

namespace {

double numberOf(const std::string& wish) {
    if (const auto number = platform::parseNumber(wish)) return *number;
    throw std::runtime_error("\"" + wish + "\" is no number");
}

void requireInside(const std::optional<CameraRange>& range, double value) {
    if (range && !(value >= range->least && value <= range->greatest))
        throw std::runtime_error("it takes " + platform::toText(range->least) + " to " +
                                 platform::toText(range->greatest) + ", not " + platform::toText(value));
}

/// By a step's name or, where that isn't one, its place.
double valueOf(const CameraLevel& level, const std::string& wish) {
    if (level.names.empty()) {
        const double value = numberOf(wish);
        requireInside(level.range, value);
        return value;
    }
    std::string known;
    for (std::size_t i = 0; i < level.names.size(); ++i) {
        if (platform::toLower(level.names[i]) == platform::toLower(wish)) return static_cast<double>(i);
        known += (i == 0 ? "" : ", ") + level.names[i];
    }
    const auto place = platform::parseNumber(wish);
    if (place && *place >= 0 && *place < static_cast<double>(level.names.size()) &&
        std::floor(*place) == *place)
        return *place;
    throw std::runtime_error("it takes " + known + ", not \"" + wish + "\"");
}

}  // namespace

AdjustedCamera::AdjustedCamera(std::shared_ptr<platform::CameraHardware> camera,
                               std::function<CameraWishes()> wishes,
                               std::function<void(const std::string& line)> tell)
    : camera_(std::move(camera)), wishes_(std::move(wishes)), tell_(std::move(tell)) {}

AdjustedCamera::~AdjustedCamera() { camera_->onProgress = nullptr; }

void AdjustedCamera::connect() {
    camera_->connect();
    cools_ = false;
    adjust();
}

void AdjustedCamera::start(const platform::CameraOrder& order) {
    camera_->onProgress = [this] {
        if (onProgress) onProgress();
    };
    if (connected()) {
        const CameraWishes wishes = wishes_();
        adjustLevels(wishes);
        // A driver that was started anew has forgotten it.
        if (wishes.cool) adjustCooling(wishes);
    }
    camera_->start(order);
}

void AdjustedCamera::adjust() {
    told_.clear();
    if (!connected()) return;
    const CameraWishes wishes = wishes_();
    const Progress now = progress();
    if (now != Progress::kExposing && now != Progress::kDownloading) adjustLevels(wishes);
    adjustCooling(wishes);
}

void AdjustedCamera::adjustLevels(const CameraWishes& wishes) {
    adjustLevel(Level::kGain, platform::trimmed(wishes.gain));
    adjustLevel(Level::kOffset, platform::trimmed(wishes.offset));
}

void AdjustedCamera::adjustLevel(Level level, const std::string& wish) {
    if (wish.empty()) return;
    attempt(levelName(level), [&] {
        const auto& known = level == Level::kGain ? facts().gain : facts().offset;
        if (!known || !known->canSet) throw std::runtime_error("it has none that can be set");
        const double value = valueOf(*known, wish);
        if (value != known->value) camera_->set(level, value);
    });
}

void AdjustedCamera::adjustCooling(const CameraWishes& wishes) {
    attempt("cooling", [&] {
        if (!wishes.cool) {
            if (std::exchange(cools_, false)) camera_->cool(std::nullopt);
            return;
        }
        const platform::CameraFacts& known = facts();
        if (!known.canCool && !known.cooling) throw std::runtime_error("it has no cooler that can be set");
        const double celsius = known.canCool ? numberOf(platform::trimmed(wishes.celsius)) : 0;
        if (known.canCool) requireInside(known.coolingRange, celsius);
        cools_ = true;
        const bool isCooling = known.cooling.value_or(true) && (!known.canCool || known.coolsTo == celsius);
        if (!isCooling) camera_->cool(celsius);
    });
}

void AdjustedCamera::attempt(const std::string& what, const std::function<void()>& action) {
    try {
        action();
    } catch (const std::exception& error) {
        const std::string line = "The " + what + " of " + name() + " is left as it is: " + error.what();
        if (told_.insert(line).second) tell_(line);
    }
}

}  // namespace vantrel::hosts

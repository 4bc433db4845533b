#include "correction/tones.h"

#include <algorithm>
#include <cmath>

namespace vantrel::correction {

namespace {

constexpr platform::Milliseconds kTick{50};
// Seconds: from five tones in a second at the tolerance to one in two seconds at a hundred times it.
constexpr double kFastest = 0.2, kSlowest = 2;

}  // namespace

Tones::Tones(platform::EventLoop& loop, std::function<void()> sound)
    : loop_(loop), sound_(std::move(sound)), tick_(loop, kTick) {
    tick_.onTick = [this] { tick(); };
}

void Tones::tell(std::optional<double> tolerances) {
    const bool heard = tolerances && *tolerances > 1 && sound_;
    if (heard) {
        const double seconds = std::min(kFastest * std::sqrt(*tolerances), kSlowest);
        interval_ = platform::Milliseconds(std::lround(seconds * 1000));
    }
    tick_.setEnabled(heard);
}

void Tones::tick() {
    const auto now = loop_.clock().sinceStart();
    if (now - last_ < interval_) return;
    last_ = now;
    sound_();
}

}  // namespace vantrel::correction

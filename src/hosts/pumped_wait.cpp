#include "hosts/pumped_wait.h"

#include <algorithm>

namespace vantrel::hosts {

using platform::Milliseconds;

namespace {

constexpr Milliseconds kAlone{50};
constexpr Milliseconds kSlice{10};

}  // namespace

PumpedWait::Outcome PumpedWait::until(const std::function<bool()>& done, Milliseconds timeOut,
                                      const Transport& transport) const {
    const Milliseconds start = clock().sinceStart();
    const bool before = givenUp();
    const auto over = [&] { return loop_.ending() || (!before && givenUp()); };
    const auto rest = [&](Milliseconds longest) {
        return std::max(longest - (clock().sinceStart() - start), Milliseconds{0});
    };
    const Milliseconds alone = std::min(kAlone, timeOut);
    for (;;) {
        if (done()) return Outcome::kDone;
        if (over()) return Outcome::kGivenUp;
        if (rest(alone).count() == 0 || !transport || !transport(rest(alone))) break;
    }
    const platform::OutsideCall call(calls_);
    while (rest(timeOut).count() > 0) {
        loop_.sleep(std::min(kSlice, rest(timeOut)));
        if (done()) return Outcome::kDone;
        if (over()) return Outcome::kGivenUp;
    }
    return Outcome::kTimedOut;
}

}  // namespace vantrel::hosts

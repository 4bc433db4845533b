// The one place in which hosts wait for a device.
//
// An answer mostly comes within a few milliseconds, and until it does nothing else should happen in the
// middle of a member. So the first moments belong to the transport alone; after them the window has to stay
// alive, and the wait goes on in short sleeps during which other handlers run. Time is the loop's clock's.
#pragma once

#include <functional>

#include "platform/event_loop.h"
#include "platform/outside_call.h"

namespace vantrel::hosts {

/// Lets bytes move for at most so long, or until some did; false when there is nothing that could move, and
/// no time has passed.
using Transport = std::function<bool(platform::Milliseconds atMost)>;

class PumpedWait {
  public:
    enum class Outcome { kDone, kTimedOut, kGivenUp };

    /// `givenUp` says that the operator doesn't want to wait any more. It may be left out. What it says
    /// before a wait begins has no part in it: what follows a Stop, as stopping the mount does, is waited
    /// for.
    PumpedWait(platform::EventLoop& loop, platform::OutsideCalls& calls, std::function<bool()> givenUp = {})
        : loop_(loop), calls_(calls), givenUp_(std::move(givenUp)) {}

    /// Waits until `done` holds; what `done` throws ends the wait as well. Given up when the operator wants
    /// to, or the program ends.
    Outcome until(const std::function<bool()>& done, platform::Milliseconds timeOut,
                  const Transport& transport = {}) const;

    const platform::Clock& clock() const { return loop_.clock(); }

  private:
    bool givenUp() const { return givenUp_ && givenUp_(); }

    platform::EventLoop& loop_;
    platform::OutsideCalls& calls_;
    std::function<bool()> givenUp_;
};

}  // namespace vantrel::hosts

// Says that a member of an outside program or device is waiting for its answer while other handlers run: a
// moment at which nothing may be begun that talks to the outside as well.
#pragma once

#include "platform/signal.h"

namespace vantrel::platform {

/// One for the whole program: hosts enter, the application asks.
class OutsideCalls {
  public:
    bool underWay() const { return count_ > 0; }

    /// Tells that none is under way any more. Listeners don't act, they post what they have to do.
    Signal<> over;

  private:
    friend class OutsideCall;
    int count_ = 0;
};

/// While one lives, a member waits.
class OutsideCall {
  public:
    explicit OutsideCall(OutsideCalls& calls) : calls_(calls) { ++calls_.count_; }
    ~OutsideCall() {
        if (--calls_.count_ == 0) calls_.over.emit();
    }
    OutsideCall(const OutsideCall&) = delete;
    OutsideCall& operator=(const OutsideCall&) = delete;

  private:
    OutsideCalls& calls_;
};

}  // namespace vantrel::platform

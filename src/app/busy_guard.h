// Whether a procedure that the operator started is still on the stack.
#pragma once

#include <functional>

namespace vantrel::app {

class BusyCount {
  public:
    bool busy() const { return depth_ > 0; }

    /// Called whenever the last one has returned. Must not throw.
    std::function<void()> onIdle;

  private:
    friend class BusyGuard;
    int depth_ = 0;
};

/// Stands for one procedure.
class BusyGuard {
  public:
    explicit BusyGuard(BusyCount& count) : count_(count) { ++count_.depth_; }
    BusyGuard(const BusyGuard&) = delete;
    BusyGuard& operator=(const BusyGuard&) = delete;
    ~BusyGuard() {
        if (--count_.depth_ == 0 && count_.onIdle) count_.onIdle();
    }

  private:
    BusyCount& count_;
};

}  // namespace vantrel::app

// Where the operator's doing enters the program: no failure leaves it there, and the program knows that it is
// busy.
#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>

#include "app/busy_guard.h"
#include "platform/event_loop.h"
#include "platform/form.h"
#include "platform/outside_call.h"

namespace vantrel::app {

class HandlerBarrier {
  public:
    /// `report` is called inside the catch block, with the name of the handler that failed.
    HandlerBarrier(BusyCount& busy, std::function<void(const std::string& handler)> report)
        : busy_(busy), report_(std::move(report)) {}

    /// Clicks that come while a member of an outside program waits for its answer take effect when it has
    /// come, since what they begin would meet a program or a driver in the middle of something. Those on the
    /// controls given are never put off; once `ending` holds those that were are dropped. Before guard().
    void putOffWhile(platform::OutsideCalls& calls, platform::EventLoop& loop,
                     std::set<const platform::Control*> never, std::function<bool()> ending);

    /// Puts the barrier before every handler that the form and its controls have by now.
    void guard(platform::Form& form);

  private:
    struct PuttingOff;

    void puttingOff(std::function<void()>& handler);
    void guard(std::function<void()>& handler, const std::string& name);
    void guardControl(platform::Control& control);

    BusyCount& busy_;
    std::function<void(const std::string& handler)> report_;
    std::shared_ptr<PuttingOff> puttingOff_;
};

}  // namespace vantrel::app

// The order in which procedures begin: one at a time.
//
// A measurement and a series of exposures take what would disturb them out of the operator's reach. Some work
// leaves every button enabled: an exposure with a solve, a test of the solver. What he starts meanwhile
// begins when that work has ended, since a handler inside it would keep it waiting and use the same camera
// and solver.
#pragma once

#include <functional>
#include <string>

#include "engine/ports.h"
#include "platform/controls.h"
#include "platform/event_loop.h"

namespace vantrel::app {

class StartOrder {
  public:
    StartOrder(platform::EventLoop& loop, engine::LogPort& log) : loop_(loop), log_(log) {}

    /// The button's handler, which it has already, is such work; `name` is what the log calls it. Clicked
    /// again meanwhile it does nothing.
    void leavesButtonsEnabled(platform::Button& button, const std::string& name);

    /// The button's handler waits for such work.
    void waits(platform::Button& button, const std::string& name);

  private:
    void putOff(platform::Button& button, const std::string& name);
    void workOn(platform::Button& button, const std::string& name, const std::function<void()>& work);

    platform::EventLoop& loop_;
    engine::LogPort& log_;
    const platform::Button* atWork_ = nullptr;
    std::string nameOfWork_;
    platform::Button* next_ = nullptr;  // the click that came last
};

}  // namespace vantrel::app

// Where the operator's doing enters the program: no failure leaves it there, and the program knows that it is
// busy.
#pragma once

#include <functional>
#include <string>

#include "app/busy_guard.h"
#include "platform/form.h"

namespace vantrel::app {

class HandlerBarrier {
  public:
    /// `report` is called inside the catch block, with the name of the handler that failed.
    HandlerBarrier(BusyCount& busy, std::function<void(const std::string& handler)> report)
        : busy_(busy), report_(std::move(report)) {}

    /// Puts the barrier before every handler that the form and its controls have by now.
    void guard(platform::Form& form);

  private:
    void guard(std::function<void()>& handler, const std::string& name);
    void guardControl(platform::Control& control);

    BusyCount& busy_;
    std::function<void(const std::string& handler)> report_;
};

}  // namespace vantrel::app

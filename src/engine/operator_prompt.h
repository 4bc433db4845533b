// Next, Skip and Stop: how a procedure asks the operator to go on.
#pragma once

#include <functional>

#include "engine/indicators.h"
#include "engine/ports.h"
#include "engine/run_panel.h"
#include "engine/run_state.h"
#include "platform/event_loop.h"

namespace vantrel::engine {

class OperatorPrompt {
  public:
    OperatorPrompt(RunPanel& panel, RunState& state, platform::EventLoop& loop, SettingsPort& settings,
                   LogPort& log, TelescopePort& telescope);

    /// Waits until the operator clicks Next (true), Skip or Stop (false), the program ends (false), or
    /// something else has come up (false). The caller enables the buttons before and resets the Next button's
    /// colour afterwards.
    bool WaitForNextOrSkipClick(const std::function<bool()>& somethingElse = [] { return false; });

  private:
    void cmdNext_Click();
    void cmdSkip_Click();
    void cmdStop_Click();

    RunPanel& panel_;
    RunState& state_;
    platform::EventLoop& loop_;
    Indicators indicators_;
    LogPort& log_;
    TelescopePort& telescope_;
};

}  // namespace vantrel::engine

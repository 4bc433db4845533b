#include "engine/operator_prompt.h"

#include "engine/waiting.h"

namespace vantrel::engine {

OperatorPrompt::OperatorPrompt(RunPanel& panel, RunState& state, platform::EventLoop& loop,
                               SettingsPort& settings, LogPort& log, TelescopePort& telescope)
    : panel_(panel), state_(state), loop_(loop), indicators_(settings), log_(log), telescope_(telescope) {
    panel_.cmdNext.onClick = [this] { cmdNext_Click(); };
    panel_.cmdSkip.onClick = [this] { cmdSkip_Click(); };
    panel_.cmdStop.onClick = [this] { cmdStop_Click(); };
}

bool OperatorPrompt::WaitForNextOrSkipClick(const std::function<bool()>& somethingElse) {
    state_.NextClicked = false;
    state_.SkipClicked = false;
    do {
        WaitSeconds(loop_, 0.1);
        if (state_.NextClicked) {
            state_.NextClicked = false;
            return true;
        }
    } while (!state_.SkipClicked && !state_.StopRequested && !state_.AppUnloading && !somethingElse());
    state_.SkipClicked = false;
    return false;
}

void OperatorPrompt::cmdNext_Click() {
    state_.NextClicked = true;
    indicators_.SetActiveColors(panel_.cmdNext);
}

void OperatorPrompt::cmdSkip_Click() { state_.SkipClicked = true; }

void OperatorPrompt::cmdStop_Click() {
    indicators_.SetActiveColors(panel_.cmdStop);
    loop_.yield();
    log_.AddToLog("Operation stopped by operator");
    state_.StopRequested = true;
    telescope_.AbortTelescopeSlew();
}

}  // namespace vantrel::engine

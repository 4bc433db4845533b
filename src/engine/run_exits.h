// How a run ends before its end. Both are thrown and caught within the engine.
#pragma once

#include "engine/run_state.h"
#include "platform/event_loop.h"

namespace vantrel::engine {

struct StopExit {};  // the operator stopped, or a prompt ended the run
struct Closing {};   // the program is closing

/// Lets what waits happen, and leaves when the operator stopped or the program is closing.
inline void goOn(platform::EventLoop& loop, const RunState& state) {
    loop.yield();
    if (state.StopRequested) throw StopExit{};
    if (state.AppUnloading) throw Closing{};
}

}  // namespace vantrel::engine

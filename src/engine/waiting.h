// Waits during which the operator's buttons work.
#pragma once

#include "platform/event_loop.h"

namespace vantrel::engine {

/// Waits in steps of 100 ms, yielding between them, then the rest. Every wait takes at least 0.1 s; once
/// the program is ending it takes no longer.
void WaitSeconds(platform::EventLoop& loop, double seconds);

}  // namespace vantrel::engine

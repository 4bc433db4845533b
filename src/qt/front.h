// What every window of this front works with.
#pragma once

#include "platform/event_loop.h"
#include "qt/barrier.h"
#include "qt/theme.h"

namespace vantrel::qt {

struct Front {
    platform::EventLoop& loop;
    Theme& theme;
    const Barrier& barrier;
};

}  // namespace vantrel::qt

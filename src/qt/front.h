// What every window of this front works with.
#pragma once

#include "platform/event_loop.h"
#include "platform/settings_root.h"
#include "qt/barrier.h"
#include "qt/theme.h"

namespace vantrel::qt {

struct Front {
    platform::EventLoop& loop;
    Theme& theme;
    const Barrier& barrier;
    bool network = false;                     ///< devices may be looked for in it; its time is real
    platform::SettingsRoot* sizes = nullptr;  ///< where windows keep the sizes that the operator gave them
};

}  // namespace vantrel::qt

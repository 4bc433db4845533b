// What every link to an outside program uses of the rest of the program.
#pragma once

#include "engine/ports.h"
#include "engine/run_state.h"
#include "platform/automation.h"
#include "platform/event_loop.h"

namespace vantrel::devices {

/// How long most messages stay.
inline constexpr double kMessageSeconds = 5;

struct LinkServices {
    platform::EventLoop& loop;
    platform::AutomationHost& automation;
    engine::SettingsPort& settings;
    engine::LogPort& log;
    engine::MessagePort& messages;
    engine::RunState& state;
};

}  // namespace vantrel::devices

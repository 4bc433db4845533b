// What plate solving uses of the rest of the program.
#pragma once

#include "engine/ports.h"
#include "engine/run_state.h"
#include "platform/automation.h"
#include "platform/event_loop.h"
#include "platform/folder_map.h"

namespace vantrel::platesolve {

struct SolveServices {
    platform::EventLoop& loop;
    platform::AutomationHost& automation;
    const platform::FolderMap& folders;
    engine::SettingsPort& settings;
    engine::LogPort& log;
    engine::UtilityPort& utility;
    engine::RunState& state;
};

}  // namespace vantrel::platesolve

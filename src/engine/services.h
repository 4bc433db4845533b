// Everything the engine's procedures call, as one value.
#pragma once

#include "engine/interlock.h"
#include "engine/measurement_record.h"
#include "engine/ports.h"
#include "engine/progress.h"
#include "platform/event_loop.h"

namespace vantrel::engine {

struct Services {
    platform::EventLoop& loop;
    SettingsPort& settings;
    LogPort& log;
    MessagePort& messages;
    TelescopePort& telescope;
    CameraPort& camera;
    PlateSolverPort& solver;
    UtilityPort& utility;
    ResultDisplayPort& display;
    CorrectionPort& correction;
    Interlock& interlock;
    HistoryPort& history;
    Progress& progress;
};

}  // namespace vantrel::engine

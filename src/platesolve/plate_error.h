// How far a solved image lies from where the mount said it was.
#pragma once

#include "engine/ports.h"
#include "engine/run_state.h"

namespace vantrel::platesolve {

/// Keeps the solved position (hours, degrees) less the exposure position as PlateRAError and PlateDecError,
/// and logs both; the log shows the error in right ascension with its sign.
void reportPlateError(double ra, double dec, engine::RunState& state, engine::LogPort& log);

}  // namespace vantrel::platesolve

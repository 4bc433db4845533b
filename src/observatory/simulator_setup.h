// What the program has to know to measure with the built-in mount and its camera.
#pragma once

#include "platform/settings_root.h"

namespace vantrel::observatory {

/// Stores the set-up under which the simulator "AxisSimulator.Telescope", as it comes, is measured without
/// further questions: the driver, the solver, and the camera's image scale. Other settings stay as they are.
void storeSimulatorSetup(platform::SettingsRoot& settings);

}  // namespace vantrel::observatory

// The exposure of a telescope driver that is its own camera.
#pragma once

#include "engine/run_state.h"
#include "engine/services.h"

namespace vantrel::engine {

/// File name, without ending, of the image that the simulator saves.
inline constexpr const char* kSimulatorImage = "SavedImage";

/// Takes an image with the simulator driver; throws OperationError.
void exposeWithSimulator(const Services& services);

/// Saves that image as "SavedImage.fit" in the image folder; throws OperationError.
void saveSimulatorImage(const Services& services, RunState& state);

}  // namespace vantrel::engine

// The exposure of a telescope driver that is its own camera.
#pragma once

#include "engine/run_state.h"
#include "engine/services.h"

namespace vantrel::engine {

/// The image that exposures outside a run are saved as, without ending.
inline constexpr const char* kSavedImage = "SavedImage";

/// Takes an image with the simulator driver; throws OperationError.
void exposeWithSimulator(const Services& services);

/// Saves that image in the image folder under a name without ending; throws OperationError.
void saveSimulatorImage(const Services& services, RunState& state, const std::string& name);

}  // namespace vantrel::engine

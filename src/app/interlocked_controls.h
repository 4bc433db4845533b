// What a measurement, a correction or a series of exposures must not feel.
#pragma once

#include <vector>

#include "platform/controls.h"

namespace vantrel::app {

struct Parts;

/// The controls that would change mount, camera, solver, site or folders under a procedure's feet. Left to
/// the operator are the procedures' own buttons, what the exposures of a correction are taken with, and
/// everything that only shows.
std::vector<platform::Control*> interlockedControls(Parts& parts);

}  // namespace vantrel::app

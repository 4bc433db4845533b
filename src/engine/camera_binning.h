// The binning of exposures: as stored, as far as the camera goes.
#pragma once

#include "engine/ports.h"

namespace vantrel::engine {

/// A stored binning beyond the greatest that the camera takes becomes that one, and the log says so.
void limitBinning(SettingsPort& settings, LogPort& log, int greatest);

}  // namespace vantrel::engine

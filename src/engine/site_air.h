// The air above the observer, as far as anybody knows it.
#pragma once

#include "engine/axis/air.h"
#include "engine/ports.h"

namespace vantrel::engine {

/// By what the operator typed, else by the site's height (his, else the mount's), else at sea level. None
/// where the camera looks through no air. Figures that no place on Earth has are passed over.
Air siteAir(SettingsPort& settings, TelescopePort& telescope);

}  // namespace vantrel::engine

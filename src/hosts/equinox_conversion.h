// Positions between the equinox that a mount counts in and that of date, which the program counts in. How it
// is done is given from outside.
#pragma once

#include <functional>

#include "hosts/mount_position.h"
#include "platform/clock.h"

namespace vantrel::hosts {

struct EquinoxConversion {
    using Function = std::function<MountPosition(const MountPosition&, platform::Instant utc)>;
    Function toDate;   // from J2000 to the equator and equinox of the instant
    Function toJ2000;  // and back
};

}  // namespace vantrel::hosts

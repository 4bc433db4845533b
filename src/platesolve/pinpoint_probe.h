// Which PinPoint this machine has. The probes never fail: what can't be created isn't there.
#pragma once

#include "platform/automation.h"

namespace vantrel::platesolve {

/// An image of size x size pixels of value 0.
platform::ImageRef ppVirtualCamera(int size);

bool PinPointIsInstalled(platform::AutomationHost& automation);

/// True for the edition that takes images as arrays and not only as files.
bool PinPointFullIsInstalled(platform::AutomationHost& automation);

}  // namespace vantrel::platesolve

// Programs and drivers that the operating system knows, among the built-in ones.
#pragma once

#include <functional>
#include <string>

#include "platform/class_registry.h"
#include "platform/event_loop.h"
#include "platform/outside_call.h"

namespace vantrel::station {

/// A program that is installed takes the place of the built-in one of its name, with all classes; drivers in the profile
/// of the drivers' platform join the built-in ones. The small helper objects stay ours: they list all drivers and let the
/// program go on. Only Windows knows any.
void installSystemClasses(platform::ClassRegistry& classes, platform::EventLoop& loop, platform::OutsideCalls& calls,
                          const std::function<bool()>& stopping);

/// "maxim" of "MaxIm.CCDCamera": the classes of one program are installed together.
std::string programOf(const std::string& progId);

inline constexpr const char* kHelperProgram = "driverhelper";

}  // namespace vantrel::station

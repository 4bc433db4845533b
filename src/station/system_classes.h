// Programs and drivers that the operating system knows, among the built-in ones.
#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>

#include "platform/class_registry.h"
#include "platform/event_loop.h"
#include "platform/outside_call.h"
#include "platform/window_system.h"

namespace vantrel::station {

struct SystemPrograms {
    std::set<std::string> installed;  ///< programs whose classes are real, as programOf() has them
    std::unique_ptr<platform::WindowSystem> windows;  ///< theirs; nothing where none can be installed
};

/// A program that is installed takes the place of the built-in one of its name, with all classes; drivers in
/// the profile of the drivers' platform join the built-in ones. The small helper objects stay ours: they list
/// all drivers and let the program go on. Only Windows knows any.
SystemPrograms installSystemClasses(platform::ClassRegistry& classes, platform::EventLoop& loop,
                                    platform::OutsideCalls& calls, const std::function<bool()>& stopping);

inline constexpr const char* kHelperProgram = "driverhelper";

}  // namespace vantrel::station

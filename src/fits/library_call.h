// Calls into a library that reads images: it may crash on hostile data, and doesn't take the program along.
#pragma once

#include <filesystem>
#include <functional>

#include "platform/guarded_call.h"

namespace vantrel::fits {

using platform::callGuarded;
using platform::GuardedCallCrashed;
using platform::GuardedCallFailed;
using platform::GuardedCallTookTooLong;
using platform::GuardLimits;

/// Runs what uses a library that reads images in a process of its own, as it may crash on damaged files.
/// Throws FitsError that names the file for a crash, for a call that goes beyond its limits, and for what it
/// throws.
void guardedLibraryCall(const std::filesystem::path& path, const GuardLimits& limits,
                        const std::function<void()>& call);

}  // namespace vantrel::fits

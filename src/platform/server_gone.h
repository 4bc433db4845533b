// What the failures of programs and drivers that aren't there any more have in common.
#pragma once

#include "platform/errors.h"

namespace vantrel::platform {

/// Its program has ended, or doesn't answer. A new object may find it back.
inline bool isGone(const OperationError& error) { return error.number() == 462; }

}  // namespace vantrel::platform

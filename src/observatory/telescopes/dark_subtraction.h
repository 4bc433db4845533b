// Taking a dark frame from a light frame.
#pragma once

#include "platform/automation.h"

namespace vantrel::observatory {

/// The light frame less the dark frame of the same size, upon a level of 100 counts so that the noise of an
/// empty sky isn't cut off.
platform::ImageRef withoutDark(const platform::ImageArray& light, const platform::ImageArray& dark);

}  // namespace vantrel::observatory

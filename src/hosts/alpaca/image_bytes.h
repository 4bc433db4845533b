// ImageBytes: the binary form in which Alpaca cameras hand pictures out.
#pragma once

#include <string_view>

#include "hosts/alpaca/column_image.h"
#include "platform/image_array.h"

namespace vantrel::hosts::alpaca {

/// The media type.
inline constexpr const char* kImageBytes = "application/imagebytes";

/// Throws DeviceError with the device's words when the message holds an error, std::runtime_error when it
/// isn't what it should be.
platform::ImageArray parseImageBytes(std::string_view message, const ImageLimits& limits);

}  // namespace vantrel::hosts::alpaca

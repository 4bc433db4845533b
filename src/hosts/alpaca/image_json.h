// The picture of a camera that hands it out as JSON.
#pragma once

#include <string_view>

#include "hosts/alpaca/column_image.h"
#include "platform/image_array.h"

namespace vantrel::hosts::alpaca {

/// Reads the answer to imagearray: {"Rank": 2 or 3, "Value": [[...], ...], "ErrorNumber": ...}, in any order.
/// Throws DeviceError when the message holds an error, std::runtime_error when it isn't what it should be.
platform::ImageArray parseImageJson(std::string_view message, const ImageLimits& limits);

}  // namespace vantrel::hosts::alpaca

// A drawing as a picture for web pages and word processors.
#pragma once

#include <string>

#include "platform/drawing.h"

namespace vantrel::platform {

/// The drawing as an SVG document of this width, dark on white; as high as its scale asks for. A photograph
/// below it is left out. Empty for a scale without extent.
std::string svgOf(const Drawing& drawing, double width);

}  // namespace vantrel::platform

#include "correction/open_star_finder.h"

#include "correction/stars/brightest_star.h"
#include "platform/image_array.h"

namespace vantrel::correction {

OpenStarFinder::OpenStarFinder(OpenImage& image, engine::LogPort& log, engine::MessagePort& messages)
    : image_(image), log_(log), messages_(messages) {}

engine::PixelPosition OpenStarFinder::FindBrightestStarOnImage() {
    const platform::ImageRef image = image_.access().pixels();
    const BrightestStar star = BrightestStar3(*image);
    for (const std::string& line : star.log) log_.AddToLog(line);
    if (star.failure == BrightestStar::Failure::kNotMeasurable)
        messages_.ShowPopupMessage("Can not measure HFD", 5);
    return {star.x, star.y};
}

}  // namespace vantrel::correction

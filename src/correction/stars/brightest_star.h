// The brightest star of an image.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/image_array.h"

namespace vantrel::correction {

struct BrightestStar {
    enum class Failure {
        kNone,
        kNoStar,         // nothing stands out
        kEdgeOrWeak,     // too close to the frame's edge, or lost in its noise
        kNoStripes,      // the image can't be searched
        kNoLight,        // its flux came out below 0; nobody is told
        kNotMeasurable,  // something else went wrong; the operator gets a pop-up
    };

    double x = 0, y = 0;    // column and row of the centre; 0 on failure
    double hfd = 0;         // half-flux diameter in pixels; 0 on failure
    double size2 = 0;       // the smaller half-length of what is seen of the star, in pixels
    std::int32_t flux = 0;  // of the whole star; never negative
    bool noStar = false;    // none was found, or the search failed
    bool edgeOrWeak = false;
    Failure failure = Failure::kNone;
    std::vector<std::string> log;  // what the operator's log says about it
};

/// Searches a decimated copy of the image stripe by stripe and measures the star in full resolution; then
/// looks once more from afar, for a star far out of focus (a disc of up to 80 pixels radius, with a dark
/// middle or without). A sensor's defective columns and rows are filled in first, and tracks of satellites
/// and aeroplanes passed over: a star that lies on a track is lost with it. Throws nothing: failures are
/// named in the result.
BrightestStar BrightestStar3(const platform::ImageArray& image);

}  // namespace vantrel::correction

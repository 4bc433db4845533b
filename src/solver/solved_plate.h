// What a solved plate tells.
//
// Roll and scales are chosen so that, with t = roll, h = scaleX / 3600 and v = scaleY / 3600, the matrix
//
//     CD1_1 = h cos t    CD1_2 = -v sin t
//     CD2_1 = h sin t    CD2_2 =  v cos t
//
// turns a pixel offset (columns, rows; row 0 first in the array, so rows usually count downwards) into
// degrees towards east, dRA * cos(Dec), and north, dDec. scaleX is always positive. scaleY is positive when
// the image shows the sky as the eye sees it and negative when it is mirrored. So an upright picture (north
// up, east left) has roll 180.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

#include "sky/sip_distortion.h"
#include "sky/tangent_wcs.h"

namespace vantrel::solver {

struct Orientation {
    double rollDeg = 0;  ///< -180 to 180
    double scaleX = 0;   ///< arcseconds per pixel along a row
    double scaleY = 0;   ///< arcseconds per pixel along a column; negative when mirrored
};

/// The roll and scales that describe the matrix best (all of it when its axes are perpendicular).
Orientation orientationOf(const std::array<double, 4>& cd);

/// The matrix that these make, as above.
std::array<double, 4> matrixOf(const Orientation& orientation);

/// A star of the image that is one of the catalogue's.
struct MatchedStar {
    double x = 0;  ///< where it is found in the image, as an ImageStar
    double y = 0;
    double magnitude = 0;
};

struct SolvedPlate {
    sky::SkyPosition centre;  ///< ICRS place at the pixel ((width-1)/2, (height-1)/2)
    Orientation orientation;
    std::array<double, 4> cd{};      ///< as fitted: CD1_1, CD1_2, CD2_1, CD2_2 in degrees per pixel
    std::size_t matched = 0;         ///< stars that the fit rests on
    double residualArcsec = 0;       ///< their mean distance from where the model puts them
    int order = 1;                   ///< of the plate model
    double centreErrorArcsec = 0;    ///< standard deviation of the centre, along each axis; 0 if unknown
    double rollErrorDeg = 0;         ///< of the roll
    std::vector<MatchedStar> stars;  ///< the matched ones
    std::optional<sky::SipDistortion> distortion;  ///< about the centre and cd, where the stars prove one

    bool mirrored() const { return orientation.scaleY < 0; }
};

}  // namespace vantrel::solver

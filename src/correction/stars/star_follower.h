// Keeps to one star from exposure to exposure while the operator moves it across the image.
#pragma once

#include <optional>

#include "correction/stars/pixel_grid.h"
#include "platform/image_array.h"

namespace vantrel::correction {

/// Lengths in pixels, light in the image's units.
struct FollowedStar {
    double x = 0, y = 0;
    double halfFluxDiameter = 0;
    double flux = 0;
};

/// Looks where the star was last; only when it isn't there, along the way that it is to go, and then all over
/// the image. Of several stars it takes the one that is nearest to the last place and most alike in
/// brightness. A star that is much brighter or fainter is another one, and one at the frame's edge has no
/// centre: rather than a wrong star there is none. Marks that were set in an image don't count.
class StarFollower {
  public:
    /// The star stands at (x, y) in the first image, and is to go to the target.
    StarFollower(double x, double y, double targetX, double targetY);

    /// The star in the next image. OperationError leaves it when the image has no sky that can be measured.
    std::optional<FollowedStar> find(const platform::ImageArray& image);
    /// The mount has moved: the star may be anywhere. One that was never found can't be known again.
    void lose() { placeKnown_ = false; }

  private:
    std::optional<FollowedStar> firstSight(const platform::ImageArray& image) const;
    std::optional<FollowedStar> nearby(const platform::ImageArray& image) const;
    std::optional<FollowedStar> brightestIn(const platform::ImageArray& image, const PixelBox& box) const;
    PixelBox wayBox(double margin) const;
    /// How many times brighter or fainter than the star that is followed.
    double contrast(const FollowedStar& star) const;

    double startX_, startY_, targetX_, targetY_;
    double x_, y_;  // where it was last
    bool placeKnown_ = true;
    double flux_ = 0;  // until it was found for the first time
};

}  // namespace vantrel::correction

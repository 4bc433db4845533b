// The straight line of light that a satellite or an aeroplane leaves on a frame.
#pragma once

#include <optional>

#include "correction/stars/sky_level.h"
#include "correction/stars/star_seed.h"
#include "platform/image_array.h"

namespace vantrel::correction {

/// A band right across the frame; it may be lit in parts only.
struct Track {
    double x = 0, y = 0;   // a place on its middle line, pixels
    double angle = 0;      // radians, from the direction of the columns' numbers towards that of the rows'
    double halfWidth = 0;  // pixels; further away its light isn't seen
};

/// The track that the seed lies on. Nothing when what is seen there is no narrow, straight line, or is
/// neither longer than stars trail (`longestTrail`, pixels) nor runs out of the frame. Flashes on one line
/// count together.
std::optional<Track> trackThrough(const platform::ImageArray& image, const SkyLevel& sky,
                                  const StarSeed& seed, int longestTrail);

/// Sky in the track's place; what else lies on its line is lost, too.
void erase(platform::ImageArray& image, const SkyLevel& sky, const Track& track);

}  // namespace vantrel::correction

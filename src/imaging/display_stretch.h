// Which counts of an image are shown black and which white.
#pragma once

#include "imaging/pixel_statistics.h"

namespace vantrel::imaging {

struct Stretch {
    double min = 0;  // counts shown black
    double max = 0;  // counts shown white
};

/// The stretch in which a star field looks its best: black a little below the sky's level, white where only
/// the bright stars are. `max` is always above `min`.
Stretch automaticStretch(const PixelStatistics& statistics);
inline Stretch automaticStretch(const platform::ImageArray& image) {
    return automaticStretch(statisticsOf(image));
}

}  // namespace vantrel::imaging

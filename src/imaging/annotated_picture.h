// A solved picture to look at: stretched as the image window shows it, with its matched stars circled, bright
// stars and deep-sky objects named, and lines of right ascension and declination (J2000).
#pragma once

#include "fits/fits_image.h"
#include "imaging/color_canvas.h"
#include "solver/image_solving.h"

namespace vantrel::imaging {

/// As large as the image, or smaller where a side is longer than 2000 pixels. `solved` holds a solution.
/// Throws FitsError when the image can't be read any more.
ColorCanvas annotatedPicture(const fits::FitsImage& image, const solver::SolvedImage& solved);

}  // namespace vantrel::imaging

// Images compressed tile by tile (FITS standard 4.0, section 10.1), as the library reads them.
#pragma once

#include "fits/fits_units.h"
#include "fits/raw_file.h"

namespace vantrel::fits {

/// Throws FitsError for tiles that don't fit the image, or that the file is too small for: the library takes
/// memory and time for whatever a header says.
void checkTiles(FitsFile& bytes, const FitsImageUnit& image);

/// Unpacks the image, checked before, as floats, planes averaged, "not a number" where a pixel has no value.
/// The library may crash on damaged files. Throws FitsError.
void unpackTiles(const FitsFile& bytes, const FitsImageUnit& image, RawFile& pixels);

}  // namespace vantrel::fits

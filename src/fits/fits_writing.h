// FITS images written, and world coordinates put into the headers of images that are there.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

#include "fits/fits_header.h"
#include "platform/image_array.h"
#include "sky/sip_distortion.h"
#include "sky/tangent_wcs.h"

namespace vantrel::fits {

/// Writes a 16-bit image (row 0 first in the file) with these cards after the mandatory ones; an existing
/// file is replaced at once, when the new one is complete. Throws FitsError.
void writeFits(const std::filesystem::path& path, std::size_t width, std::size_t height,
               std::span<const std::uint16_t> pixels, const std::vector<FitsCard>& cards);

/// The same for an image in memory, in its own type of pixels.
void writeFits(const std::filesystem::path& path, const platform::ImageArray& image,
               const std::vector<FitsCard>& cards);

/// Writes a copy of the file with these world coordinates (ICRS, EQUINOX 2000) in the header of its first
/// image, TAN-SIP with a distortion, in place of what stood there. The target may be the file itself: readers
/// see the old or the new file. Throws FitsError; a file compressed by gzip can't be its own target.
void writeWcs(const std::filesystem::path& source, const std::filesystem::path& target,
              const sky::TangentWcs& wcs, const std::optional<sky::SipDistortion>& distortion = {});

}  // namespace vantrel::fits

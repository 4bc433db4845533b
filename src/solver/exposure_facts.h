// What an image's header tells about its exposure.
#pragma once

#include <optional>
#include <vector>

#include "platform/clock.h"
#include "sky/sky_position.h"

namespace vantrel::fits {
class FitsHeader;
}

namespace vantrel::solver {

/// Start of the exposure in UTC, from DATE-OBS (with TIME-OBS when the date stands alone).
std::optional<platform::Instant> exposureStart(const fits::FitsHeader& header);

/// The instant as a Julian year; to a day, which is all that proper motion needs.
double julianYear(platform::Instant instant);

/// Arcseconds per pixel by focal length (FOCALLEN, mm) and pixel size (XPIXSZ, micrometres). Programs
/// disagree whether the pixel size has the binning in it, so a binned image gives both readings, the likelier
/// first. Empty when the header doesn't tell.
std::vector<double> headerScales(const fits::FitsHeader& header);

/// Where the telescope was sent, J2000: OBJCTRA and OBJCTDEC (sexagesimal hours and degrees), or RA and DEC
/// in degrees.
std::optional<sky::SkyPosition> headerTarget(const fits::FitsHeader& header);

}  // namespace vantrel::solver

// World coordinates as the cards of a FITS header.
#pragma once

#include <optional>
#include <vector>

#include "fits/fits_header.h"
#include "sky/sip_distortion.h"
#include "sky/tangent_wcs.h"

namespace vantrel::fits {

/// The world coordinates that a FITS header holds: TAN with a CD matrix, PC and CDELT, or CDELT and CROTA2.
/// bottomUp tells that array rows run against the file's rows. Empty when missing, of another projection,
/// incomplete or degenerate.
std::optional<sky::TangentWcs> wcsFromHeader(const FitsHeader& header, double height, bool bottomUp);

/// The cards of world coordinates (ICRS, EQUINOX 2000) for an image of this height, whose file runs from the
/// top or from the bottom; with a distortion, TAN-SIP.
std::vector<FitsCard> wcsCards(const sky::TangentWcs& wcs, double height, bool bottomUp,
                               const std::optional<sky::SipDistortion>& distortion = {});

}  // namespace vantrel::fits

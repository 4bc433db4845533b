// The cards of a picture's header that its camera can't know.
#pragma once

#include <vector>

#include "fits/fits_header.h"
#include "platform/clock.h"
#include "platform/picture_facts.h"

namespace vantrel::station {

/// Positions are J2000's of the instant. What isn't known has no card.
std::vector<fits::FitsCard> picturesCards(const platform::PictureFacts& facts, platform::Instant utc);

}  // namespace vantrel::station

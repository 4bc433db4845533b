// Latitudes and longitudes as an operator writes them.
#pragma once

#include <optional>
#include <string>

#include "platform/words.h"

namespace vantrel::platform {

/// North and east are positive.
enum class SiteAxis { kLatitude, kLongitude };

struct SiteAngle {
    double degrees;
    /// The same without the letter of a hemisphere, for who understands only signs; `opposite` when the
    /// letter was that of the negative one.
    std::string unlettered;
    bool opposite;
};

/// Degrees, or degrees and minutes, or these and seconds; only the last with decimals, behind a point or a
/// comma: "48.5", "-48 30", "48d 30m 15.5s", "48°30'15\"", "48:30:15". With a sign or, before or behind, the
/// letter of a hemisphere: "48.5 S", "W 11 15". An "s" directly behind a third number means its seconds,
/// unless it is a capital and the minutes have no "m". Nothing for any other text, for minutes and seconds
/// from 60 on, latitudes beyond 90° and longitudes beyond 360°, and for a sign and a letter that don't agree.
std::optional<SiteAngle> readSiteAngle(const std::string& text, SiteAxis axis);

/// What to tell about a text that is none, and how to write one.
Words noSiteAngle(const std::string& text, SiteAxis axis);
Words howToWriteSiteAngle(SiteAxis axis);

}  // namespace vantrel::platform

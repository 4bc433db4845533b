// The image link: where the open image points, by the stars on it.
#pragma once

#include <vector>

#include "imaging/open_documents.h"
#include "platform/clock.h"
#include "sky/star_catalog.h"

namespace vantrel::imaging {

/// The world-coordinate cards of the image. It is looked for around the header's OBJCTRA and OBJCTDEC, at
/// most its own diagonal away, at this scale (arcseconds per pixel, within 15 %). Positions are told and
/// taken as apparent places of the exposure's date, as mounts count. Throws std::runtime_error when the image
/// has no start position or its stars match nothing there.
std::vector<fits::FitsCard> linkImage(const ImageDocument& image, double scale, const sky::StarCatalog& stars,
                                      const platform::Clock& clock);

}  // namespace vantrel::imaging

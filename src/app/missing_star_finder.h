// What the correction hears while nobody can look for stars on the imaging program's image.
#pragma once

#include "correction/star_finder.h"
#include "platform/errors.h"

namespace vantrel::app {

/// Fails as an imaging program that isn't there.
class MissingStarFinder : public correction::StarFinder {
  public:
    engine::PixelPosition FindBrightestStarOnImage() override {
        throw platform::runTimeError(platform::error_number::kNoObject);
    }
};

}  // namespace vantrel::app

// The brightest star of the image that is open in the imaging program.
#pragma once

#include "correction/correction_star_finder.h"
#include "correction/open_image.h"

namespace vantrel::correction {

class OpenStarFinder : public CorrectionStarFinder {
  public:
    OpenStarFinder(OpenImage& image, engine::LogPort& log, engine::MessagePort& messages);

    /// Searches afresh; what goes wrong in the search is logged, and shown when the star can't be measured.
    engine::PixelPosition FindBrightestStarOnImage() override;

  private:
    OpenImage& image_;
    engine::LogPort& log_;
    engine::MessagePort& messages_;
};

}  // namespace vantrel::correction

// Who finds the correction star on the image that is open in the imaging program.
#pragma once

#include "engine/ports.h"

namespace vantrel::correction {

class CorrectionStarFinder {
  public:
    virtual ~CorrectionStarFinder() = default;
    /// Column and row of the brightest star; (0, 0) when there is none, which is logged. Throws
    /// OperationError when the imaging program fails.
    virtual engine::PixelPosition FindBrightestStarOnImage() = 0;
};

}  // namespace vantrel::correction

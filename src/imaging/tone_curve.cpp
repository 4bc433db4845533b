#include "imaging/tone_curve.h"

#include <algorithm>

namespace vantrel::imaging {

double midtonesTransfer(double share, double midtone) {
    if (!(share > 0)) return 0;
    if (share >= 1) return 1;
    return (midtone - 1) * share / ((2 * midtone - 1) * share - midtone);
}

double automaticMidtone(const PixelStatistics& statistics, double black, double white) {
    constexpr double kSkyBrightness = 0.2;
    constexpr double kEdge = 1e-9;
    // The function yields the midtone for a brightness as it yields the brightness for a midtone.
    const double midtone = midtonesTransfer((statistics.median - black) / (white - black), kSkyBrightness);
    return std::clamp(midtone, kEdge, 1 - kEdge);
}

}  // namespace vantrel::imaging

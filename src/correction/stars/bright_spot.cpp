#include "correction/stars/bright_spot.h"

namespace vantrel::correction {

PixelBox brightestSpot(const PixelGrid& image, const PixelBox& within, int side) {
    // at(i, j): the sum of the box's first i columns and j rows
    PixelGrid sums(within.width() + 1, within.height() + 1);
    for (int j = 0; j < within.height(); ++j)
        for (int i = 0; i < within.width(); ++i)
            sums.at(i + 1, j + 1) = image.at(within.left + i, within.top + j) + sums.at(i, j + 1) +
                                    sums.at(i + 1, j) - sums.at(i, j);
    const int width = std::min(side, within.width());
    const int height = std::min(side, within.height());
    PixelBox brightest = {within.left, within.top, within.left + width, within.top + height};
    double most = -1;
    for (int j = 0; j + height <= within.height(); ++j)
        for (int i = 0; i + width <= within.width(); ++i) {
            const double sum = sums.at(i + width, j + height) - sums.at(i, j + height) -
                               sums.at(i + width, j) + sums.at(i, j);
            if (sum <= most) continue;
            most = sum;
            brightest = {within.left + i, within.top + j, within.left + i + width, within.top + j + height};
        }
    return brightest;
}

}  // namespace vantrel::correction

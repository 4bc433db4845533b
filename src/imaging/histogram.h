// How many pixels have which value, on an axis that shows the sky and the stars.
#pragma once

#include <vector>

#include "imaging/pixel_statistics.h"

namespace vantrel::imaging {

/// Places values on an axis from 0 to 1 that is even for the sky's noise and logarithmic beyond: the inverse
/// hyperbolic sine of the distance from the median (Lupton, Gunn & Szalay 1999, AJ 118, 1406).
class HistogramAxis {
  public:
    /// Reaches from the lowest to the highest value of the sample, with some room for the handles of a
    /// stretch.
    explicit HistogramAxis(const PixelStatistics& statistics);

    /// Beyond the ends of the axis its ends.
    double place(double value) const;
    double value(double place) const;

  private:
    double curved(double value) const;

    double median_, softness_;
    double from_ = 0, to_ = 1;  // curved
};

/// The share of the fullest of the bins for each, on a logarithmic scale: 0 to 1.
std::vector<double> histogramOf(const PixelStatistics& statistics, const HistogramAxis& axis, int bins);

}  // namespace vantrel::imaging

// How bright a pixel's value is shown.
#pragma once

#include <cstdint>

#include "imaging/pixel_statistics.h"

namespace vantrel::imaging {

/// The midtones transfer function, by which XISF 1.0 (Conejero) defines how images are displayed:
/// (m - 1) x / ((2 m - 1) x - m). Takes 0 to 0, the midtone m (0 to 1, exclusive) to one half and 1 to 1;
/// what lies beyond stays at the ends. Its inverse is the function of 1 - m.
double midtonesTransfer(double share, double midtone);

/// The midtone with which the sky (the median) shows at a fifth of the brightness between black and white.
double automaticMidtone(const PixelStatistics& statistics, double black, double white);

/// Values up to `black` show black, from `white` on white; in between the midtones transfer function.
class ToneCurve {
  public:
    static constexpr std::uint8_t kWhite = 254;  // values from the white point on
    static constexpr std::uint8_t kMark = 255;   // values from kMarkValue on

    /// `white` lies above `black`.
    ToneCurve(double black, double white, double midtone)
        : black_(static_cast<float>(black)),
          white_(static_cast<float>(white)),
          perUnit_(1 / static_cast<float>(white - black)),
          midtone_(static_cast<float>(midtone)) {}

    /// 0 to kWhite, or kMark. What isn't a number is black.
    std::uint8_t at(float value) const {
        if (value >= static_cast<float>(kMarkValue)) return kMark;
        if (value >= white_) return kWhite;
        const float share = (value - black_) * perUnit_;
        if (!(share > 0)) return 0;
        return static_cast<std::uint8_t>(kWhite * ((midtone_ - 1) * share) /
                                         ((2 * midtone_ - 1) * share - midtone_));
    }

  private:
    float black_, white_, perUnit_, midtone_;
};

}  // namespace vantrel::imaging

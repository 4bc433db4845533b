#include "solver/hot_columns.h"

#include <algorithm>
#include <array>

#include "solver/level_grid.h"

namespace vantrel::solver {

namespace {

constexpr std::size_t kColumnReach = 4;  // columns to either side that count as neighbours: every other one,
                                         // since a colour sensor's have two colours
constexpr std::size_t kBands = 4;        // in succession in which a hot column stands out
constexpr float kStandingOut = 3;        // in units of what columns differ by

/// The mean of the middle two of four neighbours: neither a star beside the column nor another hot one moves
/// it.
float neighbours(const float* at) {
    std::array<float, 4> v{at[-4], at[-2], at[2], at[4]};
    const auto [least, most] = std::minmax_element(v.begin(), v.end());
    return (v[0] + v[1] + v[2] + v[3] - *least - *most) / 2;
}

}  // namespace

void HotColumns::look(std::span<const float> rows) {
    standsOut_.emplace_back(width_, false);
    if (width_ < 2 * kColumnReach + 1) return;
    std::vector<float> excess(width_ - 2 * kColumnReach);
    for (std::size_t row = 0; row + width_ <= rows.size(); row += width_)
        for (std::size_t i = 0; i < excess.size(); ++i) {
            const float* const at = rows.data() + row + i + kColumnReach;
            excess[i] += *at - neighbours(at);
        }
    std::vector<float> valid;
    std::ranges::copy_if(excess, std::back_inserter(valid), isValue);
    if (valid.empty()) return;
    const float limit = kStandingOut * levelOf(valid).noise;
    if (!(limit > 0)) return;
    for (std::size_t i = 0; i < excess.size(); ++i) standsOut_.back()[i + kColumnReach] = excess[i] > limit;
}

std::vector<HotColumns::Stretch> HotColumns::stretches() const {
    std::vector<Stretch> found;
    for (std::size_t column = 0; column < width_; ++column)
        for (std::size_t band = 0; band < standsOut_.size(); ++band) {
            const std::size_t first = band;
            while (band < standsOut_.size() && standsOut_[band][column]) ++band;
            if (band - first >= kBands) found.push_back({column, first, band});
        }
    return found;
}

void HotColumns::mend(std::span<float> rows, std::size_t width, std::size_t column) {
    for (std::size_t row = 0; row + width <= rows.size(); row += width)
        rows[row + column] = neighbours(rows.data() + row + column);
}

}  // namespace vantrel::solver

#include "solver/hot_columns.h"

#include <algorithm>
#include <array>

#include "platform/vector_code.h"
#include "solver/level_grid.h"

namespace vantrel::solver {

namespace {

constexpr std::size_t kColumnReach = 4;  // columns to either side that count as neighbours: every other one,
                                         // since a colour sensor's have two colours
constexpr std::size_t kBands = 4;        // in succession in which a hot column stands out
constexpr std::size_t kSampled = 800;    // columns that tell what all differ by
constexpr float kStandingOut = 3;        // in units of what columns differ by

/// The mean of the middle two of four neighbours: neither a star beside the column nor another hot one moves
/// it.
float neighbours(const float* at) {
    const float least = std::min(std::min(at[-4], at[-2]), std::min(at[2], at[4]));
    const float most = std::max(std::max(at[-4], at[-2]), std::max(at[2], at[4]));
    return (at[-4] + at[-2] + at[2] + at[4] - least - most) / 2;
}

/// Adds what the columns of a row, those near its ends left out, have more than their neighbours.
VANTREL_VECTOR_CODE void addExcess(std::span<const float> row, std::span<float> excess) {
    for (std::size_t i = 0; i < excess.size(); ++i) {
        const float* const at = row.data() + i + kColumnReach;
        excess[i] += *at - neighbours(at);
    }
}

}  // namespace

void HotColumns::look(std::span<const float> rows) {
    standsOut_.emplace_back(width_, false);
    if (width_ < 2 * kColumnReach + 1) return;
    std::vector<float> excess(width_ - 2 * kColumnReach);
    for (std::size_t row = 0; row + width_ <= rows.size(); row += width_)
        addExcess(rows.subspan(row, width_), excess);
    std::vector<float> valid;
    const std::size_t step = excess.size() / kSampled | 1;  // odd: columns of both colours
    for (std::size_t i = 0; i < excess.size(); i += step)
        if (isValue(excess[i])) valid.push_back(excess[i]);
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

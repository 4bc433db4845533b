// Columns of a sensor that are brighter than their neighbours over a good part of their length.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace vantrel::solver {

/// Looks at a few rows in each band of the image, then mends the columns that stand out in one band after the
/// other, as nothing in the sky does but what lies along them.
class HotColumns {
  public:
    explicit HotColumns(std::size_t width) : width_(width) {}

    /// Rows of the next band, from the top: whole ones.
    void look(std::span<const float> rows);

    struct Stretch {
        std::size_t column = 0;
        std::size_t firstBand = 0, endBand = 0;
    };
    std::vector<Stretch> stretches() const;

    /// Gives the column in all the rows what its neighbours of the same colour have.
    static void mend(std::span<float> rows, std::size_t width, std::size_t column);

  private:
    std::size_t width_;
    std::vector<std::vector<bool>> standsOut_;  ///< for each band
};

}  // namespace vantrel::solver

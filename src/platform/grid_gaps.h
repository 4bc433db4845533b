// Cells of a grid that have no value, filled from those around them.
#pragma once

#include <cmath>
#include <cstddef>
#include <vector>

namespace vantrel::platform {

/// Gives every cell without a value ("not a number") the mean of those around it, from the borders of a gap
/// inwards. Row after row, `columns` of them. False when no cell has a value; all stay without one then.
template <typename Number>
bool fillGaps(std::vector<Number>& cells, std::size_t columns) {
    const std::size_t rows = cells.size() / columns;
    const auto meanAround = [&](const std::vector<Number>& known, std::size_t x, std::size_t y) {
        Number sum = 0;
        Number count = 0;
        for (std::size_t j = y > 0 ? y - 1 : 0; j <= y + 1 && j < rows; ++j)
            for (std::size_t i = x > 0 ? x - 1 : 0; i <= x + 1 && i < columns; ++i) {
                if (std::isnan(known[j * columns + i])) continue;
                sum += known[j * columns + i];
                ++count;
            }
        return sum / count;  // not a number without any
    };
    for (bool gaps = true; gaps;) {
        gaps = false;
        bool narrower = false;
        const std::vector<Number> known = cells;
        for (std::size_t y = 0; y < rows; ++y)
            for (std::size_t x = 0; x < columns; ++x) {
                Number& cell = cells[y * columns + x];
                if (!std::isnan(cell)) continue;
                cell = meanAround(known, x, y);
                (std::isnan(cell) ? gaps : narrower) = true;
            }
        if (gaps && !narrower) return false;
    }
    return true;
}

}  // namespace vantrel::platform

// A small rectangle of numbers: a working image, or a piece cut out of a frame.
#pragma once

#include <algorithm>
#include <vector>

namespace vantrel::correction {

/// Row after row; column x and row y from 0.
struct PixelGrid {
    PixelGrid() = default;
    PixelGrid(int columns, int rows)
        : width(columns),
          height(rows),
          values(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows), 0.0) {}

    double& at(int x, int y) { return values[index(x, y)]; }
    double at(int x, int y) const { return values[index(x, y)]; }
    bool contains(int x, int y) const { return x >= 0 && x < width && y >= 0 && y < height; }
    std::size_t index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
    }

    int width = 0;
    int height = 0;
    std::vector<double> values;
};

/// Columns and rows from the first to before the last one.
struct PixelBox {
    int left = 0, top = 0, right = 0, bottom = 0;

    int width() const { return right - left; }
    int height() const { return bottom - top; }
    bool contains(int x, int y) const { return x >= left && x < right && y >= top && y < bottom; }

    PixelBox grown(int margin) const {
        return {left - margin, top - margin, right + margin, bottom + margin};
    }
    PixelBox clipped(int columns, int rows) const {
        return {std::max(left, 0), std::max(top, 0), std::min(right, columns), std::min(bottom, rows)};
    }
};

}  // namespace vantrel::correction

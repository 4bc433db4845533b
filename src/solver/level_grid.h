// Background and noise of an image, on a grid of square cells.
#pragma once

#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>
#include <span>
#include <vector>

namespace vantrel::solver {

inline constexpr float kNoValue = std::numeric_limits<float>::quiet_NaN();

/// False for pixels without a value, and for numbers that no camera counts up to.
inline bool isValue(float pixel) { return std::abs(pixel) < 1e30F; }

struct Level {
    float background = 0;
    float noise = 1;
};

/// The values' median, and the noise from the mean deviation of the four fifths that deviate least, so that
/// neither stars nor coarse steps between values disturb it. Reorders the values.
Level levelOf(std::span<float> values);

/// Some of a cell's pixels.
struct CellSample {
    std::vector<float> values;          // of those that have one
    std::size_t missing = 0;            // of those that have none
    double missingX = 0, missingY = 0;  // sums of where they lie

    void clear() {
        values.clear();
        missing = 0;
        missingX = missingY = 0;
    }
    void add(float pixel, std::size_t x, std::size_t y) {
        if (isValue(pixel)) {
            values.push_back(pixel);
            return;
        }
        ++missing;
        missingX += static_cast<double>(x);
        missingY += static_cast<double>(y);
    }
};

class LevelGrid {
  public:
    LevelGrid(std::size_t width, std::size_t height, std::size_t cellSize);

    std::size_t cellSize() const { return cell_; }
    std::size_t columns() const { return columns_; }
    std::size_t rows() const { return rows_; }

    struct Span {
        std::size_t first = 0, end = 0;  // pixels
    };
    /// The pixels of a column or a row of cells; the last one reaches to the border.
    Span spanOfColumn(std::size_t column) const { return span(column, columns_, width_); }
    Span spanOfRow(std::size_t row) const { return span(row, rows_, height_); }

    /// Gives the cell the sample's level; not a number when most of the pixels have no value. Reorders the
    /// values.
    Level set(std::size_t column, std::size_t row, CellSample& sample);
    /// To be called when all cells are set: those that have no values, or none in a part of them, take the
    /// plane through the cells around them. 0 when there are no values at all.
    void complete();

    const Level& at(std::size_t column, std::size_t row) const { return levels_[row * columns_ + column]; }
    const Level& covering(std::size_t x, std::size_t y) const;

    /// Cells full of stars or nebula stand out from their neighbours: the middle one of three by three is
    /// taken.
    LevelGrid smoothed() const;
    /// The middle one.
    float typicalNoise() const;

  private:
    /// How far the middle of a cell's values lies from its own, in cells.
    struct Offset {
        double x = 0, y = 0;
    };
    Span span(std::size_t index, std::size_t count, std::size_t size) const {
        return {index * cell_, index + 1 == count ? size : (index + 1) * cell_};
    }
    bool isLevelOfItsMiddle(std::size_t cell) const;
    template <typename Use>
    void eachAround(std::size_t column, std::size_t row, std::size_t reach, Use&& use) const;
    /// What the cells around this one make of its middle; nothing when they can't tell.
    std::optional<double> planeAround(std::size_t column, std::size_t row) const;

    std::size_t width_, height_;
    std::size_t cell_;
    std::size_t columns_, rows_;
    std::vector<Level> levels_;
    std::vector<Offset> offsets_;
};

}  // namespace vantrel::solver

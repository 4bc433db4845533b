#include "correction/stars/sky_level.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "correction/stars/statistics.h"
#include "platform/errors.h"
#include "platform/grid_gaps.h"

namespace vantrel::correction {
namespace {

constexpr int kSamplesPerSide = 8;  // the median of 64 pixels is good to a sixth of their noise

/// Some pixels of a cell, row after row, evenly spread.
struct Sample {
    int columns = 0, rows = 0;
    std::array<double, kSamplesPerSide * kSamplesPerSide> values;

    std::size_t size() const { return static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows); }
};

/// The cells that an image is divided into.
struct Cells {
    Cells(const platform::ImageArray& image, int side)
        : width(static_cast<int>(image.width())),
          height(static_cast<int>(image.height())),
          columns(std::max(1, width / side)),
          rows(std::max(1, height / side)) {}

    PixelBox box(int i, int j) const {
        return {i * width / columns, j * height / rows, (i + 1) * width / columns, (j + 1) * height / rows};
    }

    int width, height, columns, rows;
};

/// Of all cells in a row of them: row of pixels by row of pixels, as they lie in memory.
template <typename Pixel>
void addSamples(std::vector<Sample>& samples, const Pixel* pixels, const Cells& cells, int rowOfCells) {
    const auto first = samples.insert(samples.end(), static_cast<std::size_t>(cells.columns), Sample());
    const PixelBox band = cells.box(0, rowOfCells);
    const int rows = std::min(kSamplesPerSide, band.height());
    for (int row = 0; row < rows; ++row) {
        const int y = band.top + (2 * row + 1) * band.height() / (2 * rows);
        const Pixel* line = pixels + static_cast<std::size_t>(y) * static_cast<std::size_t>(cells.width);
        for (int i = 0; i < cells.columns; ++i) {
            const PixelBox box = cells.box(i, rowOfCells);
            Sample& sample = first[i];
            sample.columns = std::min(kSamplesPerSide, box.width());
            sample.rows = rows;
            for (int column = 0; column < sample.columns; ++column) {
                const int x = box.left + (2 * column + 1) * box.width() / (2 * sample.columns);
                const int place = row * sample.columns + column;
                sample.values[static_cast<std::size_t>(place)] = static_cast<double>(line[x]);
            }
        }
    }
}

/// The finite values of a sample, less a plane.
class Values {
  public:
    /// The plane rises by these amounts across the cell.
    Values(const Sample& sample, double acrossColumns, double acrossRows) {
        const auto height = [](double across, int i, int count) {
            return across * ((i + 0.5) / count - 0.5);
        };
        std::array<double, kSamplesPerSide> ofColumns{};
        for (int i = 0; i < sample.columns; ++i)
            ofColumns[static_cast<std::size_t>(i)] = height(acrossColumns, i, sample.columns);
        auto value = sample.values.begin();
        for (int j = 0; j < sample.rows; ++j) {
            const double ofRow = height(acrossRows, j, sample.rows);
            for (std::size_t i = 0; i < static_cast<std::size_t>(sample.columns); ++i, ++value)
                if (std::isfinite(*value)) values_[count_++] = *value - ofColumns[i] - ofRow;
        }
        // A cell must not be judged by what little of it has values.
        isGap_ = count_ == 0 || count_ * 4 < sample.size();
    }

    bool isGap() const { return isGap_; }

    /// Puts the lower one of the two in the middle where it belongs, with lower ones before it.
    double median() { return ranked(count_, 0.5); }

    /// How far the darker sixth lies below the median: one standard deviation of gaussian noise.
    double spread() {
        constexpr double kOneSigmaBelow = 2 * 0.1587;  // of the darker half
        const double middle = median();
        return middle - ranked((count_ - 1) / 2 + 1, kOneSigmaBelow);
    }

  private:
    /// The one of this rank (0 the lowest, 1 the highest) of the first ones.
    double ranked(std::size_t count, double rank) {
        const auto first = values_.begin();
        const auto place = first + static_cast<std::ptrdiff_t>(rank * static_cast<double>(count - 1));
        std::nth_element(first, place, first + static_cast<std::ptrdiff_t>(count));
        return *place;
    }

    std::array<double, kSamplesPerSide * kSamplesPerSide> values_;
    std::size_t count_ = 0;
    bool isGap_ = false;
};

/// How much the grid rises from one cell to the next, along its columns or its rows.
double rise(const PixelGrid& grid, int i, int j, int di, int dj) {
    const int left = std::max(0, i - di), top = std::max(0, j - dj);
    const int right = std::min(grid.width - 1, i + di), bottom = std::min(grid.height - 1, j + dj);
    const int cells = right - left + bottom - top;
    return cells > 0 ? (grid.at(right, bottom) - grid.at(left, top)) / cells : 0;
}

/// What straight lines between the cells' middles miss where the grid bends: an eighth of how much it does,
/// and three eighths beyond the last middle.
double missed(const PixelGrid& grid, int i, int j, int di, int dj) {
    const int count = di ? grid.width : grid.height, cell = di ? i : j;
    if (count < 3) return 0;
    const int middle = std::clamp(cell, 1, count - 2);
    const int x = di ? middle : i, y = dj ? middle : j;
    const double bend = grid.at(x - di, y - dj) - 2 * grid.at(x, y) + grid.at(x + di, y + dj);
    return std::abs(bend) * (cell == 0 || cell + 1 == count ? 0.375 : 0.125);
}

}  // namespace

SkyLevel::SkyLevel(const platform::ImageArray& image, int cell, double leastNoise) {
    const Cells cells(image, cell);
    const int columns = cells.columns, rows = cells.rows;
    cellsPerColumn_ = static_cast<double>(columns) / cells.width;
    cellsPerRow_ = static_cast<double>(rows) / cells.height;
    levels_ = PixelGrid(columns, rows);
    noises_ = PixelGrid(columns, rows);
    std::vector<Sample> samples;
    samples.reserve(levels_.values.size());
    for (int j = 0; j < rows; ++j)
        std::visit([&](const auto& pixels) { addSamples(samples, pixels.data(), cells, j); }, image.pixels());
    for (std::size_t i = 0; i < samples.size(); ++i) {
        Values values(samples[i], 0, 0);
        levels_.values[i] = values.isGap() ? kNoValue : values.median();
    }
    if (!platform::fillGaps(levels_.values, static_cast<std::size_t>(columns)))
        throw platform::runTimeError(platform::error_number::kInvalidProcedureCall);
    // Whole numbers hide noise of less than about half a count.
    const double least =
        std::max(leastNoise, std::holds_alternative<std::vector<float>>(image.pixels()) ? 0 : 0.5);
    for (int j = 0; j < rows; ++j)
        for (int i = 0; i < columns; ++i) {
            const double acrossColumns = rise(levels_, i, j, 1, 0), acrossRows = rise(levels_, i, j, 0, 1);
            Values values(samples[levels_.index(i, j)], acrossColumns, acrossRows);
            if (values.isGap()) {
                noises_.at(i, j) = kNoValue;
                continue;
            }
            const double unsure = (std::abs(acrossColumns) + std::abs(acrossRows)) / (2 * kSamplesPerSide) +
                                  missed(levels_, i, j, 1, 0) + missed(levels_, i, j, 0, 1);
            noises_.at(i, j) = std::max(values.spread(), least + unsure / kStandsOut);
        }
    platform::fillGaps(noises_.values, static_cast<std::size_t>(columns));
    typicalNoise_ = medianOf(noises_.values);
}

}  // namespace vantrel::correction

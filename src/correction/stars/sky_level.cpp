#include "correction/stars/sky_level.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "correction/stars/statistics.h"
#include "platform/errors.h"
#include "platform/grid_gaps.h"

namespace vantrel::correction {
namespace {

constexpr int kSamplesPerSide = 8;
constexpr double kNoValue = std::numeric_limits<double>::quiet_NaN();

using Place = std::vector<double>::iterator;

/// Puts the value of this rank (0 the lowest, 1 the highest) where it belongs, with lower ones before it.
Place ranked(Place first, Place last, double rank) {
    const Place place = first + static_cast<std::ptrdiff_t>(rank * static_cast<double>(last - first - 1));
    std::nth_element(first, place, last);
    return place;
}

/// Some pixels of a cell, row after row, evenly spread.
struct Sample {
    int columns = 0, rows = 0;
    std::vector<double> values;
};

template <typename Pixel>
Sample sampleOf(const Pixel* pixels, std::size_t stride, const PixelBox& box) {
    Sample sample = {std::min(kSamplesPerSide, box.width()), std::min(kSamplesPerSide, box.height()), {}};
    sample.values.reserve(kSamplesPerSide * kSamplesPerSide);
    for (int j = 0; j < sample.rows; ++j) {
        const int y = box.top + (2 * j + 1) * box.height() / (2 * sample.rows);
        const Pixel* row = pixels + static_cast<std::size_t>(y) * stride;
        for (int i = 0; i < sample.columns; ++i) {
            const int x = box.left + (2 * i + 1) * box.width() / (2 * sample.columns);
            sample.values.push_back(static_cast<double>(row[x]));
        }
    }
    return sample;
}

/// The finite values, less a plane that rises by these amounts across the cell.
std::vector<double> flattened(const Sample& sample, double acrossColumns, double acrossRows) {
    std::vector<double> values;
    values.reserve(sample.values.size());
    auto value = sample.values.begin();
    for (int j = 0; j < sample.rows; ++j)
        for (int i = 0; i < sample.columns; ++i, ++value)
            if (std::isfinite(*value))
                values.push_back(*value - acrossColumns * ((i + 0.5) / sample.columns - 0.5) -
                                 acrossRows * ((j + 0.5) / sample.rows - 0.5));
    return values;
}

/// A cell must not be judged by what little of it has values.
bool isGap(const Sample& sample, const std::vector<double>& finite) {
    return finite.empty() || finite.size() * 4 < sample.values.size();
}

/// How much the grid rises from one cell to the next, along its columns or its rows.
double rise(const PixelGrid& grid, int i, int j, int di, int dj) {
    const int left = std::max(0, i - di), top = std::max(0, j - dj);
    const int right = std::min(grid.width - 1, i + di), bottom = std::min(grid.height - 1, j + dj);
    const int cells = right - left + bottom - top;
    return cells > 0 ? (grid.at(right, bottom) - grid.at(left, top)) / cells : 0;
}

/// How far the darker sixth lies below the median: one standard deviation of gaussian noise.
double spreadOf(std::vector<double> values) {
    constexpr double kOneSigmaBelow = 2 * 0.1587;  // of the darker half
    const Place median = ranked(values.begin(), values.end(), 0.5);
    return *median - *ranked(values.begin(), median + 1, kOneSigmaBelow);
}

}  // namespace

SkyLevel::SkyLevel(const platform::ImageArray& image, int cell) {
    const auto width = static_cast<int>(image.width());
    const auto height = static_cast<int>(image.height());
    const int columns = std::max(1, width / cell);
    const int rows = std::max(1, height / cell);
    cellsPerColumn_ = static_cast<double>(columns) / width;
    cellsPerRow_ = static_cast<double>(rows) / height;
    levels_ = PixelGrid(columns, rows);
    noises_ = PixelGrid(columns, rows);
    std::vector<Sample> samples;
    samples.reserve(levels_.values.size());
    for (int j = 0; j < rows; ++j)
        for (int i = 0; i < columns; ++i) {
            const PixelBox box = {i * width / columns, j * height / rows, (i + 1) * width / columns,
                                  (j + 1) * height / rows};
            samples.push_back(
                std::visit([&](const auto& pixels) { return sampleOf(pixels.data(), image.width(), box); },
                           image.pixels()));
            std::vector<double> values = flattened(samples.back(), 0, 0);
            levels_.at(i, j) = isGap(samples.back(), values) ? kNoValue : medianOf(std::move(values));
        }
    if (!platform::fillGaps(levels_.values, static_cast<std::size_t>(columns)))
        throw platform::runTimeError(platform::error_number::kInvalidProcedureCall);
    // Whole numbers hide noise of less than about half a count.
    const double least = std::holds_alternative<std::vector<float>>(image.pixels()) ? 0 : 0.5;
    for (int j = 0; j < rows; ++j)
        for (int i = 0; i < columns; ++i) {
            const Sample& sample = samples[levels_.index(i, j)];
            std::vector<double> values =
                flattened(sample, rise(levels_, i, j, 1, 0), rise(levels_, i, j, 0, 1));
            noises_.at(i, j) =
                isGap(sample, values) ? kNoValue : std::max(least, spreadOf(std::move(values)));
        }
    platform::fillGaps(noises_.values, static_cast<std::size_t>(columns));
    typicalNoise_ = medianOf(noises_.values);
}

}  // namespace vantrel::correction

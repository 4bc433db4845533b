#include "correction/sky_level.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

#include "platform/errors.h"

namespace vantrel::correction {
namespace {

constexpr int kSamplesPerSide = 10;

struct CellSample {
    double level = 0, noise = 0;
};

double takeRanked(std::vector<double>& values, double fraction) {
    const auto rank = static_cast<std::ptrdiff_t>(fraction * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), values.begin() + rank, values.end());
    return values[static_cast<std::size_t>(rank)];
}

double medianOf(std::vector<double> values) { return takeRanked(values, 0.5); }

template <typename Pixel>
std::vector<double> sampleOf(const Pixel* pixels, std::size_t stride, const PixelBox& box) {
    std::vector<double> sample;
    sample.reserve(kSamplesPerSide * kSamplesPerSide);
    const int columns = std::min(kSamplesPerSide, box.width());
    const int rows = std::min(kSamplesPerSide, box.height());
    for (int j = 0; j < rows; ++j) {
        const int y = box.top + (2 * j + 1) * box.height() / (2 * rows);
        const Pixel* row = pixels + static_cast<std::size_t>(y) * stride;
        for (int i = 0; i < columns; ++i) {
            const auto value = static_cast<double>(row[box.left + (2 * i + 1) * box.width() / (2 * columns)]);
            if (std::isfinite(value)) sample.push_back(value);
        }
    }
    return sample;
}

template <typename Pixel>
CellSample measured(const Pixel* pixels, std::size_t stride, const PixelBox& box) {
    constexpr double kOneSigmaBelow = 0.1587;
    std::vector<double> sample = sampleOf(pixels, stride, box);
    if (sample.empty()) throw platform::runTimeError(platform::error_number::kInvalidProcedureCall);
    const double level = takeRanked(sample, 0.5);
    const double noise = level - takeRanked(sample, kOneSigmaBelow);
    // Whole numbers hide noise of less than about half a count.
    return {level, std::is_integral_v<Pixel> ? std::max(noise, 0.5) : noise};
}

}  // namespace

SkyLevel::SkyLevel(const platform::ImageArray& image, int cell) {
    const auto width = static_cast<int>(image.width());
    const auto height = static_cast<int>(image.height());
    const int columns = std::max(1, width / cell);
    const int rows = std::max(1, height / cell);
    cellWidth_ = static_cast<double>(width) / columns;
    cellHeight_ = static_cast<double>(height) / rows;
    levels_ = PixelGrid(columns, rows);
    noises_ = PixelGrid(columns, rows);
    std::visit(
        [&](const auto& pixels) {
            for (int j = 0; j < rows; ++j)
                for (int i = 0; i < columns; ++i) {
                    const PixelBox box = {i * width / columns, j * height / rows, (i + 1) * width / columns,
                                          (j + 1) * height / rows};
                    const CellSample sample = measured(pixels.data(), image.width(), box);
                    levels_.at(i, j) = sample.level;
                    noises_.at(i, j) = sample.noise;
                }
        },
        image.pixels());
    typicalNoise_ = medianOf(noises_.values);
}

SkyLevel::Place SkyLevel::placeOf(double x, double y) const {
    const double column = (x + 0.5) / cellWidth_ - 0.5;
    const double row = (y + 0.5) / cellHeight_ - 0.5;
    const int i = std::clamp(static_cast<int>(column), 0, std::max(0, levels_.width - 2));
    const int j = std::clamp(static_cast<int>(row), 0, std::max(0, levels_.height - 2));
    return {i,          j,      std::min(i + 1, levels_.width - 1), std::min(j + 1, levels_.height - 1),
            column - i, row - j};
}

double SkyLevel::level(double x, double y) const { return between(levels_, placeOf(x, y)); }

double SkyLevel::noise(double x, double y) const {
    Place place = placeOf(x, y);
    place.u = std::clamp(place.u, 0.0, 1.0);
    place.v = std::clamp(place.v, 0.0, 1.0);
    return between(noises_, place);
}

double SkyLevel::between(const PixelGrid& grid, const Place& p) {
    return (1 - p.v) * ((1 - p.u) * grid.at(p.left, p.top) + p.u * grid.at(p.right, p.top)) +
           p.v * ((1 - p.u) * grid.at(p.left, p.bottom) + p.u * grid.at(p.right, p.bottom));
}

}  // namespace vantrel::correction

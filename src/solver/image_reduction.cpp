#include "solver/image_reduction.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>
#include <span>

#include "fits/fits_image.h"
#include "platform/vector_code.h"
#include "solver/hot_columns.h"
#include "solver/level_grid.h"
#include "solver/pixel_spikes.h"

namespace vantrel::solver {

namespace {

using fits::FitsImage;

constexpr std::size_t kTile = 64;               // pixels a side of a cell of the coarse survey
constexpr std::size_t kLargestTile = 256;       // the background must be even within one
constexpr std::size_t kLargeImage = 6'000'000;  // pixels, from which on cells grow
constexpr std::size_t kLooks = 64;  // pixels of a row that a cell's level is made of, in neighbouring pairs
constexpr std::size_t kStripFloats = 64 * 1024;  // a strip of rows stays in the processor's cache

/// What a look at one row pair in each band of tiles tells.
struct Survey {
    LevelGrid grid;
    std::vector<HotColumns::Stretch> hotColumns = {};
    bool mosaic = false;  ///< neighbouring pixels stand at different levels: a colour sensor's raw image
    float unit = 1;       ///< factor that brings images with tiny numbers (0 to 1) to ordinary counts
};

/// Large images have larger cells, so that the survey takes about the same time.
std::size_t tileSize(std::size_t pixels) {
    std::size_t size = kTile;
    for (std::size_t most = kLargeImage; pixels > most && size < kLargestTile; most *= 2) size *= 2;
    return size;
}

Survey survey(const FitsImage& image) {
    const std::size_t width = image.width();
    Survey result{LevelGrid(width, image.height(), tileSize(width * image.height()))};
    LevelGrid& grid = result.grid;
    HotColumns hotColumns(width);
    std::vector<float> rows;
    CellSample sample;
    std::array<double, 4> parity{};
    std::array<double, 4> counts{};
    float highest = 0;
    for (std::size_t band = 0; band < grid.rows(); ++band) {
        const auto [top, bottom] = grid.spanOfRow(band);
        const std::size_t pair = std::min<std::size_t>(2, bottom - top);
        const std::size_t first =
            std::min(((top + bottom) / 2 - (pair > 1 ? 1 : 0)) & ~std::size_t{pair > 1 ? 1U : 0U},
                     image.height() - pair);
        rows.resize(pair * width);
        image.readRows(first, rows);
        hotColumns.look(rows);
        for (std::size_t column = 0; column < grid.columns(); ++column) {
            const auto [left, right] = grid.spanOfColumn(column);
            const std::size_t step = 2 * std::max<std::size_t>(1, (right - left) / kLooks);
            const auto eachLook = [&, left = left, right = right](auto&& use) {
                for (std::size_t r = 0; r < pair; ++r)
                    for (std::size_t x = left; x < right; x += step)
                        for (std::size_t i = x; i < std::min(x + 2, right); ++i) use(i, r);
            };
            sample.clear();
            eachLook([&](std::size_t x, std::size_t r) { sample.add(rows[r * width + x], x, first + r); });
            const Level level = grid.set(column, band, sample);
            eachLook([&](std::size_t x, std::size_t r) {
                const float v = rows[r * width + x];
                if (!isValue(v)) return;
                highest = std::max(highest, v);
                if (!(level.noise > 0) || std::abs(v - level.background) > 4 * level.noise) return;
                parity[2 * r + x % 2] += static_cast<double>((v - level.background) / level.noise);
                counts[2 * r + x % 2] += 1;
            });
        }
    }
    grid.complete();
    result.hotColumns = hotColumns.stretches();
    double low = 1e9;
    double high = -1e9;
    for (std::size_t i = 0; i < parity.size(); ++i) {
        if (counts[i] < 200) continue;
        low = std::min(low, parity[i] / counts[i]);
        high = std::max(high, parity[i] / counts[i]);
    }
    result.mosaic = image.header().text("BAYERPAT").has_value() || high - low > 0.4;
    if (highest > 0 && highest <= 1.5F) result.unit = 65535;
    return result;
}

constexpr std::size_t kGroup = 32;  // pixels of a row that share a limit

/// Which of a row's groups hold a pixel over their limit.
VANTREL_VECTOR_CODE void markGroups(std::span<const float> row, std::span<const float> limits,
                                    std::span<int> above) {
    const std::size_t whole = row.size() / kGroup;
    for (std::size_t g = 0; g < whole; ++g) {
        int any = 0;
        for (std::size_t i = 0; i < kGroup; ++i) any |= static_cast<int>(row[g * kGroup + i] > limits[g]);
        above[g] = any;
    }
    if (whole < above.size()) above[whole] = 1;
}

/// Takes hot pixels out of one row after the other.
class SpikeRemoval {
  public:
    SpikeRemoval(const LevelGrid& grid, std::size_t width)
        : grid_(grid), width_(width), limits_((width + kGroup - 1) / kGroup), above_(limits_.size()) {}

    /// A row of the strip, whose first one is the image's `top`.
    void mend(std::span<float> strip, std::size_t row, std::size_t top) {
        const std::size_t y = top + row;
        if (y == 0 || y % grid_.cellSize() == 0)
            for (std::size_t g = 0; g < limits_.size(); ++g)
                limits_[g] = spikeLimit(grid_.covering(g * kGroup, y));
        markGroups(strip.subspan(row * width_, width_), limits_, above_);
        for (std::size_t g = 0; g < limits_.size(); ++g) {
            if (above_[g] == 0) continue;
            const Level& level = grid_.covering(g * kGroup, y);
            for (std::size_t x = g * kGroup; x < std::min(width_, (g + 1) * kGroup); ++x) {
                float& value = strip[row * width_ + x];
                if (value > limits_[g] && isSpike(strip, width_, x, row, level)) value = level.background;
            }
        }
    }

  private:
    const LevelGrid& grid_;
    std::size_t width_;
    std::vector<float> limits_;
    std::vector<int> above_;
};

void mendColumns(std::span<float> strip, std::size_t width, std::size_t top, const Survey& seen) {
    const std::size_t bottom = top + strip.size() / width;
    for (const HotColumns::Stretch& stretch : seen.hotColumns) {
        const std::size_t first = std::max(top, seen.grid.spanOfRow(stretch.firstBand).first);
        const std::size_t end = std::min(bottom, seen.grid.spanOfRow(stretch.endBand - 1).end);
        if (first < end)
            HotColumns::mend(strip.subspan((first - top) * width, (end - first) * width), width,
                             stretch.column);
    }
}

/// Pixels without a value take the mean of the others in their bin; when there are none the bin has no value.
void removeBlanks(std::span<float> strip, std::size_t width, std::size_t binning) {
    const auto meanOfBin = [&](std::size_t x, std::size_t y) {
        const std::size_t left = x / binning * binning;
        const std::size_t top = y / binning * binning;
        float sum = 0;
        float count = 0;
        for (std::size_t j = top; j < top + binning; ++j)
            for (std::size_t i = left; i < std::min(left + binning, width); ++i) {
                if (!isValue(strip[j * width + i])) continue;
                sum += strip[j * width + i];
                ++count;
            }
        return count > 0 ? sum / count : kNoValue;
    };
    for (std::size_t i = 0; i < strip.size(); ++i) {
        if (!isValue(strip[i])) strip[i] = meanOfBin(i % width, i / width);
    }
}

/// Sums of so many neighbours each. A number known beforehand lets compilers make vector code.
template <std::size_t binning>
VANTREL_VECTOR_CODE void sumNeighbours(std::span<const float> values, std::span<float> sums) {
    for (std::size_t x = 0; x < sums.size(); ++x) {
        float sum = 0;
        for (std::size_t i = 0; i < binning; ++i) sum += values[x * binning + i];
        sums[x] = sum;
    }
}

void sumNeighbours(std::span<const float> values, std::size_t binning, std::span<float> sums) {
    switch (binning) {
        case 1:
            return sumNeighbours<1>(values, sums);
        case 2:
            return sumNeighbours<2>(values, sums);
        case 3:
            return sumNeighbours<3>(values, sums);
        case 4:
            return sumNeighbours<4>(values, sums);
        case 5:
            return sumNeighbours<5>(values, sums);
        case 6:
            return sumNeighbours<6>(values, sums);
        case 8:
            return sumNeighbours<8>(values, sums);
        default:
            for (std::size_t x = 0; x < sums.size(); ++x) {
                const auto own = values.subspan(x * binning, binning);
                sums[x] = std::accumulate(own.begin(), own.end(), 0.0F);
            }
    }
}

VANTREL_VECTOR_CODE void addRow(std::span<const float> row, std::span<float> sums) {
    for (std::size_t x = 0; x < sums.size(); ++x) sums[x] += row[x];
}

/// Sums rows to bins.
class BinSums {
  public:
    BinSums(std::size_t width, std::size_t binning) : binning_(binning), column_(width) {}

    void add(std::span<const float> row) {
        if (rows_++ == 0)
            std::copy(row.begin(), row.end(), column_.begin());
        else
            addRow(row, column_);
    }
    bool complete() const { return rows_ == binning_; }
    void take(std::span<float> bins) {
        sumNeighbours(column_, binning_, bins);
        rows_ = 0;
    }

  private:
    std::size_t binning_;
    std::vector<float> column_;
    std::size_t rows_ = 0;  // in the sums
};

std::size_t chooseBinning(const FitsImage& image, bool mosaic, std::size_t largest) {
    std::size_t binning = 1;
    while (image.width() * image.height() > largest * binning * binning) ++binning;
    if (mosaic) binning += binning % 2;
    return std::max<std::size_t>(1, std::min({binning, image.width(), image.height()}));
}

/// Levels of the binned image itself: its noise can't be foretold from the pixels' (neighbours are
/// correlated).
LevelGrid binLevels(const ReducedImage& image) {
    constexpr std::size_t kCell = 40;  // bins a side
    LevelGrid grid(image.width, image.height, kCell);
    CellSample sample;
    for (std::size_t row = 0; row < grid.rows(); ++row) {
        const auto [top, bottom] = grid.spanOfRow(row);
        for (std::size_t column = 0; column < grid.columns(); ++column) {
            const auto [left, right] = grid.spanOfColumn(column);
            sample.clear();
            for (std::size_t y = top; y < bottom; y += 4)
                for (std::size_t x = left + y / 4 % 2; x < right; x += 2)
                    sample.add(image.pixels[y * image.width + x], x, y);
            grid.set(column, row, sample);
        }
    }
    grid.complete();
    return grid;
}

/// Subtracts the background and divides by the noise, both interpolated between the cells' centres.
void normalise(ReducedImage& image, const LevelGrid& grid, float floorNoise) {
    struct Weight {
        std::size_t low, high;
        float share;
    };
    const auto weights = [&](std::size_t size, std::size_t cells) {
        std::vector<Weight> result(size);
        for (std::size_t i = 0; i < size; ++i) {
            const float place = (static_cast<float>(i) + 0.5F) / static_cast<float>(grid.cellSize()) - 0.5F;
            const float held = std::clamp(place, 0.0F, static_cast<float>(cells - 1));
            const auto low = std::min(static_cast<std::size_t>(held), cells - 1);
            result[i] = {low, std::min(low + 1, cells - 1), held - static_cast<float>(low)};
        }
        return result;
    };
    const auto across = weights(image.width, grid.columns());
    const auto down = weights(image.height, grid.rows());
    std::vector<float> nodesBack(grid.columns());
    std::vector<float> nodesScale(grid.columns());
    std::vector<float> back(image.width);
    std::vector<float> scale(image.width);
    for (std::size_t y = 0; y < image.height; ++y) {
        for (std::size_t c = 0; c < grid.columns(); ++c) {
            const Level& a = grid.at(c, down[y].low);
            const Level& b = grid.at(c, down[y].high);
            nodesBack[c] = a.background + down[y].share * (b.background - a.background);
            nodesScale[c] = 1 / std::max(floorNoise, a.noise + down[y].share * (b.noise - a.noise));
        }
        for (std::size_t x = 0; x < image.width; ++x) {
            const Weight& w = across[x];
            back[x] = nodesBack[w.low] + w.share * (nodesBack[w.high] - nodesBack[w.low]);
            scale[x] = nodesScale[w.low] + w.share * (nodesScale[w.high] - nodesScale[w.low]);
        }
        float* row = image.pixels.data() + y * image.width;
        for (std::size_t x = 0; x < image.width; ++x) row[x] = (row[x] - back[x]) * scale[x];
    }
}

}  // namespace

ReducedImage reduceImage(const FitsImage& image, const ReductionSettings& settings) {
    const Survey seen = survey(image);
    ReducedImage reduced;
    reduced.mosaic = seen.mosaic;
    reduced.binning = chooseBinning(image, seen.mosaic, settings.largestSize);
    reduced.width = image.width() / reduced.binning;
    reduced.height = image.height() / reduced.binning;
    reduced.pixels.resize(reduced.width * reduced.height);

    const std::size_t width = image.width();
    const std::size_t binRows = std::max<std::size_t>(1, kStripFloats / (width * reduced.binning));
    std::vector<float> strip;
    SpikeRemoval spikes(seen.grid, width);
    BinSums sums(width, reduced.binning);
    auto bins = std::span(reduced.pixels);
    for (std::size_t y = 0; y < reduced.height; y += binRows) {
        const std::size_t rows = std::min(binRows, reduced.height - y) * reduced.binning;
        strip.resize(rows * width);
        const std::size_t top = y * reduced.binning;
        image.readRows(top, strip);
        if (image.mayHoldBlanks()) removeBlanks(strip, width, reduced.binning);
        if (settings.removeHotPixels) mendColumns(strip, width, top, seen);
        for (std::size_t row = 0; row < rows; ++row) {
            if (settings.removeHotPixels) spikes.mend(strip, row, top);
            sums.add(std::span(strip).subspan(row * width, width));
            if (!sums.complete()) continue;
            sums.take(bins.first(reduced.width));
            bins = bins.subspan(reduced.width);
        }
    }
    const LevelGrid levels = binLevels(reduced).smoothed();
    const float noise = levels.typicalNoise();
    // Images without noise (drawn ones, or quantised ones) still need a unit to measure stars by.
    const float least = noise > 0 ? noise / 4 : 0.5F * static_cast<float>(reduced.binning) / seen.unit;
    normalise(reduced, levels, least);
    reduced.noise = static_cast<double>(std::max(noise, least) * seen.unit);
    return reduced;
}

}  // namespace vantrel::solver

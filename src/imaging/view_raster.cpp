#include "imaging/view_raster.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>
#include <utility>

namespace vantrel::imaging {
namespace {

/// The pixels of the image that a pixel of the screen covers along one axis.
struct CoveredPixels {
    std::size_t first = 0, last = 0;  // touched
    float firstWeight = 1, lastWeight = 1;
    std::size_t innerFirst = 0, innerEnd = 0;  // whose centres it covers; at least one

    /// Counted from there.
    CoveredPixels from(std::size_t origin) const {
        return {first - origin, last - origin,       firstWeight,
                lastWeight,     innerFirst - origin, innerEnd - origin};
    }
};

std::vector<CoveredPixels> spansOf(double corner, double scale, int count, std::size_t limit) {
    std::vector<CoveredPixels> spans;
    spans.reserve(static_cast<std::size_t>(count));
    const auto pixel = [limit](double place) {
        return std::min(static_cast<std::size_t>(std::max(0.0, place)), limit - 1);
    };
    for (int i = 0; i < count; ++i) {
        const double from = corner + i / scale;
        const double to = corner + (i + 1) / scale;
        CoveredPixels span;
        span.first = pixel(from);
        span.last = std::max(span.first, pixel(std::ceil(to) - 1));
        if (span.last > span.first) {
            span.firstWeight = static_cast<float>(static_cast<double>(span.first + 1) - from);
            span.lastWeight = static_cast<float>(std::min(1.0, to - static_cast<double>(span.last)));
        }
        span.innerFirst = pixel(std::round(from));
        span.innerEnd = std::max(span.innerFirst + 1, pixel(std::round(to) - 1) + 1);
        spans.push_back(span);
    }
    return spans;
}

/// What lies in the columns of the image below each other, for one row of the screen.
template <typename Pixel>
class Columns {
  public:
    /// `pixels`: the uppermost of the first column. `stead`: counts for what isn't a finite number.
    Columns(const Pixel* pixels, std::size_t stride, std::size_t count, float stead)
        : pixels_(pixels), stride_(stride), sums_(count), peaks_(count), stead_(stead) {}

    /// Sums and peaks of the rows. A piece of them at a time stays in the processor's nearest memory.
    void gather(const CoveredPixels& rows) {
        weight_ = 0;
        for (std::size_t row = rows.first; row <= rows.last; ++row) weight_ += weightOf(rows, row);
        for (std::size_t from = 0; from < sums_.size(); from += kPiece)
            if (from + kPiece <= sums_.size())
                gatherPiece(rows, from, std::integral_constant<std::size_t, kPiece>());
            else
                gatherPiece(rows, from, sums_.size() - from);
    }

    float meanOf(const CoveredPixels& columns) const {
        float sum = sums_[columns.first] * columns.firstWeight;
        float weight = columns.firstWeight;
        for (std::size_t x = columns.first + 1; x < columns.last; ++x) sum += sums_[x];
        if (columns.last > columns.first) {
            sum += sums_[columns.last] * columns.lastWeight;
            weight += columns.lastWeight + static_cast<float>(columns.last - columns.first - 1);
        }
        return sum / (weight * weight_);
    }

    float peakOf(const CoveredPixels& columns) const {
        Pixel peak = peaks_[columns.innerFirst];
        for (std::size_t x = columns.innerFirst + 1; x < columns.innerEnd; ++x)
            peak = peaks_[x] > peak ? peaks_[x] : peak;
        return static_cast<float>(peak);
    }

  private:
    static constexpr std::size_t kPiece = 512;

    /// Some four rows tell the mean well enough; all are searched for the peak.
    static float weightOf(const CoveredPixels& rows, std::size_t row) {
        constexpr std::size_t kEnough = 4;
        const std::size_t step = (rows.innerEnd - rows.innerFirst) / kEnough;
        if (step > 1) return (row - rows.first) % step == step / 2 ? 1 : 0;
        if (row == rows.first) return rows.firstWeight;
        return row == rows.last ? rows.lastWeight : 1;
    }

    float finite(Pixel value) const {
        if constexpr (std::is_floating_point_v<Pixel>)
            return std::abs(value) <= std::numeric_limits<Pixel>::max() ? value : stead_;
        else
            return static_cast<float>(value);
    }

    /// A count that is known beforehand lets compilers work on several columns at once.
    template <typename Count>
    void gatherPiece(const CoveredPixels& rows, std::size_t from, Count count) {
        float* const sums = sums_.data() + from;
        Pixel* const peaks = peaks_.data() + from;
        std::fill_n(sums, count, 0.0F);
        std::fill_n(peaks, count, std::numeric_limits<Pixel>::lowest());
        for (std::size_t row = rows.first; row <= rows.last; ++row) {
            const Pixel* const pixels = pixels_ + row * stride_ + from;
            const float weight = weightOf(rows, row);
            if (weight > 0)
                for (std::size_t x = 0; x < count; ++x) sums[x] += weight * finite(pixels[x]);
            if (row >= rows.innerFirst && row < rows.innerEnd)
                for (std::size_t x = 0; x < count; ++x)
                    peaks[x] = pixels[x] > peaks[x] ? pixels[x] : peaks[x];
        }
    }

    const Pixel* pixels_;
    std::size_t stride_;
    std::vector<float> sums_;
    std::vector<Pixel> peaks_;
    float stead_;
    float weight_ = 1;
};

template <typename Pixel>
void reduce(const Pixel* pixels, const platform::ImageArray& image, const ViewWindow& window,
            const PixelStatistics& statistics, ViewRaster& raster) {
    // The fewer pixels a mean is of, the nearer lies the brightest of them.
    constexpr double kStandsOut = 5;  // deviations, among many
    constexpr double kMany = 9;
    const double pixelsEach = 1 / (window.scale * window.scale);
    const auto threshold =
        static_cast<float>(kStandsOut * statistics.deviation * std::min(1.0, (pixelsEach - 1) / (kMany - 1)));
    const auto rows = spansOf(window.top, window.scale, window.height, image.height());
    auto columns = spansOf(window.left, window.scale, window.width, image.width());
    const std::size_t first = columns.front().first;
    for (CoveredPixels& column : columns) column = column.from(first);
    Columns<Pixel> piece(pixels + first, image.width(), columns.back().last + 1,
                         static_cast<float>(statistics.median));
    for (const CoveredPixels& row : rows) {
        piece.gather(row);
        for (const CoveredPixels& column : columns) {
            const float mean = piece.meanOf(column);
            const float peak = piece.peakOf(column);
            const bool blank =
                std::is_floating_point_v<Pixel> && peak == std::numeric_limits<float>::lowest();
            raster.values.push_back(blank                     ? std::numeric_limits<float>::quiet_NaN()
                                    : peak > mean + threshold ? peak
                                                              : mean);
        }
    }
}

template <typename Pixel>
void enlarge(const Pixel* pixels, const platform::ImageArray& image, const ViewWindow& window,
             ViewRaster& raster) {
    const auto places = [&window](double corner, int count, std::size_t limit) {
        std::vector<std::size_t> nearest;
        nearest.reserve(static_cast<std::size_t>(std::max(count, 0)));
        for (int i = 0; i < count; ++i)
            nearest.push_back(
                std::min(static_cast<std::size_t>(corner + (i + 0.5) / window.scale), limit - 1));
        return nearest;
    };
    const auto columns = places(window.left, window.width, image.width());
    for (const std::size_t y : places(window.top, window.height, image.height())) {
        const Pixel* const row = pixels + y * image.width();
        for (const std::size_t x : columns) raster.values.push_back(static_cast<float>(row[x]));
    }
}

/// Along one axis, the screen's pixels that show the image's pixel at `place`. Reduced, the one that its
/// centre falls into.
std::pair<int, int> shownAt(double place, double corner, double scale, int count) {
    const double from = (place - corner) * scale;
    const int first = static_cast<int>(scale < 1 ? std::floor(from + scale / 2) : std::ceil(from - 0.5));
    const int end = scale < 1 ? first + 1 : static_cast<int>(std::ceil(from + scale - 0.5));
    return {std::clamp(first, 0, count), std::clamp(end, 0, count)};
}

std::size_t indexIn(const ViewRaster& raster, int x, int y) {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(raster.width) + static_cast<std::size_t>(x);
}

void showMarks(ViewRaster& raster, const platform::ImageArray& image, const ViewWindow& window) {
    for (const auto& mark : image.setPixels()) {
        const auto column = mark.place % image.width(), row = mark.place / image.width();
        const auto [left, right] =
            shownAt(static_cast<double>(column), window.left, window.scale, raster.width);
        const auto [top, bottom] = shownAt(static_cast<double>(row), window.top, window.scale, raster.height);
        for (int y = top; y < bottom; ++y)
            for (int x = left; x < right; ++x)
                raster.values[indexIn(raster, x, y)] = static_cast<float>(kMarkValue);
    }
}

/// From the screen's pixel `from` to before `to`: the image's pixels that they touch, and one more around.
std::pair<std::size_t, std::size_t> touched(double corner, double scale, int from, int to,
                                            std::size_t limit) {
    const double first = std::max(0.0, std::floor(corner + from / scale) - 1);
    const double end = std::min(static_cast<double>(limit), std::ceil(corner + to / scale) + 1);
    return {static_cast<std::size_t>(first), static_cast<std::size_t>(end)};
}

}  // namespace

bool ViewCircle::contains(double x, double y) const {
    return std::hypot(x - centre.x, y - centre.y) <= radius;
}

ViewRaster rasterOf(const platform::ImageArray& image, const ViewWindow& window,
                    const PixelStatistics& statistics) {
    ViewRaster raster{window.width, window.height, {}};
    if (window.width <= 0 || window.height <= 0) return raster;
    raster.values.reserve(static_cast<std::size_t>(window.width) * static_cast<std::size_t>(window.height));
    std::visit(
        [&](const auto& pixels) {
            if (window.scale < 1)
                reduce(pixels.data(), image, window, statistics, raster);
            else
                enlarge(pixels.data(), image, window, raster);
        },
        image.pixels());
    showMarks(raster, image, window);
    return raster;
}

void uncover(ViewRaster& raster, const platform::ImageArray& image, const ViewWindow& window,
             const PixelStatistics& statistics, const ViewCircle& circle) {
    const double x = circle.centre.x - window.x;
    const double y = circle.centre.y - window.y;
    const auto within = [&circle](double middle, int count) {
        return std::pair{static_cast<int>(std::clamp(middle - circle.radius, 0.0, count * 1.0)),
                         static_cast<int>(std::clamp(middle + circle.radius + 1, 0.0, count * 1.0))};
    };
    const auto [left, right] = within(x, raster.width);
    const auto [top, bottom] = within(y, raster.height);
    if (image.setPixels().empty() || left >= right || top >= bottom) return;

    const auto [firstColumn, endColumn] = touched(window.left, window.scale, left, right, image.width());
    const auto [firstRow, endRow] = touched(window.top, window.scale, top, bottom, image.height());
    const auto piece = image.untouched(firstColumn, firstRow, endColumn - firstColumn, endRow - firstRow);
    const ViewWindow part{.left = window.left + left / window.scale - static_cast<double>(firstColumn),
                          .top = window.top + top / window.scale - static_cast<double>(firstRow),
                          .scale = window.scale,
                          .width = right - left,
                          .height = bottom - top};
    const ViewRaster beneath = rasterOf(piece, part, statistics);
    const ViewCircle hole{{x, y}, circle.radius};
    for (int row = top; row < bottom; ++row)
        for (int column = left; column < right; ++column)
            if (hole.contains(column + 0.5, row + 0.5))
                raster.values[indexIn(raster, column, row)] =
                    beneath.values[indexIn(beneath, column - left, row - top)];
}

void paintRow(const ViewRaster& raster, int row, const ToneCurve& curve, const ToneColors& colors,
              std::uint32_t* pixels) {
    const float* const values =
        raster.values.data() + static_cast<std::size_t>(row) * static_cast<std::size_t>(raster.width);
    for (int x = 0; x < raster.width; ++x) pixels[x] = colors[curve.at(values[x])];
}

}  // namespace vantrel::imaging

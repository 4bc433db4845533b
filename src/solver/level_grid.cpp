#include "solver/level_grid.h"

#include <algorithm>
#include <limits>
#include <span>

#include "platform/grid_gaps.h"

namespace vantrel::solver {

namespace {

/// Mean of |z| over the central 80 % of a unit normal distribution.
constexpr float kMeanOfFourFifths = 0.5586F;

float middleOf(std::vector<float>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// As std::nth_element: puts the value that has so many before it when all are in order in its place, the
/// smaller ones before it and the larger ones behind, and returns it. Among values in no order a branch that
/// depends on them goes wrong half of the time; here none does (Lomuto's partition). All must be numbers.
float partAt(std::span<float> values, std::size_t place) {
    const auto smallerFirst = [](std::span<float> part, auto&& isFirst) {
        std::size_t count = 0;
        for (float& at : part) {
            const float value = at;
            at = part[count];
            part[count] = value;
            count += static_cast<std::size_t>(isFirst(value));
        }
        return count;
    };
    while (values.size() > 1) {
        const float a = values.front(), b = values[values.size() / 2], c = values.back();
        const float pivot = std::max(std::min(a, b), std::min(std::max(a, b), c));
        std::size_t smaller = smallerFirst(values, [=](float v) { return v < pivot; });
        if (smaller == 0) {
            const std::size_t equal = smallerFirst(values, [=](float v) { return v <= pivot; });
            if (place < equal) return pivot;
            smaller = equal;
        }
        values = place < smaller ? values.first(smaller) : values.subspan(smaller);
        place -= place < smaller ? 0 : smaller;
    }
    return values.front();
}

/// A plane through points, by least squares.
class PlaneFit {
  public:
    void add(double x, double y, double height) {
        ++count_;
        x_ += x, y_ += y, z_ += height;
        xx_ += x * x, xy_ += x * y, yy_ += y * y;
        xz_ += x * height, yz_ += y * height;
    }
    /// Its height at the origin; nothing when the points lie in a line.
    std::optional<double> atOrigin() const {
        const double xx = xx_ - x_ * x_ / count_, xy = xy_ - x_ * y_ / count_, yy = yy_ - y_ * y_ / count_;
        const double xz = xz_ - x_ * z_ / count_, yz = yz_ - y_ * z_ / count_;
        const double determinant = xx * yy - xy * xy;
        constexpr double kInALine = 1;  // in cells: three around a corner make 1/3, and tell too little
        if (!(determinant > kInALine)) return std::nullopt;
        const double slopeX = (yy * xz - xy * yz) / determinant;
        const double slopeY = (xx * yz - xy * xz) / determinant;
        return (z_ - slopeX * x_ - slopeY * y_) / count_;
    }

  private:
    double count_ = 0, x_ = 0, y_ = 0, z_ = 0, xx_ = 0, xy_ = 0, yy_ = 0, xz_ = 0, yz_ = 0;
};

}  // namespace

Level levelOf(std::span<float> values) {
    if (values.size() < 5) return {values.empty() ? 0 : values.front(), 0};
    const float median = partAt(values, values.size() / 2);
    for (float& v : values) v = std::abs(v - median);
    const std::size_t most = values.size() * 4 / 5;
    partAt(values, most);
    float sum = 0;
    for (const float deviation : values.first(most)) sum += deviation;
    return {median, sum / static_cast<float>(most) / kMeanOfFourFifths};
}

LevelGrid::LevelGrid(std::size_t width, std::size_t height, std::size_t cellSize)
    : width_(width),
      height_(height),
      cell_(cellSize),
      columns_(std::max<std::size_t>(1, width / cellSize)),
      rows_(std::max<std::size_t>(1, height / cellSize)),
      levels_(columns_ * rows_),
      offsets_(columns_ * rows_) {}

Level LevelGrid::set(std::size_t column, std::size_t row, CellSample& sample) {
    const std::size_t cell = row * columns_ + column;
    const auto missing = static_cast<double>(sample.missing);
    const auto offset = [&](double sum, const Span& pixels) {
        const double middle = static_cast<double>(pixels.first + pixels.end - 1) / 2;
        const double moment = missing * middle - sum;
        return moment / static_cast<double>(sample.values.size()) / static_cast<double>(cell_);
    };
    if (sample.missing > 0)
        offsets_[cell] = {offset(sample.missingX, spanOfColumn(column)),
                          offset(sample.missingY, spanOfRow(row))};
    const bool mostMissing = sample.values.size() * 3 < sample.missing;
    return levels_[cell] = mostMissing ? Level{kNoValue, kNoValue} : levelOf(sample.values);
}

bool LevelGrid::isLevelOfItsMiddle(std::size_t cell) const {
    constexpr double kBeside = 0.05;  // cells
    return !std::isnan(levels_[cell].background) && std::hypot(offsets_[cell].x, offsets_[cell].y) < kBeside;
}

void LevelGrid::complete() {
    std::vector<float> backgrounds, noises;
    for (const Level& level : levels_) {
        backgrounds.push_back(level.background);
        noises.push_back(level.noise);
    }
    for (std::size_t cell = 0; cell < levels_.size(); ++cell) {
        if (isLevelOfItsMiddle(cell)) continue;
        if (const auto level = planeAround(cell % columns_, cell / columns_))
            backgrounds[cell] = static_cast<float>(*level);
    }
    for (std::vector<float>* part : {&backgrounds, &noises})
        if (!platform::fillGaps(*part, columns_)) std::fill(part->begin(), part->end(), 0.0F);
    for (std::size_t cell = 0; cell < levels_.size(); ++cell)
        levels_[cell] = {backgrounds[cell], noises[cell]};
}

const Level& LevelGrid::covering(std::size_t x, std::size_t y) const {
    return at(std::min(x / cell_, columns_ - 1), std::min(y / cell_, rows_ - 1));
}

template <typename Use>
void LevelGrid::eachAround(std::size_t column, std::size_t row, std::size_t reach, Use&& use) const {
    for (std::size_t r = row < reach ? 0 : row - reach; r < std::min(rows_, row + reach + 1); ++r)
        for (std::size_t c = column < reach ? 0 : column - reach; c < std::min(columns_, column + reach + 1);
             ++c)
            use(c, r);
}

std::optional<double> LevelGrid::planeAround(std::size_t column, std::size_t row) const {
    PlaneFit plane;
    eachAround(column, row, 2, [&](std::size_t c, std::size_t r) {
        if (std::isnan(at(c, r).background)) return;
        const Offset& offset = offsets_[r * columns_ + c];
        plane.add(static_cast<double>(c) - static_cast<double>(column) + offset.x,
                  static_cast<double>(r) - static_cast<double>(row) + offset.y,
                  static_cast<double>(at(c, r).background));
    });
    return plane.atOrigin();
}

LevelGrid LevelGrid::smoothed() const {
    LevelGrid result = *this;
    std::vector<float> backgrounds, noises;
    for (std::size_t row = 0; row < rows_; ++row) {
        for (std::size_t column = 0; column < columns_; ++column) {
            backgrounds.clear();
            noises.clear();
            eachAround(column, row, 1, [&](std::size_t c, std::size_t r) {
                backgrounds.push_back(at(c, r).background);
                noises.push_back(at(c, r).noise);
            });
            result.levels_[row * columns_ + column] = {middleOf(backgrounds), middleOf(noises)};
        }
    }
    return result;
}

float LevelGrid::typicalNoise() const {
    std::vector<float> noises;
    for (const Level& level : levels_) noises.push_back(level.noise);
    return middleOf(noises);
}

}  // namespace vantrel::solver

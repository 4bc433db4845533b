// Points in a plane, found again by neighbourhood.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace vantrel::solver {

struct PlanePoint {
    double x = 0;
    double y = 0;
};

class StarGrid {
  public:
    /// Keeps the points in square cells of about one point each.
    explicit StarGrid(std::vector<PlanePoint> points) : points_(std::move(points)) {
        if (points_.empty()) return;
        double right = points_[0].x;
        double bottom = points_[0].y;
        left_ = right;
        top_ = bottom;
        for (const PlanePoint& p : points_) {
            left_ = std::min(left_, p.x);
            top_ = std::min(top_, p.y);
            right = std::max(right, p.x);
            bottom = std::max(bottom, p.y);
        }
        const double side = std::max({right - left_, bottom - top_, 1e-12});
        cells_ = static_cast<int>(std::clamp(std::sqrt(static_cast<double>(points_.size())), 1.0, 256.0));
        scale_ = cells_ / side;
        std::vector<std::uint32_t> sizes(static_cast<std::size_t>(cells_) * static_cast<std::size_t>(cells_) +
                                         1);
        for (const PlanePoint& p : points_) ++sizes[cellOf(p) + 1];
        for (std::size_t i = 1; i < sizes.size(); ++i) sizes[i] += sizes[i - 1];
        starts_ = sizes;
        order_.resize(points_.size());
        for (std::uint32_t i = 0; i < points_.size(); ++i) order_[sizes[cellOf(points_[i])]++] = i;
    }

    /// The nearest point not farther than the radius, or -1.
    int nearest(PlanePoint at, double radius) const {
        if (points_.empty()) return -1;
        const int x0 = column(at.x - radius, left_);
        const int x1 = column(at.x + radius, left_);
        const int y0 = column(at.y - radius, top_);
        const int y1 = column(at.y + radius, top_);
        int best = -1;
        double bestSquare = radius * radius;
        for (int y = std::max(y0, 0); y <= std::min(y1, cells_ - 1); ++y) {
            for (int x = std::max(x0, 0); x <= std::min(x1, cells_ - 1); ++x) {
                const std::size_t cell = cellAt(x, y);
                for (std::uint32_t i = starts_[cell]; i < starts_[cell + 1]; ++i) {
                    const PlanePoint& p = points_[order_[i]];
                    const double square = (p.x - at.x) * (p.x - at.x) + (p.y - at.y) * (p.y - at.y);
                    if (square <= bestSquare) {
                        bestSquare = square;
                        best = static_cast<int>(order_[i]);
                    }
                }
            }
        }
        return best;
    }

    const std::vector<PlanePoint>& points() const { return points_; }

  private:
    int column(double at, double origin) const {
        return static_cast<int>(std::floor(std::clamp((at - origin) * scale_, -1.0, cells_ + 1.0)));
    }
    std::size_t cellOf(PlanePoint p) const {
        const int x = std::clamp(column(p.x, left_), 0, cells_ - 1);
        const int y = std::clamp(column(p.y, top_), 0, cells_ - 1);
        return cellAt(x, y);
    }
    std::size_t cellAt(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(cells_) + static_cast<std::size_t>(x);
    }

    std::vector<PlanePoint> points_;
    double left_ = 0;
    double top_ = 0;
    double scale_ = 1;
    int cells_ = 1;
    std::vector<std::uint32_t> starts_;
    std::vector<std::uint32_t> order_;
};

}  // namespace vantrel::solver

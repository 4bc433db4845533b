// The triangles of an image's stars, found by shape.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <span>
#include <vector>

#include "sky/vector3.h"

namespace vantrel::solver {

/// A triangle as its shape: corner 0 joins the longest and the shortest side, corner 1 the longest and the
/// middle one.
struct Triangle {
    std::array<std::uint16_t, 3> corners{};
    float longest = 0;  ///< radians (as chord)
    float middle = 0;   ///< shares of the longest side
    float shortest = 0;
};

/// The triangle of three stars and the sides between them: side[0] joins a and b, side[1] b and c, side[2] c
/// and a.
inline Triangle shapeOf(std::array<std::uint16_t, 3> stars, std::array<float, 3> sides) {
    // Corner k lies opposite of side (k + 1) % 3.
    std::array<int, 3> order{0, 1, 2};
    if (sides[1] > sides[0]) std::swap(order[0], order[1]);
    if (sides[static_cast<std::size_t>(order[2])] > sides[static_cast<std::size_t>(order[1])])
        std::swap(order[1], order[2]);
    if (sides[static_cast<std::size_t>(order[1])] > sides[static_cast<std::size_t>(order[0])])
        std::swap(order[0], order[1]);
    const auto opposite = [&](int side) { return stars[static_cast<std::size_t>((side + 2) % 3)]; };
    const float longest = sides[static_cast<std::size_t>(order[0])];
    return {{opposite(order[1]), opposite(order[2]), opposite(order[0])},
            longest,
            sides[static_cast<std::size_t>(order[1])] / longest,
            sides[static_cast<std::size_t>(order[2])] / longest};
}

class TriangleIndex {
  public:
    /// All triangles of the stars whose longest side is at most `longest` and whose shortest is at least
    /// `shortest`.
    TriangleIndex(std::span<const sky::Vector3> stars, double longest, double shortest);

    bool empty() const { return triangles_.empty(); }
    float longestSide() const { return longestSide_; }
    float shortestSide() const { return shortestSide_; }

    /// Calls visit(triangle) for each triangle whose ratios differ by not more than `reach` in either
    /// coordinate.
    template <typename Visit>
    void visitAlike(const Triangle& shape, float reach, Visit&& visit) const {
        const int m0 = cell(shape.middle - reach);
        const int m1 = cell(shape.middle + reach);
        const int s0 = cell(shape.shortest - reach);
        const int s1 = cell(shape.shortest + reach);
        for (int m = m0; m <= m1; ++m) {
            const std::uint32_t first = starts_[cellAt(m, s0)];
            const std::uint32_t last = starts_[cellAt(m, s1) + 1];
            for (std::uint32_t i = first; i < last; ++i) {
                const Triangle& t = triangles_[i];
                if (std::abs(t.middle - shape.middle) <= reach &&
                    std::abs(t.shortest - shape.shortest) <= reach)
                    visit(t);
            }
        }
    }

  private:
    static constexpr int kCells = 128;  // along each ratio of sides
    static std::size_t cellAt(int middle, int shortest) {
        return static_cast<std::size_t>(middle) * kCells + static_cast<std::size_t>(shortest);
    }
    static int cell(float ratio) {
        const int c = static_cast<int>(ratio * kCells);
        return c < 0 ? 0 : c >= kCells ? kCells - 1 : c;
    }

    std::vector<Triangle> triangles_;
    std::vector<std::uint32_t> starts_;
    float longestSide_ = 0;
    float shortestSide_ = 1e9F;
};

/// Length of the chord between two directions: nearly the angle in radians.
inline float chord(const sky::Vector3& a, const sky::Vector3& b) {
    const double x = a[0] - b[0];
    const double y = a[1] - b[1];
    const double z = a[2] - b[2];
    return static_cast<float>(std::sqrt(x * x + y * y + z * z));
}

}  // namespace vantrel::solver

#include "solver/triangle_index.h"

#include <algorithm>

namespace vantrel::solver {

TriangleIndex::TriangleIndex(std::span<const sky::Vector3> stars, double longest, double shortest) {
    const auto count = static_cast<std::uint16_t>(stars.size());
    const auto most = static_cast<float>(longest);
    const auto least = static_cast<float>(shortest);
    std::vector<Triangle> found;
    for (std::uint16_t c = 2; c < count; ++c) {
        for (std::uint16_t b = 1; b < c; ++b) {
            const float bc = chord(stars[b], stars[c]);
            if (bc > most || bc < least) continue;
            for (std::uint16_t a = 0; a < b; ++a) {
                const float ab = chord(stars[a], stars[b]);
                const float ca = chord(stars[c], stars[a]);
                if (ab > most || ca > most || ab < least || ca < least) continue;
                found.push_back(shapeOf({a, b, c}, {ab, bc, ca}));
                longestSide_ = std::max(longestSide_, found.back().longest);
                shortestSide_ = std::min(shortestSide_, found.back().longest * found.back().shortest);
            }
        }
    }
    const auto cellOf = [](const Triangle& t) { return cellAt(cell(t.middle), cell(t.shortest)); };
    std::vector<std::uint32_t> next(static_cast<std::size_t>(kCells) * kCells + 1);
    for (const Triangle& t : found) ++next[cellOf(t) + 1];
    for (std::size_t i = 1; i < next.size(); ++i) next[i] += next[i - 1];
    starts_ = next;
    triangles_.resize(found.size());
    for (const Triangle& t : found) triangles_[next[cellOf(t)]++] = t;
}

}  // namespace vantrel::solver

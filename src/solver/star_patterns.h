// The patterns that stars make all over the sky, found by their shape: what a search without a position
// needs.
//
// Each star is joined with the nearest stars that outshine it; every two of these make a triangle with it.
// So bright stars make large triangles and faint ones small, at every brightness and size that an image can
// show, and no scale needs choosing. A triangle is looked up by its shape (two numbers) and its size, all
// of them lengths that neither turning nor mirroring changes (geometric hashing; Lang et al. 2010, AJ 139,
// 1782, has quadrilaterals instead).
//
// The tables are made once from a star catalogue and kept in a file that is mapped, not loaded. They fit the
// machine that made them and the catalogue whose number they carry; see pattern_store.h for where they live.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <stdexcept>
#include <vector>

#include "platform/mapped_file.h"
#include "sky/star_catalog.h"
#include "sky/vector3.h"

namespace vantrel::solver {

/// A file of patterns that can't be used, and why.
class PatternError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// A triangle of a star and two brighter ones, by lengths of chords between directions. The brighter ones are
/// named `near` and `far` by their distance from the star.
struct PatternShape {
    float size = 0;      ///< perimeter, radians
    float opposite = 0;  ///< side between the brighter two, as share of the perimeter: 0 to 0.5
    float lead = 0;      ///< by how much the far one is farther, likewise: 0 to `opposite`

    /// The shortest side, as share of the perimeter.
    float narrowest() const { return std::min((1 - opposite - lead) / 2, opposite); }

    static PatternShape of(float toNear, float toFar, float between) {
        const float size = toNear + toFar + between;
        return {size, between / size, (toFar - toNear) / size};
    }
};

/// A star of the patterns. Stars stand in the order of a balanced k-d tree: the middle one of each range
/// divides it.
struct PatternStar {
    static constexpr std::size_t kNeighbours = 4;       // that make six pairs
    static constexpr std::uint32_t kNone = 0xFFFFFFFF;  // has fewer neighbours

    std::array<float, 3> at{};                          ///< unit vector, ICRS
    std::array<std::uint32_t, kNeighbours> brighter{};  ///< nearest stars that outshine it, nearest first
    std::uint8_t tenths = 0;                            ///< magnitude + 3 in tenths
    std::uint8_t axis = 0;                              ///< along which it divides its range
    std::uint16_t unused = 0;
};

class StarPatterns {
  public:
    struct Match {
        std::uint32_t star, near, far;
    };

    /// Makes the patterns of the catalogue's brightest stars, at most `starsPerCell` in each cell of sky half
    /// a degree wide. `catalogId` is kept to tell later whether they belong to a catalogue.
    static std::shared_ptr<const StarPatterns> build(const sky::StarCatalog& catalog, std::uint32_t catalogId,
                                                     std::uint32_t starsPerCell = 10);

    /// Maps a file. Throws PatternError when it can't be read, is of another version, machine or catalogue,
    /// or isn't as it was written.
    static std::shared_ptr<const StarPatterns> open(const std::filesystem::path& file,
                                                    std::uint32_t catalogId);

    /// Writes the file, completely or not at all. Throws PatternError.
    void save(const std::filesystem::path& file) const;

    std::span<const PatternStar> stars() const { return stars_; }
    std::size_t patternCount() const { return entries_.size(); }

    /// Stars per steradian where they stand closest.
    double highestDensity() const;

    sky::Vector3 directionOf(std::uint32_t star) const {
        const auto& at = stars_[star].at;
        return {static_cast<double>(at[0]), static_cast<double>(at[1]), static_cast<double>(at[2])};
    }

    /// A star not fainter than `faintestTenths` within the chord of the direction, or PatternStar::kNone.
    std::uint32_t starAt(const sky::Vector3& direction, double chord, int faintestTenths) const;

    /// Calls visit(Match, PatternShape) for each pattern whose shape differs by not more than `reach` in
    /// either number and whose size lies between the two; visit returns false to end it.
    template <typename Visit>
    void visitAlike(const PatternShape& shape, float reach, float smallest, float largest,
                    Visit&& visit) const {
        const int sizeFirst = sizeBin(smallest);
        const int sizeLast = sizeBin(largest);
        const int leadLast = shapeBin(shape.lead + reach);
        const int oppositeLast = shapeBin(shape.opposite + reach);
        std::vector<std::uint32_t> entries;
        for (int o = shapeBin(shape.opposite - reach); o <= oppositeLast; ++o) {
            for (int l = shapeBin(shape.lead - reach); l <= leadLast; ++l) {
                const std::size_t bin = binOf(o, l, 0);
                const auto first = entries_.begin() + starts_[bin + static_cast<std::size_t>(sizeFirst)];
                const auto last = entries_.begin() + starts_[bin + static_cast<std::size_t>(sizeLast) + 1];
                entries.insert(entries.end(), first, last);
            }
        }
        // Stars lie all over the memory, and waiting for them would take most of a search's time: those of
        // entries to come are asked for beforehand, first the star, then its neighbours.
        constexpr std::size_t kAhead = 12;
        for (std::size_t i = 0; i < entries.size(); ++i) {
            if (i + 2 * kAhead < entries.size()) __builtin_prefetch(&stars_[entries[i + 2 * kAhead] / 8]);
            if (i + kAhead < entries.size())
                for (const std::uint32_t neighbour : stars_[entries[i + kAhead] / 8].brighter)
                    if (neighbour != PatternStar::kNone) __builtin_prefetch(&stars_[neighbour]);
            const Match match = matchOf(entries[i]);
            const PatternShape there = shapeOf(stars_[match.star], stars_[match.near], stars_[match.far]);
            if (there.size < smallest || there.size > largest ||
                std::abs(there.opposite - shape.opposite) > reach ||
                std::abs(there.lead - shape.lead) > reach)
                continue;
            if (!visit(match, there)) return;
        }
    }

  private:
    friend class PatternBuilder;
    struct Tables {
        std::uint32_t starsPerCell = 0;
        std::vector<PatternStar> stars;
        std::vector<std::uint32_t> starts;   ///< of each bin in entries, and their end
        std::vector<std::uint32_t> entries;  ///< star * 8 + number of the pair of its neighbours
    };
    struct Header;

    static constexpr int kShapeBins = 192;  // of a side's share of the perimeter, up to a half
    static constexpr int kSizeBins = 56;    // a fifth of a doubling each: up to all that a field is wide
    static constexpr std::size_t kBins = std::size_t{kShapeBins} * kShapeBins * kSizeBins;
    static constexpr std::array<std::array<std::uint8_t, 2>, 6> kPairs{
        {{0, 1}, {0, 2}, {0, 3}, {1, 2}, {1, 3}, {2, 3}}};

    static int shapeBin(float share) {
        return std::clamp(static_cast<int>(share * 2 * kShapeBins), 0, kShapeBins - 1);
    }
    static int sizeBin(float size) {
        constexpr float kSmallest = 0.0012F;  // radians; a bin grows by the factor 2^(1/5)
        return size <= kSmallest ? 0
                                 : std::min(static_cast<int>(5 * std::log2(size / kSmallest)), kSizeBins - 1);
    }
    static std::size_t binOf(int opposite, int lead, int size) {
        return (static_cast<std::size_t>(opposite) * kShapeBins + static_cast<std::size_t>(lead)) *
                   kSizeBins +
               static_cast<std::size_t>(size);
    }

    explicit StarPatterns(Tables tables, std::uint32_t catalogId);
    StarPatterns(std::unique_ptr<platform::MappedFile> file, std::uint32_t catalogId);

    Match matchOf(std::uint32_t entry) const {
        const auto& pair = kPairs[entry % 8];
        const PatternStar& star = stars_[entry / 8];
        return {entry / 8, star.brighter[pair[0]], star.brighter[pair[1]]};
    }
    static float chordBetween(const PatternStar& a, const PatternStar& b) {
        const float x = a.at[0] - b.at[0];
        const float y = a.at[1] - b.at[1];
        const float z = a.at[2] - b.at[2];
        return std::sqrt(x * x + y * y + z * z);
    }
    static PatternShape shapeOf(const PatternStar& star, const PatternStar& near, const PatternStar& far) {
        return PatternShape::of(chordBetween(star, near), chordBetween(star, far), chordBetween(near, far));
    }

    Tables tables_;                               // of patterns made here
    std::unique_ptr<platform::MappedFile> file_;  // of patterns read from a file
    std::uint32_t catalogId_ = 0;
    std::uint32_t starsPerCell_ = 0;
    std::span<const PatternStar> stars_;
    std::span<const std::uint32_t> starts_;
    std::span<const std::uint32_t> entries_;
};

}  // namespace vantrel::solver

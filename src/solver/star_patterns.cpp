#include "solver/star_patterns.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <fstream>
#include <limits>
#include <numeric>
#include <optional>
#include <string>
#include <system_error>

#include "platform/durable_file.h"
#include "platform/own_program.h"

namespace vantrel::solver {

namespace {

using sky::kDegree;
using sky::StarCatalog;

constexpr std::uint32_t kVersion = 1;         // goes up with every change of what the tables hold
constexpr double kCellDeg = 0.5;              // of the cells that hold the same number of stars at most
constexpr float kClosestNeighbour = 0.0003F;  // radians: nearer ones melt into one star on many images
constexpr float kNarrowest = 0.05F;           // shortest side as share of the perimeter
constexpr std::size_t kLeaf = 8;              // ranges of so few stars are looked through one by one

/// A check sum that is as quick as reading (four lanes of multiply and rotate; not for secrets).
std::uint64_t quickSum(std::span<const std::byte> bytes) {
    constexpr std::size_t kLanes = 4;
    std::array<std::uint64_t, kLanes> sums{1, 2, 3, 4};
    const auto mix = [&](const std::byte* block) {
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            std::uint64_t word = 0;
            std::memcpy(&word, block + lane * sizeof word, sizeof word);
            sums[lane] = std::rotl((sums[lane] ^ word) * 0x9E3779B97F4A7C15U, 29);
        }
    };
    constexpr std::size_t kBlock = kLanes * sizeof(std::uint64_t);
    std::size_t at = 0;
    for (; at + kBlock <= bytes.size(); at += kBlock) mix(bytes.data() + at);
    std::array<std::byte, kBlock> rest{};
    std::copy(bytes.begin() + static_cast<std::ptrdiff_t>(at), bytes.end(), rest.begin());
    mix(rest.data());
    std::uint64_t sum = bytes.size();
    for (const std::uint64_t s : sums) sum = std::rotl((sum ^ s) * 0x9E3779B97F4A7C15U, 31);
    return sum;
}

/// Lets a cell of sky take only so many stars. Cells are half a degree high and about as wide.
class CellQuota {
  public:
    explicit CellQuota(std::uint32_t most) : most_(most) {
        for (int band = 0; band < kBands; ++band) {
            const double middle = (-90 + (band + 0.5) * kCellDeg) * kDegree;
            firstCell_.push_back(counts_.size());
            columns_.push_back(std::max<std::size_t>(
                1, static_cast<std::size_t>(std::lround(360 / kCellDeg * std::cos(middle)))));
            counts_.resize(counts_.size() + columns_.back());
        }
    }

    bool take(const sky::CatalogStar& star) {
        const auto band = static_cast<std::size_t>(
            std::clamp(static_cast<int>((star.decDeg + 90) / kCellDeg), 0, kBands - 1));
        const std::size_t columns = columns_[band];
        const auto column =
            std::min(static_cast<std::size_t>(std::max(0.0, star.raDeg) / 360 * static_cast<double>(columns)),
                     columns - 1);
        return ++counts_[firstCell_[band] + column] <= most_;
    }

  private:
    static constexpr int kBands = static_cast<int>(180 / kCellDeg);
    std::uint32_t most_;
    std::vector<std::size_t> firstCell_;
    std::vector<std::size_t> columns_;
    std::vector<std::uint32_t> counts_;
};

}  // namespace

struct StarPatterns::Header {
    std::array<char, 8> magic{'V', 'T', 'L', 'P', 'A', 'T', 'T', '1'};
    std::uint32_t byteOrder = 0x01020304;
    std::uint32_t version = kVersion;
    std::uint32_t catalogId = 0;
    std::uint32_t starCount = 0;
    std::uint32_t entryCount = 0;
    std::uint32_t binCount = kBins;
    std::uint32_t starsPerCell = 0;
    std::uint32_t unused = 0;
    std::uint64_t sum = 0;

    std::uint64_t fileSize() const {
        return sizeof(Header) + std::uint64_t{starCount} * sizeof(PatternStar) +
               (std::uint64_t{binCount} + 1 + entryCount) * sizeof(std::uint32_t);
    }
};

/// Makes the tables.
class PatternBuilder {
  public:
    PatternBuilder(const StarCatalog& catalog, std::uint32_t starsPerCell) {
        tables_.starsPerCell = starsPerCell;
        select(catalog, starsPerCell);
        if (!ranked_.empty()) divide(0, ranked_.size());
        publishStars();
        if (!ranked_.empty()) brightestIn(0, ranked_.size());
        for (std::uint32_t i = 0; i < ranked_.size(); ++i) tables_.stars[i].brighter = brighterNear(i);
        fillBins();
    }

    StarPatterns::Tables take() { return std::move(tables_); }

  private:
    struct RankedStar {
        std::array<float, 3> at{};
        std::uint32_t rank = 0;  ///< by brightness, 0 first
        std::uint8_t tenths = 0;
        std::uint8_t axis = 0;
    };

    void select(const StarCatalog& catalog, std::uint32_t starsPerCell) {
        constexpr double kEpoch = 2020;  // fast stars are few, a decade hardly moves the others
        CellQuota quota(starsPerCell);
        for (const sky::CatalogStar& star :
             catalog.cone({.decDeg = 90, .radiusDeg = 180, .epochYear = kEpoch, .brightestFirst = true})) {
            if (!quota.take(star)) continue;
            const sky::Vector3 v = sky::direction(star.raDeg * kDegree, star.decDeg * kDegree);
            ranked_.push_back({{static_cast<float>(v[0]), static_cast<float>(v[1]), static_cast<float>(v[2])},
                               static_cast<std::uint32_t>(ranked_.size()),
                               static_cast<std::uint8_t>(std::clamp(10 * (star.magnitude + 3), 0.0, 255.0))});
        }
    }

    std::uint8_t widestAxis(std::size_t first, std::size_t last) const {
        std::array<float, 3> low = ranked_[first].at;
        std::array<float, 3> high = low;
        for (std::size_t i = first; i < last; ++i) {
            for (std::size_t k = 0; k < 3; ++k) {
                low[k] = std::min(low[k], ranked_[i].at[k]);
                high[k] = std::max(high[k], ranked_[i].at[k]);
            }
        }
        std::size_t widest = 0;
        for (std::size_t k = 1; k < 3; ++k) {
            if (high[k] - low[k] > high[widest] - low[widest]) widest = k;
        }
        return static_cast<std::uint8_t>(widest);
    }

    void divide(std::size_t first, std::size_t last) {
        if (last - first <= 1) return;
        const std::size_t axis = widestAxis(first, last);
        const std::size_t middle = (first + last) / 2;
        const auto at = [&](std::size_t i) { return ranked_.begin() + static_cast<std::ptrdiff_t>(i); };
        std::nth_element(at(first), at(middle), at(last), [axis](const RankedStar& a, const RankedStar& b) {
            return a.at[axis] < b.at[axis] || (a.at[axis] == b.at[axis] && a.rank < b.rank);
        });
        ranked_[middle].axis = static_cast<std::uint8_t>(axis);
        divide(first, middle);
        divide(middle + 1, last);
    }

    void publishStars() {
        tables_.stars.reserve(ranked_.size());
        for (const RankedStar& star : ranked_) {
            PatternStar published;
            published.at = star.at;
            published.tenths = star.tenths;
            published.axis = star.axis;
            tables_.stars.push_back(published);
        }
    }

    std::uint32_t brightestIn(std::size_t first, std::size_t last) {
        if (brightest_.empty()) brightest_.resize(ranked_.size());
        if (first >= last) return PatternStar::kNone;
        const std::size_t middle = (first + last) / 2;
        return brightest_[middle] = std::min(
                   {ranked_[middle].rank, brightestIn(first, middle), brightestIn(middle + 1, last)});
    }

    /// The nearest so far of a star's brighter neighbours.
    struct Nearest {
        std::array<std::uint32_t, PatternStar::kNeighbours> stars;
        std::array<float, PatternStar::kNeighbours> squares;

        Nearest() {
            stars.fill(PatternStar::kNone);
            squares.fill(std::numeric_limits<float>::max());
        }
        void offer(std::uint32_t star, float square) {
            if (square >= squares.back()) return;
            std::size_t place = squares.size() - 1;
            for (; place > 0 && squares[place - 1] > square; --place) {
                squares[place] = squares[place - 1];
                stars[place] = stars[place - 1];
            }
            squares[place] = square;
            stars[place] = star;
        }
    };

    std::array<std::uint32_t, PatternStar::kNeighbours> brighterNear(std::uint32_t star) const {
        Nearest nearest;
        lookFor(ranked_[star], 0, ranked_.size(), nearest);
        return nearest.stars;
    }

    void lookFor(const RankedStar& star, std::size_t first, std::size_t last, Nearest& nearest) const {
        if (first >= last) return;
        const std::size_t middle = (first + last) / 2;
        if (brightest_[middle] >= star.rank) return;
        const RankedStar& other = ranked_[middle];
        std::array<float, 3> apart{};
        for (std::size_t k = 0; k < 3; ++k) apart[k] = star.at[k] - other.at[k];
        const float square = apart[0] * apart[0] + apart[1] * apart[1] + apart[2] * apart[2];
        if (other.rank < star.rank && square > kClosestNeighbour * kClosestNeighbour)
            nearest.offer(static_cast<std::uint32_t>(middle), square);
        const float plane = apart[other.axis];
        const bool below = plane < 0;
        lookFor(star, below ? first : middle + 1, below ? middle : last, nearest);
        if (plane * plane < nearest.squares.back())
            lookFor(star, below ? middle + 1 : first, below ? last : middle, nearest);
    }

    void fillBins() {
        std::vector<std::uint32_t> bins;
        std::vector<std::uint32_t> entries;
        tables_.starts.assign(StarPatterns::kBins + 1, 0);
        for (std::uint32_t star = 0; star < tables_.stars.size(); ++star) {
            for (std::uint32_t pair = 0; pair < StarPatterns::kPairs.size(); ++pair) {
                const auto bin = binOf(star, StarPatterns::kPairs[pair]);
                if (!bin) continue;
                bins.push_back(*bin);
                entries.push_back(star * 8 + pair);
                ++tables_.starts[*bin + 1];
            }
        }
        std::partial_sum(tables_.starts.begin(), tables_.starts.end(), tables_.starts.begin());
        std::vector<std::uint32_t> next = tables_.starts;
        tables_.entries.resize(entries.size());
        for (std::size_t i = 0; i < entries.size(); ++i) tables_.entries[next[bins[i]]++] = entries[i];
    }

    std::optional<std::uint32_t> binOf(std::uint32_t star, std::array<std::uint8_t, 2> pair) const {
        const std::uint32_t near = tables_.stars[star].brighter[pair[0]];
        const std::uint32_t far = tables_.stars[star].brighter[pair[1]];
        if (near == PatternStar::kNone || far == PatternStar::kNone) return std::nullopt;
        const auto shape =
            StarPatterns::shapeOf(tables_.stars[star], tables_.stars[near], tables_.stars[far]);
        if (shape.narrowest() < kNarrowest) return std::nullopt;
        return static_cast<std::uint32_t>(StarPatterns::binOf(StarPatterns::shapeBin(shape.opposite),
                                                              StarPatterns::shapeBin(shape.lead),
                                                              StarPatterns::sizeBin(shape.size)));
    }

    std::vector<RankedStar> ranked_;        ///< by brightness first, then in the order of the tree
    std::vector<std::uint32_t> brightest_;  ///< rank of the brightest in each range, at its middle star
    StarPatterns::Tables tables_;
};

std::shared_ptr<const StarPatterns> StarPatterns::build(const StarCatalog& catalog, std::uint32_t catalogId,
                                                        std::uint32_t starsPerCell) {
    PatternBuilder builder(catalog, starsPerCell);
    return std::shared_ptr<const StarPatterns>(new StarPatterns(builder.take(), catalogId));
}

std::shared_ptr<const StarPatterns> StarPatterns::open(const std::filesystem::path& file,
                                                       std::uint32_t catalogId) {
    try {
        return std::shared_ptr<const StarPatterns>(
            new StarPatterns(std::make_unique<platform::MappedFile>(file, true), catalogId));
    } catch (const std::system_error& e) {
        throw PatternError(file.string() + " can't be read: " + e.code().message());
    } catch (const PatternError& e) {
        throw PatternError(file.string() + " " + e.what());
    }
}

StarPatterns::StarPatterns(Tables tables, std::uint32_t catalogId)
    : tables_(std::move(tables)),
      catalogId_(catalogId),
      starsPerCell_(tables_.starsPerCell),
      stars_(tables_.stars),
      starts_(tables_.starts),
      entries_(tables_.entries) {}

StarPatterns::StarPatterns(std::unique_ptr<platform::MappedFile> file, std::uint32_t catalogId)
    : file_(std::move(file)), catalogId_(catalogId) {
    const auto bytes = file_->bytes();
    Header header;
    const Header fresh;
    if (bytes.size() < sizeof header) throw PatternError("holds no star patterns");
    std::memcpy(&header, bytes.data(), sizeof header);
    if (header.magic != fresh.magic) throw PatternError("holds no star patterns");
    if (header.byteOrder != fresh.byteOrder || header.version != kVersion || header.binCount != kBins)
        throw PatternError("holds star patterns of another version or machine");
    if (header.catalogId != catalogId) throw PatternError("belongs to another star catalogue");
    if (header.fileSize() != bytes.size()) throw PatternError("is damaged: it has the wrong size");
    if (header.sum != quickSum(bytes.subspan(sizeof header)))
        throw PatternError("is damaged: its check sum is wrong");
    starsPerCell_ = header.starsPerCell;
    const std::byte* at = bytes.data() + sizeof header;
    stars_ = {reinterpret_cast<const PatternStar*>(at), header.starCount};
    starts_ = {reinterpret_cast<const std::uint32_t*>(at + stars_.size_bytes()), kBins + 1};
    entries_ = {starts_.data() + starts_.size(), header.entryCount};
}

void StarPatterns::save(const std::filesystem::path& file) const {
    std::vector<std::byte> body;
    Header header;
    header.catalogId = catalogId_;
    header.starsPerCell = starsPerCell_;
    header.starCount = static_cast<std::uint32_t>(stars_.size());
    header.entryCount = static_cast<std::uint32_t>(entries_.size());
    body.reserve(header.fileSize());
    for (const auto& part : {std::as_bytes(stars_), std::as_bytes(starts_), std::as_bytes(entries_)})
        body.insert(body.end(), part.begin(), part.end());
    header.sum = quickSum(body);

    std::error_code failed;
    auto passing = file;
    passing += "." + std::to_string(platform::processNumber());
    {
        std::ofstream stream(passing, std::ios::binary);
        stream.write(reinterpret_cast<const char*>(&header), sizeof header);
        stream.write(reinterpret_cast<const char*>(body.data()), static_cast<std::streamsize>(body.size()));
        stream.close();
        if (!stream) failed = std::make_error_code(std::errc::io_error);
    }
    if (!failed) platform::takePlace(passing, file, failed);
    if (failed) {
        std::error_code ignored;
        std::filesystem::remove(passing, ignored);
        throw PatternError(file.string() + " can't be written");
    }
}

double StarPatterns::highestDensity() const {
    return starsPerCell_ / (kCellDeg * kDegree * kCellDeg * kDegree);
}

std::uint32_t StarPatterns::starAt(const sky::Vector3& direction, double chord, int faintestTenths) const {
    const std::array<float, 3> wanted{static_cast<float>(direction[0]), static_cast<float>(direction[1]),
                                      static_cast<float>(direction[2])};
    const auto reach = static_cast<float>(chord);
    const auto fits = [&](const PatternStar& star) {
        const float x = star.at[0] - wanted[0];
        const float y = star.at[1] - wanted[1];
        const float z = star.at[2] - wanted[2];
        return star.tenths <= faintestTenths && x * x + y * y + z * z <= reach * reach;
    };
    struct Range {
        std::size_t first, last;
    };
    std::array<Range, 64> open;  // a balanced tree of 2^32 stars is half as deep
    std::size_t count = 0;
    open[count++] = {0, stars_.size()};
    while (count > 0) {
        const Range range = open[--count];
        if (range.last - range.first <= kLeaf) {
            for (std::size_t i = range.first; i < range.last; ++i) {
                if (fits(stars_[i])) return static_cast<std::uint32_t>(i);
            }
            continue;
        }
        const std::size_t middle = (range.first + range.last) / 2;
        const PatternStar& star = stars_[middle];
        if (fits(star)) return static_cast<std::uint32_t>(middle);
        const float plane = wanted[star.axis] - star.at[star.axis];
        if (plane >= -reach) open[count++] = {middle + 1, range.last};
        if (plane <= reach) open[count++] = {range.first, middle};
    }
    return PatternStar::kNone;
}

}  // namespace vantrel::solver

#include "sky/compact_catalog.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <system_error>

#include "platform/own_program.h"
#include "sky/cone.h"

namespace vantrel::sky {

namespace {

constexpr std::size_t kRecordBytes = 4;
constexpr double kOffsetSteps = 4096;
constexpr int kFaintestStep = 255;
constexpr unsigned char kLongGap = 255;  ///< more of the gap follows
constexpr std::size_t kGapsInBlock = 64;

template <typename T>
T littleEndian(const unsigned char* at) {
    T value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

platform::MappedFile openFile(const std::filesystem::path& path) {
    try {
        return platform::MappedFile(path);
    } catch (const std::system_error& e) {
        throw CatalogError("star catalogue " + path.string() + " can't be read: " + e.code().message());
    }
}

std::vector<std::filesystem::path> builtInPlaces() {
    std::vector<std::filesystem::path> places;
    const auto program = platform::ownProgram();
    if (!program.empty()) places.push_back(program.parent_path().parent_path() / "share" / "vantrel");
    places.emplace_back("/usr/share/vantrel");
#ifdef VANTREL_SOURCE_DATA
    places.emplace_back(VANTREL_SOURCE_DATA);
#endif
    return places;
}

}  // namespace

std::uint32_t crc32(std::span<const std::byte> bytes) {
    static const auto table = [] {
        std::array<std::uint32_t, 256> t{};
        for (std::uint32_t i = 0; i < 256; ++i) {
            std::uint32_t c = i;
            for (int bit = 0; bit < 8; ++bit) c = (c >> 1) ^ ((c & 1U) != 0 ? 0xEDB88320U : 0U);
            t[i] = c;
        }
        return t;
    }();
    std::uint32_t crc = 0xFFFFFFFFU;
    for (const std::byte b : bytes) crc = table[(crc ^ static_cast<std::uint32_t>(b)) & 0xFFU] ^ (crc >> 8);
    return crc ^ 0xFFFFFFFFU;
}

CompactCatalog::CompactCatalog(const std::filesystem::path& file) : path_(file), file_(openFile(file)) {
    readHeader();
    readTables();
}

std::shared_ptr<const CompactCatalog> CompactCatalog::openBuiltIn() {
    std::string tried;
    for (const auto& place : builtInPlaces()) {
        std::error_code ignored;
        if (std::filesystem::exists(place / kTychoFileName, ignored)) {
            return std::make_shared<const CompactCatalog>(place / kTychoFileName);
        }
        tried += (tried.empty() ? "" : ", ") + place.string();
    }
    throw CatalogError(std::string("the star catalogue ") + kTychoFileName + " is in none of " + tried);
}

void CompactCatalog::readHeader() {
    const auto bytes = file_.bytes();
    const auto* head = reinterpret_cast<const unsigned char*>(bytes.data());
    if (bytes.size() < kCompactHeaderBytes ||
        std::memcmp(head, kCompactMagic.data(), kCompactMagic.size()) != 0 ||
        littleEndian<std::uint32_t>(head + 8) != 1) {
        throw CatalogError(path_.string() + " is not a compact star catalogue");
    }
    starCount_ = littleEndian<std::uint32_t>(head + 12);
    cellCount_ = littleEndian<std::uint32_t>(head + 16);
    bandCount_ = littleEndian<std::uint32_t>(head + 20);
    bandHeightDeg_ = littleEndian<double>(head + 24);
    epochYear_ = littleEndian<double>(head + 32);
    magnitudeZero_ = static_cast<double>(littleEndian<float>(head + 40));
    magnitudeStep_ = static_cast<double>(littleEndian<float>(head + 44));
    motionCount_ = littleEndian<std::uint32_t>(head + 48);
    gapBytes_ = littleEndian<std::uint32_t>(head + 52);
    checksum_ = littleEndian<std::uint32_t>(head + 60);
    const std::uint64_t size = kCompactHeaderBytes + 2ULL * bandCount_ + cellCount_ +
                               kRecordBytes * std::uint64_t{starCount_} + gapBytes_ + 4ULL * motionCount_;
    const bool sound = littleEndian<std::uint32_t>(head + 56) == 12 && bandCount_ > 0 &&
                       std::abs(bandHeightDeg_ * bandCount_ - 180) < 1e-9 && epochYear_ > 1900 &&
                       epochYear_ < 2200 && magnitudeStep_ > 0 && magnitudeStep_ < 10 &&
                       std::isfinite(magnitudeZero_) && size == bytes.size();
    if (!sound) throw CatalogError(path_.string() + " is damaged: its header and its size disagree");
}

void CompactCatalog::readTables() {
    const auto* at = reinterpret_cast<const unsigned char*>(file_.bytes().data()) + kCompactHeaderBytes;
    const unsigned char* bandSizes = at;
    cellSizes_ = bandSizes + 2ULL * bandCount_;
    records_ = cellSizes_ + cellCount_;
    gaps_ = records_ + kRecordBytes * std::size_t{starCount_};
    motions_ = gaps_ + gapBytes_;

    std::uint64_t cells = 0;
    std::uint64_t stars = 0;
    for (std::uint32_t b = 0; b < bandCount_; ++b) {
        Band band{littleEndian<std::uint16_t>(bandSizes + 2ULL * b), static_cast<std::uint32_t>(cells),
                  static_cast<std::uint32_t>(stars)};
        cells += band.cells;
        if (band.cells == 0 || cells > cellCount_) break;
        for (std::uint32_t c = 0; c < band.cells; ++c) stars += cellSizes_[band.firstCell + c];
        bands_.push_back(band);
    }
    std::uint64_t steps = 0;
    std::uint32_t moving = 0;
    for (std::uint32_t first = 0; first < gapBytes_; first += kGapsInBlock) {
        gapBlocks_.push_back({static_cast<std::uint32_t>(steps), moving});
        for (const unsigned char gap : gapsOf(gapBlocks_.size() - 1)) {
            steps += gap;
            moving += gap != kLongGap ? 1 : 0;
        }
    }
    if (bands_.size() != bandCount_ || cells != cellCount_ || stars != starCount_ || moving != motionCount_ ||
        steps > starCount_) {
        throw CatalogError(path_.string() + " is damaged: its tables disagree");
    }
}

bool CompactCatalog::verify() const { return crc32(file_.bytes().subspan(kCompactHeaderBytes)) == checksum_; }

std::span<const unsigned char> CompactCatalog::gapsOf(std::size_t block) const {
    const std::size_t first = block * kGapsInBlock;
    return {gaps_ + first, std::min(kGapsInBlock, gapBytes_ - first)};
}

std::optional<std::uint32_t> CompactCatalog::motionOf(std::uint32_t star) const {
    const std::uint32_t wanted = star + 1;
    const auto next = std::partition_point(gapBlocks_.begin(), gapBlocks_.end(),
                                           [&](const GapBlock& block) { return block.steps < wanted; });
    if (next == gapBlocks_.begin()) return std::nullopt;
    auto [steps, moving] = *(next - 1);
    for (const unsigned char gap : gapsOf(static_cast<std::size_t>(next - 1 - gapBlocks_.begin()))) {
        steps += gap;
        if (gap == kLongGap) continue;
        if (steps >= wanted) return steps == wanted ? std::optional(moving) : std::nullopt;
        ++moving;
    }
    return std::nullopt;
}

CatalogStar CompactCatalog::star(std::uint32_t index, std::uint32_t band, std::uint32_t cell,
                                 double epoch) const {
    const auto word = littleEndian<std::uint32_t>(records_ + kRecordBytes * std::size_t{index});
    const double x = (word & 0xFFFU) + 0.5;
    const double y = ((word >> 12) & 0xFFFU) + 0.5;
    MovingStar s{(cell + x / kOffsetSteps) / bands_[band].cells * 360.0,
                 -90.0 + bandHeightDeg_ * (band + y / kOffsetSteps),
                 magnitudeZero_ + magnitudeStep_ * (word >> 24)};
    if (const auto motion = motionOf(index)) {
        const unsigned char* entry = motions_ + 4 * std::size_t{*motion};
        s.motionRaMas = littleEndian<std::int16_t>(entry);
        s.motionDecMas = littleEndian<std::int16_t>(entry + 2);
        s = carried(s, epoch - epochYear_);
    }
    return {s.raDeg, s.decDeg, s.magnitude, static_cast<float>(s.motionRaMas),
            static_cast<float>(s.motionDecMas)};
}

/// Calls visit(band, cell, first star, stars) for every cell that the circle may touch.
template <typename Visit>
void CompactCatalog::visitCells(const ConeQuery& query, Visit&& visit) const {
    const double radius =
        query.radiusDeg + kFastestDegPerYear * std::abs(query.epochYear - epochYear_) + 1e-6;
    const double reach = raReachDeg(query.decDeg, radius);
    const double ra = wrappedDeg(query.raDeg);
    const auto bandOf = [&](double dec) {
        return static_cast<std::uint32_t>(
            std::clamp((dec + 90) / bandHeightDeg_, 0.0, static_cast<double>(bandCount_ - 1)));
    };
    const std::uint32_t lastBand = bandOf(query.decDeg + radius);
    for (std::uint32_t b = bandOf(query.decDeg - radius); b <= lastBand; ++b) {
        const Band& band = bands_[b];
        const double cellsPerDeg = band.cells / 360.0;
        const auto first = static_cast<std::int64_t>(std::floor((ra - reach) * cellsPerDeg));
        auto last = static_cast<std::int64_t>(std::floor((ra + reach) * cellsPerDeg));
        last = std::min(last, first + std::int64_t{band.cells} - 1);
        const auto wanted = [&](std::int64_t c) {
            const std::int64_t n = band.cells;
            return ((c - first) % n + n) % n <= last - first;
        };
        std::uint32_t index = band.firstStar;
        for (std::uint32_t c = 0; c < band.cells; ++c) {
            const std::uint32_t size = cellSizes_[band.firstCell + c];
            if (wanted(c)) visit(b, c, index, size);
            index += size;
        }
    }
}

/// The faintest magnitude step wanted when the query's own limit alone counts.
int CompactCatalog::faintestStep(const ConeQuery& query) const {
    const double step = std::floor((query.faintestMagnitude - magnitudeZero_) / magnitudeStep_ + 1e-9);
    return static_cast<int>(std::clamp(step, -1.0, static_cast<double>(kFaintestStep)));
}

/// The magnitude step at which the cells around the circle hold at least `wanted` stars.
int CompactCatalog::faintestStepFor(const ConeQuery& query, std::size_t wanted, int limit) const {
    std::array<std::size_t, kFaintestStep + 1> histogram{};
    visitCells(query, [&](std::uint32_t, std::uint32_t, std::uint32_t first, std::uint32_t size) {
        for (std::uint32_t i = 0; i < size; ++i)
            ++histogram[records_[kRecordBytes * std::size_t{first + i} + 3]];
    });
    const double brightest = (query.brightestMagnitude - magnitudeZero_) / magnitudeStep_;
    std::size_t sum = 0;
    for (int step = 0; step < limit; ++step) {
        if (step >= brightest) sum += histogram[static_cast<std::size_t>(step)];
        if (sum >= wanted) return step;
    }
    return limit;
}

void CompactCatalog::collect(const ConeQuery& query, int faintest, std::vector<CatalogStar>& stars) const {
    const SkyCircle circle(query);
    visitCells(query, [&](std::uint32_t band, std::uint32_t cell, std::uint32_t first, std::uint32_t size) {
        for (std::uint32_t i = first; i < first + size; ++i) {
            if (records_[kRecordBytes * std::size_t{i} + 3] > faintest)
                break;  // brightest first within a cell
            const CatalogStar s = star(i, band, cell, query.epochYear);
            if (s.magnitude < query.brightestMagnitude) continue;
            if (circle.holds(s.raDeg, s.decDeg)) stars.push_back(s);
        }
    });
}

std::vector<CatalogStar> CompactCatalog::cone(const ConeQuery& query) const {
    std::vector<CatalogStar> stars;
    if (!isSearchable(query)) return stars;
    const int limit = faintestStep(query);
    if (query.maxStars == 0) {
        collect(query, limit, stars);
    } else {
        // The cells reach beyond the circle, so the first limit may be too bright: go fainter until it isn't.
        std::size_t wanted = query.maxStars + query.maxStars / 2;
        for (;;) {
            const int step = faintestStepFor(query, wanted, limit);
            stars.clear();
            collect(query, step, stars);
            if (stars.size() >= query.maxStars || step >= limit) break;
            wanted *= 2;
        }
    }
    arrange(stars, query);
    return stars;
}

}  // namespace vantrel::sky

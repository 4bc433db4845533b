#include "sky/tycho_distribution.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <optional>
#include <string>

#include "sky/star_catalog.h"
#include "sky/tycho_catalog.h"
#include "sky/tycho_lines.h"
#include "sky/vector3.h"

namespace vantrel::sky {

namespace {

namespace fs = std::filesystem;

template <typename Take>
void eachLine(const fs::path& file, Take&& take) {
    std::ifstream in(file, std::ios::binary);
    if (!in) throw CatalogError(file.string() + " can't be read");
    std::string text;
    for (std::size_t number = 1; std::getline(in, text); ++number) {
        if (!text.empty() && text.back() == '\r') text.pop_back();
        if (!text.empty()) take(TychoLine{text, file, number});
    }
}

std::vector<fs::path> mainFiles(const fs::path& folder) {
    std::vector<fs::path> files;
    for (const fs::path& place : {folder, folder / "data"}) {
        for (const char* name : {"catalog.dat", "tyc2.dat"}) {
            if (fs::is_regular_file(place / name)) return {place / name};
        }
        for (int part = 0; part < 20; ++part) {
            const std::string number = std::to_string(part);
            const fs::path file = place / ("tyc2.dat." + std::string(2 - number.size(), '0') + number);
            if (fs::is_regular_file(file)) files.push_back(file);
        }
        if (!files.empty()) return files;
    }
    throw CatalogError("no Tycho-2 distribution (catalog.dat, tyc2.dat or tyc2.dat.00, unpacked) is in " +
                       folder.string());
}

}  // namespace

std::vector<MovingStar> readTychoDistribution(const fs::path& folder, double epochYear) {
    std::vector<TychoEntry> entries;
    const auto take = [&](const std::optional<TychoEntry>& entry) {
        if (entry) entries.push_back(*entry);
    };
    for (const fs::path& file : mainFiles(folder))
        eachLine(file, [&](const TychoLine& line) { take(tychoMainEntry(line, epochYear)); });
    for (const fs::path& place : {folder, folder / "data"}) {
        if (!fs::is_regular_file(place / "suppl_1.dat")) continue;
        eachLine(place / "suppl_1.dat",
                 [&](const TychoLine& line) { take(tychoSupplementEntry(line, epochYear)); });
        break;
    }
    return mergedPhotocentres(entries);
}

namespace {

constexpr std::uint32_t kBands = 360;
constexpr double kBandHeight = 180.0 / kBands;
constexpr double kMagnitudeZero = -2;
constexpr double kMagnitudeStep = 0.0625;
constexpr double kTabledMotionMas = 50;
constexpr std::uint32_t kSteps = 4096;

std::uint32_t cellsIn(std::uint32_t band) {
    const double low = -90 + kBandHeight * band;
    const double nearest = low >= 0 ? low : std::min(0.0, low + kBandHeight);
    return static_cast<std::uint32_t>(std::ceil(360 / kBandHeight * std::cos(nearest * kDegree) - 1e-9));
}

template <typename T>
void put(std::string& out, T value) {
    char bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    out.append(bytes, sizeof value);
}

struct Placed {
    std::uint32_t cell = 0;  ///< counted over all bands
    std::uint32_t word = 0;  ///< the record
    std::int16_t motionRa = 0;
    std::int16_t motionDec = 0;
    bool moves = false;
};

std::int16_t motionOf(double mas) {
    return static_cast<std::int16_t>(std::lround(std::clamp(mas, -32767.0, 32767.0)));
}

Placed placed(const MovingStar& star, const std::vector<std::uint32_t>& firstCells) {
    const auto part = [](double value, std::uint32_t count) {
        const auto whole = static_cast<std::uint32_t>(std::clamp(value, 0.0, count - 1e-9));
        const auto step = static_cast<std::uint32_t>(std::clamp((value - whole) * kSteps, 0.0, kSteps - 1.0));
        return std::pair(whole, step);
    };
    const auto [band, y] = part((star.decDeg + 90) / kBandHeight, kBands);
    const std::uint32_t cells = cellsIn(band);
    const auto [cell, x] = part(star.raDeg / 360 * cells, cells);
    const double step =
        std::clamp(std::round((star.magnitude - kMagnitudeZero) / kMagnitudeStep), 0.0, 255.0);
    Placed result{firstCells[band] + cell, x | (y << 12U) | (static_cast<std::uint32_t>(step) << 24U),
                  motionOf(star.motionRaMas), motionOf(star.motionDecMas)};
    result.moves = std::hypot(star.motionRaMas, star.motionDecMas) >= kTabledMotionMas;
    return result;
}

/// Gaps between the indices of the stars that move; 255 stands for "255 more and go on".
std::string gapCode(const std::vector<Placed>& stars) {
    std::string code;
    std::int64_t last = -1;
    for (std::size_t i = 0; i < stars.size(); ++i) {
        if (!stars[i].moves) continue;
        std::int64_t gap = static_cast<std::int64_t>(i) - last;
        last = static_cast<std::int64_t>(i);
        for (; gap >= 255; gap -= 255) code += static_cast<char>(255);
        code += static_cast<char>(gap);
    }
    return code;
}

}  // namespace

void writeTychoCatalog(const fs::path& file, const std::vector<MovingStar>& stars, double epochYear) {
    std::vector<std::uint32_t> firstCells;
    std::uint32_t cells = 0;
    std::string body;
    for (std::uint32_t band = 0; band < kBands; ++band) {
        firstCells.push_back(cells);
        cells += cellsIn(band);
        put(body, static_cast<std::uint16_t>(cellsIn(band)));
    }
    std::vector<Placed> all;
    all.reserve(stars.size());
    for (const MovingStar& star : stars) all.push_back(placed(star, firstCells));
    std::stable_sort(all.begin(), all.end(), [](const Placed& a, const Placed& b) {
        return a.cell != b.cell ? a.cell < b.cell : (a.word >> 24U) < (b.word >> 24U);
    });
    std::vector<std::uint32_t> sizes(cells);
    for (const Placed& star : all) ++sizes[star.cell];
    if (std::any_of(sizes.begin(), sizes.end(), [](std::uint32_t size) { return size > 255; })) {
        throw CatalogError(
            "a cell of sky holds more than 255 stars, which the compact catalogue has no room for");
    }
    for (const std::uint32_t size : sizes) put(body, static_cast<std::uint8_t>(size));
    for (const Placed& star : all) put(body, star.word);
    const std::string gaps = gapCode(all);
    body += gaps;
    std::uint32_t moving = 0;
    for (const Placed& star : all) {
        if (!star.moves) continue;
        put(body, star.motionRa);
        put(body, star.motionDec);
        ++moving;
    }
    std::string head = "TYC2CMP1";
    for (const std::uint32_t value :
         {std::uint32_t{1}, static_cast<std::uint32_t>(all.size()), cells, kBands})
        put(head, value);
    put(head, kBandHeight);
    put(head, epochYear);
    put(head, static_cast<float>(kMagnitudeZero));
    put(head, static_cast<float>(kMagnitudeStep));
    for (const std::uint32_t value : {moving, static_cast<std::uint32_t>(gaps.size()), std::uint32_t{12},
                                      crc32(std::as_bytes(std::span(body)))}) {
        put(head, value);
    }
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << head << body;
    out.close();
    if (!out) throw CatalogError(file.string() + " can't be written");
}

}  // namespace vantrel::sky

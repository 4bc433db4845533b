#include "observatory/sky/tycho_distribution.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "observatory/sky/star_catalog.h"
#include "observatory/sky/tycho_catalog.h"
#include "observatory/sky/vector3.h"

namespace vantrel::observatory {

namespace {

namespace fs = std::filesystem;

constexpr double kMasToDeg = 1 / 3.6e6;

/// Columns of a line, counted from 1 as in the catalogue's description.
class Line {
  public:
    Line(std::string_view text, const fs::path& file, std::size_t number)
        : text_(text), file_(file), number_(number) {
        if (!text_.empty() && text_.back() == '\r') text_.remove_suffix(1);
    }

    char flag(std::size_t column) const { return column <= text_.size() ? text_[column - 1] : ' '; }

    std::optional<double> number(std::size_t first, std::size_t last) const {
        if (first > text_.size()) return std::nullopt;
        std::string_view field = text_.substr(first - 1, last - first + 1);
        while (!field.empty() && field.front() == ' ') field.remove_prefix(1);
        while (!field.empty() && field.back() == ' ') field.remove_suffix(1);
        if (!field.empty() && field.front() == '+') field.remove_prefix(1);
        if (field.empty()) return std::nullopt;
        double value = 0;
        const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), value);
        if (error != std::errc() || end != field.data() + field.size()) fail();
        return value;
    }

    double required(std::size_t first, std::size_t last) const {
        const auto value = number(first, last);
        if (!value) fail();
        return *value;
    }

  private:
    [[noreturn]] void fail() const {
        throw CatalogError(file_.string() + ": line " + std::to_string(number_) + " is not one of Tycho-2");
    }

    std::string_view text_;
    const fs::path& file_;
    std::size_t number_;
};

/// V from Tycho's B_T and V_T (ESA SP-1200, vol. 1, section 1.3: V = V_T - 0.090 (B_T - V_T)); one of the two
/// alone stands for V.
std::optional<double> johnsonV(std::optional<double> bt, std::optional<double> vt) {
    if (bt && vt) return *vt - 0.090 * (*bt - *vt);
    return vt ? vt : bt;
}

void carry(TychoStar& star, double years) {
    star.raDeg += star.motionRaMas * years * kMasToDeg / std::max(1e-6, std::cos(star.decDeg * kDegree));
    star.decDeg = std::clamp(star.decDeg + star.motionDecMas * years * kMasToDeg, -90.0, 90.0);
    star.raDeg = std::fmod(std::fmod(star.raDeg, 360.0) + 360.0, 360.0);
}

struct MainLine {
    TychoStar star;
    bool photocentre = false;
};

std::optional<MainLine> mainLine(const Line& line, double epoch) {
    const auto magnitude = johnsonV(line.number(111, 116), line.number(124, 129));
    if (!magnitude) return std::nullopt;
    MainLine result;
    result.photocentre = line.flag(14) == 'P';
    TychoStar& star = result.star;
    star.magnitude = *magnitude;
    if (line.flag(14) == 'X') {
        star.raDeg = line.required(153, 164);
        star.decDeg = line.required(166, 177);
        return result;
    }
    star.raDeg = line.required(16, 27);
    star.decDeg = line.required(29, 40);
    star.motionRaMas = line.number(42, 48).value_or(0);
    star.motionDecMas = line.number(50, 56).value_or(0);
    carry(star, epoch - 2000);
    return result;
}

std::optional<TychoStar> supplementLine(const Line& line, double epoch) {
    const auto bt = line.number(84, 89);
    const auto vt = line.number(97, 102);
    const auto magnitude = line.flag(82) == 'H' ? vt : johnsonV(bt, vt);
    if (!magnitude) return std::nullopt;
    TychoStar star{line.required(16, 27), line.required(29, 40), *magnitude, line.number(42, 48).value_or(0),
                   line.number(50, 56).value_or(0)};
    carry(star, epoch - 1991.25);
    return star;
}

template <typename Take>
void eachLine(const fs::path& file, Take&& take) {
    std::ifstream in(file, std::ios::binary);
    if (!in) throw CatalogError(file.string() + " can't be read");
    std::string text;
    for (std::size_t number = 1; std::getline(in, text); ++number) {
        if (!text.empty() && text != "\r") take(Line(text, file, number));
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

double combinedMagnitude(double a, double b) {
    return -2.5 * std::log10(std::pow(10, -0.4 * a) + std::pow(10, -0.4 * b));
}

}  // namespace

std::vector<TychoStar> readTychoDistribution(const fs::path& folder, double epochYear) {
    std::vector<TychoStar> stars;
    std::map<std::pair<double, double>, std::size_t> photocentres;
    for (const fs::path& file : mainFiles(folder)) {
        eachLine(file, [&](const Line& line) {
            const auto read = mainLine(line, epochYear);
            if (!read) return;
            if (read->photocentre) {
                const auto [twin, first] =
                    photocentres.try_emplace({read->star.raDeg, read->star.decDeg}, stars.size());
                if (!first) {
                    double& magnitude = stars[twin->second].magnitude;
                    magnitude = combinedMagnitude(magnitude, read->star.magnitude);
                    return;
                }
            }
            stars.push_back(read->star);
        });
    }
    for (const fs::path& place : {folder, folder / "data"}) {
        if (!fs::is_regular_file(place / "suppl_1.dat")) continue;
        eachLine(place / "suppl_1.dat", [&](const Line& line) {
            if (const auto star = supplementLine(line, epochYear)) stars.push_back(*star);
        });
        break;
    }
    return stars;
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

Placed placed(const TychoStar& star, const std::vector<std::uint32_t>& firstCells) {
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

void writeTychoCatalog(const fs::path& file, std::vector<TychoStar> stars, double epochYear) {
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
    for (const TychoStar& star : stars) all.push_back(placed(star, firstCells));
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

}  // namespace vantrel::observatory

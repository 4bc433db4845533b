// Star catalogues of full size on disk, for timing: every file is there with its full length, but only those
// that the fields touch hold stars; the others are holes.
#pragma once

#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include "support/catalog_trees.h"

namespace vantrel::bench {

namespace fs = std::filesystem;

struct Field {
    const char* name;
    double ra, dec;  ///< degrees
};

inline constexpr Field kFields[] = {{"midway", 83, 22}, {"zero", 0.1, 22.05}, {"pole", 200, 89.8}};
inline constexpr double kReachDeg = 1.0;  ///< beyond a field of one degree, and what its stars move

inline bool isTouched(double south, double north) {
    for (const Field& field : kFields)
        if (north >= field.dec - kReachDeg && south <= field.dec + kReachDeg) return true;
    return false;
}

/// Square degrees between two declinations and as many degrees of right ascension.
inline double areaOf(double south, double north, double raWidth) {
    constexpr double kRad = std::numbers::pi / 180;
    return raWidth / kRad * (std::sin(north * kRad) - std::sin(south * kRad));
}

inline void writeHole(const fs::path& file, std::uintmax_t bytes) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary).flush();
    fs::resize_file(file, bytes);
}

/// `count` stars evenly over a box, by rising right ascension; magnitudes grow as on the real sky.
inline void eachStar(std::size_t count, double raMin, double raMax, double decMin, double decMax,
                     const std::function<void(const test::TreeStar&)>& take) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> unit(0, 1);
    constexpr double kRad = std::numbers::pi / 180;
    const double low = std::sin(decMin * kRad);
    const double high = std::sin(decMax * kRad);
    const double step = (raMax - raMin) / static_cast<double>(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double magnitude = std::max(4.0, 19.5 + 2.2 * std::log10(unit(random) + 1e-9));
        const double ra = raMin + step * (static_cast<double>(i) + unit(random));
        const double dec = std::asin(low + (high - low) * unit(random)) / kRad;
        take({ra, dec, std::round(magnitude * 10) / 10, 20 * unit(random) - 10, 20 * unit(random) - 10});
    }
}

/// A catalogue of zones; density in stars a square degree.
template <typename Record>
void writeZones(int zones, double height, double density, std::size_t recordBytes, Record&& record,
                const std::function<fs::path(int)>& fileOf) {
    for (int zone = 0; zone < zones; ++zone) {
        const double south = -90 + zone * height;
        const auto count =
            std::max<std::size_t>(1, static_cast<std::size_t>(density * areaOf(south, south + height, 360)));
        if (!isTouched(south, south + height)) {
            writeHole(fileOf(zone), count * recordBytes);
            continue;
        }
        fs::create_directories(fileOf(zone).parent_path());
        std::ofstream out(fileOf(zone), std::ios::binary);
        eachStar(count, 0, 360, south, south + height, [&](const auto& star) { out << record(star); });
    }
}

inline constexpr double kWholeSky = 41'252.96;

inline void writeUsnoA(const fs::path& root) {
    writeZones(24, 7.5, 526'280'881 / kWholeSky, 12, test::usnoARecord,
               [&](int zone) { return root / test::formatted("zone%04d.cat", 75 * zone); });
}

inline void writeUsnoB(const fs::path& root) {
    writeZones(1800, 0.1, 1'045'175'762 / kWholeSky, 80, test::usnoBRecord, [&](int zone) {
        return root / test::formatted("%03d", zone / 10) / test::formatted("b%04d.cat", zone);
    });
}

inline void writeUcac2(const fs::path& root) {
    writeZones(288, 0.5, 48'330'571 / 35'000.0, 44, test::ucac2Record,
               [&](int zone) { return root / "u2" / test::formatted("z%03d", zone + 1); });
}

inline void writeUcac4(const fs::path& root) {
    const auto record = [](const test::TreeStar& star) { return test::ucac4Record(star); };
    writeZones(900, 0.2, 113'780'093 / kWholeSky, 78, record,
               [&](int zone) { return root / "u4b" / test::formatted("z%03d", zone + 1); });
}

/// A box of sky with a number.
struct Box {
    double raMin, raMax, decMin, decMax;
    bool touched() const {
        if (!isTouched(decMin, decMax)) return false;
        for (const Field& field : kFields) {
            const double reach =
                field.dec > 85 ? 180 : kReachDeg / std::cos(field.dec * std::numbers::pi / 180);
            const double apart = std::abs(std::remainder((raMin + raMax) / 2 - field.ra, 360.0));
            if (apart <= (raMax - raMin) / 2 + reach) return true;
        }
        return false;
    }
};

/// `count` boxes of a zone of 7.5 degrees: three strips, or one where there are few.
inline std::vector<Box> boxesOfZone(int count, double south) {
    const int strips = count >= 150 ? 3 : 1;
    std::vector<Box> boxes;
    for (int strip = 0; strip < strips; ++strip) {
        const int here = count / strips + (strip < count % strips ? 1 : 0);
        const double low = south + 7.5 / strips * strip;
        for (int i = 0; i < here; ++i)
            boxes.push_back({360.0 * i / here, 360.0 * (i + 1) / here, low, low + 7.5 / strips});
    }
    return boxes;
}

/// Right ascension or declination by whole, minutes and seconds for the region table.
inline std::string regionRow(int number, const Box& box) {
    const auto ra = [](double deg) {
        const int hundredths = test::rounded(std::fmod(deg, 360.0) * 24'000) % 8'640'000;
        return test::formatted("%02d %02d %05.2f", hundredths / 360'000, hundredths / 6'000 % 60,
                               hundredths % 6'000 / 100.0);
    };
    const auto dec = [](double deg, bool south) {
        const int tenths = test::rounded(std::abs(deg) * 600);
        return test::formatted("%c%02d %04.1f", south ? '-' : '+', tenths / 600, tenths % 600 / 10.0);
    };
    const bool south = box.decMin < 0;
    return test::formatted("%5d  ", number) + ra(box.raMin) + " " + ra(box.raMax) + " " +
           dec(south ? box.decMax : box.decMin, south) + " " + dec(south ? box.decMin : box.decMax, south);
}

inline void writeGuideStars(const fs::path& root) {
    constexpr double kRows = 25'541'952.0;  // of 19 million objects
    std::string regions;
    for (std::size_t zone = 0; zone < test::kGuideZones.size(); ++zone) {
        const int first = test::kGuideZones[zone].firstRegion;
        const int next = zone + 1 < test::kGuideZones.size() ? test::kGuideZones[zone + 1].firstRegion : 9538;
        const double low = 7.5 * static_cast<double>(zone % 12);
        int number = first;
        for (const Box& box : boxesOfZone(next - first, zone < 12 ? low : -low - 7.5)) {
            const auto file =
                root / "GSC" / test::kGuideZones[zone].name / test::formatted("%04d.GSC", number);
            const auto count = static_cast<std::size_t>(
                kRows / kWholeSky * areaOf(box.decMin, box.decMax, box.raMax - box.raMin));
            regions += regionRow(number, box);
            ++number;
            if (!box.touched()) {
                writeHole(file, 8640 + count * 45);
                continue;
            }
            std::string rows;
            int id = 0;
            eachStar(count, box.raMin, box.raMax, box.decMin, box.decMax,
                     [&](const auto& star) { rows += test::guideStarRow(++id, star); });
            test::writeFile(file, test::guideStarFile(rows));
        }
    }
    test::writeFile(root / "TABLES" / "REGIONS.TBL", test::guideRegionFile(regions));
}

inline void writeTycho2(const fs::path& root) {
    constexpr double kLines = 2'539'913;
    const fs::path catalog = root / "data" / "catalog.dat";
    writeHole(catalog, 0);
    std::ofstream out(catalog, std::ios::binary);
    std::string index;
    std::size_t record = 1;
    const auto indexLine = [&](const Box& box) {
        index += test::formatted("%7zu|%6d|%6.2f|%6.2f|%6.2f|%6.2f\n", record, 1, box.raMin, box.raMax,
                                 box.decMin, box.decMax);
    };
    for (std::size_t zone = 0; zone < test::kGuideZones.size(); ++zone) {
        const int next = zone + 1 < test::kGuideZones.size() ? test::kGuideZones[zone + 1].firstRegion : 9538;
        const double low = 7.5 * static_cast<double>(zone % 12);
        for (const Box& box :
             boxesOfZone(next - test::kGuideZones[zone].firstRegion, zone < 12 ? low : -low - 7.5)) {
            const auto count = static_cast<std::size_t>(
                kLines / kWholeSky * areaOf(box.decMin, box.decMax, box.raMax - box.raMin));
            indexLine(box);
            if (box.touched()) {
                out.seekp(static_cast<std::streamoff>((record - 1) * 207));
                eachStar(count, box.raMin, box.raMax, box.decMin, box.decMax,
                         [&](const auto& star) { out << test::tycho2Line(star) << "\n"; });
            }
            record += count;
        }
    }
    out.close();
    fs::resize_file(catalog, (record - 1) * 207);
    indexLine({0, 0, 0, 0});
    test::writeFile(root / "data" / "index.dat", index);
}

inline void writeCells(const fs::path& root, const std::string& ending, double density) {
    const test::CellRings rings = test::cellRings(ending);
    const int half = static_cast<int>(rings.cells.size());
    for (int ring = 1; ring <= 2 * half; ++ring) {
        const auto fromPole = static_cast<std::size_t>(ring <= half ? ring - 1 : 2 * half - ring);
        const double outer = fromPole == 0 ? 90 : rings.edges[fromPole - 1];
        const double south = ring <= half ? -outer : rings.edges[fromPole];
        const double north = ring <= half ? -rings.edges[fromPole] : outer;
        const double width = 360.0 / rings.cells[fromPole];
        for (int cell = 0; cell < rings.cells[fromPole]; ++cell) {
            const Box box{cell * width, (cell + 1) * width, south, north};
            const auto count = static_cast<std::size_t>(density * areaOf(south, north, width));
            const auto file = root / test::formatted("d80_%02d%02d.%s", ring, cell + 1, ending.c_str());
            if (!box.touched()) {
                writeHole(file, 110 + count * 5);
                continue;
            }
            test::TreeStars stars;
            eachStar(count, box.raMin, box.raMax, south, north,
                     [&](const auto& star) { stars.push_back(star); });
            test::writeFile(file, test::cellFile(stars, 5));
        }
    }
}

}  // namespace vantrel::bench

// Small star catalogues on disk, in the layouts of their makers. Written from the layouts' descriptions
// alone: nothing here is shared with what reads them.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <map>
#include <numbers>
#include <sstream>
#include <string>
#include <vector>

#include "support/fits_bytes.h"
#include "support/temp_folder.h"

namespace vantrel::test {

struct TreeStar {
    double ra = 0;  ///< degrees, J2000
    double dec = 0;
    double magnitude = 0;
    double pmRa = 0;  ///< mas a year, with cos Dec
    double pmDec = 0;
};

using TreeStars = std::vector<TreeStar>;

inline std::string formatted(const char* format, ...) {
    char text[512];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return text;
}

template <typename Integer>
void putLittle(std::string& record, std::size_t at, Integer value) {
    for (std::size_t i = 0; i < sizeof value; ++i)
        record[at + i] = static_cast<char>((static_cast<std::uint64_t>(value) >> (8 * i)) & 0xFFU);
}

inline std::int32_t rounded(double value) { return static_cast<std::int32_t>(std::lround(value)); }

// --- records of one star

inline std::string usnoARecord(const TreeStar& star) {
    const std::int32_t tenths = rounded(star.magnitude * 10);
    return bigEndian(rounded(star.ra * 360'000)) + bigEndian(rounded((star.dec + 90) * 360'000)) +
           bigEndian(-(123'000'000 + tenths * 1000 + tenths));
}

inline std::string usnoBRecord(const TreeStar& star) {
    std::string record(80, '\0');
    putLittle(record, 0, rounded(star.ra * 360'000));
    putLittle(record, 4, rounded((star.dec + 90) * 360'000));
    putLittle(record, 8, rounded(star.pmDec / 2 + 5000) * 10'000 + rounded(star.pmRa / 2 + 5000));
    putLittle(record, 12, 512'003'004);
    putLittle(record, 16, 500'100'100);
    for (std::size_t survey = 0; survey < 5; ++survey)
        putLittle(record, 20 + 4 * survey, 1'910'230'000 + rounded(star.magnitude * 100));
    return record;
}

inline std::string ucac2Record(const TreeStar& star) {
    std::string record(44, '\0');
    putLittle(record, 0, rounded(star.ra * 3'600'000));
    putLittle(record, 4, rounded(star.dec * 3'600'000));
    putLittle(record, 8, static_cast<std::int16_t>(rounded(star.magnitude * 100)));
    putLittle(record, 20, rounded(star.pmRa * 10 / std::cos(star.dec * std::numbers::pi / 180)));
    putLittle(record, 24, rounded(star.pmDec * 10));
    return record;
}

/// With its magnitude as V and other figures as the survey's own. Motions that don't fit go to the table.
inline std::string ucac4Record(const TreeStar& star, std::int32_t number = 1) {
    std::string record(78, '\0');
    putLittle(record, 0, rounded(star.ra * 3'600'000));
    putLittle(record, 4, rounded((star.dec + 90) * 3'600'000));
    putLittle(record, 8, std::int16_t{1234});
    putLittle(record, 10, std::int16_t{20'000});
    const bool fits = std::abs(star.pmRa) < 3276 && std::abs(star.pmDec) < 3276;
    putLittle(record, 24, static_cast<std::int16_t>(fits ? rounded(star.pmRa * 10) : 32'767));
    putLittle(record, 26, static_cast<std::int16_t>(fits ? rounded(star.pmDec * 10) : 32'767));
    putLittle(record, 46, std::int16_t{20'000});
    putLittle(record, 48, static_cast<std::int16_t>(rounded(star.magnitude * 1000)));
    putLittle(record, 68, number);
    return record;
}

inline std::string guideStarRow(int id, const TreeStar& star, int kind = 0, double error = 0.2) {
    return formatted("%5d%9.5f%9.5f%5.1f%5.2f%4.2f%2d%1d%4s%c", id, star.ra, star.dec, error, star.magnitude,
                     error, 1, kind, "01AB", 'F');
}

/// A line with texts at these columns, counted from 1.
inline std::string columns(std::size_t length, const std::map<std::size_t, std::string>& fields) {
    std::string text(length, ' ');
    for (const auto& [column, field] : fields) text.replace(column - 1, field.size(), field);
    return text;
}

inline std::string tycho2Line(const TreeStar& star) {
    return columns(206, {{1, "0001 00001 1| |"},
                         {16, formatted("%12.8f", star.ra)},
                         {29, formatted("%12.8f", star.dec)},
                         {42, formatted("%7.1f", star.pmRa)},
                         {50, formatted("%7.1f", star.pmDec)},
                         {111, formatted("%6.3f", star.magnitude)},
                         {124, formatted("%6.3f", star.magnitude)}});
}

/// A line of the supplement, whose positions stand at 1991.25.
inline std::string tycho2SupplementLine(const TreeStar& star) {
    constexpr double kYears = 8.75;
    const double ra = star.ra - star.pmRa * kYears / 3.6e6 / std::cos(star.dec * std::numbers::pi / 180);
    return columns(122, {{1, "0001 00001 1|H|"},
                         {16, formatted("%012.8f", ra < 0 ? ra + 360 : ra)},
                         {29, formatted("%+012.8f", star.dec - star.pmDec * kYears / 3.6e6)},
                         {42, formatted("%7.1f", star.pmRa)},
                         {50, formatted("%7.1f", star.pmDec)},
                         {82, "V"},
                         {84, formatted("%6.3f", star.magnitude)},
                         {97, formatted("%6.3f", star.magnitude)}});
}

// --- trees

inline TreeStars byRa(TreeStars stars) {
    std::sort(stars.begin(), stars.end(), [](const auto& a, const auto& b) { return a.ra < b.ra; });
    return stars;
}

/// The records of `zones` strips of declination from the south pole on, each sorted by right ascension.
inline std::vector<std::string> zoneRecords(const TreeStars& stars, int zones, double height,
                                            const std::function<std::string(const TreeStar&)>& record) {
    std::vector<std::string> bytes(static_cast<std::size_t>(zones));
    for (const TreeStar& star : byRa(stars)) {
        const int zone = std::min(static_cast<int>(std::floor((star.dec + 90) / height + 1e-9)), 180 * 10);
        if (zone < zones || height * zones > 179)
            bytes[static_cast<std::size_t>(std::min(zone, zones - 1))] += record(star);
    }
    return bytes;
}

/// 96 lines: hours, first record and number of records of each quarter of an hour.
inline std::string accelerator(std::size_t stars) {
    std::string text;
    for (int i = 0; i < 96; ++i)
        text += formatted("%5.2f %11zu %11zu\n", i * 0.25, i == 0 ? std::size_t{1} : stars + 1,
                          i == 0 ? stars : std::size_t{0});
    return text;
}

/// All zones in the folder, or each in the folder of its disc.
inline void writeUsnoA(const std::filesystem::path& root, const TreeStars& stars, bool onDiscs = false) {
    constexpr std::array kDiscs = {1, 1, 9, 7,  5,  4,  3, 2, 1, 6, 7, 10,
                                   9, 8, 8, 11, 10, 11, 6, 4, 2, 3, 3, 2};
    const auto zones = zoneRecords(stars, 24, 7.5, usnoARecord);
    for (std::size_t zone = 0; zone < zones.size(); ++zone) {
        const auto place = onDiscs ? root / formatted("CD%02d", kDiscs[zone]) : root;
        const std::string name = formatted(onDiscs ? "ZONE%04zu" : "zone%04zu", 75 * zone);
        writeFile(place / (name + (onDiscs ? ".CAT" : ".cat")), zones[zone]);
        writeFile(place / (name + (onDiscs ? ".ACC" : ".acc")), accelerator(zones[zone].size() / 12));
    }
}

inline void writeUsnoB(const std::filesystem::path& root, const TreeStars& stars) {
    const auto zones = zoneRecords(stars, 1800, 0.1, usnoBRecord);
    for (std::size_t zone = 0; zone < zones.size(); ++zone) {
        const auto place = root / formatted("%03zu", zone / 10);
        writeFile(place / formatted("b%04zu.cat", zone), zones[zone]);
        writeFile(place / formatted("b%04zu.acc", zone), accelerator(zones[zone].size() / 80));
    }
}

/// The folder of zones is part of the root here.
inline void writeUcac2(const std::filesystem::path& zonesFolder, const TreeStars& stars) {
    const auto zones = zoneRecords(stars, 288, 0.5, ucac2Record);
    for (std::size_t zone = 0; zone < zones.size(); ++zone)
        writeFile(zonesFolder / formatted("z%03zu", zone + 1), zones[zone]);
}

inline void writeUcac4(const std::filesystem::path& zonesFolder, const std::filesystem::path& tableFolder,
                       const TreeStars& stars) {
    std::string table;
    std::int32_t number = 0;
    const auto zones = zoneRecords(stars, 900, 0.2, [&](const TreeStar& star) {
        ++number;
        if (std::abs(star.pmRa) >= 3276 || std::abs(star.pmDec) >= 3276)
            table += formatted("%9d %3d %6d %6d %6d %10d %9d %5d\n", number, 1, 1, rounded(star.pmRa * 10),
                               rounded(star.pmDec * 10), 0, 0, 0);
        return ucac4Record(star, number);
    });
    for (std::size_t zone = 0; zone < zones.size(); ++zone)
        writeFile(zonesFolder / formatted("z%03zu", zone + 1), zones[zone]);
    writeFile(tableFolder / "u4hpm.dat", table);
}

/// The fields as "NAME START FORM" one after the other, starts from 0.
inline std::string fitsAsciiTable(const std::string& fields, std::size_t rowBytes, const std::string& rows) {
    std::vector<std::string> fieldCards;
    std::istringstream words(fields);
    int start = 0;
    for (std::string name, form; words >> name >> start >> form;) {
        const std::size_t i = fieldCards.size() / 3 + 1;
        fieldCards.push_back(formatted("TTYPE%-3zu= '%-8s'           / field", i, name.c_str()));
        fieldCards.push_back(formatted("TBCOL%-3zu= %20d / starting column", i, start + 1));
        fieldCards.push_back(formatted("TFORM%-3zu= '%-8s'", i, form.c_str()));
    }
    std::vector<std::string> cards = {"XTENSION= 'TABLE   '",
                                      "BITPIX  =                    8",
                                      "NAXIS   =                    2",
                                      formatted("NAXIS1  = %20zu / bytes", rowBytes),
                                      formatted("NAXIS2  = %20zu / rows", rows.size() / rowBytes),
                                      "PCOUNT  =                    0",
                                      "GCOUNT  =                    1",
                                      formatted("TFIELDS = %20zu", fieldCards.size() / 3)};
    cards.insert(cards.end(), fieldCards.begin(), fieldCards.end());
    std::string data = rows;
    data.resize((data.size() + 2879) / 2880 * 2880, ' ');
    return fitsHeader({"SIMPLE  =                    T", "BITPIX  =                    8",
                       "NAXIS   =                    0", "EXTEND  =                    T"}) +
           fitsHeader(cards) + data;
}

inline std::string guideStarFile(const std::string& rows) {
    return fitsAsciiTable(
        "GSC_ID 0 I5 RA_DEG 5 F9.5 DEC_DEG 14 F9.5 POS_ERR 23 F5.1 MAG 28 F5.2 MAG_ERR 33 F4.2 "
        "MAG_BAND 37 I2 CLASS 39 I1 PLATE_ID 40 A4 MULTIPLE 44 A1",
        45, rows);
}

/// A row of the region table: right ascensions in whole hours, declinations in degrees; the declination that
/// is nearer to the equator comes first.
inline std::string guideRegionRow(int region, int hourLow, int hourHigh, double decLow, double decHigh) {
    const auto dec = [](double value, bool south) {
        const double size = std::abs(value);
        return formatted("%c%02d %4.1f", south ? '-' : '+', static_cast<int>(size),
                         (size - std::floor(size)) * 60);
    };
    const bool south = decLow < 0 || decHigh < 0;
    std::string row =
        formatted("%5d  %02d 00 %5.2f %02d 00 %5.2f ", region, hourLow, 0.0, hourHigh % 24, 0.0);
    return row + dec(decLow, south) + " " + dec(decHigh, south);
}

inline std::string guideRegionFile(const std::string& rows) {
    return fitsAsciiTable(
        "REG_NO 0 I5 RA_H_LOW 7 I2 RA_M_LOW 10 I2 RA_S_LOW 13 F5.2 RA_H_HI 19 I2 RA_M_HI 22 I2 "
        "RA_S_HI 25 F5.2 DECSI_LO 31 A1 DEC_D_LO 32 I2 DEC_M_LO 35 F4.1 DECSI_HI 40 A1 "
        "DEC_D_HI 41 I2 DEC_M_HI 44 F4.1",
        48, rows);
}

struct GuideZone {
    int firstRegion;
    const char* name;
};

/// From the equator north, then from the equator south; 7.5 degrees each.
inline constexpr std::array<GuideZone, 24> kGuideZones = {
    {{1, "N0000"},    {594, "N0730"},  {1178, "N1500"}, {1729, "N2230"}, {2259, "N3000"}, {2781, "N3730"},
     {3246, "N4500"}, {3652, "N5230"}, {4014, "N6000"}, {4294, "N6730"}, {4492, "N7500"}, {4615, "N8230"},
     {4663, "S0000"}, {5260, "S0730"}, {5838, "S1500"}, {6412, "S2230"}, {6989, "S3000"}, {7523, "S3730"},
     {8022, "S4500"}, {8464, "S5230"}, {8840, "S6000"}, {9134, "S6730"}, {9346, "S7500"}, {9490, "S8230"}}};

/// Four regions of six hours in each zone; stars measured twice or three times now and then, galaxies
/// between. As on the disc, with names in capitals and ";1", or in lower case without the "gsc" level.
inline void writeGuideStars(const std::filesystem::path& root, const TreeStars& stars, bool asOnDisc) {
    const auto name = [&](std::string text) {
        if (!asOnDisc)
            std::transform(text.begin(), text.end(), text.begin(),
                           [](char c) { return static_cast<char>(std::tolower(c)); });
        return text;
    };
    std::map<int, std::string> rows;
    std::string regions;
    for (std::size_t zone = 0; zone < kGuideZones.size(); ++zone) {
        const bool south = zone >= 12;
        const double low = static_cast<double>(zone % 12) * 7.5;
        for (int part = 0; part < 4; ++part) {
            const int region = kGuideZones[zone].firstRegion + part;
            rows[region];
            regions += guideRegionRow(region, 6 * part, 6 * part + 6, south ? -low : low,
                                      south ? -low - 7.5 : low + 7.5);
        }
    }
    int id = 0;
    for (const TreeStar& star : stars) {
        const int band = std::min(11, static_cast<int>(std::abs(star.dec) / 7.5));
        const auto zone = static_cast<std::size_t>(star.dec < 0 ? 12 + band : band);
        std::string& file = rows[kGuideZones[zone].firstRegion + static_cast<int>(star.ra / 90) % 4];
        id = id % 99'000 + 1;
        file += guideStarRow(id, star);
        for (int again = 0; again < id % 3; ++again) file += guideStarRow(id, star, 0, 0.7);
        if (id % 5 == 0) file += guideStarRow(++id, {star.ra, star.dec, 9}, 3);
    }
    for (const auto& [region, text] : rows) {
        std::size_t zone = kGuideZones.size() - 1;
        while (kGuideZones[zone].firstRegion > region) --zone;
        const auto folder = (asOnDisc ? root / "GSC" : root) / name(kGuideZones[zone].name);
        writeFile(folder / (name(formatted("%04d.GSC", region)) + (asOnDisc ? ";1" : "")),
                  guideStarFile(text));
    }
    writeFile(root / name("TABLES") / (name("REGIONS.TBL") + (asOnDisc ? ";1" : "")),
              guideRegionFile(regions));
}

/// Boxes of 15 by 7.5 degrees; every seventh star stands in the supplement. As on the disc (one catalog.dat
/// in "data", lines end in CR LF) or in parts of a fixed number of lines beside the index.
inline void writeTycho2(const std::filesystem::path& root, const TreeStars& stars, bool asOnDisc) {
    const std::string end = asOnDisc ? "\r\n" : "\n";
    std::map<int, TreeStars> boxes;
    for (int box = 0; box < 24 * 24; ++box) boxes[box];
    for (const TreeStar& star : stars)
        boxes[24 * std::min(23, static_cast<int>((star.dec + 90) / 7.5)) + static_cast<int>(star.ra / 15)]
            .push_back(star);
    std::vector<std::string> lines;
    std::vector<std::string> supplement;
    std::string index;
    const auto indexLine = [&](double ra, double dec) {
        index += formatted("%7zu|%6zu|%6.2f|%6.2f|%6.2f|%6.2f", lines.size() + 1, supplement.size() + 1, ra,
                           ra + 15, dec, dec + 7.5) +
                 end;
    };
    int count = 0;
    for (const auto& [box, inside] : boxes) {
        const int zone = box / 24;
        indexLine(15.0 * (box % 24), 7.5 * zone - 90);
        for (const TreeStar& star : inside) {
            if (++count % 7 == 0) {
                supplement.push_back(tycho2SupplementLine(star) + end);
            } else {
                lines.push_back(tycho2Line(star) + end);
            }
        }
    }
    indexLine(0, 0);
    const auto joined = [](const std::vector<std::string>& all, std::size_t first, std::size_t last) {
        std::string text;
        for (std::size_t i = first; i < std::min(last, all.size()); ++i) text += all[i];
        return text;
    };
    writeFile(root / "suppl_1.dat", joined(supplement, 0, supplement.size()));
    writeFile((asOnDisc ? root / "data" : root) / "index.dat", index);
    if (asOnDisc) {
        writeFile(root / "data" / "catalog.dat", joined(lines, 0, lines.size()));
        return;
    }
    const std::size_t part = lines.size() / 3 + 1;
    for (std::size_t i = 0; i < 3; ++i)
        writeFile(root / formatted("tyc2.dat.%02zu", i), joined(lines, i * part, (i + 1) * part));
}

/// Edges of the northern rings and cells of each ring from the pole on.
struct CellRings {
    std::vector<double> edges;
    std::vector<int> cells;
};

inline CellRings cellRings(const std::string& ending) {
    if (ending == "290")
        return {{85.23224404, 75.66348756, 65.99286637, 56.14497387, 46.03163067, 35.54307745, 24.53348115,
                 12.79440589, 0},
                {1, 4, 8, 12, 16, 20, 24, 28, 32}};
    CellRings rings{{}, {1, 3, 9, 15, 21, 27, 33, 38, 43, 48, 52, 56, 60, 63, 65, 67, 68, 69}};
    for (int i = 0; i < 17; ++i) rings.edges.push_back(87.42857143 - i * 5.142857143);
    rings.edges.push_back(0);
    return rings;
}

/// One cell's file: stars in groups of a tenth of a magnitude that share the high byte of the declination.
inline std::string cellFile(TreeStars stars, std::size_t recordBytes) {
    std::string header = formatted("Stars of a test, sorted by magnitude. Epoch=2000");
    header.resize(109, ' ');
    std::string bytes = header + static_cast<char>(recordBytes);
    std::stable_sort(stars.begin(), stars.end(),
                     [](const auto& a, const auto& b) { return a.magnitude < b.magnitude; });
    std::pair<int, int> group{-999, 0};
    for (const TreeStar& star : stars) {
        const auto ra = static_cast<std::uint32_t>(std::lround(star.ra * 16'777'215 / 360));
        const std::int32_t dec = rounded(star.dec * 8'388'607 / 90);
        const int high = static_cast<int>(std::floor(dec / 65'536.0));
        const std::pair<int, int> own{rounded(star.magnitude * 10), high};
        std::string record(recordBytes, '\0');
        if (own != group) {
            group = own;
            record.replace(0, 3, "\xFF\xFF\xFF");
            record[3] = static_cast<char>(high + 128);
            record[4] = static_cast<char>(own.first + 16);
            bytes += record;
        }
        putLittle(record, 0, ra);
        record[3] = static_cast<char>(dec & 0xFF);
        record[4] = static_cast<char>((dec >> 8) & 0xFF);
        bytes += record;
    }
    return bytes;
}

inline void writeCells(const std::filesystem::path& root, const TreeStars& stars, const std::string& name,
                       const std::string& ending, std::size_t recordBytes) {
    const CellRings rings = cellRings(ending);
    const int half = static_cast<int>(rings.cells.size());
    std::map<std::pair<int, int>, TreeStars> cells;  // by ring from the south pole and cell, both from 1
    const auto cellsIn = [&](int ring) {
        return rings.cells[static_cast<std::size_t>(ring <= half ? ring - 1 : 2 * half - ring)];
    };
    for (int ring = 1; ring <= 2 * half; ++ring)
        for (int cell = 1; cell <= cellsIn(ring); ++cell) cells[{ring, cell}];
    for (const TreeStar& star : stars) {
        int fromPole = 1;
        while (std::abs(star.dec) < rings.edges[static_cast<std::size_t>(fromPole - 1)]) ++fromPole;
        const int ring = star.dec < 0 ? fromPole : 2 * half + 1 - fromPole;
        cells[{ring, 1 + static_cast<int>(star.ra / 360 * cellsIn(ring))}].push_back(star);
    }
    for (const auto& [place, inside] : cells)
        writeFile(root / formatted("%s_%02d%02d.%s", name.c_str(), place.first, place.second, ending.c_str()),
                  cellFile(inside, recordBytes));
}

}  // namespace vantrel::test

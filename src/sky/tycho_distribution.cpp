#include "sky/tycho_distribution.h"

#include <fstream>
#include <optional>
#include <string>

#include "sky/catalog_writer.h"
#include "sky/star_catalog.h"
#include "sky/tycho_lines.h"

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

void writeCompactCatalog(const fs::path& file, const std::vector<MovingStar>& stars, double epochYear) {
    const CatalogLayout layout;
    CatalogWriter writer(file, layout, epochYear);
    writer.add(stars, layout.bands);
    if (writer.leftOut() > 0) {
        throw CatalogError(
            "a cell of sky holds more than 255 stars, which the compact catalogue has no room for");
    }
    writer.finish();
}

}  // namespace vantrel::sky

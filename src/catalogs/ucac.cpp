// UCAC2 (Zacharias et al. 2004, AJ 127, 3043) and UCAC4 (Zacharias et al. 2013, AJ 145, 44).
#include <cmath>
#include <sstream>
#include <string>
#include <unordered_map>
#include <utility>

#include "catalogs/catalog_file.h"
#include "catalogs/distributions.h"
#include "catalogs/zone_catalog.h"
#include "sky/vector3.h"

namespace vantrel::catalogs {

namespace {

using sky::MovingStar;

constexpr std::int32_t kMilliarcsecondsPerDeg = 3'600'000;
constexpr int kUcac2Zones = 288;
constexpr int kUcac4Zones = 900;

std::string zoneName(int zone) {
    const std::string number = std::to_string(zone);
    return "z" + std::string(3 - number.size(), '0') + number;
}

/// Files z001 and on; empty when the folder has none of them.
std::vector<ZoneFile> zonesIn(const CatalogFolder& place, int zones) {
    std::vector<ZoneFile> files;
    bool found = false;
    for (int zone = 1; zone <= zones; ++zone) {
        files.push_back({zoneName(zone), place.file(zoneName(zone))});
        found = found || files.back().stars;
    }
    if (!found) files.clear();
    return files;
}

/// Both catalogues name their zones alike; only UCAC4 goes on beyond UCAC2's last.
bool hasNorthernZones(const CatalogFolder& place) {
    for (int zone = kUcac2Zones + 1; zone <= kUcac4Zones; ++zone)
        if (place.file(zoneName(zone))) return true;
    return false;
}

std::optional<MovingStar> completeUcac2(const ZoneRecord& record, MovingStar star) {
    star.magnitude = record.int16(8) / 100.0;
    star.motionRaMas = record.int32(20) / 10.0 * std::cos(star.decDeg * sky::kDegree);
    star.motionDecMas = record.int32(24) / 10.0;
    return star;
}

/// Motions that don't fit into a record, by the star's number.
using FastStars = std::unordered_map<std::int32_t, std::pair<double, double>>;

/// Lines "number zone record pmRA pmDec ..." with motions in 0.1 mas a year; the few stars that there are.
FastStars readFastStars(const std::filesystem::path& path) {
    constexpr std::uint64_t kLargest = 65'536;
    const CatalogFile file(path);
    if (file.size() > kLargest) file.damaged("it is too large");
    FastStars stars;
    std::istringstream lines(file.text(0, file.size()));
    for (std::string line; std::getline(lines, line);) {
        std::istringstream fields(line);
        std::int32_t number = 0;
        double zone = 0;
        double record = 0;
        double ra = 0;
        double dec = 0;
        if (fields >> number >> zone >> record >> ra >> dec) stars[number] = {ra / 10, dec / 10};
    }
    return stars;
}

/// V where it was measured, else the magnitudes of the survey itself.
std::optional<double> ucac4Magnitude(const ZoneRecord& record) {
    constexpr std::int16_t kNone = 20'000;
    for (const std::size_t at : {48U, 8U, 10U}) {
        if (record.int16(at) != kNone) return record.int16(at) / 1000.0;
    }
    return std::nullopt;
}

std::optional<MovingStar> completeUcac4(const ZoneRecord& record, MovingStar star, const FastStars& fast) {
    constexpr std::int16_t kTooFast = 32'767;
    const int type = record.byte(13);
    if (type == 2 || type == 8 || type == 9) return std::nullopt;  // likely no star of its own
    const auto magnitude = ucac4Magnitude(record);
    if (!magnitude) return std::nullopt;
    star.magnitude = *magnitude;
    star.motionRaMas = record.int16(24) / 10.0;
    star.motionDecMas = record.int16(26) / 10.0;
    if (record.int16(24) == kTooFast || record.int16(26) == kTooFast) {
        const auto known = fast.find(record.int32(68));
        if (known == fast.end()) return std::nullopt;
        std::tie(star.motionRaMas, star.motionDecMas) = known->second;
    }
    return star;
}

}  // namespace

FoundCatalog openUcac2(const CatalogFolder& folder) {
    constexpr std::size_t kWhole = 260;  // up to +40 degrees
    const auto inner = folder.folder("u2");
    const CatalogFolder& place = inner ? *inner : folder;
    if (!inner && hasNorthernZones(place)) return nullptr;
    auto zones = zonesIn(place, kUcac2Zones);
    if (zones.empty()) return nullptr;
    return std::make_shared<const ZoneCatalog>(
        ZoneLayout{44, ByteOrder::little, kMilliarcsecondsPerDeg, false, 0.5, true, kWhole, completeUcac2},
        folder.path(), std::move(zones));
}

FoundCatalog openUcac4(const CatalogFolder& folder) {
    const auto inner = folder.folder("u4b");
    const CatalogFolder& place = inner ? *inner : folder;
    if (!inner && !hasNorthernZones(place)) return nullptr;
    auto zones = zonesIn(place, kUcac4Zones);
    if (zones.empty()) return nullptr;
    const auto index = folder.folder("u4i");
    const auto table = index ? index->file("u4hpm.dat") : place.file("u4hpm.dat");
    const auto complete = [fast = table ? readFastStars(*table) : FastStars{}](const ZoneRecord& record,
                                                                               MovingStar star) {
        return completeUcac4(record, star, fast);
    };
    return std::make_shared<const ZoneCatalog>(
        ZoneLayout{78, ByteOrder::little, kMilliarcsecondsPerDeg, true, 0.2, true, kUcac4Zones, complete},
        folder.path(), std::move(zones));
}

}  // namespace vantrel::catalogs

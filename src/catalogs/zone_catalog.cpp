#include "catalogs/zone_catalog.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "catalogs/catalog_file.h"
#include "sky/cone.h"

namespace vantrel::catalogs {

namespace {

using sky::ConeCollector;

constexpr double kEpoch = 2000;  // of all positions
constexpr std::uint64_t kRecordsAtATime = 1024;
/// How far from its zone a star may stand before its record counts as damaged: more than any star moves
/// between the epochs that zones were cut at.
constexpr double kZoneSlackDeg = 0.1;
/// Mean distances between neighbours that a zone's last star may be away from 24 hours; chance and the Milky
/// Way explain a few dozen.
constexpr std::uint64_t kWidestEnd = 200;

/// The number of stars that the last line of an accelerator speaks of: "hours first count".
std::optional<std::uint64_t> starsPromised(const std::filesystem::path& accelerator) {
    constexpr std::size_t kTail = 64;
    const CatalogFile file(accelerator);
    const std::size_t length = std::min<std::uint64_t>(kTail, file.size());
    std::string tail = file.text(file.size() - length, length);
    while (!tail.empty() && (tail.back() == '\n' || tail.back() == '\r' || tail.back() == ' '))
        tail.pop_back();
    std::istringstream line(tail.substr(tail.rfind('\n') + 1));
    double hours = 0;
    std::uint64_t first = 0;
    std::uint64_t count = 0;
    if (!(line >> hours >> first >> count) || first == 0) return std::nullopt;
    return first - 1 + count;
}

}  // namespace

ZoneCatalog::ZoneCatalog(ZoneLayout layout, std::filesystem::path folder, std::vector<ZoneFile> zones)
    : layout_(std::move(layout)), folder_(std::move(folder)), zones_(std::move(zones)) {}

std::vector<sky::CatalogStar> ZoneCatalog::cone(const sky::ConeQuery& query) const {
    if (!sky::isSearchable(query)) return {};
    const double drift = layout_.moves ? sky::kFastestDegPerYear * std::abs(query.epochYear - kEpoch) : 0;
    const double radius = query.radiusDeg + drift + 1e-6;
    const auto ranges = raRanges(query.raDeg, sky::raReachDeg(query.decDeg, radius));
    const auto zoneOf = [&](double dec) {
        return std::floor((std::clamp(dec, -90.0, 90.0) + 90) / layout_.zoneHeightDeg);
    };
    const double last = std::min(zoneOf(query.decDeg + radius), static_cast<double>(zones_.size()) - 1);
    ConeCollector stars(query);
    for (double zone = zoneOf(query.decDeg - radius); zone <= last; ++zone)
        searchZone(static_cast<std::size_t>(zone), query, radius, ranges, stars);
    return stars.take();
}

std::vector<ZoneCatalog::Range> ZoneCatalog::raRanges(double raDeg, double reachDeg) const {
    const std::int64_t turn = std::int64_t{360} * layout_.unitsPerDeg;
    if (reachDeg >= 180) return {{0, turn}};
    const double ra = sky::wrappedDeg(raDeg);
    const auto first = static_cast<std::int64_t>(std::floor((ra - reachDeg) * layout_.unitsPerDeg));
    const auto last = static_cast<std::int64_t>(std::ceil((ra + reachDeg) * layout_.unitsPerDeg));
    if (first < 0) return {{0, last}, {turn + first, turn}};
    if (last > turn) return {{0, last - turn}, {first, turn}};
    return {{first, last}};
}

/// The zone's declinations or south polar distances, widened by the slack.
ZoneCatalog::Range ZoneCatalog::decRange(std::size_t zone) const {
    const double south = static_cast<double>(zone) * layout_.zoneHeightDeg - 90 + decZero();
    const double units = layout_.unitsPerDeg;
    return {std::llround((south - kZoneSlackDeg) * units),
            std::llround((south + layout_.zoneHeightDeg + kZoneSlackDeg) * units)};
}

/// Also refuses files whose length tells that something is missing.
std::uint64_t ZoneCatalog::recordsIn(const CatalogFile& file, const ZoneFile& zone) const {
    if (file.size() % layout_.recordBytes != 0)
        file.damaged("its size isn't a whole number of " + std::to_string(layout_.recordBytes) +
                     "-byte records");
    const std::uint64_t count = file.size() / layout_.recordBytes;
    if (zone.accelerator) {
        const auto promised = starsPromised(*zone.accelerator);
        if (promised && *promised > count)
            file.damaged("it holds " + std::to_string(count) + " stars, of which its index knows " +
                         std::to_string(*promised));
    }
    return count;
}

/// A file that is cut between two records, of which no index knows, lacks the stars before 24 hours.
void ZoneCatalog::checkEnd(const Strip& strip) const {
    const auto turn = static_cast<std::uint64_t>(360) * static_cast<std::uint64_t>(layout_.unitsPerDeg);
    unsigned char bytes[4];
    strip.file.read((strip.records - 1) * layout_.recordBytes, bytes);
    const std::int32_t last = ZoneRecord(bytes, strip.order).int32(0);
    if (last < 0 || static_cast<std::uint64_t>(last) + kWidestEnd * (turn / strip.records) < turn)
        strip.file.damaged("its stars end long before 24 hours");
}

/// Some copies were made with the bytes turned round: only the right order puts the first star in its zone.
ByteOrder ZoneCatalog::orderOf(const CatalogFile& file, std::size_t zone) const {
    unsigned char place[8];
    file.read(0, place);
    const Range decs = decRange(zone);
    const std::int64_t turn = std::int64_t{360} * layout_.unitsPerDeg;
    const auto fits = [&](ByteOrder order) {
        const ZoneRecord record(place, order);
        return record.int32(0) >= 0 && record.int32(0) <= turn && decs.holds(record.int32(4));
    };
    const ByteOrder other = layout_.order == ByteOrder::little ? ByteOrder::big : ByteOrder::little;
    return !fits(layout_.order) && fits(other) ? other : layout_.order;
}

std::uint64_t ZoneCatalog::firstNotBefore(const Strip& strip, std::int64_t ra) const {
    std::uint64_t low = 0;
    std::uint64_t high = strip.records;
    while (low < high) {
        const std::uint64_t middle = low + (high - low) / 2;
        unsigned char bytes[4];
        strip.file.read(middle * layout_.recordBytes, bytes);
        if (ZoneRecord(bytes, strip.order).int32(0) < ra) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low;
}

void ZoneCatalog::searchZone(std::size_t zone, const sky::ConeQuery& query, double radiusDeg,
                             const std::vector<Range>& ras, ConeCollector& stars) const {
    if (!zones_[zone].stars)
        throw sky::CatalogError("the file " + zones_[zone].name + " of the star catalogue is missing in " +
                                folder_.string());
    const CatalogFile file(*zones_[zone].stars);
    const std::uint64_t count = recordsIn(file, zones_[zone]);
    if (count == 0) return;
    const double south = query.decDeg - radiusDeg + decZero();
    const Range decs{static_cast<std::int64_t>(std::floor(south * layout_.unitsPerDeg)),
                     static_cast<std::int64_t>(std::ceil((south + 2 * radiusDeg) * layout_.unitsPerDeg))};
    const Strip strip{file, count, orderOf(file, zone), decRange(zone), decs};
    if (zone < layout_.wholeZones) checkEnd(strip);
    for (const Range& range : ras) scan(strip, range, stars);
}

void ZoneCatalog::scan(const Strip& strip, const Range& ras, ConeCollector& stars) const {
    const std::int64_t turn = std::int64_t{360} * layout_.unitsPerDeg;
    const double units = layout_.unitsPerDeg;
    std::vector<unsigned char> block;
    std::uint64_t blockStart = 0;
    std::uint64_t blockEnd = 0;
    for (std::uint64_t i = firstNotBefore(strip, ras.first); i < strip.records; ++i) {
        if (i >= blockEnd) {
            blockStart = i;
            blockEnd = std::min(i + kRecordsAtATime, strip.records);
            block.resize((blockEnd - blockStart) * layout_.recordBytes);
            strip.file.read(i * layout_.recordBytes, block);
        }
        const ZoneRecord record(block.data() + (i - blockStart) * layout_.recordBytes, strip.order);
        const std::int32_t ra = record.int32(0);
        const std::int32_t dec = record.int32(4);
        if (ra < 0 || ra > turn || !strip.allowed.holds(dec))
            strip.file.damaged("record " + std::to_string(i + 1) + " lies outside its zone");
        if (ra > ras.last) return;
        if (!strip.wanted.holds(dec)) continue;
        if (const auto star = layout_.complete(record, {ra / units, dec / units - decZero()}))
            stars.offer(*star, kEpoch);
    }
}

}  // namespace vantrel::catalogs

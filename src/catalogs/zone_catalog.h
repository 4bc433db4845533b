// Catalogues of zones: files that hold a strip of declination each, as binary records of one length that are
// sorted by right ascension. USNO-A, USNO-B, UCAC2 and UCAC4 are such.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "sky/moving_star.h"
#include "sky/star_catalog.h"

namespace vantrel::sky {
class ConeCollector;
}

namespace vantrel::catalogs {

class CatalogFile;

enum class ByteOrder { little, big };

/// The bytes of one star.
class ZoneRecord {
  public:
    ZoneRecord(const unsigned char* bytes, ByteOrder order) : bytes_(bytes), order_(order) {}

    std::uint8_t byte(std::size_t at) const { return bytes_[at]; }
    std::int16_t int16(std::size_t at) const {
        std::uint16_t raw;
        std::memcpy(&raw, bytes_ + at, sizeof raw);
        return static_cast<std::int16_t>(turned() ? __builtin_bswap16(raw) : raw);
    }
    std::int32_t int32(std::size_t at) const {
        std::uint32_t raw;
        std::memcpy(&raw, bytes_ + at, sizeof raw);
        return static_cast<std::int32_t>(turned() ? __builtin_bswap32(raw) : raw);
    }

  private:
    /// Against this machine's order.
    bool turned() const {
        return (order_ == ByteOrder::little) != (std::endian::native == std::endian::little);
    }

    const unsigned char* bytes_;
    ByteOrder order_;
};

/// Right ascension stands in bytes 0 to 3, declination or south polar distance in bytes 4 to 7.
struct ZoneLayout {
    std::size_t recordBytes = 0;
    ByteOrder order = ByteOrder::little;
    std::int32_t unitsPerDeg = 0;
    bool countsFromPole = true;  ///< south polar distances, not declinations
    double zoneHeightDeg = 0;
    bool moves = true;           ///< has proper motions, from J2000
    std::size_t wholeZones = 0;  ///< from the south pole on: those that go once round the sky
    /// Completes a star whose position is filled in already. Nothing when it is to be left out.
    std::function<std::optional<sky::MovingStar>(const ZoneRecord& record, sky::MovingStar star)> complete;
};

struct ZoneFile {
    std::string name;                                                 ///< for messages when it is missing
    std::optional<std::filesystem::path> stars;                       ///< nothing when it is missing
    std::optional<std::filesystem::path> accelerator = std::nullopt;  ///< tells the number of stars
};

class ZoneCatalog : public sky::StarCatalog {
  public:
    /// The zones in order from the south pole on; where they end, the catalogue ends.
    ZoneCatalog(ZoneLayout layout, std::filesystem::path folder, std::vector<ZoneFile> zones);

    /// Throws CatalogError when a zone that the circle touches is missing or damaged.
    std::vector<sky::CatalogStar> cone(const sky::ConeQuery& query) const override;
    std::filesystem::path folder() const override { return folder_; }

  private:
    struct Range {
        std::int64_t first = 0;  ///< in the catalogue's units, both ends included
        std::int64_t last = 0;
        bool holds(std::int64_t value) const { return value >= first && value <= last; }
    };

    /// What one search reads in one zone.
    struct Strip {
        const CatalogFile& file;
        std::uint64_t records = 0;
        ByteOrder order = ByteOrder::little;
        Range allowed;  ///< declinations that can stand in the zone
        Range wanted;   ///< those of the circle
    };

    /// What is added to declinations before they are counted in the catalogue's units.
    double decZero() const { return layout_.countsFromPole ? 90 : 0; }
    std::vector<Range> raRanges(double raDeg, double reachDeg) const;
    Range decRange(std::size_t zone) const;
    void searchZone(std::size_t zone, const sky::ConeQuery& query, double radiusDeg,
                    const std::vector<Range>& ras, sky::ConeCollector& stars) const;
    void scan(const Strip& strip, const Range& ras, sky::ConeCollector& stars) const;
    std::uint64_t recordsIn(const CatalogFile& file, const ZoneFile& zone) const;
    void checkEnd(const Strip& strip) const;
    ByteOrder orderOf(const CatalogFile& file, std::size_t zone) const;
    std::uint64_t firstNotBefore(const Strip& strip, std::int64_t ra) const;

    ZoneLayout layout_;
    std::filesystem::path folder_;
    std::vector<ZoneFile> zones_;
};

}  // namespace vantrel::catalogs

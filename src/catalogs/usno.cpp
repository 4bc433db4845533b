// USNO-A2.0 and SA2.0 (Monet et al. 1998) and USNO-B1.0 (Monet et al. 2003, AJ 125, 984).
#include <cstdlib>
#include <string>

#include "catalogs/distributions.h"
#include "catalogs/visual_magnitude.h"
#include "catalogs/zone_catalog.h"

namespace vantrel::catalogs {

namespace {

using sky::MovingStar;

constexpr std::int32_t kCentiarcsecondsPerDeg = 360'000;

std::string digits(int number, std::size_t width) {
    const std::string text = std::to_string(number);
    return std::string(width - text.size(), '0') + text;
}

/// Part of a number that packs several as decimal digits: `width` digits that end before the last `skip`.
std::int32_t digitsOf(std::int64_t packed, int skip, int width) {
    std::int64_t value = std::abs(packed);
    for (; skip > 0; --skip) value /= 10;
    std::int64_t range = 1;
    for (; width > 0; --width) range *= 10;
    return static_cast<std::int32_t>(value % range);
}

std::optional<MovingStar> completeA(const ZoneRecord& record, MovingStar star) {
    const auto magnitude = [](std::int32_t tenths) {
        return tenths > 0 && tenths < 250 ? std::optional<double>(tenths / 10.0) : std::nullopt;
    };
    const std::int32_t packed = record.int32(8);
    const auto v = visualMagnitude(magnitude(digitsOf(packed, 0, 3)), magnitude(digitsOf(packed, 3, 3)));
    if (!v) return std::nullopt;
    star.magnitude = *v;
    return star;
}

std::optional<MovingStar> completeB(const ZoneRecord& record, MovingStar star) {
    if (digitsOf(record.int32(12), 9, 1) == 1) return std::nullopt;  // a spike of diffraction
    const auto magnitude = [&](std::size_t first, std::size_t second) {
        for (const std::size_t at : {second, first}) {
            const std::int32_t hundredths = digitsOf(record.int32(at), 0, 4);
            if (hundredths > 0) return std::optional<double>(hundredths / 100.0);
        }
        return std::optional<double>();
    };
    auto v = visualMagnitude(magnitude(24, 32), magnitude(20, 28));
    if (!v) v = magnitude(36, 36);  // near infrared only
    if (!v) return std::nullopt;
    star.magnitude = *v;
    constexpr double kStepMas = 2;
    constexpr std::int32_t kNoMotion = 5000;
    star.motionRaMas = kStepMas * (digitsOf(record.int32(8), 0, 4) - kNoMotion);
    star.motionDecMas = kStepMas * (digitsOf(record.int32(8), 4, 4) - kNoMotion);
    return star;
}

}  // namespace

FoundCatalog openUsnoA(const CatalogFolder& folder) {
    constexpr int kZones = 24;
    constexpr int kTenthsPerZone = 75;
    const auto places = folder.withSubfolders();
    std::vector<ZoneFile> zones;
    bool found = false;
    for (int zone = 0; zone < kZones; ++zone) {
        const std::string name = "zone" + digits(zone * kTenthsPerZone, 4);
        ZoneFile file{name + ".cat", std::nullopt};
        for (const CatalogFolder& place : places) {
            if (file.stars) break;
            file.stars = place.file(name + ".cat");
            file.accelerator = place.file(name + ".acc");
        }
        found = found || file.stars;
        zones.push_back(std::move(file));
    }
    if (!found) return nullptr;
    return std::make_shared<const ZoneCatalog>(ZoneLayout{12, ByteOrder::big, kCentiarcsecondsPerDeg, true,
                                                          kTenthsPerZone / 10.0, false, kZones, completeA},
                                               folder.path(), std::move(zones));
}

FoundCatalog openUsnoB(const CatalogFolder& folder) {
    constexpr int kDegrees = 180;
    std::vector<ZoneFile> zones;
    bool found = false;
    for (int degree = 0; degree < kDegrees; ++degree) {
        const auto place = folder.folder(digits(degree, 3));
        for (int tenth = 10 * degree; tenth < 10 * degree + 10; ++tenth) {
            const std::string name = "b" + digits(tenth, 4);
            ZoneFile file{digits(degree, 3) + "/" + name + ".cat", std::nullopt};
            if (place) {
                file.stars = place->file(name + ".cat");
                file.accelerator = place->file(name + ".acc");
            }
            found = found || file.stars;
            zones.push_back(std::move(file));
        }
    }
    if (!found) return nullptr;
    return std::make_shared<const ZoneCatalog>(
        ZoneLayout{80, ByteOrder::little, kCentiarcsecondsPerDeg, true, 0.1, true, 10 * kDegrees, completeB},
        folder.path(), std::move(zones));
}

}  // namespace vantrel::catalogs

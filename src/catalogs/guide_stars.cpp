// The Guide Star Catalog (Lasker et al. 1990, AJ 99, 2019; version 1.1) and its re-reduction GSC-ACT: one
// FITS table for each of 9537 regions of the sky.
#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "catalogs/distributions.h"
#include "catalogs/fits_ascii_table.h"
#include "catalogs/sky_box.h"
#include "sky/cone.h"
#include "sky/field_number.h"

namespace vantrel::catalogs {

namespace {

struct Zone {
    const char* folder;
    int lastRegion;
};

constexpr std::array<Zone, 24> kZones = {{
    {"n0000", 593},  {"n0730", 1177}, {"n1500", 1728}, {"n2230", 2258}, {"n3000", 2780}, {"n3730", 3245},
    {"n4500", 3651}, {"n5230", 4013}, {"n6000", 4293}, {"n6730", 4491}, {"n7500", 4614}, {"n8230", 4662},
    {"s0000", 5259}, {"s0730", 5837}, {"s1500", 6411}, {"s2230", 6988}, {"s3000", 7522}, {"s3730", 8021},
    {"s4500", 8463}, {"s5230", 8839}, {"s6000", 9133}, {"s6730", 9345}, {"s7500", 9489}, {"s8230", 9537},
}};

struct Region {
    int number = 0;
    SkyBox box;
};

/// Fields of one row as numbers; failures name file and row.
class Row {
  public:
    Row(const FitsAsciiTable& table, std::string_view text, std::uint64_t number)
        : table_(table), text_(text), number_(number) {}

    double required(const TableColumn& column, double least, double most) const {
        const auto value = sky::fieldNumber(text_.substr(column.start, column.width));
        if (!value || !(*value >= least && *value <= most))
            table_.file().damaged("row " + std::to_string(number_) + " can't be understood");
        return *value;
    }

    /// What is missing or no number is the value given.
    double optional(const TableColumn& column, double otherwise) const {
        const auto value = sky::fieldNumber(text_.substr(column.start, column.width));
        return value && !std::isnan(*value) ? *value : otherwise;
    }

    char letter(const TableColumn& column) const { return text_[column.start]; }

  private:
    const FitsAsciiTable& table_;
    std::string_view text_;
    std::uint64_t number_;
};

/// Columns of the region table, with the places that they have in version 1.1.
class RegionColumns {
  public:
    explicit RegionColumns(const FitsAsciiTable& table)
        : number_(table.column("REG_NO", {0, 5})),
          raLow_{table.column("RA_H_LOW", {7, 2}), table.column("RA_M_LOW", {10, 2}),
                 table.column("RA_S_LOW", {13, 5})},
          raHigh_{table.column("RA_H_HI", {19, 2}), table.column("RA_M_HI", {22, 2}),
                  table.column("RA_S_HI", {25, 5})},
          signLow_(table.column("DECSI_LO", {31, 1})),
          decLow_{table.column("DEC_D_LO", {32, 2}), table.column("DEC_M_LO", {35, 4})},
          signHigh_(table.column("DECSI_HI", {40, 1})),
          decHigh_{table.column("DEC_D_HI", {41, 2}), table.column("DEC_M_HI", {44, 4})} {}

    Region region(const Row& row) const {
        const auto ra = [&](const std::array<TableColumn, 3>& at) {
            return 15 * (row.required(at[0], 0, 24) + row.required(at[1], 0, 60) / 60 +
                         row.required(at[2], 0, 60) / 3600);
        };
        const auto dec = [&](const TableColumn& sign, const std::array<TableColumn, 2>& at) {
            const double size = row.required(at[0], 0, 90) + row.required(at[1], 0, 60) / 60;
            return row.letter(sign) == '-' ? -size : size;
        };
        const auto [south, north] = std::minmax({dec(signLow_, decLow_), dec(signHigh_, decHigh_)});
        const double last = kZones.back().lastRegion;
        return {static_cast<int>(row.required(number_, 1, last)), {ra(raLow_), ra(raHigh_), south, north}};
    }

  private:
    TableColumn number_;
    std::array<TableColumn, 3> raLow_;
    std::array<TableColumn, 3> raHigh_;
    TableColumn signLow_;
    std::array<TableColumn, 2> decLow_;
    TableColumn signHigh_;
    std::array<TableColumn, 2> decHigh_;
};

std::vector<Region> readRegions(const std::filesystem::path& path) {
    const FitsAsciiTable table(path);
    const RegionColumns columns(table);
    std::vector<Region> regions;
    table.eachRow([&](std::string_view text, std::uint64_t number) {
        regions.push_back(columns.region(Row(table, text, number)));
    });
    return regions;
}

/// The mean of the measurements of one star, weighted with their errors.
class MeanStar {
  public:
    void add(double ra, double dec, double positionError, double magnitude, double magnitudeError) {
        if (place_ == 0) firstRa_ = ra;
        const double place = weight(positionError);
        const double light = weight(magnitudeError);
        ra_ += place * std::remainder(ra - firstRa_, 360.0);  // measurements may lie on both sides of 0
        dec_ += place * dec;
        magnitude_ += light * magnitude;
        place_ += place;
        light_ += light;
    }

    /// Nothing when no measurement was added since the last call.
    std::optional<sky::MovingStar> take() {
        if (place_ == 0) return std::nullopt;
        const sky::MovingStar mean{sky::wrappedDeg(firstRa_ + ra_ / place_), dec_ / place_,
                                   magnitude_ / light_};
        *this = MeanStar();
        return mean;
    }

  private:
    static double weight(double error) {
        constexpr double kSmallest = 0.01;  // arcseconds or magnitudes; some errors are given as 0
        return 1 / (std::max(kSmallest, error) * std::max(kSmallest, error));
    }

    double firstRa_ = 0;
    double ra_ = 0;
    double dec_ = 0;
    double magnitude_ = 0;
    double place_ = 0;
    double light_ = 0;
};

class GuideStars : public sky::StarCatalog {
  public:
    GuideStars(std::filesystem::path folder, std::vector<Region> regions,
               std::vector<std::optional<CatalogFolder>> zones)
        : folder_(std::move(folder)), regions_(std::move(regions)), zones_(std::move(zones)) {}

    std::vector<sky::CatalogStar> cone(const sky::ConeQuery& query) const override {
        if (!sky::isSearchable(query)) return {};
        sky::ConeCollector stars(query);
        for (const Region& region : regions_) {
            if (region.box.mayTouch(query.raDeg, query.decDeg, query.radiusDeg + kEdgeDeg))
                search(fileOf(region.number), query, stars);
        }
        return stars.take();
    }

    std::filesystem::path folder() const override { return folder_; }

  private:
    std::filesystem::path fileOf(int region) const {
        std::size_t zone = 0;
        while (kZones[zone].lastRegion < region) ++zone;
        const std::string number = std::to_string(region);
        const std::string name = std::string(4 - number.size(), '0') + number + ".gsc";
        if (zones_[zone]) {
            if (auto file = zones_[zone]->file(name)) return std::move(*file);
        }
        throw sky::CatalogError(std::string("the file ") + kZones[zone].folder + "/" + name +
                                " of the star catalogue is missing in " + folder_.string());
    }

    static void search(const std::filesystem::path& path, const sky::ConeQuery& query,
                       sky::ConeCollector& stars) {
        const FitsAsciiTable table(path);
        const auto id = table.column("GSC_ID", {0, 5});
        const auto ra = table.column("RA_DEG", {5, 9});
        const auto dec = table.column("DEC_DEG", {14, 9});
        const auto positionError = table.column("POS_ERR", {23, 5});
        const auto magnitude = table.column("MAG", {28, 5});
        const auto magnitudeError = table.column("MAG_ERR", {33, 4});
        const auto kind = table.column("CLASS", {39, 1});
        double last = -1;
        MeanStar mean;
        const auto finish = [&] {
            if (const auto star = mean.take()) stars.offer(*star, kAnyEpoch);
        };
        table.eachRow([&](std::string_view text, std::uint64_t number) {
            const Row row(table, text, number);
            const double declination = row.required(dec, -90, 90);
            // Most rows are far away, and reading numbers is what takes time.
            if (std::abs(declination - query.decDeg) > query.radiusDeg + kEdgeDeg) return;
            const double star = row.required(id, 0, 99'999);
            if (star != last) finish();
            last = star;
            if (row.required(kind, 0, 9) != 0) return;  // galaxies, blends, artefacts
            mean.add(row.required(ra, 0, 360), declination, row.optional(positionError, 1),
                     row.required(magnitude, -5, 99), row.optional(magnitudeError, 1));
        });
        finish();
    }

    /// Regions' edges are given to a tenth of an arcminute, and a star's measurements differ by less.
    static constexpr double kEdgeDeg = 0.01;
    static constexpr double kAnyEpoch = 2000;  // the catalogue has no motions

    std::filesystem::path folder_;
    std::vector<Region> regions_;
    std::vector<std::optional<CatalogFolder>> zones_;
};

}  // namespace

FoundCatalog openGuideStars(const CatalogFolder& folder) {
    const auto inner = folder.folder("gsc");
    const CatalogFolder& place = inner ? *inner : folder;
    std::vector<std::optional<CatalogFolder>> zones;
    bool found = false;
    for (const Zone& zone : kZones) {
        zones.push_back(place.folder(zone.folder));
        found = found || zones.back();
    }
    if (!found) return nullptr;
    std::optional<std::filesystem::path> regions;
    for (const CatalogFolder& tables : {folder, place}) {
        if (regions) break;
        if (const auto inside = tables.folder("tables")) regions = inside->file("regions.tbl");
        if (!regions) regions = tables.file("regions.tbl");
    }
    if (!regions)
        throw sky::CatalogError("the file tables/regions.tbl of the star catalogue is missing in " +
                                folder.path().string());
    return std::make_shared<const GuideStars>(folder.path(), readRegions(*regions), std::move(zones));
}

}  // namespace vantrel::catalogs

// Draws the sets of fields that solver_table.py solves: their sizes, and ten places all over the sky in each.
//
//   solver-fields FOLDER [COUNT]
//
// Stars stand at their J2000 places, so the files are dated 2000. Beside the files stands fields.csv, with
// what is true of each and the hints that go with it: a start one degree off, a scale 3 % off.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "fits/fits_writing.h"
#include "sky/compact_catalog.h"
#include "sky/vector3.h"
#include "support/star_field.h"

namespace {

using namespace vantrel;

struct FieldSet {
    const char* name;
    std::size_t width, height;
    double scale;  ///< arcseconds per pixel
    unsigned seed;
};

constexpr FieldSet kSets[] = {
    {"1", 1152, 864, 3.0, 1},   {"2", 1632, 1224, 2.4, 2},   {"16", 4656, 3520, 1.1, 3},
    {"26", 6248, 4176, 1.0, 4}, {"small", 768, 516, 3.0, 5},
};

constexpr std::size_t kFewestStars = 8;

std::size_t starsInside(const sky::StarCatalog& catalog, const test::StarField& field) {
    const sky::SkyPosition centre = field.wcs.reference;
    std::size_t count = 0;
    for (const auto& star : catalog.cone({.raDeg = centre.ra, .decDeg = centre.dec, .radiusDeg = 1})) {
        const auto at = field.wcs.toPixel({star.raDeg, star.decDeg});
        count += at && at->x > 3 && at->y > 3 && at->x < static_cast<double>(field.width) - 4 &&
                 at->y < static_cast<double>(field.height) - 4;
    }
    return count;
}

test::StarField fieldOf(const FieldSet& set, const sky::StarCatalog& catalog, std::mt19937& random) {
    std::uniform_real_distribution<double> unit(0, 1);
    test::StarField field;
    field.width = set.width;
    field.height = set.height;
    do {
        field.fwhm = 2 + 2 * unit(random);
        field.seed = static_cast<unsigned>(random());
        const sky::SkyPosition centre = test::anywhere(random);
        field.wcs =
            test::wcsFor(set.width, set.height, centre, set.scale, 360 * unit(random), unit(random) < 0.5);
    } while (starsInside(catalog, field) < kFewestStars);
    return field;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: solver-fields FOLDER [COUNT]\n");
        return 2;
    }
    const std::filesystem::path folder = argv[1];
    const int count = argc > 2 ? std::atoi(argv[2]) : 10;
    std::filesystem::create_directories(folder);
    std::ofstream table(folder / "fields.csv");
    table.precision(12);
    table << "set,file,ra_deg,dec_deg,cd1_1,cd1_2,cd2_1,cd2_2,start_ra_deg,start_dec_deg,start_scale\n";
    const auto catalog = sky::CompactCatalog::openBuiltIn();
    for (const FieldSet& set : kSets) {
        std::mt19937 random(set.seed);
        for (int number = 0; number < count; ++number) {
            const test::StarField field = fieldOf(set, *catalog, random);
            const std::string name = std::string(set.name) + "-" + std::to_string(number) + ".fits";
            fits::writeFits(folder / name, field.width, field.height, test::drawField(catalog.get(), field),
                            {{"DATE-OBS", std::string("2000-01-01T12:00:00"), ""}});
            const double turn = number * 73.0 * sky::kDegree;
            const sky::SkyPosition centre = field.wcs.reference;
            const auto start = sky::fromTangentPlane({std::cos(turn), std::sin(turn)}, centre);
            const double* cd = field.wcs.cd;
            table << set.name << ',' << name << ',' << centre.ra << ',' << centre.dec << ',' << cd[0] << ','
                  << cd[1] << ',' << cd[2] << ',' << cd[3] << ',' << start.ra << ',' << start.dec << ','
                  << set.scale * (number % 2 == 0 ? 1.03 : 0.97) << '\n';
        }
    }
    return 0;
}

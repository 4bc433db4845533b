// The engine against drawn fields by the hundred: accuracy, small fields, hot pixels, and whether it ever
// finds what isn't there.
//
//   solver-trials accuracy|poles|small|hot|hot-small|cold-small|offset|reach [COUNT]
//   solver-trials beyond|points|noise|elsewhere [COUNT]     (what must not be found)
//   solver-trials blind|blind-small|blind-any-scale [COUNT]     (no position known; the last: nor a scale)
//   solver-trials blind-points|blind-noise|blind-elsewhere|blind-scrambled [COUNT]
//                                                            (no position known, nothing to be found)
//   solver-trials draw FILE WIDTH HEIGHT SCALE [RA DEC]     (one field as a FITS file, for timing)

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "fits/fits_image.h"
#include "fits/fits_writing.h"
#include "platform/user_machine.h"
#include "sky/compact_catalog.h"
#include "solver/pattern_store.h"
#include "solver/plate_solver.h"
#include "solver/wide_search.h"
#include "support/list_catalog.h"
#include "support/star_field.h"

namespace {

using namespace vantrel;
using namespace vantrel::sky;
using namespace vantrel::fits;
using namespace vantrel::solver;

struct Trial {
    test::StarField field;
    SkyPosition start;
    double scale = 1;  ///< as told to the engine
    double offset = 1.5;
};

struct Result {
    std::optional<SolvedPlate> solution;
    std::size_t stars = 0;
    double milliseconds = 0;
};

double millisecondsSince(std::chrono::steady_clock::time_point begin) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
}

FitsImage asImage(const std::vector<std::uint16_t>& counts, const test::StarField& field) {
    return FitsImage(field.width, field.height, std::vector<float>(counts.begin(), counts.end()));
}

PlateGeometry geometryOf(const Trial& trial, double grain) {
    return {static_cast<double>(trial.field.width), static_cast<double>(trial.field.height), trial.scale,
            trial.scale, grain};
}

Result solve(const Trial& trial, const StarCatalog& catalog, bool stars = true) {
    const auto image = asImage(test::drawField(stars ? &catalog : nullptr, trial.field), trial.field);
    const auto begin = std::chrono::steady_clock::now();
    const StarList found = findStars(image, {});
    const PlateGeometry geometry = geometryOf(trial, found.grain);
    const SearchArea area = searchArea(geometry, trial.start, trial.offset, found.stars.size());
    Result result;
    result.solution = solvePlate(geometry, found.stars, area, catalog.cone(area.query(2000, 99)), {});
    result.stars = found.stars.size();
    result.milliseconds = millisecondsSince(begin);
    return result;
}

const StarPatterns& patterns() {
    static const auto made =
        patternsOf(*CompactCatalog::openBuiltIn(), platform::cacheFolder(platform::processEnvironment),
                   [](const std::string& line) { std::puts(line.c_str()); });
    return *made;
}

/// How the whole sky is searched for a trial's field.
struct Blind {
    bool scaleKnown = true;
    double farthestFromStart = 180;      ///< places beyond are left out
    const StarCatalog* drawn = nullptr;  ///< the sky that the image shows; nothing is the catalogue's
    bool stars = true;                   ///< whether it shows any
};

Result solveBlind(const Trial& trial, const StarCatalog& catalog, const Blind& blind) {
    const StarCatalog* drawn = blind.drawn != nullptr ? blind.drawn : &catalog;
    const auto image = asImage(test::drawField(blind.stars ? drawn : nullptr, trial.field), trial.field);
    const StarPatterns& sky = patterns();
    const auto begin = std::chrono::steady_clock::now();
    const StarList found = findStars(image, {});
    const PlateGeometry geometry = geometryOf(trial, found.grain);
    WideSettings settings;
    settings.start = trial.start;
    settings.radiusDeg = blind.farthestFromStart;
    const auto wide = blind.scaleKnown ? searchWide(geometry, found.stars, sky, catalog, settings)
                                       : searchWideAnyScale(geometry, found.stars, sky, catalog, settings);
    Result result;
    if (wide) result.solution = wide->plate;
    result.stars = found.stars.size();
    result.milliseconds = millisecondsSince(begin);
    return result;
}

class Dice {
  public:
    explicit Dice(unsigned seed) : random(seed) {}
    double between(double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random);
    }
    bool coin() { return random() % 2 == 0; }
    SkyPosition near(SkyPosition place, double distance) {
        return fromTangentPlane({between(-distance, distance) * 0.7, between(-distance, distance) * 0.7},
                                place);
    }
    std::mt19937 random;
};

Trial trialOf(Dice& dice, std::size_t width, std::size_t height, double scale) {
    Trial trial;
    trial.field.width = width;
    trial.field.height = height;
    trial.field.seed = static_cast<unsigned>(dice.random());
    trial.field.fwhm = dice.between(1.8, 4.5);
    const SkyPosition centre = test::anywhere(dice.random);
    trial.field.wcs = test::wcsFor(width, height, centre, scale, dice.between(0, 360), dice.coin());
    trial.scale = scale * dice.between(0.86, 1.14);
    trial.start = dice.near(centre, 1);
    return trial;
}

/// Catalogue stars inside of the image, off its border.
std::size_t starsInside(const StarCatalog& catalog, const test::StarField& field) {
    const auto centre = field.wcs.reference;
    std::size_t count = 0;
    for (const auto& star : catalog.cone({.raDeg = centre.ra, .decDeg = centre.dec, .radiusDeg = 1})) {
        const auto at = field.wcs.toPixel({star.raDeg, star.decDeg});
        count += at && at->x > 3 && at->y > 3 && at->x < static_cast<double>(field.width) - 4 &&
                 at->y < static_cast<double>(field.height) - 4;
    }
    return count;
}

double offPixels(const Trial& trial, const SolvedPlate& solution) {
    const double scale = std::hypot(trial.field.wcs.cd[0], trial.field.wcs.cd[2]);
    return separationDeg(solution.centre, trial.field.wcs.reference) / scale;
}

void report(const char* name, int tried, const std::vector<double>& errors, int wrong, double slowest) {
    auto sorted = errors;
    std::sort(sorted.begin(), sorted.end());
    std::printf("%s: %zu of %d solved, %d wrong", name, errors.size(), tried, wrong);
    if (!sorted.empty()) {
        std::printf("; centre off by %.3f px (median), %.3f (95 %%), %.3f (worst)", sorted[sorted.size() / 2],
                    sorted[sorted.size() * 95 / 100], sorted.back());
    }
    std::printf("; slowest %.0f ms\n", slowest);
}

enum class Search { kNearby, kWide, kWideAnyScale };

/// A campaign of fields that are to be found.
struct Findable {
    const char* name;
    const char* title;
    unsigned seed;
    Search search;
    std::optional<Trial> (*make)(Dice& dice, const StarCatalog& catalog);
};

/// A campaign of tries that must come to nothing.
struct Unfindable {
    const char* name;
    const char* title;
    unsigned seed;
    Result (*attempt)(Dice& dice, const StarCatalog& catalog);
};

void tellUnsolved(const Trial& trial, const Result& result, const StarCatalog& catalog) {
    std::printf(
        "  unsolved: ra %.3f dec %.3f scale %.3f, %zu stars in the image, %zu in the catalogue, told %.3f\n",
        trial.field.wcs.reference.ra, trial.field.wcs.reference.dec,
        3600 * std::hypot(trial.field.wcs.cd[0], trial.field.wcs.cd[2]), result.stars,
        starsInside(catalog, trial.field), trial.scale);
}

void run(const Findable& campaign, int count, const StarCatalog& catalog) {
    Dice dice(campaign.seed);
    std::vector<double> errors;
    int tried = 0;
    int wrong = 0;
    double slowest = 0;
    while (tried < count) {
        const std::optional<Trial> trial = campaign.make(dice, catalog);
        if (!trial) continue;
        ++tried;
        const Result result =
            campaign.search == Search::kNearby
                ? solve(*trial, catalog)
                : solveBlind(*trial, catalog, {.scaleKnown = campaign.search == Search::kWide});
        slowest = std::max(slowest, result.milliseconds);
        if (!result.solution) {
            tellUnsolved(*trial, result, catalog);
            continue;
        }
        const double off = offPixels(*trial, *result.solution);
        if (off > 5)
            ++wrong;
        else
            errors.push_back(off);
    }
    report(campaign.title, count, errors, wrong, slowest);
}

void run(const Unfindable& campaign, int count, const StarCatalog& catalog) {
    Dice dice(campaign.seed);
    int solved = 0;
    std::vector<double> times;
    for (int i = 0; i < count; ++i) {
        const Result result = campaign.attempt(dice, catalog);
        solved += result.solution.has_value();
        times.push_back(result.milliseconds);
    }
    std::sort(times.begin(), times.end());
    std::printf("%s: %d false solutions in %d tries; %.0f ms (median), %.0f (95 %%), %.0f (worst)\n",
                campaign.title, solved, count, times[times.size() / 2], times[times.size() * 95 / 100],
                times.back());
}

/// Points strewn at random over an image of 1024 x 768, few to many.
std::vector<ImageStar> pointsByChance(Dice& dice) {
    std::vector<ImageStar> points;
    const auto count = static_cast<int>(dice.between(5, 400));
    points.reserve(static_cast<std::size_t>(count));
    for (int s = 0; s < count; ++s)
        points.push_back({dice.between(0, 1023), dice.between(0, 767), 1e5 / (s + 1.0)});
    return points;
}

Result solvePoints(Dice& dice, const StarCatalog& catalog) {
    const auto chance = pointsByChance(dice);
    const double scale = dice.between(1, 8);
    const PlateGeometry geometry{1024, 768, scale, scale, 1};
    const auto begin = std::chrono::steady_clock::now();
    const SearchArea area = searchArea(geometry, test::anywhere(dice.random), 1.5, chance.size());
    Result result;
    result.solution = solvePlate(geometry, chance, area, catalog.cone(area.query(2000, 99)), {});
    result.milliseconds = millisecondsSince(begin);
    return result;
}

/// In fields of 0.3 to 25 degrees without a position.
Result solvePointsBlind(Dice& dice, const StarCatalog& catalog) {
    const auto chance = pointsByChance(dice);
    const double scale = std::exp(dice.between(std::log(1), std::log(90)));
    const PlateGeometry geometry{1024, 768, scale, scale, 1};
    const StarPatterns& sky = patterns();
    const auto begin = std::chrono::steady_clock::now();
    Result result;
    if (const auto wide = searchWide(geometry, chance, sky, catalog, {})) result.solution = wide->plate;
    result.milliseconds = millisecondsSince(begin);
    return result;
}

/// The field's stars, each moved by up to a tenth of the field's width: the right stars in wrong patterns.
test::ListCatalog scrambled(const StarCatalog& catalog, const Trial& trial, Dice& dice) {
    const SkyPosition centre = trial.field.wcs.reference;
    const double width =
        static_cast<double>(trial.field.width) * std::hypot(trial.field.wcs.cd[0], trial.field.wcs.cd[2]);
    auto stars = catalog.cone({.raDeg = centre.ra, .decDeg = centre.dec, .radiusDeg = width});
    for (CatalogStar& star : stars) {
        const SkyPosition moved = fromTangentPlane(
            {dice.between(-0.1, 0.1) * width, dice.between(-0.1, 0.1) * width}, {star.raDeg, star.decDeg});
        star.raDeg = moved.ra;
        star.decDeg = moved.dec;
    }
    return test::ListCatalog(std::move(stars));
}

Trial trialAnyWidth(Dice& dice) {
    const double width = std::exp(dice.between(std::log(0.8), std::log(20)));
    Trial trial = trialOf(dice, 1024, 768, width * 3600 / 1024);
    // Wide fields are taken with small lenses, which don't see the faintest stars.
    trial.field.tenthMagnitude = 8000 / std::max(1.0, width / 2);
    return trial;
}

Trial trialElsewhere(Dice& dice) {
    Trial trial = trialOf(dice, 1024, 768, dice.between(1, 8));
    do trial.start = test::anywhere(dice.random);
    while (separationDeg(trial.start, trial.field.wcs.reference) < 15);
    return trial;
}

/// The simulator's customary field, from a start off by `distance` degrees; the search reaches as far as that
/// of a plate whose catalogue field is expanded by 30 %.
Trial trialOff(Dice& dice, double distance, double bearingDeg) {
    constexpr double kScale = 1.39 * 3600 / 1392;
    Trial trial = trialOf(dice, 1392, 1040, kScale);
    const PlateGeometry geometry{1392, 1040, trial.scale, trial.scale, 1};
    trial.offset = geometry.diagonalDeg() / 2 * 1.3;
    const double bearing = bearingDeg * kDegree;
    const double size = std::tan(distance * kDegree) / kDegree;
    trial.start =
        fromTangentPlane({size * std::sin(bearing), size * std::cos(bearing)}, trial.field.wcs.reference);
    return trial;
}

// ---- The campaigns

std::optional<Trial> usualField(Dice& dice, const StarCatalog& /*catalog*/) {
    return trialOf(dice, 1392, 1040, dice.between(0.8, 3.0) * 3600 / 1392);
}

/// With so many stars at the least; nothing when chance chose fewer.
std::optional<Trial> smallField(Dice& dice, const StarCatalog& catalog, std::size_t stars) {
    Trial trial = trialOf(dice, 1536, 1032, 0.64 * 3600 / 1536);
    return starsInside(catalog, trial.field) >= stars ? std::optional(trial) : std::nullopt;
}

std::optional<Trial> smallFieldOfSix(Dice& dice, const StarCatalog& catalog) {
    return smallField(dice, catalog, 6);
}

std::optional<Trial> smallFieldOfEight(Dice& dice, const StarCatalog& catalog) {
    return smallField(dice, catalog, 8);
}

std::optional<Trial> fieldWithHotPixels(Dice& dice, const StarCatalog& /*catalog*/) {
    Trial trial = trialOf(dice, 1392, 1040, dice.between(0.8, 3.0) * 3600 / 1392);
    trial.field.hotShare = dice.between(0.0001, 0.0008);
    return trial;
}

std::optional<Trial> fieldAFieldOff(Dice& dice, const StarCatalog& /*catalog*/) {
    const double width = std::exp(dice.between(std::log(0.8), std::log(28)));
    Trial trial = trialOf(dice, 1024, 768, width * 3600 / 1024);
    trial.offset = std::max(1.5, width);
    trial.start = dice.near(trial.field.wcs.reference, width);
    return trial;
}

std::optional<Trial> fieldAtAnEdge(Dice& dice, const StarCatalog& /*catalog*/) {
    Trial trial = trialOf(dice, 1392, 1040, dice.between(0.8, 3.0) * 3600 / 1392);
    SkyPosition& centre = trial.field.wcs.reference;
    if (dice.coin())
        centre.dec = (dice.coin() ? 1 : -1) * dice.between(88.5, 90);
    else
        centre.ra = std::fmod(360 + dice.between(-0.5, 0.5), 360.0);
    trial.start = dice.near(centre, 1);
    return trial;
}

std::optional<Trial> shortExposure(Dice& dice, const StarCatalog& catalog, bool hot) {
    Trial trial = trialOf(dice, 1536, 1032, dice.between(0.64, 1.0) * 3600 / 1536);
    const double share = dice.between(0.0001, 0.0008);
    trial.field.hotShare = hot ? share : 0;
    trial.field.tenthMagnitude = 2500;
    return starsInside(catalog, trial.field) >= 10 ? std::optional(trial) : std::nullopt;
}

std::optional<Trial> shortAndHot(Dice& dice, const StarCatalog& catalog) {
    return shortExposure(dice, catalog, true);
}

std::optional<Trial> shortAndCold(Dice& dice, const StarCatalog& catalog) {
    return shortExposure(dice, catalog, false);
}

std::optional<Trial> customaryFieldOff(Dice& dice, const StarCatalog& /*catalog*/) {
    const double distance = dice.between(1.2, 1.4);
    return trialOff(dice, distance, dice.between(0, 360));
}

std::optional<Trial> fieldOfAnyWidth(Dice& dice, const StarCatalog& /*catalog*/) {
    return trialAnyWidth(dice);
}

Result solveFarOff(Dice& dice, const StarCatalog& catalog) {
    return solve(trialOff(dice, 3, dice.coin() ? 90 : 270), catalog);
}

Result solveNoise(Dice& dice, const StarCatalog& catalog) {
    Trial trial = trialElsewhere(dice);
    trial.field.hotShare = dice.between(0, 0.002);
    return solve(trial, catalog, false);
}

Result solveElsewhere(Dice& dice, const StarCatalog& catalog) { return solve(trialElsewhere(dice), catalog); }

Result solveNoiseBlind(Dice& dice, const StarCatalog& catalog) {
    Trial trial = trialAnyWidth(dice);
    trial.field.hotShare = dice.between(0, 0.002);
    return solveBlind(trial, catalog, {.stars = false});
}

Result solveElsewhereBlind(Dice& dice, const StarCatalog& catalog) {
    Trial trial = trialAnyWidth(dice);
    const SkyPosition centre = trial.field.wcs.reference;
    trial.start = {std::fmod(centre.ra + 180, 360.0), -centre.dec};
    return solveBlind(trial, catalog, {.farthestFromStart = 150});
}

Result solveScrambledBlind(Dice& dice, const StarCatalog& catalog) {
    const Trial trial = trialAnyWidth(dice);
    const auto sky = scrambled(catalog, trial, dice);
    return solveBlind(trial, catalog, {.drawn = &sky});
}

constexpr Findable kFindable[] = {
    {"accuracy", "fields of 0.8 x 0.6 degrees and more", 11, Search::kNearby, usualField},
    {"small", "fields of 0.64 x 0.43 degrees with six stars or more", 12, Search::kNearby, smallFieldOfSix},
    {"hot", "fields with 0.01 to 0.08 % hot pixels", 13, Search::kNearby, fieldWithHotPixels},
    {"offset", "wide and narrow fields, a field off", 14, Search::kNearby, fieldAFieldOff},
    {"poles", "fields at the poles and across 0 hours", 15, Search::kNearby, fieldAtAnEdge},
    {"hot-small", "small fields in short exposures, hot pixels", 16, Search::kNearby, shortAndHot},
    {"cold-small", "small fields in short exposures", 16, Search::kNearby, shortAndCold},
    {"reach", "the customary field, start off by 1.2 to 1.4 degrees anywhere", 17, Search::kNearby,
     customaryFieldOff},
    {"blind", "fields of 0.8 to 20 degrees anywhere", 21, Search::kWide, fieldOfAnyWidth},
    {"blind-any-scale", "fields of 0.8 to 20 degrees anywhere of any scale", 22, Search::kWideAnyScale,
     fieldOfAnyWidth},
    {"blind-small", "fields of 0.64 x 0.43 degrees with eight stars or more, anywhere", 23, Search::kWide,
     smallFieldOfEight},
};

constexpr Unfindable kUnfindable[] = {
    {"beyond", "the customary field, start off by 3 degrees in right ascension", 18, solveFarOff},
    {"points", "points strewn at random", 77, solvePoints},
    {"noise", "noise and hot pixels", 78, solveNoise},
    {"elsewhere", "another region of the sky", 79, solveElsewhere},
    {"blind-points", "points strewn at random, the whole sky", 24, solvePointsBlind},
    {"blind-noise", "noise and hot pixels, the whole sky", 25, solveNoiseBlind},
    {"blind-elsewhere", "the whole sky but the field's own region", 26, solveElsewhereBlind},
    {"blind-scrambled", "the right stars in wrong places, the whole sky", 27, solveScrambledBlind},
};

int draw(int argc, char** argv, const StarCatalog& catalog) {
    test::StarField field;
    field.width = static_cast<std::size_t>(std::atoi(argv[3]));
    field.height = static_cast<std::size_t>(std::atoi(argv[4]));
    const double scale = std::atof(argv[5]);
    const SkyPosition centre{argc > 7 ? std::atof(argv[6]) : 120, argc > 7 ? std::atof(argv[7]) : 25};
    field.wcs = test::wcsFor(field.width, field.height, centre, scale, 33, false);
    writeFits(argv[2], field.width, field.height, test::drawField(&catalog, field), {});
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string what = argc > 1 ? argv[1] : "";
    const int count = argc > 2 ? std::atoi(argv[2]) : 200;
    const auto catalog = CompactCatalog::openBuiltIn();
    if (what == "draw" && argc >= 6) return draw(argc, argv, *catalog);
    for (const Findable& campaign : kFindable)
        if (what == campaign.name) {
            run(campaign, count, *catalog);
            return 0;
        }
    for (const Unfindable& campaign : kUnfindable)
        if (what == campaign.name) {
            run(campaign, count, *catalog);
            return 0;
        }
    std::fprintf(stderr, "see the head of bench/solver_trials.cpp\n");
    return 2;
}

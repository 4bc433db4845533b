// How far the solver goes with what nights really bring: stars trailed, out of focus, doubled; skies bright
// or uneven; sensors with faults; lenses that bend. Prints one row for each step of each series.
//
//   solver-hard-cases [COUNT] [SERIES] [deep]
//
// COUNT fields (20 unless told otherwise) are drawn for each step anywhere on the sky, and solved from a
// start up to a degree off and a scale up to 3 % off; then, in the last columns, what the program says of the
// first that wasn't solved. Series of a deep sky show stars to magnitude 16 of which Tycho-2 has the bright
// ones only; the fainter are made, so are their numbers (see support/deep_sky.h). With "deep" they are solved
// by a compact catalogue of that sky, else by Tycho-2 as all the others.

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "catalogs/deep_catalog.h"
#include "fits/fits_image.h"
#include "sky/catalog_writer.h"
#include "sky/compact_catalog.h"
#include "solver/image_solving.h"
#include "support/deep_sky.h"
#include "support/star_field.h"
#include "support/temp_folder.h"

namespace {

using namespace vantrel;
using namespace vantrel::sky;
using namespace vantrel::solver;

struct Scene {
    test::FrameRecipe recipe;
    TangentWcs wcs;
    double widthDeg = 1.4;
    double tenthMagnitude = 8000;  ///< electrons of a star of magnitude 10
    bool deepSky = false;
    std::mt19937 random;

    double middleX() const { return recipe.width / 2.0; }
    double middleY() const { return recipe.height / 2.0; }
};

using Spoil = std::function<void(Scene& scene, double step)>;

struct Series {
    const char* name;
    const char* unit;
    std::vector<double> steps;
    Spoil beforeStars;  ///< changes the camera
    Spoil afterStars;   ///< changes what is drawn
};

void trail(Scene& scene, double length) {
    const double angle = std::uniform_real_distribution<double>(0, 3.1)(scene.random);
    const double x = length / 2 * std::cos(angle);
    const double y = length / 2 * std::sin(angle);
    for (const test::FrameStar& s : scene.recipe.stars) {
        const double peak = s.flux() / (s.sigma() * std::sqrt(2 * 3.14159265) * length);
        scene.recipe.trails.push_back({s.x - x, s.y - y, s.x + x, s.y + y, s.width, peak, 0, 0});
    }
    scene.recipe.stars.clear();
}

void defocus(Scene& scene, double radius) {
    const double hole = 0.4 * radius;
    for (const test::FrameStar& s : scene.recipe.stars)
        scene.recipe.discs.push_back(
            {s.x, s.y, radius, hole, s.flux() / (3.14159265 * (radius * radius - hole * hole)), 1.5});
    scene.recipe.stars.clear();
}

void jolt(Scene& scene, double distance) {
    const auto stars = scene.recipe.stars;
    for (test::FrameStar s : stars) {
        s.x += distance;
        s.peak *= 0.7;
        scene.recipe.stars.push_back(s);
    }
}

void keepBrightest(Scene& scene, double count) {
    auto& stars = scene.recipe.stars;
    std::erase_if(stars, [&](const test::FrameStar& s) {
        return s.x < 4 || s.y < 4 || s.x > scene.recipe.width - 5 || s.y > scene.recipe.height - 5;
    });
    std::ranges::sort(stars, std::greater(), &test::FrameStar::peak);
    if (static_cast<double>(stars.size()) > count) stars.resize(static_cast<std::size_t>(count));
}

/// Of the third order: how much nearer to the middle the corners stand.
void bend(Scene& scene, double percent) {
    const double corner = std::hypot(scene.middleX(), scene.middleY());
    for (test::FrameStar& s : scene.recipe.stars) {
        const double x = s.x - scene.middleX();
        const double y = s.y - scene.middleY();
        const double r = std::hypot(x, y) / corner;
        s.x -= x * percent / 100 * r * r;
        s.y -= y * percent / 100 * r * r;
    }
}

void brightenSky(Scene& scene, double electrons) {
    scene.recipe.sky = electrons;
    scene.recipe.gradientX = 0.6 * electrons;
    scene.recipe.gradientY = 0.3 * electrons;
}

void addHotColumns(Scene& scene, double count) {
    for (int i = 0; i < static_cast<int>(count); ++i) {
        const int column = static_cast<int>(scene.random() % static_cast<unsigned>(scene.recipe.width));
        scene.recipe.defects.push_back({column, 0, column + 1, scene.recipe.height, 4000, false});
    }
}

void addSatellites(Scene& scene, double count) {
    std::uniform_real_distribution<double> unit(0, 1);
    for (int i = 0; i < static_cast<int>(count); ++i)
        scene.recipe.trails.push_back({0, scene.recipe.height * unit(scene.random),
                                       static_cast<double>(scene.recipe.width),
                                       scene.recipe.height * unit(scene.random), 4, 4000, 0, 0});
}

/// An exposure in which a star of magnitude 16 is just seen.
void showDeepSky(Scene& scene, double width) {
    scene.widthDeg = width;
    scene.tenthMagnitude = 200'000;
    scene.deepSky = true;
}

const std::vector<Series>& allSeries() {
    static const std::vector<Series> series = {
        {"as it ought to be", "", {0}, {}, {}},
        {"trail", "px", {6, 12, 25, 50, 100}, {}, trail},
        {"out of focus, disc's radius", "px", {4, 8, 16, 32}, {}, defocus},
        {"doubled by a jolt", "px", {6, 15, 40}, {}, jolt},
        {"few stars", "left", {20, 10, 8, 6, 5}, {}, keepBrightest},
        {"bright sky, uneven", "e", {3000, 12000, 40000}, brightenSky, {}},
        {"vignetting",
         "of the light",
         {0.4, 0.7, 0.95},
         [](Scene& s, double v) {
             s.recipe.vignetting = v;
             s.recipe.sky = 3000;
         },
         {}},
        {"amplifier glow",
         "e",
         {3000, 20000, 60000},
         [](Scene& s, double v) {
             s.recipe.nebula = {s.recipe.width - 20.0, s.recipe.height - 40.0, 250, v};
         },
         {}},
        {"hot columns", "of 1392", {5, 30, 120}, addHotColumns, {}},
        {"satellites", "", {1, 5, 20}, addSatellites, {}},
        {"colour mosaic, field",
         "°",
         {0.7, 1.4, 5},
         [](Scene& s, double v) {
             s.recipe.mosaic = true;
             s.widthDeg = v;
         },
         {}},
        {"wide field", "°", {20, 40, 60, 75}, [](Scene& s, double v) { s.widthDeg = v; }, {}},
        {"lens bends at 5°, corners", "% in", {1, 3, 6}, [](Scene& s, double) { s.widthDeg = 5; }, bend},
        {"lens bends at 40°, corners", "% in", {1, 3, 6}, [](Scene& s, double) { s.widthDeg = 40; }, bend},
        {"narrow field", "°", {0.6, 0.4, 0.3, 0.2}, [](Scene& s, double v) { s.widthDeg = v; }, {}},
        {"narrow field of a deep sky", "°", {0.8, 0.6, 0.4, 0.3, 0.2}, showDeepSky, {}},
    };
    return series;
}

void addStars(Scene& scene, const StarCatalog& catalog) {
    const auto& recipe = scene.recipe;
    const double radius = separationDeg(scene.wcs.reference, scene.wcs.toSky({0, 0})) * 1.05 + 0.02;
    // Wide fields are taken with small lenses, which don't see the faintest stars.
    const double tenth = scene.tenthMagnitude / std::max(1.0, scene.widthDeg / 2);
    for (const auto& star : catalog.cone({.raDeg = scene.wcs.reference.ra,
                            .decDeg = scene.wcs.reference.dec,
                            .radiusDeg = radius,
                            .maxStars = 20'000,
                            .brightestFirst = true})) {
        const auto at = scene.wcs.toPixel({star.raDeg, star.decDeg});
        if (!at || std::abs(at->x - scene.middleX()) > recipe.width ||
            std::abs(at->y - scene.middleY()) > recipe.height)
            continue;
        test::FrameStar drawn{at->x, at->y, 2.8, 1};
        drawn.peak = tenth * std::pow(10, 0.4 * (10 - star.magnitude)) / drawn.flux();
        scene.recipe.stars.push_back(drawn);
    }
}

/// Of the stars around a field, as far as a search reaches; in a file that goes with this.
class DeepCatalog {
  public:
    DeepCatalog(const StarCatalog& tycho, SkyPosition centre, std::mt19937& random) {
        constexpr double kReachDeg = 3, kFaintest = 16.5;
        constexpr std::uint32_t kBands = catalogs::kDeepBands;
        CatalogWriter writer(folder_ / "deep.bin", {.bands = kBands, .magnitudeStep = 0.1}, 2000);
        writer.add(test::deepSky(tycho, centre, kReachDeg, kFaintest, random), kBands);
        writer.finish();
        catalog_.emplace(folder_ / "deep.bin");
    }
    const StarCatalog& stars() const { return *catalog_; }

  private:
    test::TempFolder folder_{test::TempFolder::quickPlace()};
    std::optional<CompactCatalog> catalog_;
};

void run(const Series& series, double step, int count, const StarCatalog& tycho, bool withDeep) {
    static test::FramePainter painter(1);
    int solved = 0, wrong = 0;
    double seconds = 0;
    std::string said;
    for (int i = 0; i < count; ++i) {
        Scene scene;
        scene.random.seed(static_cast<unsigned>(i));
        scene.recipe.width = 1392;
        scene.recipe.height = 1040;
        scene.recipe.sky = 300;
        if (series.beforeStars) series.beforeStars(scene, step);
        std::uniform_real_distribution<double> unit(-1, 1);
        const double scale = 2 * std::tan(scene.widthDeg / 2 * kDegree) / 1392 / kArcsecond;
        scene.wcs = test::wcsFor(1392, 1040, test::anywhere(scene.random), scale, 180 * unit(scene.random),
                                 scene.random() % 2 == 0);
        std::optional<DeepCatalog> deep;
        if (scene.deepSky) deep.emplace(tycho, scene.wcs.reference, scene.random);
        addStars(scene, deep ? deep->stars() : tycho);
        const StarCatalog& catalog = deep && withDeep ? deep->stars() : tycho;
        if (series.afterStars) series.afterStars(scene, step);
        painter.startAt(static_cast<unsigned>(i));
        const auto image = fits::FitsImage::of(painter.paint(scene.recipe));
        const StarList stars = findStars(image, {});
        ImageClues clues;
        clues.start =
            fromTangentPlane({0.7 * unit(scene.random), 0.7 * unit(scene.random)}, scene.wcs.reference);
        clues.scales = {scale * (1 + 0.03 * unit(scene.random))};
        clues.epochYear = 2000;
        const std::clock_t begin = std::clock();
        const auto outcome = solveImage(image, stars, clues, catalog, {});
        seconds += static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC / count;
        if (!outcome.solution) {
            if (said.empty()) said = outcome.whyNot.english();
            continue;
        }
        const double off = separationDeg(outcome.solution->centre, scene.wcs.reference) * 3600 / scale;
        (off < 0.05 * scene.recipe.width ? solved : wrong) += 1;
    }
    std::printf("| %s | %g %s | %d of %d | %d | %.3f | %s |\n", series.name, step, series.unit, solved, count,
                wrong, seconds, said.c_str());
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
    const int count = argc > 1 ? std::atoi(argv[1]) : 20;
    const std::string only = argc > 2 ? argv[2] : "";
    const bool deep = argc > 3 && std::string(argv[3]) == "deep";
    const auto catalog = CompactCatalog::openBuiltIn();
    std::puts("| series | step | solved | wrong | s of CPU | what is said |");
    std::puts("|---|---|---|---|---|---|");
    for (const Series& series : allSeries())
        for (const double step : series.steps)
            if (only.empty() || only == series.name) run(series, step, count, *catalog, deep);
    return 0;
}

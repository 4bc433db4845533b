// Where the time of a solve goes, step by step, held against one plain pass over the pixels of the same file.
// Argument: image size in megapixels.

#include <cmath>
#include <filesystem>
#include <map>
#include <numeric>

#include <benchmark/benchmark.h>

#include "fits/fits_image.h"
#include "fits/fits_writing.h"
#include "sky/compact_catalog.h"
#include "solver/image_reduction.h"
#include "solver/plate_solver.h"
#include "solver/source_extractor.h"
#include "support/star_field.h"

namespace {

using namespace vantrel;
using namespace vantrel::sky;
using namespace vantrel::fits;
using namespace vantrel::solver;

constexpr double kWidthDeg = 1.4;

const CompactCatalog& catalog() {
    static const auto opened = CompactCatalog::openBuiltIn();
    return *opened;
}

struct Job {
    std::filesystem::path file;
    PlateGeometry geometry;
    SkyPosition start{120.4, 25.3};
};

/// A drawn field of this size in a file, made once.
const Job& job(std::int64_t megapixels) {
    static std::map<std::int64_t, Job> jobs;
    Job& job = jobs[megapixels];
    if (!job.file.empty()) return job;
    test::StarField field;
    field.width =
        static_cast<std::size_t>(std::sqrt(static_cast<double>(megapixels) * 1e6 * 4 / 3)) & ~std::size_t{1};
    field.height = field.width * 3 / 4;
    const double scale = kWidthDeg * 3600 / static_cast<double>(field.width);
    field.wcs = test::wcsFor(field.width, field.height, {120, 25}, scale, 33, false);
    job.file =
        std::filesystem::temp_directory_path() / ("vantrel-bench-" + std::to_string(megapixels) + ".fits");
    writeFits(job.file, field.width, field.height, test::drawField(&catalog(), field), {});
    job.geometry = {static_cast<double>(field.width), static_cast<double>(field.height), scale * 1.03,
                    scale * 1.03, 1};
    return job;
}

StarList starsOf(const Job& job) { return findStars(FitsImage::open(job.file), {}); }

PlateGeometry geometryOf(const Job& job, const StarList& stars) {
    PlateGeometry geometry = job.geometry;
    geometry.grain = stars.grain;
    return geometry;
}

void passOverPixels(benchmark::State& state) {
    const FitsImage image = FitsImage::open(job(state.range(0)).file);
    std::vector<float> pixels(image.width() * image.height());
    image.readRows(0, pixels);
    for (auto _ : state) benchmark::DoNotOptimize(std::reduce(pixels.begin(), pixels.end(), 0.0F));
}

void readFile(benchmark::State& state) {
    const Job& j = job(state.range(0));
    std::vector<float> rows;
    for (auto _ : state) {
        const FitsImage image = FitsImage::open(j.file);
        rows.resize(image.width() * 16);
        for (std::size_t y = 0; y + 16 <= image.height(); y += 16) image.readRows(y, rows);
        benchmark::DoNotOptimize(rows.data());
    }
}

void readAndReduce(benchmark::State& state) {
    const Job& j = job(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(reduceImage(FitsImage::open(j.file), {}));
}

void extract(benchmark::State& state) {
    const ReducedImage reduced = reduceImage(FitsImage::open(job(state.range(0)).file), {});
    for (auto _ : state)
        benchmark::DoNotOptimize(extractSources(reduced.pixels, reduced.width, reduced.height, {}));
}

void openCatalogue(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(CompactCatalog::openBuiltIn());
}

void lookUpCatalogue(benchmark::State& state) {
    const Job& j = job(state.range(0));
    const StarList stars = starsOf(j);
    const SearchArea area = searchArea(geometryOf(j, stars), j.start, 1.75, stars.stars.size());
    for (auto _ : state) benchmark::DoNotOptimize(catalog().cone(area.query(2026, 99)));
}

void matchAndFit(benchmark::State& state) {
    const Job& j = job(state.range(0));
    const StarList stars = starsOf(j);
    const PlateGeometry geometry = geometryOf(j, stars);
    const SearchArea area = searchArea(geometry, j.start, 1.75, stars.stars.size());
    const auto around = catalog().cone(area.query(2026, 99));
    for (auto _ : state) {
        const auto solution = solvePlate(geometry, stars.stars, area, around, {});
        if (!solution) state.SkipWithError("not solved");
    }
}

void giveUp(benchmark::State& state) {
    const Job& j = job(state.range(0));
    const StarList stars = starsOf(j);
    const PlateGeometry geometry = geometryOf(j, stars);
    const SearchArea area = searchArea(geometry, {300, -40}, 1.75, stars.stars.size());
    const auto around = catalog().cone(area.query(2026, 99));
    for (auto _ : state) benchmark::DoNotOptimize(solvePlate(geometry, stars.stars, area, around, {}));
}

#define VANTREL_SIZES Arg(1)->Arg(2)->Arg(16)->Arg(26)->Unit(benchmark::kMillisecond)
BENCHMARK(passOverPixels)->VANTREL_SIZES;
BENCHMARK(readFile)->VANTREL_SIZES;
BENCHMARK(readAndReduce)->VANTREL_SIZES;
BENCHMARK(extract)->VANTREL_SIZES;
BENCHMARK(openCatalogue)->Unit(benchmark::kMillisecond);
BENCHMARK(lookUpCatalogue)->VANTREL_SIZES;
BENCHMARK(matchAndFit)->VANTREL_SIZES;
BENCHMARK(giveUp)->VANTREL_SIZES;

}  // namespace

BENCHMARK_MAIN();

// Live adjusting: from the end of an exposure to new digits, and what of that following the stars from frame
// to frame could save. Argument: image size in megapixels.
#include <cmath>
#include <filesystem>
#include <map>

#include <benchmark/benchmark.h>

#include "engine/axis/live_axis.h"
#include "engine/axis/simulated_mount.h"
#include "fits/fits_image.h"
#include "fits/fits_writing.h"
#include "sky/compact_catalog.h"
#include "solver/image_reduction.h"
#include "solver/plate_solver.h"
#include "support/star_field.h"

namespace {

using namespace vantrel;

constexpr double kWidthDeg = 1.4;
constexpr double kLst = 9;
constexpr sky::SkyPosition kCentre{120, 25};

const sky::CompactCatalog& catalog() {
    static const auto opened = sky::CompactCatalog::openBuiltIn();
    return *opened;
}

/// What a camera has read out.
struct Frame {
    std::size_t width = 0, height = 0;
    double scale = 0;  // arc-seconds a pixel
    std::vector<std::uint16_t> pixels;
    std::filesystem::path file;
};

const Frame& frameOf(std::int64_t megapixels) {
    static std::map<std::int64_t, Frame> frames;
    Frame& frame = frames[megapixels];
    if (!frame.pixels.empty()) return frame;
    test::StarField field;
    field.width =
        static_cast<std::size_t>(std::sqrt(static_cast<double>(megapixels) * 1e6 * 4 / 3)) & ~std::size_t{1};
    field.height = field.width * 3 / 4;
    frame.width = field.width;
    frame.height = field.height;
    frame.scale = kWidthDeg * 3600 / static_cast<double>(field.width);
    field.wcs = test::wcsFor(field.width, field.height, kCentre, frame.scale, 33, false);
    frame.pixels = test::drawField(&catalog(), field);
    frame.file =
        std::filesystem::temp_directory_path() / ("vantrel-live-" + std::to_string(megapixels) + ".fits");
    fits::writeFits(frame.file, frame.width, frame.height, frame.pixels, {});
    return frame;
}

solver::StarList starsOf(const Frame& frame) {
    return solver::findStars(fits::FitsImage::open(frame.file), {});
}

engine::Plate plateOf(const Frame& frame, const solver::StarList& stars) {
    const solver::PlateGeometry geometry{static_cast<double>(frame.width), static_cast<double>(frame.height),
                                         frame.scale, frame.scale, stars.grain};
    const solver::SearchArea area = solver::searchArea(geometry, kCentre, 0.2, stars.stars.size());
    const auto around = catalog().cone(area.query(2026, 99));
    const auto solution = solver::solvePlate(geometry, stars.stars, area, around, {});
    if (!solution) return {};
    const sky::TangentWcs wcs = solver::wcsOf(*solution, geometry);
    const double angle = std::atan2(wcs.cd[0], wcs.cd[2]) * 180 / std::numbers::pi;
    return {.hourAngle = kLst - wcs.reference.ra / 15,
            .declination = wcs.reference.dec,
            .positionAngle = angle,
            .covariance = engine::PlateCovariance::ofSigmas(0.3, 12)};
}

engine::LiveAxis measuredAxis() {
    const double degrees = std::numbers::pi / 180;
    return {{{std::sin(0.3 * degrees), 0, std::cos(0.3 * degrees)}, {9, 0, 9}}, {50, engine::standardAir(0)}};
}

/// Saved, solved, and told.
void fromFrameToDigits(benchmark::State& state) {
    const Frame& frame = frameOf(state.range(0));
    engine::LiveAxis live = measuredAxis();
    for (auto _ : state) {
        fits::writeFits(frame.file, frame.width, frame.height, frame.pixels, {});
        const auto reading = live.follow(plateOf(frame, starsOf(frame)), kLst);
        if (!reading || !reading->trustworthy()) state.SkipWithError("not told");
    }
}

/// What any way of following stars has to do as well.
void fromFrameToStars(benchmark::State& state) {
    const Frame& frame = frameOf(state.range(0));
    for (auto _ : state) {
        fits::writeFits(frame.file, frame.width, frame.height, frame.pixels, {});
        benchmark::DoNotOptimize(starsOf(frame));
    }
}

/// What it would save.
void fromStarsToDigits(benchmark::State& state) {
    const Frame& frame = frameOf(state.range(0));
    const solver::StarList stars = starsOf(frame);
    engine::LiveAxis live = measuredAxis();
    for (auto _ : state) benchmark::DoNotOptimize(live.follow(plateOf(frame, stars), kLst));
}

#define VANTREL_SIZES Arg(1)->Arg(16)->Arg(26)->Unit(benchmark::kMillisecond)->UseRealTime()
BENCHMARK(fromFrameToDigits)->VANTREL_SIZES;
BENCHMARK(fromFrameToStars)->VANTREL_SIZES;
BENCHMARK(fromStarsToDigits)->VANTREL_SIZES;

}  // namespace

BENCHMARK_MAIN();

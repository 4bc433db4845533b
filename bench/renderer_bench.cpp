// What a simulated exposure costs, part by part.

#include <benchmark/benchmark.h>

#include "observatory/telescopes/camera.h"
#include "observatory/telescopes/renderer.h"
#include "platform/queued_event_loop.h"
#include "sky/compact_catalog.h"
#include "sky/epoch.h"

namespace vantrel::observatory {
namespace {

platform::Instant tonight() { return platform::parseInstant("2026-11-24T20:00:00Z").value(); }

void skyOfDate(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(sky::SkyOfDate(tonight()));
}
BENCHMARK(skyOfDate)->Unit(benchmark::kMicrosecond);

void apparentPlace(benchmark::State& state) {
    const sky::SkyOfDate sky(tonight());
    sky::Vector3 star = sky::directionOf({100, 40});
    for (auto _ : state) benchmark::DoNotOptimize(sky.apparent(star));
}
BENCHMARK(apparentPlace);

/// By megapixels: one star for every 3000 pixels.
void drawing(benchmark::State& state) {
    SensorExposure exposure;
    exposure.width = 1392;
    exposure.height = static_cast<std::size_t>(state.range(0)) * 1'000'000 / exposure.width;
    exposure.sky = 30;
    NoiseSource noise(1);
    std::vector<StarSpot> stars(exposure.width * exposure.height / 3000);
    for (StarSpot& star : stars)
        star = {noise.uniform() * static_cast<double>(exposure.width),
                noise.uniform() * static_cast<double>(exposure.height), 50'000 * noise.uniform()};
    for (auto _ : state) benchmark::DoNotOptimize(drawFrame(exposure, stars, noise));
}
BENCHMARK(drawing)->Arg(1)->Arg(16)->Unit(benchmark::kMillisecond);

void wholeExposure(benchmark::State& state) {
    platform::VirtualTime time{tonight()};
    NoiseSource noise(1);
    Mount mount(time, noise);
    std::shared_ptr<const sky::StarCatalog> catalog = sky::CompactCatalog::openBuiltIn();
    Camera camera(mount, noise, [&catalog] { return catalog; });
    for (auto _ : state) benchmark::DoNotOptimize(camera.expose(time.utc(), "bench")());
}
BENCHMARK(wholeExposure)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vantrel::observatory

BENCHMARK_MAIN();

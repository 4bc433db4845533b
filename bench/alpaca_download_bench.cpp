// How long a picture of 16 megapixels takes from "the image is ready" to pixels, from a server on the
// loopback address, and how long the loop's other handlers have to wait meanwhile at most.

#include <algorithm>

#include <benchmark/benchmark.h>

#include "alpaca_server_process.h"
#include "headless/system_time.h"
#include "hosts/alpaca/camera.h"
#include "hosts/network_client.h"
#include "platform/queued_event_loop.h"

namespace vantrel::hosts::alpaca {
namespace {

using namespace std::chrono_literals;
using Progress = platform::CameraHardware::Progress;

void download(benchmark::State& state, const char* settings) {
    test::AlpacaServerProcess server(Json::parse(settings));
    headless::SystemTime time{headless::SystemTime::now(), [] { return -1; }};
    platform::QueuedEventLoop loop{time};
    platform::OutsideCalls calls;
    NetworkClient network{loop};
    platform::BackgroundThreads background{loop, calls};
    Client client{network, PumpedWait(loop, calls), 1};
    const Surroundings surroundings{.loop = loop,
                                    .client = client,
                                    .background = background,
                                    .search = searchNetwork,
                                    .discoveryPort = [] { return 32227; },
                                    .equinox = {},
                                    .openPage = {},
                                    .tell = [](const std::string&) {}};
    Camera camera(surroundings, {"camera", "", "Camera", {"127.0.0.1", server.port}, 0}, [](const auto&) {});
    camera.connect();

    platform::Milliseconds last{0};
    platform::Milliseconds longestGap{0};
    const auto window = loop.every(2ms, [&] {
        const auto now = loop.clock().sinceStart();
        longestGap = std::max(longestGap, now - std::exchange(last, now));
    });
    for (auto _ : state) {
        camera.start({.seconds = 0.05});
        while (camera.progress() == Progress::kExposing) loop.sleep(1ms);
        const auto start = last = loop.clock().sinceStart();
        longestGap = {};
        while (camera.progress() == Progress::kDownloading) loop.sleep(1ms);
        state.SetIterationTime(std::chrono::duration<double>(loop.clock().sinceStart() - start).count());
        state.counters["longest_gap_ms"] = static_cast<double>(longestGap.count());
        camera.take();
    }
}
BENCHMARK_CAPTURE(download, imageBytes, R"({"width": 4656, "height": 3520})")
    ->UseManualTime()
    ->Iterations(5)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(download, json, R"({"width": 4656, "height": 3520, "bytesNever": true})")
    ->UseManualTime()
    ->Iterations(2)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vantrel::hosts::alpaca

BENCHMARK_MAIN();

// What it costs to read a picture of 16 megapixels from an Alpaca camera.

#include <string>

#include <benchmark/benchmark.h>

#include "hosts/alpaca/image_bytes.h"
#include "hosts/alpaca/image_json.h"
#include "hosts/alpaca/image_messages.h"

namespace vantrel::hosts::alpaca {
namespace {

constexpr int kWidth = 4096;  // a power of two is the worst for the cache
constexpr int kHeight = 4096;

template <typename Number>
std::vector<Number> counts() {
    std::vector<Number> pixels(std::size_t{kWidth} * kHeight);
    for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<Number>(1000 + i * 7919 % 60000);
    return pixels;
}

template <typename Number, Element kElement>
void imageBytes(benchmark::State& state) {
    const std::string message = test::imageBytes(kElement, kWidth, kHeight, counts<Number>());
    for (auto _ : state) benchmark::DoNotOptimize(parseImageBytes(message, {kWidth, kHeight}));
}
BENCHMARK(imageBytes<std::uint16_t, Element::kUInt16>)->Unit(benchmark::kMillisecond);
BENCHMARK(imageBytes<std::int32_t, Element::kInt32>)->Unit(benchmark::kMillisecond);
BENCHMARK(imageBytes<double, Element::kDouble>)->Unit(benchmark::kMillisecond);

void imageJson(benchmark::State& state) {
    const auto pixels = counts<std::uint16_t>();
    std::string message = R"({"Type":2,"Rank":2,"Value":[)";
    for (int x = 0; x < kWidth; ++x) {
        message += x == 0 ? "[" : ",[";
        for (int y = 0; y < kHeight; ++y)
            message += (y == 0 ? "" : ",") + std::to_string(pixels.data()[x * kHeight + y]);
        message += "]";
    }
    message += R"(],"ErrorNumber":0,"ErrorMessage":""})";
    for (auto _ : state) benchmark::DoNotOptimize(parseImageJson(message, {kWidth, kHeight}));
    state.counters["megabytes"] = static_cast<double>(message.size()) / 1e6;
}
BENCHMARK(imageJson)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vantrel::hosts::alpaca

BENCHMARK_MAIN();

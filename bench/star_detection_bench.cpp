// What a full frame costs: finding its star, marking it, and for comparison one pass over its memory and a
// copy.
#include <numeric>

#include <benchmark/benchmark.h>

#include "correction/image_overlays.h"
#include "correction/stars/brightest_star.h"
#include "platform/dispatch_object.h"
#include "support/memory_settings_port.h"
#include "support/recording_log.h"
#include "support/star_frames.h"

namespace {

using namespace vantrel;

constexpr int kWidth = 6248, kHeight = 4176;  // 26 million pixels

platform::ImageArray fullFrame(bool crowded) {
    test::FrameRecipe recipe;
    recipe.width = kWidth;
    recipe.height = kHeight;
    recipe.gradientX = 400;
    recipe.wrongPixels = 1e-4;
    recipe.stars = {{3210.3, 2100.8, 3.2, 30'000}};
    test::FramePainter painter(5);
    for (int i = 0; crowded && i < 20'000; ++i)
        recipe.stars.push_back({static_cast<double>(painter.random()() % kWidth),
                                static_cast<double>(painter.random()() % kHeight), 3.2,
                                static_cast<double>(100 + painter.random()() % 3000)});
    return painter.paint(recipe);
}

void findStar(benchmark::State& state, bool crowded) {
    const platform::ImageArray image = fullFrame(crowded);
    for (auto _ : state) {
        const auto star = correction::BrightestStar3(image);
        if (std::hypot(star.x - 3210.3, star.y - 2100.8) > 0.1) state.SkipWithError("not the star");
        benchmark::DoNotOptimize(star);
    }
}

void onePass(benchmark::State& state) {
    const platform::ImageArray image = fullFrame(false);
    const auto& pixels = std::get<std::vector<std::uint16_t>>(image.pixels());
    for (auto _ : state)
        benchmark::DoNotOptimize(std::accumulate(pixels.begin(), pixels.end(), std::uint64_t{0}));
}

void copy(benchmark::State& state) {
    const platform::ImageArray image = fullFrame(false);
    for (auto _ : state) {
        auto pixels = image.pixels();
        benchmark::DoNotOptimize(pixels);
    }
}

/// An imaging program with one open image, which it reads again whenever it gets it back.
class Document : public platform::DispatchObject {
  public:
    explicit Document(platform::ImageRef image) : DispatchObject("Document"), image_(std::move(image)) {
        property("XSize", [] { return kWidth; });
        property("YSize", [] { return kHeight; });
        property("StretchMax", [] { return 60'000.0; });
        property(
            "ImageArray", [this] { return image_; },
            [this](const platform::Value& value) {
                image_ = value.toImage();
                benchmark::DoNotOptimize(image_->at(kWidth / 2, kHeight / 2));
            });
    }

  private:
    platform::ImageRef image_;
};

class Application : public platform::DispatchObject {
  public:
    explicit Application(const platform::ObjectRef& document) : DispatchObject("Application") {
        property("AutofocusStatus", [] { return 0; });
        property("CurrentDocument", [document] { return document; });
    }
};

struct Host : platform::AutomationHost {
    platform::ObjectRef application;
    platform::ObjectRef create(const std::string& /*progId*/) override { return application; }
    std::string serverPath(const std::string& /*progId*/) const override { return {}; }
    std::string profileDescription(const std::string& /*type*/, const std::string& /*id*/) const override {
        return {};
    }
};

/// Both hand-overs and the imaging program's next reading included.
template <typename Mark>
void drawMark(benchmark::State& state, Mark&& mark) {
    Host host;
    host.application = std::make_shared<Application>(
        std::make_shared<Document>(std::make_shared<platform::ImageArray>(fullFrame(false))));
    test::MemorySettingsPort settings;
    test::RecordingLog log;
    correction::OpenImage image(host, [] { return "MaxIm"; });
    correction::ImageOverlays overlays(image, settings, log);
    for (auto _ : state) mark(overlays);
    if (!log.lines.empty()) state.SkipWithError("a mark failed");
}

void crossHair(benchmark::State& state) {
    drawMark(state, [](correction::ImageOverlays& overlays) { overlays.CrossHair(std::nullopt); });
}
void rectangle(benchmark::State& state) {
    drawMark(state, [](correction::ImageOverlays& overlays) { overlays.DrawCenteredRectangles(0.2); });
}
void line(benchmark::State& state) {
    drawMark(state,
             [](correction::ImageOverlays& overlays) { overlays.DrawLineOnImage(100, 200, 6000, 4000); });
}

BENCHMARK_CAPTURE(findStar, oneStar, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(findStar, crowdedField, true)->Unit(benchmark::kMillisecond);
BENCHMARK(onePass)->Unit(benchmark::kMillisecond);
BENCHMARK(copy)->Unit(benchmark::kMillisecond);
BENCHMARK(crossHair)->Unit(benchmark::kMillisecond);
BENCHMARK(rectangle)->Unit(benchmark::kMillisecond);
BENCHMARK(line)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();

// What the image window costs at 60 million pixels: every redraw the operator may wait for.
#include <QApplication>
#include <QMouseEvent>
#include <random>

#include <benchmark/benchmark.h>

#include "platform/queued_event_loop.h"
#include "qt/image_view.h"
#include "qt/image_window.h"

namespace {

using namespace vantrel;

constexpr std::size_t kWidth = 9576, kHeight = 6388;

template <typename Pixel>
platform::ImageRef frame() {
    std::minstd_rand random(1);
    std::vector<Pixel> pixels(kWidth * kHeight);
    for (Pixel& pixel : pixels) pixel = static_cast<Pixel>(1000 + random() % 100);
    return std::make_shared<const platform::ImageArray>(kWidth, kHeight, std::move(pixels));
}

/// The window all over a screen of 1920 × 1080.
struct Desk {
    platform::VirtualTime time{platform::Instant{}};
    platform::QueuedEventLoop loop{time};
    qt::Theme theme;
    qt::Barrier barrier{[](const std::string& text) { throw std::runtime_error(text); }};
    platform::MemorySettings settings;
    imaging::OpenDocuments documents;
    qt::ImageWindow window{documents, settings, {loop, theme, barrier}};
    QImage screen{1920, 1080, QImage::Format_RGB32};

    explicit Desk(platform::ImageRef pixels) {
        window.resize(screen.size());
        arrive(std::move(pixels));
        draw();
    }
    void arrive(platform::ImageRef pixels) {
        imaging::ImageDocument document;
        document.pixels = std::move(pixels);
        documents.replaceCurrent(std::move(document));
    }
    void draw() {
        QApplication::processEvents();
        window.render(&screen);
    }
    qt::ImageView& view() { return *window.findChild<qt::ImageView*>("imageView"); }
};

template <typename Pixel>
void newImageArrives(benchmark::State& state) {
    const platform::ImageRef frames[] = {frame<Pixel>(), frame<Pixel>()};
    Desk desk(frames[0]);
    int next = 1;
    for (auto _ : state) {
        desk.arrive(frames[next]);
        next = 1 - next;
        desk.draw();
    }
}

void redraw(benchmark::State& state, bool fitted) {
    Desk desk(frame<std::uint16_t>());
    if (!fitted) desk.view().showPixels();
    for (auto _ : state) desk.draw();
}

void stretch(benchmark::State& state) {
    Desk desk(frame<std::uint16_t>());
    double white = 2000;
    for (auto _ : state) {
        desk.documents.setStretch(desk.documents.current(), imaging::Stretch{900, white});
        white += 1;
        desk.draw();
    }
}

void zoom(benchmark::State& state) {
    Desk desk(frame<std::uint16_t>());
    bool closer = true;
    for (auto _ : state) {
        closer ? desk.view().zoomIn() : desk.view().zoomOut();
        closer = !closer;
        desk.draw();
    }
}

/// At 1:1, by a quick hand.
void pan(benchmark::State& state) {
    Desk desk(frame<std::uint16_t>());
    desk.view().showPixels();
    const auto mouse = [&](QEvent::Type type, double x) {
        QMouseEvent event(type, QPointF(x, 300), QPointF(x, 300), Qt::LeftButton, Qt::LeftButton, {});
        QApplication::sendEvent(&desk.view(), &event);
    };
    mouse(QEvent::MouseButtonPress, 900);
    double x = 900;
    double step = -7;
    for (auto _ : state) {
        x += step;
        if (x < 100 || x > 1800) step = -step;
        mouse(QEvent::MouseMove, x);
        desk.draw();
    }
}

}  // namespace

BENCHMARK(newImageArrives<std::uint16_t>)
    ->Name("a new image arrives, 16 bits")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(newImageArrives<std::int32_t>)->Name("a new image arrives, 32 bits")->Unit(benchmark::kMillisecond);
BENCHMARK(newImageArrives<float>)->Name("a new image arrives, float")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(redraw, whole, true)->Name("redraw the whole image")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(redraw, pixels, false)->Name("redraw at 1:1")->Unit(benchmark::kMillisecond);
BENCHMARK(stretch)->Name("drag the stretch, whole image")->Unit(benchmark::kMillisecond);
BENCHMARK(zoom)->Name("zoom out to the whole image and in again")->Unit(benchmark::kMillisecond);
BENCHMARK(pan)->Name("draw the image about at 1:1")->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}

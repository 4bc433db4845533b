#include "observatory/telescopes/simulated_camera.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>
#include <utility>

#include "observatory/telescopes/dark_subtraction.h"
#include "platform/image_array.h"

namespace vantrel::observatory {
namespace {

constexpr double kFilterMove = 2;               // seconds
constexpr double kPixelsPerSecond = 4'000'000;  // of the download
constexpr int kMaxBin = 4;

struct Filter {
    const char* name;
    double transmission;  // 0 to 1
};
constexpr std::array<Filter, 5> kWheel = {
    {{"Luminance", 1}, {"Red", 0.3}, {"Green", 0.3}, {"Blue", 0.3}, {"H-alpha", 0.03}}};

}  // namespace

SimulatedCamera::SimulatedCamera(platform::EventLoop& loop, platform::Background& background,
                                 PictureSource source)
    : loop_(loop), background_(background), source_(std::move(source)) {
    facts_.maxBinX = facts_.maxBinY = kMaxBin;
    facts_.binsAlike = false;
    for (const Filter& filter : kWheel) facts_.filters.emplace_back(filter.name);
}

void SimulatedCamera::disconnect() {
    abort();
    connected_ = false;
}

const platform::CameraFacts& SimulatedCamera::facts() const {
    const PictureSource::Size sensor = source_.sensor();
    facts_.width = sensor.width;
    facts_.height = sensor.height;
    return facts_;
}

void SimulatedCamera::start(const platform::CameraOrder& order) {
    timer_.reset();
    drawing_.reset();
    order_ = order;
    progress_ = Progress::kExposing;
    const int wanted = order.filter.value_or(filter_);
    if (wanted == filter_) {
        beginExposure();
    } else {
        filter_ = wanted;
        after(kFilterMove, &SimulatedCamera::beginExposure);
    }
}

void SimulatedCamera::abort() {
    timer_.reset();
    drawing_.reset();
    picture_ = {};
    progress_ = Progress::kIdle;
}

platform::TakenPicture SimulatedCamera::take() {
    const Progress before = std::exchange(progress_, Progress::kIdle);
    if (before == Progress::kFailed) throw std::runtime_error(failure_);
    if (before != Progress::kReady) throw std::runtime_error("There is no picture");
    const imaging::Picture picture = std::exchange(picture_, {});
    platform::PlainPixels taken{*picture.pixels, {}};
    for (const fits::FitsCard& card : picture.header)
        taken.cards.push_back({card.keyword, card.value, card.comment});
    return taken;
}

Shot SimulatedCamera::shot() const {
    using Frame = platform::CameraOrder::Frame;
    const bool light = order_.frame == Frame::kLight || order_.frame == Frame::kFlat;
    ReadWindow window;
    window.binX = static_cast<std::size_t>(order_.binX);
    window.binY = static_cast<std::size_t>(order_.binY);
    const PictureSource::Size sensor = source_.sensor();
    window.width = sensor.width / window.binX;
    window.height = sensor.height / window.binY;
    if (order_.part) {
        window.left = static_cast<std::size_t>(order_.part->left);
        window.top = static_cast<std::size_t>(order_.part->top);
        window.width = static_cast<std::size_t>(order_.part->width);
        window.height = static_cast<std::size_t>(order_.part->height);
    }
    return {order_.seconds, light, kWheel.at(static_cast<std::size_t>(filter_)).transmission, window};
}

/// Goes on with the next step when the time has passed.
void SimulatedCamera::after(double seconds, void (SimulatedCamera::*next)()) {
    const platform::Milliseconds time{std::max(1L, std::lround(seconds * 1000))};
    timer_ = loop_.every(time, [this, next] {
        const platform::TimerHandle running = std::move(timer_);  // once is enough
        try {
            (this->*next)();
        } catch (const std::exception& error) {
            fail(error.what());
        }
    });
}

void SimulatedCamera::beginExposure() {
    draw(latent());
    after(order_.seconds, &SimulatedCamera::beginDownload);
}

LatentPicture SimulatedCamera::latent() const {
    const Shot asked = shot();
    const fits::FitsCard filter{"FILTER", std::string(kWheel.at(static_cast<std::size_t>(filter_)).name), ""};
    Shot dark = asked;
    dark.light = false;
    const bool subtract = order_.subtractDark && asked.light;
    return [filter, exposed = source_.expose(asked),
            darkness = subtract ? source_.expose(dark) : LatentPicture()] {
        imaging::Picture picture = exposed();
        if (darkness) picture.pixels = withoutDark(*picture.pixels, *darkness().pixels);
        picture.header.push_back(filter);
        return picture;
    };
}

void SimulatedCamera::draw(LatentPicture latent) {
    struct Drawing {
        LatentPicture latent;
        imaging::Picture picture;
        std::string failure;
    };
    picture_ = {};
    const auto drawing = std::make_shared<Drawing>(Drawing{std::move(latent), {}, {}});
    drawing_ = background_.run(
        [drawing] {
            try {
                drawing->picture = drawing->latent();
            } catch (const std::exception& error) {
                drawing->failure = error.what();
            }
        },
        [this, drawing] {
            const platform::BackgroundWork ended = std::move(drawing_);
            if (drawing->picture.pixels == nullptr) return fail(drawing->failure);
            picture_ = std::move(drawing->picture);
        });
}

void SimulatedCamera::beginDownload() {
    progress_ = Progress::kDownloading;
    const Shot asked = shot();
    const auto pixels = static_cast<double>(asked.window->width * asked.window->height);
    after(pixels / kPixelsPerSecond, &SimulatedCamera::finish);
}

/// A slow machine may still be drawing.
void SimulatedCamera::finish() {
    constexpr double kLook = 0.01;  // seconds
    if (picture_.pixels == nullptr) return after(kLook, &SimulatedCamera::finish);
    become(Progress::kReady);
}

void SimulatedCamera::fail(const std::string& failure) {
    timer_.reset();
    failure_ = failure;
    become(Progress::kFailed);
}

void SimulatedCamera::become(Progress progress) {
    progress_ = progress;
    if (onProgress) onProgress();
}

}  // namespace vantrel::observatory

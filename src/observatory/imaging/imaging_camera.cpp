#include "observatory/imaging/imaging_camera.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

#include "observatory/imaging/dark_subtraction.h"
#include "platform/image_array.h"
#include "platform/text.h"

namespace vantrel::observatory {
namespace {

constexpr double kFilterMove = 2;               // seconds
constexpr double kPixelsPerSecond = 4'000'000;  // of the download
constexpr double kLongestExposure = 24 * 3600;

void requireBetween(const char* what, double value, double low, double high) {
    if (!(value >= low && value <= high))
        throw std::runtime_error(std::string(what) + " must be between " + platform::toText(low) + " and " +
                                 platform::toText(high));
}

/// The order's part of the sensor; throws when it isn't inside.
ReadWindow windowOf(const ExposureOrder& order, const PictureSource::Size& sensor) {
    ReadWindow window;
    window.binX = static_cast<std::size_t>(order.binX);
    window.binY = static_cast<std::size_t>(order.binY);
    window.width = sensor.width / window.binX;
    window.height = sensor.height / window.binY;
    if (!order.subFrame) return window;
    const SubFrame& part = *order.subFrame;
    const bool inside =
        part.left >= 0 && part.top >= 0 && part.width > 0 && part.height > 0 &&
        static_cast<std::size_t>(part.left) + static_cast<std::size_t>(part.width) <= window.width &&
        static_cast<std::size_t>(part.top) + static_cast<std::size_t>(part.height) <= window.height;
    if (!inside) throw std::runtime_error("The sub-frame lies outside the sensor");
    window.left = static_cast<std::size_t>(part.left);
    window.top = static_cast<std::size_t>(part.top);
    window.width = static_cast<std::size_t>(part.width);
    window.height = static_cast<std::size_t>(part.height);
    return window;
}

}  // namespace

const std::vector<Filter>& ImagingCamera::filters() {
    static const std::vector<Filter> wheel = {
        {"Luminance", 1}, {"Red", 0.3}, {"Green", 0.3}, {"Blue", 0.3}, {"H-alpha", 0.03}};
    return wheel;
}

ImagingCamera::ImagingCamera(platform::EventLoop& loop, PictureSource source)
    : loop_(loop), source_(std::move(source)) {}

void ImagingCamera::connect(const std::string& program) {
    if (!holder_.empty() && holder_ != program)
        throw std::runtime_error("The camera is in use by " + holder_);
    holder_ = program;
}

void ImagingCamera::disconnect(const std::string& program) {
    if (holder_ != program) return;
    abort();
    holder_.clear();
}

void ImagingCamera::start(const ExposureOrder& order, Delivery delivery) {
    requireBetween("The exposure time", order.seconds, 0, kLongestExposure);
    requireBetween("Binning", order.binX, 1, kMaxBin);
    requireBetween("Binning", order.binY, 1, kMaxBin);
    requireBetween("The filter", order.filter, 0, static_cast<double>(filters().size()) - 1);
    windowOf(order, source_.sensor());
    timer_.reset();
    failure_.reset();
    order_ = order;
    delivery_ = std::move(delivery);
    if (order.filter == filter_) {
        beginExposure();
    } else {
        filter_ = order.filter;
        after(kFilterMove, &ImagingCamera::beginExposure);
    }
}

void ImagingCamera::abort() {
    if (!busy()) return;
    timer_.reset();
    picture_ = {};
    failure_.emplace(kAborted, "", "The exposure was aborted");
}

void ImagingCamera::requireSuccess() const {
    if (failure_) throw *failure_;
}

Shot ImagingCamera::shot() const {
    return {order_.seconds, order_.light, filters().at(static_cast<std::size_t>(filter_)).transmission,
            windowOf(order_, source_.sensor())};
}

/// Goes on with the next step when the time has passed.
void ImagingCamera::after(double seconds, void (ImagingCamera::*next)()) {
    const platform::Milliseconds time{std::max(1L, std::lround(seconds * 1000))};
    timer_ = loop_.every(time, [this, next] {
        const platform::TimerHandle running = std::move(timer_);  // once is enough
        try {
            (this->*next)();
        } catch (const std::exception& error) {
            timer_.reset();
            failure_.emplace(platform::error_number::kDriverException, "", error.what());
        }
    });
}

void ImagingCamera::beginExposure() {
    const Shot light = shot();
    picture_ = source_.expose(light);
    if (order_.subtractDark && light.light) {
        Shot dark = light;
        dark.light = false;
        picture_.pixels = withoutDark(*picture_.pixels, *source_.expose(dark).pixels);
    }
    picture_.header.push_back(
        {"FILTER", std::string(filters().at(static_cast<std::size_t>(filter_)).name), ""});
    after(order_.seconds, &ImagingCamera::beginDownload);
}

void ImagingCamera::beginDownload() {
    const auto pixels = static_cast<double>(picture_.pixels->width() * picture_.pixels->height());
    after(pixels / kPixelsPerSecond, &ImagingCamera::deliver);
}

void ImagingCamera::deliver() {
    const Delivery delivery = std::move(delivery_);
    if (delivery) delivery(std::exchange(picture_, {}));
}

}  // namespace vantrel::observatory

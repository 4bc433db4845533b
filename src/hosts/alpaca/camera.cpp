#include "hosts/alpaca/camera.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "hosts/alpaca/device_error.h"
#include "platform/clock.h"
#include "platform/text.h"

namespace vantrel::hosts::alpaca {

namespace {

using platform::CameraFacts;
using platform::CameraOrder;
using platform::Milliseconds;
using platform::PlainPixels;

constexpr double kLongestSide = 100'000;  // pixels: beyond any sensor
constexpr int kMostBinning = 64;
constexpr Milliseconds kTimeToBegin{15'000};
constexpr Milliseconds kBetweenMeasurements{10'000};

bool isLight(CameraOrder::Frame frame) {
    return frame == CameraOrder::Frame::kLight || frame == CameraOrder::Frame::kFlat;
}

const char* imageType(CameraOrder::Frame frame) {
    switch (frame) {
        case CameraOrder::Frame::kLight:
            return "Light Frame";
        case CameraOrder::Frame::kDark:
            return "Dark Frame";
        case CameraOrder::Frame::kBias:
            return "Bias Frame";
        case CameraOrder::Frame::kFlat:
            return "Flat Frame";
    }
    return "";
}

/// "2026-11-24T20:00:00.000"
std::string fitsTime(platform::Instant instant) {
    const platform::CivilTime time = platform::civilUtc(instant);
    std::string milliseconds = std::to_string(1000 + time.millisecond);
    return platform::formatTime(time, "yyyy-MM-ddTHH:mm:ss") + "." + milliseconds.substr(1);
}

/// What is read out, in binned pixels.
CameraOrder::Part partOf(const CameraOrder& order, const CameraFacts& facts) {
    if (order.part) return *order.part;
    return {0, 0, static_cast<int>(facts.width) / order.binX, static_cast<int>(facts.height) / order.binY};
}

}  // namespace

Camera::Camera(const Surroundings& surroundings, const DeviceRecord& device, Moved moved,
               WheelSearch findWheel)
    : surroundings_(surroundings),
      moved_(std::move(moved)),
      findWheel_(std::move(findWheel)),
      link_(surroundings, device, moved_) {}

// ---- connecting

void Camera::connect() {
    if (connected()) return;
    exposure_.reset();
    link_.connect();
    try {
        readFacts();
        connectWheel();
    } catch (...) {
        link_.disconnect();
        throw;
    }
    thermometer_.reset();
    thermometer_ = surroundings_.loop.every(kBetweenMeasurements, [this] {
        if (measuring_ == nullptr && connected()) measure(0);
    });
}

void Camera::disconnect() {
    exposure_.reset();
    thermometer_.reset();
    measuring_.reset();
    if (const auto wheel = std::move(wheel_)) wheel->disconnect();
    link_.disconnect();
}

void Camera::readFacts() {
    facts_ = {};
    facts_.width = sensorLength("cameraxsize");
    facts_.height = sensorLength("cameraysize");
    facts_.pixelSizeX = number("pixelsizex");
    facts_.pixelSizeY = number("pixelsizey");
    readBinning();
    facts_.shortest = std::max(0.0, number("exposuremin").value_or(facts_.shortest));
    facts_.longest = std::max(facts_.shortest, number("exposuremax").value_or(facts_.longest));
    readCooling();
    facts_.gain = readLevel(Level::kGain);
    facts_.offset = readLevel(Level::kOffset);
    canAbort_ = flag("canabortexposure");
    canStop_ = flag("canstopexposure");
    bayerPattern_ = bayerPattern();
}

/// Numbers between two limits, or places in a list of names.
std::optional<platform::CameraLevel> Camera::readLevel(Level level) {
    const std::string member = levelName(level);
    const auto value = number(member);
    if (!value) return std::nullopt;
    platform::CameraLevel known{.value = *value};
    if (const auto names = this->member(member + "s"); names && names->is_array())
        for (const Json& name : *names)
            known.names.push_back(name.is_string() ? name.get<std::string>() : "");
    if (!known.names.empty()) return known;
    const auto least = number(member + "min"), greatest = number(member + "max");
    if (least && greatest && *greatest > *least) known.range = platform::CameraRange{*least, *greatest};
    return known;
}

void Camera::readCooling() {
    facts_.temperature = number("ccdtemperature");
    facts_.canCool = flag("cansetccdtemperature");
    if (const auto on = member("cooleron")) facts_.cooling = flagIn(*on);
    if (facts_.canCool && facts_.cooling.value_or(false)) facts_.coolsTo = number("setccdtemperature");
    if (flag("cangetcoolerpower")) facts_.coolerPower = number("coolerpower");
}

void Camera::readBinning() {
    binning_.forget();
    const auto most = [this](const char* name) {
        return static_cast<int>(std::clamp(number(name).value_or(1), 1.0, double{kMostBinning}));
    };
    facts_.maxBinX = most("maxbinx");
    facts_.maxBinY = most("maxbiny");
    facts_.binsAlike = !flag("canasymmetricbin");
}

/// A camera without its wheel is still a camera.
void Camera::connectWheel() {
    if (!findWheel_) return;
    try {
        const auto found = findWheel_(link_.device().server);
        if (!found) return;
        auto wheel = std::make_unique<FilterWheel>(surroundings_, *found, moved_);
        wheel->connect();
        facts_.filters = wheel->filters();
        wheel_ = std::move(wheel);
    } catch (const GivenUp&) {
        throw;
    } catch (const std::runtime_error& error) {
        surroundings_.tell("The filter wheel can't be used: " + std::string(error.what()));
    }
}

/// What colours the upper left pixels of a colour camera have.
std::string Camera::bayerPattern() {
    constexpr int kBayer = 2;
    if (number("sensortype") != kBayer) return {};
    const bool swapX = std::fmod(number("bayeroffsetx").value_or(0), 2) != 0;
    const bool swapY = std::fmod(number("bayeroffsety").value_or(0), 2) != 0;
    if (swapY) return swapX ? "BGGR" : "GBRG";
    return swapX ? "GRBG" : "RGGB";
}

/// Nothing where the camera hasn't got it.
std::optional<Json> Camera::member(const std::string& name) {
    try {
        return link_.get(name);
    } catch (const UnknownMember&) {
        return std::nullopt;
    } catch (const DeviceError&) {
        return std::nullopt;
    }
}

std::optional<double> Camera::number(const std::string& name) {
    const auto value = member(name);
    return value ? numberIn(*value) : std::nullopt;
}

bool Camera::flag(const std::string& name) {
    const auto value = member(name);
    return value && flagIn(*value).value_or(false);
}

std::size_t Camera::sensorLength(const std::string& name) {
    const double pixels = numberIn(link_.get(name)).value_or(0);
    if (!(pixels >= 1 && pixels <= kLongestSide))
        throw std::runtime_error(link_.name() + " doesn't say how large its sensor is.");
    return static_cast<std::size_t>(pixels);
}

// ---- exposing

void Camera::start(const CameraOrder& order) {
    requireSensible(order);
    if (exposure_ != nullptr) abort();
    order_ = order;
    if (order_.frame == CameraOrder::Frame::kBias) order_.seconds = facts_.shortest;
    setUp();
    try {
        begin(order_);
    } catch (const DeviceError& error) {
        // It is still busy with an exposure that isn't ours.
        if (error.number() != device_error::kInvalidOperation) throw;
        stop();
        begin(order_);
    }
    exposure_ = std::make_unique<Exposure>(surroundings_, link_, order_.seconds,
                                           ImageLimits{facts_.width, facts_.height});
}

void Camera::requireSensible(const CameraOrder& order) const {
    const auto refuse = [this](const std::string& what) {
        throw std::runtime_error(name() + " can't " + what + ".");
    };
    if (!connected()) throw std::runtime_error(name() + " is not connected.");
    if (order.binX < 1 || order.binY < 1 || order.binX > facts_.maxBinX || order.binY > facts_.maxBinY)
        refuse("bin by " + std::to_string(order.binX) + "x" + std::to_string(order.binY) + "; " +
               std::to_string(facts_.maxBinX) + "x" + std::to_string(facts_.maxBinY) + " is the most");
    if (order.binX != order.binY && facts_.binsAlike) refuse("bin columns and rows differently");
    const bool isBias = order.frame == CameraOrder::Frame::kBias;
    if (!isBias && !(order.seconds >= facts_.shortest && order.seconds <= facts_.longest))
        refuse("expose for " + platform::toText(order.seconds) + " s, only for " +
               platform::toText(facts_.shortest) + " to " + platform::toText(facts_.longest) + " s");
    const auto part = partOf(order, facts_);
    const auto isOn = [](int first, int length, int bin, std::size_t pixels) {
        return first >= 0 && length >= 1 &&
               static_cast<std::int64_t>(first) + length <= static_cast<std::int64_t>(pixels) / bin;
    };
    if (!isOn(part.left, part.width, order.binX, facts_.width) ||
        !isOn(part.top, part.height, order.binY, facts_.height))
        refuse("read a part that isn't on its sensor");
    if (order.filter && facts_.filters.empty()) refuse("change filters");
}

/// Binning, frame and filter of the order.
void Camera::setUp() {
    order_ = binning_.ask<DeviceError>(
        order_, [this](const CameraOrder& binned) { setBinning(binned); }, name(), surroundings_.tell);
    const CameraOrder::Part part = partOf(order_, facts_);
    put("startx", "StartX", part.left);
    put("starty", "StartY", part.top);
    put("numx", "NumX", part.width);
    put("numy", "NumY", part.height);
    if (order_.filter) wheel_->turnTo(*order_.filter);
}

void Camera::setBinning(const CameraOrder& order) {
    put("binx", "BinX", order.binX);
    put("biny", "BinY", order.binY);
}

void Camera::put(const char* member, const char* parameter, int value) {
    link_.put(member, {{parameter, formText(value)}});
}

void Camera::begin(const CameraOrder& order) {
    link_.put("startexposure",
              {{"Duration", formText(order.seconds)}, {"Light", formText(isLight(order.frame))}},
              kTimeToBegin);
}

void Camera::abort() {
    if (exposure_ == nullptr) return;
    const Progress was = progress();
    exposure_.reset();
    if (was == Progress::kExposing || was == Progress::kDownloading) stop();
}

/// Tells the camera to stop, if that can be told it.
void Camera::stop() {
    if (canAbort_)
        link_.put("abortexposure", {});
    else if (canStop_)
        link_.put("stopexposure", {});
}

Camera::Progress Camera::progress() const {
    return exposure_ == nullptr ? Progress::kIdle : exposure_->progress();
}

platform::TakenPicture Camera::take() {
    const Progress now = progress();
    if (now == Progress::kIdle) throw std::runtime_error(name() + " has no picture.");
    if (now != Progress::kReady && now != Progress::kFailed)
        throw std::runtime_error(name() + " isn't ready with its picture.");
    const auto exposure = std::move(exposure_);
    if (now == Progress::kFailed) throw std::runtime_error(exposure->failure());
    return picture(*exposure);
}

/// The pixels and what a file says of them.
PlainPixels Camera::picture(const Exposure& exposure) const {
    PlainPixels picture{exposure.image(), {}};
    const CameraOrder::Part part = partOf(order_, facts_);
    const auto add = [&](const char* keyword, decltype(platform::PictureCard::value) value) {
        picture.cards.push_back({keyword, std::move(value)});
    };
    add("DATE-OBS", fitsTime(exposure.start()));
    add("EXPTIME", exposure.seconds());
    add("IMAGETYP", imageType(order_.frame));
    if (facts_.pixelSizeX) add("XPIXSZ", *facts_.pixelSizeX * order_.binX);
    if (facts_.pixelSizeY) add("YPIXSZ", *facts_.pixelSizeY * order_.binY);
    add("XBINNING", double(order_.binX));
    add("YBINNING", double(order_.binY));
    add("XORGSUBF", double(part.left));
    add("YORGSUBF", double(part.top));
    if (order_.filter) add("FILTER", facts_.filters[static_cast<std::size_t>(*order_.filter)]);
    if (!bayerPattern_.empty() && order_.binX == 1 && order_.binY == 1) add("BAYERPAT", bayerPattern_);
    add("INSTRUME", name());
    add("ROWORDER", "TOP-DOWN");
    return picture;
}

// ---- gain, offset and temperature

void Camera::set(Level level, double value) {
    auto& known = level == Level::kGain ? facts_.gain : facts_.offset;
    if (!known) return CameraHardware::set(level, value);
    const int wanted = platform::toInt32(value);
    level == Level::kGain ? put("gain", "Gain", wanted) : put("offset", "Offset", wanted);
    if (known) known->value = wanted;
}

void Camera::cool(std::optional<double> celsius) {
    if (!facts_.canCool && !facts_.cooling) throw std::runtime_error(name() + " can't be cooled.");
    if (celsius && facts_.canCool)
        link_.put("setccdtemperature", {{"SetCCDTemperature", formText(*celsius)}});
    link_.put("cooleron", {{"CoolerOn", formText(celsius.has_value())}});
    if (facts_.cooling) facts_.cooling = celsius.has_value();
    facts_.coolsTo = facts_.canCool ? celsius : std::nullopt;
}

/// One reading after the other of those that it has.
void Camera::measure(std::size_t reading) {
    const auto note = [](auto& known, const auto& heard) {
        if (known && heard) *known = *heard;
    };
    const auto levelReading = [&](std::optional<platform::CameraLevel>& level) {
        return [&level](const Json& value) {
            if (const auto heard = numberIn(value); level && heard) level->value = *heard;
        };
    };
    struct Reading {
        const char* member;
        bool known;
        std::function<void(const Json&)> note;
    };
    const Reading readings[] = {
        {"ccdtemperature", facts_.temperature.has_value(),
         [this, note](const Json& value) { note(facts_.temperature, numberIn(value)); }},
        {"cooleron", facts_.cooling.has_value(),
         [this, note](const Json& value) { note(facts_.cooling, flagIn(value)); }},
        {"coolerpower", facts_.coolerPower.has_value(),
         [this, note](const Json& value) { note(facts_.coolerPower, numberIn(value)); }},
        {"gain", facts_.gain.has_value(), levelReading(facts_.gain)},
        {"offset", facts_.offset.has_value(), levelReading(facts_.offset)}};
    while (reading < std::size(readings) && !readings[reading].known) ++reading;
    if (reading == std::size(readings)) return;
    measuring_ = link_.ask(readings[reading].member,
                           [this, reading, hear = readings[reading].note](const Result<Json>& result) {
                               const auto held = std::move(measuring_);
                               if (const Json* const value = std::get_if<Json>(&result)) hear(*value);
                               if (connected()) measure(reading + 1);
                           });
}

}  // namespace vantrel::hosts::alpaca

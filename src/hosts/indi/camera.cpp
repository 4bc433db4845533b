#include "hosts/indi/camera.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

#include "platform/text.h"

namespace vantrel::hosts::indi {

using platform::CameraFacts;
using platform::CameraOrder;
using platform::Milliseconds;

namespace {

constexpr const char* kExposure = "CCD_EXPOSURE";
constexpr const char* kSeconds = "CCD_EXPOSURE_VALUE";
constexpr const char* kBinning = "CCD_BINNING";
constexpr const char* kAbort = "CCD_ABORT_EXPOSURE";
constexpr const char* kPicture = "CCD1";
constexpr const char* kTemperature = "CCD_TEMPERATURE";
constexpr const char* kCelsius = "CCD_TEMPERATURE_VALUE";
constexpr const char* kCooler = "CCD_COOLER";
constexpr const char* kCoolerOn = "COOLER_ON";
constexpr const char* kCoolerPower = "CCD_COOLER_POWER";
constexpr const char* kFilter = "FILTER_SLOT";
constexpr const char* kFilterNumber = "FILTER_SLOT_VALUE";
constexpr double kLargestSensor = 100'000;  // pixels along a side

constexpr Milliseconds kCameraAnswer{5000};
constexpr Milliseconds kBegin{10'000};  // some draw or prepare before they say that they expose
constexpr Milliseconds kFilterTurn{60'000};
constexpr Milliseconds kEnabling{1000};
constexpr Milliseconds kAfterAbort{5000};
constexpr Milliseconds kDownload{60'000};         // from the end of the exposure to the picture's first byte
constexpr Milliseconds kLongestPicture{600'000};  // for a whole one to come

Milliseconds milliseconds(double seconds) { return Milliseconds{static_cast<long long>(seconds * 1000)}; }

/// The camera's own promise of how large a picture may be: colour in 64 bits, and a long header.
std::size_t mostBytes(const CameraFacts& facts) {
    constexpr std::size_t kHeader = 1U << 20U, kPixel = 24;
    const std::size_t pixels = std::max<std::size_t>(facts.width, 1) * std::max<std::size_t>(facts.height, 1);
    return pixels > BlobReceiver::kLargest / kPixel ? BlobReceiver::kLargest : pixels * kPixel + kHeader;
}

std::optional<double> positive(const Property* property, const char* element) {
    const auto value = property == nullptr ? std::nullopt : property->number(element);
    return value && *value > 0 ? value : std::nullopt;
}

std::optional<platform::CameraRange> rangeOf(const PropertyElement& element) {
    if (!(element.maximum > element.minimum)) return std::nullopt;
    return platform::CameraRange{element.minimum, element.maximum};
}

const char* frameElement(CameraOrder::Frame frame) {
    switch (frame) {
        case CameraOrder::Frame::kDark:
            return "FRAME_DARK";
        case CameraOrder::Frame::kBias:
            return "FRAME_BIAS";
        case CameraOrder::Frame::kFlat:
            return "FRAME_FLAT";
        default:
            return "FRAME_LIGHT";
    }
}

}  // namespace

Camera::Camera(Surroundings surroundings, const std::shared_ptr<Client>& client, const std::string& name)
    : surroundings_(std::move(surroundings)),
      device_(client, name, surroundings_.wait, surroundings_.tell,
              {.complete = [this] { return complete(); },
               .incomplete = "tells nothing of its sensor",
               .setUp = [this] { setUp(); },
               .onLost = [this] { fail("The connection to " + this->name() + " was lost"); }}),
      blobs_(surroundings_.loop.clock(), {.accept = [this](const Blob& blob) { return accept(blob); },
                                          .finished = [this](Blob blob) { receive(std::move(blob)); },
                                          .spoiled = [this](const std::string& why) { fail(why); }}),
      pictures_(surroundings_.loop, surroundings_.streams, client->link().server(), kLongestPicture,
                {.onOpen = [this] { askForPictures(); },
                 .onElement = [this](const XmlElement& element) { taken_ |= element.name == "pingReply"; },
                 .onLost = [this](const std::string& why) { losePictures(why); },
                 .onTick = [this] { watchDeadline(); }},
                &blobs_),
      listening_(client->events.subscribe([this](const Event& event) { hear(event); })) {}

// ---- connecting

void Camera::connect() {
    device_.connect();
    pictures_.start();
}

void Camera::disconnect() {
    exposure_.reset();
    device_.disconnect();
    pictures_.stop();
}

bool Camera::complete() const {
    const Property* sensor = device_.find("CCD_INFO");
    return device_.has(kExposure) && positive(sensor, "CCD_MAX_X") && positive(sensor, "CCD_MAX_Y");
}

void Camera::setUp() {
    const auto choose = [this](const char* property, const char* element) {
        const Property* known = device_.find(property);
        if (known != nullptr && known->element(element) != nullptr && !known->on(element))
            device_.setSwitch(property, element, property);
    };
    choose("UPLOAD_MODE", "UPLOAD_CLIENT");
    choose("CCD_TRANSFER_FORMAT", "FORMAT_FITS");
    choose("CCD_COMPRESSION", "INDI_DISABLED");
    const std::string wheel = filterWheel();
    const Property* connection = device_.client().find(wheel, "CONNECTION");
    if (connection != nullptr && !connection->on("CONNECT"))
        device_.client().setSwitch(wheel, "CONNECTION", "CONNECT");
    askForPictures();
    coolsTo_.reset();
    binning_.forget();
    readFacts();
}

void Camera::askForPictures() {
    taken_ = false;
    asked_ = now();
    pictures_.send(enableBlobsOnly(name(), kPicture) + pingRequest("pictures"));
}

/// The device that turns the filters; empty when there is none.
std::string Camera::filterWheel() const {
    if (device_.has(kFilter)) return name();
    const Property* others = device_.find("ACTIVE_DEVICES");
    const std::string wheel = others == nullptr ? std::string() : others->text("ACTIVE_FILTER");
    return device_.client().has(wheel) ? wheel : std::string();
}

void Camera::readFacts() {
    facts_ = {};
    const Property* sensor = device_.find("CCD_INFO");
    facts_.width =
        static_cast<std::size_t>(std::min(positive(sensor, "CCD_MAX_X").value_or(0), kLargestSensor));
    facts_.height =
        static_cast<std::size_t>(std::min(positive(sensor, "CCD_MAX_Y").value_or(0), kLargestSensor));
    const auto pixel = positive(sensor, "CCD_PIXEL_SIZE");
    facts_.pixelSizeX = positive(sensor, "CCD_PIXEL_SIZE_X");
    facts_.pixelSizeY = positive(sensor, "CCD_PIXEL_SIZE_Y");
    if (!facts_.pixelSizeX) facts_.pixelSizeX = pixel;
    if (!facts_.pixelSizeY) facts_.pixelSizeY = pixel;
    facts_.focalLength = focalLength();
    facts_.maxBinX = greatestBin("HOR_BIN");
    facts_.maxBinY = greatestBin("VER_BIN");
    if (const Property* exposure = device_.find(kExposure))
        if (const PropertyElement* seconds = exposure->element(kSeconds);
            seconds != nullptr && seconds->maximum > seconds->minimum) {
            facts_.shortest = std::max(seconds->minimum, 0.0);
            facts_.longest = seconds->maximum;
        }
    readCooling();
    facts_.gain = readLevel(Level::kGain);
    facts_.offset = readLevel(Level::kOffset);
    facts_.filters = filterNames();
}

void Camera::readCooling() {
    const Property* temperature = device_.find(kTemperature);
    const PropertyElement* celsius = temperature == nullptr ? nullptr : temperature->element(kCelsius);
    if (celsius != nullptr) {
        facts_.temperature = temperature->number(kCelsius);
        facts_.canCool = temperature->writable;
        facts_.coolingRange = rangeOf(*celsius);
    }
    facts_.coolsTo = coolsTo_;
    if (const Property* cooler = device_.find(kCooler)) facts_.cooling = cooler->on(kCoolerOn);
    if (const Property* power = device_.find(kCoolerPower); power != nullptr && !power->elements.empty())
        facts_.coolerPower = power->number(power->elements.front().name);
}

std::optional<double> Camera::focalLength() const {
    if (const auto own = positive(device_.find("SCOPE_INFO"), "FOCAL_LENGTH")) return own;
    const Property* others = device_.find("ACTIVE_DEVICES");
    if (others == nullptr) return std::nullopt;
    const Client& client = device_.client();
    return positive(client.find(others->text("ACTIVE_TELESCOPE"), "TELESCOPE_INFO"),
                    "TELESCOPE_FOCAL_LENGTH");
}

int Camera::greatestBin(const char* axis) const {
    const Property* binning = device_.find(kBinning);
    const PropertyElement* element = binning == nullptr ? nullptr : binning->element(axis);
    return element == nullptr ? 1 : static_cast<int>(std::clamp(element->maximum, 1.0, 64.0));
}

std::vector<std::string> Camera::filterNames() const {
    const Client& client = device_.client();
    const std::string wheel = filterWheel();
    const Property* slot = client.find(wheel, kFilter);
    const PropertyElement* number = slot == nullptr ? nullptr : slot->element(kFilterNumber);
    if (number == nullptr) return {};
    std::vector<std::string> names;
    const Property* labels = client.find(wheel, "FILTER_NAME");
    const auto count = static_cast<std::size_t>(std::clamp(number->maximum, 0.0, 100.0));
    for (std::size_t i = 0; i < count; ++i) {
        const bool named =
            labels != nullptr && i < labels->elements.size() && !labels->elements[i].text.empty();
        names.push_back(named ? labels->elements[i].text : "Filter " + std::to_string(i + 1));
    }
    return names;
}

/// Drivers have a property of its own for it, or one for all that can be set.
Camera::Place Camera::placeOf(Level level) const {
    const bool isGain = level == Level::kGain;
    for (const auto& [property, element] :
         {isGain ? std::pair{"CCD_GAIN", "GAIN"} : std::pair{"CCD_OFFSET", "OFFSET"},
          std::pair{"CCD_CONTROLS", isGain ? "Gain" : "Offset"}})
        if (const Property* found = device_.find(property); found != nullptr && found->number(element))
            return {found, element};
    return {};
}

std::optional<platform::CameraLevel> Camera::readLevel(Level level) const {
    const Place place = placeOf(level);
    if (place.property == nullptr) return std::nullopt;
    const PropertyElement& element = *place.property->element(place.element);
    return platform::CameraLevel{
        .value = element.number, .range = rangeOf(element), .canSet = place.property->writable};
}

// ---- exposures

void Camera::start(const CameraOrder& order) {
    device_.requireReady();
    abort();
    exposure_.reset();
    preparePictures();
    apply(order);
    Exposure exposure;
    exposure.seconds = order.seconds;
    exposure.begun = now();
    exposure.deadline = now() + milliseconds(order.seconds) + kDownload;
    exposure.request = device_.setNumbers(kExposure, {{kSeconds, order.seconds}},
                                          "an exposure of " + platform::toText(order.seconds) + " s");
    const long serial = exposure.request.serial;
    exposure_ = exposure;
    try {
        device_.await(exposure.request, kBegin, [&](const Property& answer) {
            return answer.wasBusy > serial || !exposure_ || exposure_->picture;
        });
    } catch (...) {
        exposure_.reset();
        throw;
    }
    if (!exposure_) throw std::runtime_error("The exposure was given up");
}

/// Sees that the second connection stands, and that nothing of an earlier exposure waits in it.
void Camera::preparePictures() {
    if (std::exchange(lateOnePossible_, false)) pictures_.stop();
    if (!pictures_.open()) pictures_.start();
    // Servers that don't answer pings get a second to do as they are told.
    const auto prepared = [&] { return pictures_.open() && (taken_ || now() - asked_ > kEnabling); };
    const auto outcome = surroundings_.wait.until(
        prepared, kCameraAnswer, [this](Milliseconds atMost) { return pictures_.serve(atMost); });
    if (outcome != PumpedWait::Outcome::kDone)
        throw std::runtime_error("The INDI server at " + device_.client().server() +
                                 " has no connection for the pictures of " + name());
}

void Camera::apply(const CameraOrder& order) {
    if (order.filter) setFilter(*order.filter);
    const CameraOrder taken = binning_.ask<Refusal>(
        order, [this](const CameraOrder& binned) { setBinning(binned); }, name(), surroundings_.tell);
    setFrame(taken);
    setFrameType(order.frame);
}

void Camera::setBinning(const CameraOrder& order) {
    const bool bins = order.binX > 1 || order.binY > 1;
    if (bins || device_.has(kBinning))
        ensure(kBinning, {{"HOR_BIN", order.binX}, {"VER_BIN", order.binY}},
               "binning " + std::to_string(order.binX) + " x " + std::to_string(order.binY));
}

void Camera::setFrame(const CameraOrder& order) {
    if (!order.part && !device_.has("CCD_FRAME")) return;
    NumberValues frame = {{"X", 0},
                          {"Y", 0},
                          {"WIDTH", static_cast<double>(facts_.width)},
                          {"HEIGHT", static_cast<double>(facts_.height)}};
    if (order.part)
        frame = {{"X", order.part->left * order.binX},
                 {"Y", order.part->top * order.binY},
                 {"WIDTH", order.part->width * order.binX},
                 {"HEIGHT", order.part->height * order.binY}};
    ensure("CCD_FRAME", frame, order.part ? "a part of the sensor" : "the whole sensor");
}

void Camera::setFrameType(CameraOrder::Frame frame) {
    const char* element = frameElement(frame);
    const Property* type = device_.find("CCD_FRAME_TYPE");
    if (type == nullptr && frame == CameraOrder::Frame::kLight) return;
    if (type == nullptr) throw std::runtime_error(name() + " takes light frames only");
    if (!type->on(element))
        device_.await(device_.setSwitch("CCD_FRAME_TYPE", element, "the kind of frame"), kCameraAnswer);
}

void Camera::setFilter(int number) {
    Dialogue wheel(device_.sharedClient(), filterWheel(), surroundings_.wait);
    const double slot = number + 1;
    const Property* now = wheel.find(kFilter);
    if (now == nullptr) throw std::runtime_error(name() + " has no filter wheel");
    const auto there = [&](const Property& property) {
        return property.number(kFilterNumber) == slot && property.state != PropertyState::kBusy;
    };
    if (there(*now)) return;
    const Request request =
        wheel.setNumbers(kFilter, {{kFilterNumber, slot}}, "filter " + std::to_string(number + 1));
    wheel.await(request, kFilterTurn, there);
}

/// Sets what isn't so already. Some drivers don't clear the state of an earlier refusal when they obey: Alert
/// without a complaint is none if the values are those that were asked for.
void Camera::ensure(const std::string& property, const NumberValues& values, const std::string& what) {
    const Property* known = device_.find(property);
    if (known == nullptr) throw std::runtime_error(name() + " doesn't know " + what);
    const auto same = [&](const Property& now) {
        return std::all_of(values.begin(), values.end(), [&](const auto& value) {
            const auto number = now.number(value.first);
            return number && std::abs(*number - value.second) < 1e-6;
        });
    };
    if (same(*known)) return;
    const Request request = device_.setNumbers(property, values, what);
    device_.await(request, kCameraAnswer, [&](const Property& answer) {
        if (answer.updated <= request.serial || answer.state == PropertyState::kBusy) return false;
        if (answer.state != PropertyState::kAlert) return true;
        return same(answer) && device_.reason(request).empty();
    });
}

void Camera::abort() {
    if (!exposure_) return;
    const bool running = !exposure_->done();
    exposure_.reset();
    blobs_.drop();
    if (!running || !connected()) return;
    lateOnePossible_ = true;
    if (!device_.has(kAbort)) throw std::runtime_error(name() + " can't give an exposure up");
    device_.await(device_.setSwitch(kAbort, "ABORT", "giving the exposure up"), kCameraAnswer);
}

/// All elements are sent, as some drivers want it; but for the one, as they are.
void Camera::set(Level level, double value) {
    device_.requireReady();
    const Place place = placeOf(level);
    if (place.property == nullptr) return CameraHardware::set(level, value);
    const std::string property = place.property->name;
    NumberValues values;
    for (const PropertyElement& element : place.property->elements)
        values.emplace_back(element.name, element.name == place.element ? value : element.number);
    ensure(property, values,
           (level == Level::kGain ? "a gain of " : "an offset of ") + platform::toText(value));
}

void Camera::cool(std::optional<double> celsius) {
    device_.requireReady();
    if (celsius ? !facts_.canCool && !facts_.cooling : !facts_.cooling)
        throw std::runtime_error(name() + (celsius ? " can't be cooled" : " can't be warmed up"));
    const char* wanted = celsius ? kCoolerOn : "COOLER_OFF";
    if (const Property* cooler = device_.find(kCooler); cooler != nullptr && !cooler->on(wanted)) {
        const Request request = device_.setSwitch(kCooler, wanted, "switching its cooler");
        device_.await(request, kCameraAnswer, [&](const Property& answer) {
            return answer.updated > request.serial && answer.on(wanted);
        });
    }
    if (celsius && facts_.canCool) {
        const Request request = device_.setNumbers(kTemperature, {{kCelsius, *celsius}},
                                                   "a temperature of " + platform::toText(*celsius) + " C");
        // It is Busy until the sensor is as cold as that.
        device_.await(request, kCameraAnswer, [&](const Property& answer) {
            return answer.updated > request.serial && answer.state != PropertyState::kAlert;
        });
    }
    coolsTo_ = facts_.canCool ? celsius : std::nullopt;
    readFacts();
}

Camera::Progress Camera::progress() const {
    if (!exposure_) return Progress::kIdle;
    if (!exposure_->failure.empty()) return Progress::kFailed;
    if (exposure_->picture) return Progress::kReady;
    return exposure_->over || blobs_.underWay() ? Progress::kDownloading : Progress::kExposing;
}

platform::TakenPicture Camera::take() {
    if (!exposure_ || !exposure_->done()) throw std::runtime_error(name() + " has no picture");
    Exposure exposure = *std::exchange(exposure_, std::nullopt);
    if (!exposure.failure.empty()) throw std::runtime_error(exposure.failure);
    return platform::FitsBytes{std::move(exposure.picture->bytes), exposure.picture->format.ends_with(".fz")};
}

// ---- what happens meanwhile

void Camera::hear(const Event& event) {
    if (!connected() || (event.device != name() && event.device != filterWheel())) return;
    if (event.kind != Event::Kind::kDefined && event.kind != Event::Kind::kUpdated) return;
    if (event.device == name() && event.property == kExposure && event.kind == Event::Kind::kUpdated)
        followExposure(*device_.find(kExposure));
    else
        readFacts();
}

void Camera::followExposure(const Property& answer) {
    if (!exposure_ || exposure_->done()) return;
    const long serial = exposure_->request.serial;
    if (answer.wasRefused > serial)
        return fail(device_.withReason(exposure_->request, name() + " has failed to expose"));
    if (answer.wasBusy <= serial) return;  // still about an earlier one
    if (answer.state == PropertyState::kBusy) {
        if (exposure_->begunThere.empty()) exposure_->begunThere = answer.timestamp;
        return;
    }
    if (std::exchange(exposure_->over, true)) return;
    // Idle is what one looks like that another client gave up.
    exposure_->deadline = now() + (answer.state == PropertyState::kIdle ? kAfterAbort : kDownload);
}

void Camera::watchDeadline() {
    if (!exposure_ || exposure_->done() || blobs_.underWay() || now() < exposure_->deadline) return;
    fail("No picture has come from " + name());
    if (connected() && device_.has(kAbort)) device_.setSwitch(kAbort, "ABORT", "giving the exposure up");
}

void Camera::fail(const std::string& why) {
    blobs_.drop();
    if (!exposure_ || exposure_->done()) return;
    exposure_->failure = why;
    lateOnePossible_ = true;
    tellEnd();
}

/// Not out of the connection's own calls: its listener may do anything.
void Camera::tellEnd() {
    surroundings_.loop.post([this, alive = std::weak_ptr<void>(alive_)] {
        if (!alive.expired() && onProgress) onProgress();
    });
}

void Camera::losePictures(const std::string& why) {
    if (blobs_.underWay() || (exposure_ && exposure_->over))
        fail("The connection to " + name() + " was lost: " + why);
}

/// Late pictures of exposures that were given up come early in those that follow.
std::optional<std::size_t> Camera::accept(const Blob& blob) const {
    if (!exposure_ || exposure_->done() || blob.device != name() || blob.property != kPicture)
        return std::nullopt;
    const Milliseconds earliest = exposure_->begun + milliseconds(0.9 * exposure_->seconds - 0.3);
    if (blob.begun < earliest) return std::nullopt;
    if (!blob.timestamp.empty() && blob.timestamp < exposure_->begunThere) return std::nullopt;
    return mostBytes(facts_);
}

void Camera::receive(Blob blob) {
    if (!exposure_ || exposure_->done()) return;
    if (!blob.format.starts_with(".fits") && blob.format != ".fit" && blob.format != ".fz")
        return fail(name() + " sends its pictures as \"" + blob.format +
                    "\": its driver has to be set to send FITS");
    exposure_->picture = std::move(blob);
    tellEnd();
}

}  // namespace vantrel::hosts::indi

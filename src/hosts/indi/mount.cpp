#include "hosts/indi/mount.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

#include "platform/text.h"

namespace vantrel::hosts::indi {

using platform::Milliseconds;

namespace {

constexpr const char* kOfDate = "EQUATORIAL_EOD_COORD";
constexpr const char* kJ2000 = "EQUATORIAL_COORD";
constexpr const char* kSite = "GEOGRAPHIC_COORD";
constexpr const char* kTime = "TIME_UTC";
constexpr const char* kPark = "TELESCOPE_PARK";
constexpr const char* kTracking = "TELESCOPE_TRACK_STATE";

constexpr Milliseconds kMountAnswer{3000};
constexpr Milliseconds kSlewGrace{2000};  // for a driver that has accepted a slew to say so
constexpr double kNear = 0.1;             // degrees: where a slew may be over before it was seen

/// To [0, circle); the circle itself is 0.
double wrapped(double value, double circle) {
    const double rest = std::fmod(value, circle);
    return rest < 0 ? rest + circle : rest;
}

std::string utcText(platform::Instant utc) {
    return platform::formatTime(platform::civilUtc(utc), "yyyy-MM-ddTHH:mm:ss");
}

}  // namespace

Mount::Mount(Surroundings surroundings, const std::shared_ptr<Client>& client, const std::string& name,
             std::function<MountOptions()> options)
    : surroundings_(std::move(surroundings)),
      options_(std::move(options)),
      device_(client, name, surroundings_.wait, surroundings_.tell,
              {.preparable = [this] { return preparable(); },
               .prepare = [this] { prepare(); },
               .complete = [this] { return complete(); },
               .incomplete = "tells no position",
               .setUp = [this] { setUp(); },
               .onLost = [this] { slew_.reset(); }}),
      listening_(client->events.subscribe([this](const Event& event) { hear(event); })) {}

// ---- connecting

void Mount::connect() {
    device_.connect();
    device_.waitUntil([this] { return !connected() || unanswered_.empty(); }, kMountAnswer);
}

bool Mount::preparable() const {
    const MountOptions options = options_();
    return (options.port.empty() || device_.has("DEVICE_PORT")) &&
           (options.baudRate.empty() || device_.has("DEVICE_BAUD_RATE"));
}

void Mount::prepare() {
    const MountOptions options = options_();
    if (!options.port.empty()) {
        if (const Property* mode = device_.find("CONNECTION_MODE");
            mode != nullptr && !mode->on("CONNECTION_SERIAL"))
            device_.setSwitch("CONNECTION_MODE", "CONNECTION_SERIAL", "the serial connection");
        device_.setTexts("DEVICE_PORT", {{"PORT", options.port}}, "the port");
    }
    if (options.baudRate.empty()) return;
    const Property* rates = device_.find("DEVICE_BAUD_RATE");
    if (rates != nullptr && rates->element(options.baudRate) != nullptr)
        device_.setSwitch("DEVICE_BAUD_RATE", options.baudRate, "the baud rate");
    else
        surroundings_.tell(name() + " can't be set to " + options.baudRate + " baud");
}

/// A driver defines its coordinates before it has asked the mount for them: the first update, or some time
/// without one, says that they are right.
bool Mount::complete() const {
    const Property* found = device_.find(coordinateProperty());
    return found != nullptr && (found->updated > 0 || now() - found->defined > pollingPeriod());
}

void Mount::setUp() {
    due_ = options_();
    unanswered_.clear();
    sendDue();
}

/// Some properties come later than those that a mount can't do without.
void Mount::sendDue() {
    if (due_.setTime && device_.has(kTime)) {
        due_.setTime = false;
        unanswered_.push_back(device_.setTexts(
            kTime, {{"UTC", utcText(surroundings_.loop.clock().utc())}, {"OFFSET", "0"}}, "the time"));
    }
    if (due_.site && device_.has(kSite)) {
        const DriverSite site = *std::exchange(due_.site, std::nullopt);
        unanswered_.push_back(device_.setNumbers(
            kSite, {{"LAT", site.latitude}, {"LONG", wrapped(site.longitude, 360)}, {"ELEV", site.elevation}},
            "the site"));
    }
}

void Mount::hear(const Event& event) {
    if (event.device != name() || !connected()) return;
    sendDue();
    if (event.kind != Event::Kind::kUpdated) return;
    if (event.property == coordinateProperty()) followSlew();
    std::erase_if(unanswered_, [&](const Request& request) {
        const Property* property = device_.find(request.property);
        if (property == nullptr || property->updated <= request.serial) return false;
        if (property->wasRefused > request.serial)
            surroundings_.tell(device_.withReason(request, name() + " refuses " + request.what));
        return true;
    });
}

// ---- where it points

bool Mount::countsInJ2000() const { return !device_.has(kOfDate) && device_.has(kJ2000); }

std::string Mount::coordinateProperty() const { return countsInJ2000() ? kJ2000 : kOfDate; }

const Property& Mount::coordinates() const {
    device_.requireReady();
    const Property* found = device_.find(coordinateProperty());
    if (found == nullptr) throw std::runtime_error(name() + " tells no position");
    return *found;
}

/// In the equinox that the driver counts in.
MountPosition Mount::reading() const {
    const Property* found = device_.find(coordinateProperty());
    if (found == nullptr) return {};
    return {found->number("RA").value_or(0), found->number("DEC").value_or(0)};
}

MountPosition Mount::position() const {
    coordinates();
    if (!countsInJ2000()) return reading();
    return surroundings_.equinox.toDate(reading(), surroundings_.loop.clock().utc());
}

Milliseconds Mount::pollingPeriod() const {
    const Property* period = device_.find("POLLING_PERIOD");
    const double milliseconds = period == nullptr ? 1000 : period->number("PERIOD_MS").value_or(1000);
    return Milliseconds{static_cast<long>(std::clamp(milliseconds, 100.0, 5000.0))};
}

// ---- slews

void Mount::slewTo(const MountPosition& ofDate) {
    const std::string property = coordinateProperty();
    coordinates();
    if (!(std::abs(ofDate.declination) <= 90) || !(0 <= ofDate.rightAscension && ofDate.rightAscension <= 24))
        throw std::runtime_error("There is no right ascension of " + platform::toText(ofDate.rightAscension) +
                                 " hours with a declination of " + platform::toText(ofDate.declination) +
                                 " degrees");
    if (parked()) throw std::runtime_error(name() + " is parked: unpark it first");
    MountPosition target = ofDate;
    if (countsInJ2000()) target = surroundings_.equinox.toJ2000(ofDate, surroundings_.loop.clock().utc());
    target.rightAscension = wrapped(target.rightAscension, 24);

    if (const Property* then = device_.find("ON_COORD_SET"); then != nullptr && !then->on("TRACK"))
        device_.await(device_.setSwitch("ON_COORD_SET", "TRACK", "tracking after a slew"), kMountAnswer);
    Slew slew{.request = device_.setNumbers(
                  property, {{"RA", target.rightAscension}, {"DEC", target.declination}}, "the slew")};
    slew_.reset();
    device_.await(slew.request, kMountAnswer, [&](const Property& answer) {
        const bool there = answer.updated > slew.request.serial && answer.state == PropertyState::kOk &&
                           separation(reading(), target) < kNear;
        return there || answer.wasBusy > slew.request.serial;
    });
    slew.begun = now();
    if (const Property* answer = device_.find(property);
        answer != nullptr && answer->wasBusy > slew.request.serial && answer->state != PropertyState::kBusy)
        slew.ended = now();
    slew_ = std::move(slew);
}

void Mount::followSlew() {
    if (!slew_) return;
    const Property* property = device_.find(slew_->request.property);
    const bool begun = property != nullptr && property->wasBusy > slew_->request.serial;
    if (begun && property->state != PropertyState::kBusy) {
        if (slew_->ended.count() == 0) slew_->ended = now();
    } else {
        slew_->ended = Milliseconds{0};
    }
}

bool Mount::slewing() const {
    const Property& property = coordinates();
    const bool busy = property.state == PropertyState::kBusy;
    if (!slew_) return busy;
    if (property.wasRefused > slew_->request.serial && property.state == PropertyState::kAlert)
        throw std::runtime_error(device_.withReason(slew_->request, name() + " has failed to slew"));
    if (busy) return true;
    if (slew_->ended.count() == 0) return now() - slew_->begun < kSlewGrace;
    // What else looks at the mount, such as the driver of a camera, learns the place at its next report.
    return now() - slew_->ended < pollingPeriod();
}

void Mount::abort() {
    coordinates();
    if (!device_.has("TELESCOPE_ABORT_MOTION")) throw std::runtime_error(name() + " can't be stopped");
    device_.await(device_.setSwitch("TELESCOPE_ABORT_MOTION", "ABORT", "stopping"), kMountAnswer);
}

// ---- what else it is asked

bool Mount::tracking() const {
    const Property& position = coordinates();
    const Property* state = device_.find(kTracking);
    return state != nullptr ? state->on("TRACK_ON") : position.state == PropertyState::kOk;
}

void Mount::setTracking(bool on) {
    coordinates();
    if (!device_.has(kTracking)) throw std::runtime_error(name() + " can't switch its tracking");
    const char* wanted = on ? "TRACK_ON" : "TRACK_OFF";
    const Request request = device_.setSwitch(kTracking, wanted, on ? "tracking" : "standing still");
    // While it tracks, the property is Busy.
    device_.await(request, kMountAnswer, [&](const Property& answer) {
        return answer.updated > request.serial && answer.on(wanted);
    });
}

bool Mount::parked() const {
    coordinates();
    const Property* park = device_.find(kPark);
    return park != nullptr && park->on("PARK");
}

void Mount::unpark() {
    if (!parked()) return;
    const Request request = device_.setSwitch(kPark, "UNPARK", "unparking");
    device_.await(request, kMountAnswer, [&](const Property& answer) {
        return answer.updated > request.serial && !answer.on("PARK");
    });
}

double Mount::siderealTime() const {
    coordinates();
    const Property* time = device_.find("TIME_LST");
    const auto hours = time == nullptr ? std::nullopt : time->number("LST");
    if (!hours) throw std::runtime_error(name() + " tells no sidereal time");
    return *hours;
}

DriverSite Mount::site() const {
    coordinates();
    const Property* found = device_.find(kSite);
    const auto degrees = [&](const char* element) {
        return found == nullptr ? 0 : found->number(element).value_or(0);
    };
    const double longitude = wrapped(degrees("LONG"), 360);
    const DriverSite site{degrees("LAT"), longitude > 180 ? longitude - 360 : longitude, degrees("ELEV")};
    if (site.latitude == 0 && site.longitude == 0) throw std::runtime_error(name() + " tells no site");
    return site;
}

}  // namespace vantrel::hosts::indi

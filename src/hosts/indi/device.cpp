#include "hosts/indi/device.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace vantrel::hosts::indi {

using platform::Milliseconds;

namespace {

constexpr const char* kConnection = "CONNECTION";
constexpr Milliseconds kServerTimeOut{5000};
constexpr Milliseconds kDeviceTimeOut{5000};
constexpr Milliseconds kHardwareTimeOut{30'000};
constexpr Milliseconds kPropertiesTimeOut{10'000};
constexpr Milliseconds kDisconnectTimeOut{3000};
constexpr Milliseconds kFirstPause{1000};
constexpr Milliseconds kLongestPause{30'000};
constexpr Milliseconds kSilence{10'000};      // after which a driver is asked for a sign of life
constexpr Milliseconds kLongSilence{30'000};  // after which what it said last isn't believed any more

bool isConnected(const Property& connection) {
    return connection.on("CONNECT") && connection.state != PropertyState::kBusy &&
           connection.state != PropertyState::kAlert;
}

}  // namespace

Device::Device(std::shared_ptr<Client> client, std::string name, const PumpedWait& wait, Tell tell,
               ConnectionPlan plan)
    : client_(std::move(client)),
      name_(std::move(name)),
      wait_(wait),
      tell_(std::move(tell)),
      plan_(std::move(plan)),
      listening_(client_->events.subscribe([this](const Event& event) { hear(event); })) {}

// ---- connecting

void Device::connect() {
    if (ready()) return;
    failure_.clear();
    waitedFor_ = true;
    wasReady_ = false;
    pause_ = kFirstPause;
    nextTry_ = now();
    failuresBefore_ = client_->link().failures();
    kept_ = client_->keepOpen();
    enter(Stage::kServer, kServerTimeOut);
    advance();
    constexpr Milliseconds kAll = kServerTimeOut + kDeviceTimeOut + kHardwareTimeOut + kPropertiesTimeOut;
    waitUntil([this] { return ready() || stage_ == Stage::kOff; }, kAll);
    waitedFor_ = false;
    if (ready()) return;
    letGo();
    throw std::runtime_error(failure_.empty() ? "Connecting " + name_ + " was given up" : failure_);
}

void Device::disconnect() {
    const auto kept = kept_;
    const bool wasConnected = ready();
    const bool wasWanted = stage_ != Stage::kOff;
    letGo();
    if (wasConnected) plan_.onLost();
    if (!wasWanted || !client_->open() || !has(kConnection)) return;
    setSwitch(kConnection, "DISCONNECT", "disconnecting");
    waitUntil(
        [this] {
            const Property* connection = find(kConnection);
            return connection == nullptr || !connection->on("CONNECT");
        },
        kDisconnectTimeOut);
}

void Device::requireReady() const {
    if (!ready()) throw std::runtime_error(name_ + " isn't connected");
    if (now() - client_->lastHeard(name_) > kLongSilence)
        throw std::runtime_error("The driver of " + name_ + " has stopped answering");
}

void Device::enter(Stage stage, Milliseconds timeOut) {
    stage_ = stage;
    deadline_ = now() + timeOut;
}

void Device::hear(const Event& event) {
    if (stage_ == Stage::kOff) return;
    const bool mine = event.device == name_;
    const bool gone = event.kind == Event::Kind::kRemoved && (event.property.empty() || event.property == kConnection);
    if (event.kind == Event::Kind::kLost || (mine && gone)) return lose();
    const bool told = event.kind == Event::Kind::kUpdated && event.property == kConnection;
    if (mine && told && stage_ >= Stage::kProperties && !find(kConnection)->on("CONNECT")) return leaveToOthers();
    if (mine || event.kind == Event::Kind::kOpened || event.kind == Event::Kind::kTick) advance();
}

/// Goes on to the next stage as soon as what it takes is there.
void Device::advance() {
    if (stage_ == Stage::kServer && client_->open()) enter(Stage::kDevice, kDeviceTimeOut);
    if (stage_ >= Stage::kDevice) advanceConnection();
    if (stage_ == Stage::kProperties && plan_.complete()) becomeReady();
    if (stage_ == Stage::kReady) return watchSilence();
    const bool nobodyThere = stage_ == Stage::kServer && client_->link().failures() > failuresBefore_;
    if (stage_ != Stage::kOff && (nobodyThere || now() >= deadline_)) giveUpOrRetry(absence());
}

void Device::advanceConnection() {
    const Property* connection = find(kConnection);
    if (connection == nullptr) return;
    if (isConnected(*connection)) {
        if (stage_ < Stage::kProperties) enter(Stage::kProperties, kPropertiesTimeOut);
    } else if (stage_ == Stage::kHardware) {
        if (connection->wasRefused > connecting_.serial)
            giveUpOrRetry(withReason(connecting_, name_ + " can't be connected"));
    } else if (now() >= nextTry_) {
        enter(Stage::kHardware, kHardwareTimeOut);
        plan_.prepare();
        connecting_ = setSwitch(kConnection, "CONNECT", "connecting");
    }
}

void Device::becomeReady() {
    stage_ = Stage::kReady;
    pause_ = kFirstPause;
    asked_ = now();
    plan_.setUp();
    if (std::exchange(wasReady_, true)) tell_(name_ + " is connected again");
}

void Device::watchSilence() {
    if (now() - client_->lastHeard(name_) < kSilence || now() - asked_ < kSilence) return;
    asked_ = now();
    client_->ask(name_, kConnection);
}

/// The device has gone, but it is still wanted.
void Device::lose() {
    const bool wasConnected = ready();
    enter(Stage::kServer, kServerTimeOut);
    if (!wasConnected) return;
    if (client_->open()) tell_("The driver of " + name_ + " has gone");
    plan_.onLost();
}

/// Another program has disconnected it, and may have had a reason.
void Device::leaveToOthers() {
    const bool wasConnected = ready();
    giveUp(name_ + " was disconnected by another program");
    if (!wasConnected) return;
    tell_(failure_);
    plan_.onLost();
}

void Device::giveUp(const std::string& why) {
    failure_ = why;
    letGo();
}

/// Whoever waits for it hears why. When nobody does, it is tried again: a server and a device that aren't
/// there are waited for, a refusal is told once.
void Device::giveUpOrRetry(const std::string& why) {
    if (waitedFor_) return giveUp(why);
    if (stage_ != Stage::kHardware) return;
    if (pause_ == kFirstPause) tell_(why);
    nextTry_ = now() + pause_;
    pause_ = std::min(2 * pause_, kLongestPause);
    enter(Stage::kDevice, kDeviceTimeOut);
}

void Device::letGo() {
    stage_ = Stage::kOff;
    kept_.reset();
}

/// What an operator should know who waits in vain.
std::string Device::absence() const {
    const std::string server = "The INDI server at " + client_->server();
    switch (stage_) {
        case Stage::kServer:
            return server + " doesn't answer" +
                   (client_->link().problem().empty() ? "" : " (" + client_->link().problem() + ")") +
                   ": is it running?";
        case Stage::kDevice: {
            std::string others;
            for (const std::string& device : client_->devices()) others += (others.empty() ? "" : ", ") + device;
            return server + " has no device \"" + name_ + "\": is its driver running?" +
                   (others.empty() ? "" : " It has: " + others);
        }
        case Stage::kHardware: return withReason(connecting_, name_ + " didn't connect in time");
        default: return name_ + " " + plan_.incomplete;
    }
}

// ---- saying something to it

Request Device::setNumbers(const std::string& property, const NumberValues& values, std::string what) {
    const Request request{property, std::move(what), client_->serial()};
    client_->setNumbers(name_, property, values);
    return request;
}

Request Device::setTexts(const std::string& property, const TextValues& values, std::string what) {
    const Request request{property, std::move(what), client_->serial()};
    client_->setTexts(name_, property, values);
    return request;
}

Request Device::setSwitch(const std::string& property, const std::string& element, std::string what) {
    const Request request{property, std::move(what), client_->serial()};
    client_->setSwitch(name_, property, element);
    return request;
}

void Device::await(const Request& request, Milliseconds timeOut,
                   const std::function<bool(const Property&)>& done) {
    const auto answered = [&] {
        const Property* property = find(request.property);
        if (property == nullptr) throw std::runtime_error(name_ + " isn't connected any more");
        if (property->wasRefused > request.serial)
            throw std::runtime_error(withReason(request, name_ + " refuses " + request.what));
        if (done) return done(*property);
        return property->updated > request.serial && property->state != PropertyState::kBusy;
    };
    switch (waitUntil(answered, timeOut)) {
        case PumpedWait::Outcome::kDone: return;
        case PumpedWait::Outcome::kGivenUp:
            throw std::runtime_error("Waiting for " + name_ + " was given up: " + request.what);
        case PumpedWait::Outcome::kTimedOut:
            throw std::runtime_error(withReason(request, name_ + " takes no notice of " + request.what));
    }
}

std::string Device::withReason(const Request& request, const std::string& text) const {
    const std::string reason = client_->messageSince(name_, request.serial);
    return reason.empty() ? text : text + ": " + reason;
}

PumpedWait::Outcome Device::waitUntil(const std::function<bool()>& done, Milliseconds timeOut) {
    const auto client = client_;
    return wait_.until(done, timeOut, [client](Milliseconds atMost) { return client->serve(atMost); });
}

}  // namespace vantrel::hosts::indi

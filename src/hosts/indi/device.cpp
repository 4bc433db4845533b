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
constexpr Milliseconds kDefinitions{1000};  // for a driver to define what there is before it is connected
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
    : Dialogue(std::move(client), std::move(name), wait),
      tell_(std::move(tell)),
      plan_(std::move(plan)),
      listening_(this->client().events.subscribe([this](const Event& event) { hear(event); })) {}

// ---- connecting

void Device::connect() {
    if (ready()) return;
    failure_.clear();
    waitedFor_ = true;
    wasReady_ = false;
    pause_ = kFirstPause;
    nextTry_ = now();
    failuresBefore_ = client().link().failures();
    kept_ = client().keepOpen();
    enter(Stage::kServer, kServerTimeOut);
    advance();
    constexpr Milliseconds kAll = kServerTimeOut + kDeviceTimeOut + kHardwareTimeOut + kPropertiesTimeOut;
    const auto outcome = waitUntil([this] { return ready() || stage_ == Stage::kOff; }, kAll);
    if (outcome == PumpedWait::Outcome::kTimedOut) failure_ = absence();
    waitedFor_ = false;
    if (ready()) return;
    letGo();
    throw std::runtime_error(failure_.empty() ? "Connecting " + name() + " was given up" : failure_);
}

void Device::disconnect() {
    const auto kept = kept_;
    const bool wasConnected = ready();
    const bool wasWanted = stage_ != Stage::kOff;
    letGo();
    if (wasConnected) plan_.onLost();
    if (!wasWanted || !client().open() || !has(kConnection)) return;
    setSwitch(kConnection, "DISCONNECT", "disconnecting");
    waitUntil(
        [this] {
            const Property* connection = find(kConnection);
            return connection == nullptr || !connection->on("CONNECT");
        },
        kDisconnectTimeOut);
}

void Device::requireReady() const {
    if (!ready()) throw std::runtime_error(name() + " isn't connected");
    if (now() - client().lastHeard(name()) > kLongSilence)
        throw std::runtime_error("The driver of " + name() + " has stopped answering");
}

void Device::enter(Stage stage, Milliseconds timeOut) {
    stage_ = stage;
    deadline_ = now() + timeOut;
}

void Device::hear(const Event& event) {
    if (stage_ == Stage::kOff) return;
    const bool mine = event.device == name();
    const bool gone =
        event.kind == Event::Kind::kRemoved && (event.property.empty() || event.property == kConnection);
    if (event.kind == Event::Kind::kLost || (mine && gone)) return lose(event);
    const bool told = event.kind == Event::Kind::kUpdated && event.property == kConnection;
    if (mine && told && stage_ >= Stage::kProperties && !find(kConnection)->on("CONNECT"))
        return leaveToOthers();
    if (mine || event.kind == Event::Kind::kOpened || event.kind == Event::Kind::kTick) advance();
}

/// Goes on to the next stage as soon as what it takes is there.
void Device::advance() {
    if (stage_ == Stage::kServer && client().open()) enter(Stage::kDevice, kDeviceTimeOut);
    if (stage_ >= Stage::kDevice) advanceConnection();
    if (stage_ == Stage::kProperties && plan_.complete()) becomeReady();
    if (stage_ == Stage::kReady) return watchSilence();
    const bool nobodyThere = stage_ == Stage::kServer && client().link().failures() > failuresBefore_;
    if (stage_ != Stage::kOff && (nobodyThere || now() >= deadline_)) giveUpOrRetry(absence());
}

void Device::advanceConnection() {
    const Property* connection = find(kConnection);
    if (connection == nullptr) return;
    if (isConnected(*connection)) {
        if (stage_ < Stage::kProperties) enter(Stage::kProperties, kPropertiesTimeOut);
    } else if (stage_ == Stage::kHardware) {
        if (connection->wasRefused > connecting_.serial)
            giveUpOrRetry(withReason(connecting_, name() + " can't be connected"));
    } else if (now() >= nextTry_ && (plan_.preparable() || now() - connection->defined > kDefinitions)) {
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
    if (std::exchange(wasReady_, true)) tell_(name() + " is connected again");
}

void Device::watchSilence() {
    if (now() - client().lastHeard(name()) < kSilence || now() - asked_ < kSilence) return;
    asked_ = now();
    client().ask(name(), kConnection);
}

/// The device has gone, but it is still wanted, unless it was still to be connected.
void Device::lose(const Event& event) {
    const bool wasConnected = ready();
    const std::string driverGone = "The driver of " + name() + " has gone";
    const bool serverGone = event.kind == Event::Kind::kLost;
    if (waitedFor_)
        return giveUp(serverGone ? "The connection to the INDI server at " + client().server() +
                                       " was lost: " + client().link().problem()
                                 : driverGone);
    if (stage_ == Stage::kHardware) pause();
    enter(Stage::kServer, kServerTimeOut);
    if (!wasConnected) return;
    if (!serverGone) tell_(driverGone);
    plan_.onLost();
}

/// Another program has disconnected it, and may have had a reason.
void Device::leaveToOthers() {
    const bool wasConnected = ready();
    giveUp(name() + " was disconnected by another program");
    if (!wasConnected) return;
    tell_(failure_);
    plan_.onLost();
}

void Device::giveUp(const std::string& why) {
    failure_ = why;
    letGo();
}

/// A caller that waits for it hears why. When none does, it is tried again: a server and a device that aren't
/// there are waited for, a refusal is told once.
void Device::giveUpOrRetry(const std::string& why) {
    if (waitedFor_) return giveUp(why);
    if (stage_ != Stage::kHardware) return;
    if (pause_ == kFirstPause) tell_(why);
    pause();
    enter(Stage::kDevice, kDeviceTimeOut);
}

/// Before the hardware is tried again: longer each time.
void Device::pause() {
    nextTry_ = now() + pause_;
    pause_ = std::min(2 * pause_, kLongestPause);
}

void Device::letGo() {
    stage_ = Stage::kOff;
    kept_.reset();
}

/// What an operator should know who waits in vain.
std::string Device::absence() const {
    const std::string server = "The INDI server at " + client().server();
    switch (stage_) {
        case Stage::kServer:
            return server + " doesn't answer" +
                   (client().link().problem().empty() ? "" : " (" + client().link().problem() + ")") +
                   ": is it running?";
        case Stage::kDevice: {
            std::string others;
            for (const std::string& device : client().devices())
                others += (others.empty() ? "" : ", ") + device;
            return server + " has no device \"" + name() + "\": is its driver running?" +
                   (others.empty() ? "" : " It has: " + others);
        }
        case Stage::kHardware:
            return withReason(connecting_, name() + " didn't connect in time");
        default:
            return name() + " " + plan_.incomplete;
    }
}

}  // namespace vantrel::hosts::indi

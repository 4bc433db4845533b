#include "hosts/alpaca/device_link.h"

#include "hosts/alpaca/device_error.h"

namespace vantrel::hosts::alpaca {

namespace {

using platform::Milliseconds;

constexpr Milliseconds kBetweenWatches{2000};
constexpr Milliseconds kBetweenTrials{5000};
constexpr Milliseconds kTimeToGetConnected{90'000};  // all steps together
constexpr Milliseconds kTimeToDisconnect{5000};
constexpr int kMostTroubles = 2;

}  // namespace

DeviceLink::DeviceLink(const Surroundings& surroundings, DeviceRecord device,
                       std::function<void(const DeviceRecord&)> moved)
    : surroundings_(surroundings), device_(std::move(device)), moved_(std::move(moved)) {}

DeviceLink::~DeviceLink() = default;

// ---- connecting and disconnecting

void DeviceLink::connect() {
    if (connected()) return;
    if (attempt_ == nullptr) begin();
    try {
        surroundings_.client.wait([this] { return attempt_ == nullptr; }, kTimeToGetConnected,
                                  name() + " didn't get connected in time.");
    } catch (...) {
        turnOff();
        throw;
    }
    if (connected()) return;
    const std::exception_ptr failure = failure_;
    turnOff();
    if (failure != nullptr) std::rethrow_exception(failure);
    throw std::runtime_error(name() + " was disconnected meanwhile.");
}

void DeviceLink::begin() {
    failure_ = nullptr;
    attempt_ = std::make_unique<ConnectionAttempt>(
        surroundings_, device_, [this](Result<Connected> result) { noteEnd(std::move(result)); });
}

void DeviceLink::noteEnd(Result<Connected> result) {
    const auto held = std::move(attempt_);
    if (const auto* failure = std::get_if<std::exception_ptr>(&result)) {
        failure_ = *failure;
        return;
    }
    const Connected& connected = std::get<Connected>(result);
    device_ = connected.device;
    interfaceVersion_ = connected.interfaceVersion;
    if (state_ == State::kLost) surroundings_.tell(name() + " is back.");
    state_ = State::kOn;
    troubles_ = 0;
    timer_ = surroundings_.loop.every(kBetweenWatches, [this] { watch(); });
    moved_(device_);
}

void DeviceLink::disconnect() {
    const bool wasConnected = connected();
    turnOff();
    if (!wasConnected) return;
    Question question = this->question(isPlatform7() ? "disconnect" : "connected");
    question.kind = Question::Kind::kPut;
    question.patience = kTimeToDisconnect;
    if (!isPlatform7()) question.parameters = {{"Connected", formText(false)}};
    try {
        surroundings_.client.get(question);
    } catch (const std::runtime_error& error) {
        surroundings_.tell(name() + ": " + error.what());
    }
}

void DeviceLink::turnOff() {
    state_ = State::kOff;
    attempt_.reset();
    look_.reset();
    timer_.reset();
}

// ---- using it

Question DeviceLink::question(const std::string& member, const Parameters& parameters) const {
    return {.server = device_.server,
            .path = "/api/v1/" + device_.type + "/" + std::to_string(device_.number) + "/" + member,
            .parameters = parameters};
}

Json DeviceLink::get(const std::string& member, const Parameters& parameters) {
    return exchange(question(member, parameters));
}

void DeviceLink::put(const std::string& member, const Parameters& parameters, Milliseconds patience) {
    Question question = this->question(member, parameters);
    question.kind = Question::Kind::kPut;
    question.patience = patience;
    exchange(question);
}

HttpExchange DeviceLink::ask(const std::string& member, std::function<void(Result<Json>)> heard) {
    return surroundings_.client.ask(question(member), std::move(heard));
}

Json DeviceLink::exchange(const Question& question) {
    requireConnected();
    try {
        Json value = surroundings_.client.get(question);
        troubles_ = 0;
        return value;
    } catch (const ServerError& error) {
        noteTrouble(error.what());
        throw;
    }
}

void DeviceLink::requireConnected() const {
    if (state_ == State::kOff) throw std::runtime_error(name() + " is not connected.");
    if (state_ == State::kLost)
        throw std::runtime_error("The connection to " + name() + " is lost: " + whyLost_);
}

// ---- the watch

void DeviceLink::watch() {
    if (look_ != nullptr) return;
    look_ = ask("connected", [this](Result<Json> result) {
        const auto held = std::move(look_);
        try {
            const Json value = valueOf(std::move(result));
            if (value != Json(true)) return lose(name() + " was disconnected at its server.");
            troubles_ = 0;
        } catch (const ServerError& error) {
            noteTrouble(error.what());
        } catch (const UnknownMember& error) {
            lose(error.what());
        } catch (const DeviceError& error) {
            if (error.number() == device_error::kNotConnected) lose(error.what());
        } catch (const std::runtime_error&) {
            // The server is there, if not well: the next use of the device will tell.
        }
    });
}

void DeviceLink::noteTrouble(const std::string& what) {
    if (state_ == State::kOn && ++troubles_ >= kMostTroubles) lose(what);
}

void DeviceLink::lose(const std::string& why) {
    if (state_ != State::kOn) return;
    state_ = State::kLost;
    whyLost_ = why;
    surroundings_.tell("The connection to " + name() + " is lost: " + why);
    timer_ = surroundings_.loop.every(kBetweenTrials, [this] { tryAgain(); });
}

void DeviceLink::tryAgain() {
    if (attempt_ == nullptr) begin();
}

}  // namespace vantrel::hosts::alpaca

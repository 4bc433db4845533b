#include "hosts/alpaca/connection_attempt.h"

#include <algorithm>

#include "hosts/alpaca/device_error.h"

namespace vantrel::hosts::alpaca {

namespace {

using platform::Milliseconds;

constexpr Milliseconds kTimeToConnect{30'000};
constexpr Milliseconds kBetweenConnecting{200};

/// Whether the result is a failure of this kind that meets the condition.
template <typename Error, typename Condition>
bool isFailure(const Result<Json>& result, const Condition& condition) {
    const auto* const failure = std::get_if<std::exception_ptr>(&result);
    if (failure == nullptr) return false;
    try {
        std::rethrow_exception(*failure);
    } catch (const Error& error) {
        return condition(error);
    } catch (...) {
        return false;
    }
}

template <typename Error>
bool isFailure(const Result<Json>& result) {
    return isFailure<Error>(result, [](const Error&) { return true; });
}

bool isRefusedAsUnknown(const Result<Json>& result) {
    return isFailure<UnknownMember>(result) ||
           isFailure<DeviceError>(result, [](const DeviceError& error) { return error.isNotImplemented(); });
}

bool isTrue(const Result<Json>& result) {
    const auto* const value = std::get_if<Json>(&result);
    return value != nullptr && value->is_boolean() && value->get<bool>();
}

}  // namespace

int firstWithConnect(const std::string& deviceType) { return deviceType == "filterwheel" ? 3 : 4; }

ConnectionAttempt::ConnectionAttempt(const Surroundings& surroundings, DeviceRecord device, Over over)
    : surroundings_(surroundings), target_{std::move(device)}, over_(std::move(over)) {
    lookUp();
}

void ConnectionAttempt::lookUp() {
    if (target_.device.uniqueId.empty()) return askVersion();
    ask("/management/v1/configureddevices", [this](Result<Json> result) {
        if (isFailure<UnknownMember>(result)) return askVersion();  // it has no list: the number has to do
        if (auto* failure = std::get_if<std::exception_ptr>(&result)) return search(*failure);
        const auto devices = devicesIn(std::get<Json>(result), target_.device.server);
        const auto found = std::find_if(devices.begin(), devices.end(), [this](const DeviceRecord& device) {
            return device.id() == target_.device.id();
        });
        if (found == devices.end())
            return search(std::make_exception_ptr(
                ServerError("The Alpaca server at " + target_.device.server.text() +
                            " doesn't have the device \"" + target_.device.name + "\" any more.")));
        target_.device.name = found->name;
        target_.device.number = found->number;
        askVersion();
    });
}

/// `reason`: why the device isn't where it was.
void ConnectionAttempt::search(std::exception_ptr reason) {
    discovery_ = std::make_unique<Discovery>(
        surroundings_,
        [this, reason = std::move(reason)](const std::vector<DeviceRecord>& devices) {
            const auto held = std::move(discovery_);
            const auto found = std::find_if(
                devices.begin(), devices.end(),
                [this](const DeviceRecord& device) { return device.id() == target_.device.id(); });
            if (found == devices.end()) return fail(reason);
            target_.device = *found;
            askVersion();
        },
        target_.device.id());
}

void ConnectionAttempt::askVersion() {
    ask(path("interfaceversion"), [this](Result<Json> result) {
        if (isFailure<ServerError>(result)) return fail(std::get<std::exception_ptr>(result));
        const Json* const version = std::get_if<Json>(&result);
        target_.interfaceVersion = version == nullptr ? 1 : intMember({{"Version", *version}}, "Version", 1);
        askWhetherConnected();
    });
}

void ConnectionAttempt::askWhetherConnected() {
    ask(path("connected"), [this](Result<Json> result) {
        if (isTrue(result)) return end(target_);
        if (isFailure<ServerError>(result)) return fail(std::get<std::exception_ptr>(result));
        if (target_.interfaceVersion >= firstWithConnect(target_.device.type)) return connect();
        connectAsOfOld();
    });
}

void ConnectionAttempt::connect() {
    command("connect", {}, [this](Result<Json> result) {
        if (isRefusedAsUnknown(result)) return connectAsOfOld();
        if (auto* failure = std::get_if<std::exception_ptr>(&result)) return fail(*failure);
        connectStarted_ = surroundings_.loop.clock().sinceStart();
        timer_ = surroundings_.loop.every(kBetweenConnecting, [this] { waitForConnect(); });
    });
}

void ConnectionAttempt::connectAsOfOld() {
    command("connected", {{"Connected", formText(true)}}, [this](Result<Json> result) {
        if (auto* failure = std::get_if<std::exception_ptr>(&result)) return fail(*failure);
        verify();
    });
}

void ConnectionAttempt::waitForConnect() {
    if (exchange_ != nullptr) return;
    ask(path("connecting"), [this](Result<Json> result) {
        if (auto* failure = std::get_if<std::exception_ptr>(&result)) return fail(*failure);
        if (!isTrue(result)) return verify();
        if (surroundings_.loop.clock().sinceStart() - connectStarted_ > kTimeToConnect)
            fail(std::make_exception_ptr(
                std::runtime_error(target_.device.name + " has been connecting for half a minute.")));
    });
}

void ConnectionAttempt::verify() {
    timer_.reset();
    ask(path("connected"), [this](Result<Json> result) {
        if (isTrue(result)) return end(target_);
        if (auto* failure = std::get_if<std::exception_ptr>(&result)) return fail(*failure);
        fail(std::make_exception_ptr(
            std::runtime_error(target_.device.name + " says that it isn't connected.")));
    });
}

std::string ConnectionAttempt::path(const std::string& member) const {
    return "/api/v1/" + target_.device.type + "/" + std::to_string(target_.device.number) + "/" + member;
}

void ConnectionAttempt::ask(const std::string& path, Heard heard) {
    send({.server = target_.device.server, .path = path}, std::move(heard));
}

void ConnectionAttempt::command(const std::string& member, const Parameters& parameters, Heard heard) {
    send({.server = target_.device.server,
          .path = path(member),
          .kind = Question::Kind::kPut,
          .parameters = parameters,
          .patience = kTimeToConnect},
         std::move(heard));
}

void ConnectionAttempt::send(const Question& question, Heard heard) {
    exchange_ = surroundings_.client.ask(question, [this, heard = std::move(heard)](Result<Json> result) {
        const auto held = std::move(exchange_);
        heard(std::move(result));
    });
}

void ConnectionAttempt::fail(std::exception_ptr failure) { end(std::move(failure)); }

void ConnectionAttempt::end(Result<Connected> result) {
    timer_.reset();
    const Over over = std::move(over_);
    over(std::move(result));
}

}  // namespace vantrel::hosts::alpaca

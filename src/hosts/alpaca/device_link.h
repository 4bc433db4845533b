// The connection to one device: made once by the operator, kept from then on.
//
// A watch asks the device every other second whether it is still connected. When it isn't, or its server is
// gone, the link is lost, and says so; from then on it tries to get it back, and says when it did. A
// member of a lost link fails at once and says why, without waiting for a server that doesn't answer.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "hosts/alpaca/connection_attempt.h"
#include "hosts/alpaca/device_record.h"
#include "hosts/alpaca/surroundings.h"

namespace vantrel::hosts::alpaca {

class DeviceLink {
  public:
    /// `moved` hears where the device was found, each time it was.
    DeviceLink(const Surroundings& surroundings, DeviceRecord device,
               std::function<void(const DeviceRecord&)> moved);
    ~DeviceLink();
    DeviceLink(const DeviceLink&) = delete;
    DeviceLink& operator=(const DeviceLink&) = delete;

    /// Waits. Throws a std::runtime_error with what is wrong; the link is off then.
    void connect();
    /// Waits. The link is off afterwards, whatever the device says to it.
    void disconnect();

    bool connected() const { return state_ == State::kOn; }

    const std::string& name() const { return device_.name; }
    const DeviceRecord& device() const { return device_; }
    int interfaceVersion() const { return interfaceVersion_; }
    /// The device has Connect, Connecting and DeviceState.
    bool isPlatform7() const { return interfaceVersion_ >= firstWithConnect(device_.type); }

    /// A member's value. Waits; throws as Client::get does, and std::runtime_error when not connected.
    Json get(const std::string& member, const Parameters& parameters = {});
    /// Puts a property or calls a method; the same.
    void put(const std::string& member, const Parameters& parameters,
             platform::Milliseconds patience = platform::Milliseconds{5000});

    /// The same as get without waiting, for a poll. Works also while not connected.
    [[nodiscard]] HttpExchange ask(const std::string& member, std::function<void(Result<Json>)> heard);

    Question question(const std::string& member, const Parameters& parameters = {}) const;

  private:
    enum class State { kOff, kOn, kLost };

    Json exchange(const Question& question);
    void requireConnected() const;
    void begin();
    void noteEnd(Result<Connected> result);
    void watch();
    void noteTrouble(const std::string& what);
    void lose(const std::string& why);
    void tryAgain();
    void turnOff();

    const Surroundings& surroundings_;
    DeviceRecord device_;
    std::function<void(const DeviceRecord&)> moved_;
    int interfaceVersion_ = 1;
    State state_ = State::kOff;
    std::string whyLost_;
    int troubles_ = 0;  // requests in a row that got no answer
    std::unique_ptr<ConnectionAttempt> attempt_;
    std::exception_ptr failure_;  // of the last attempt
    HttpExchange look_;           // the watch's
    platform::TimerHandle timer_;
};

}  // namespace vantrel::hosts::alpaca

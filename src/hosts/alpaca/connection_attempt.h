// One attempt to get a device connected: find it, ask what it is, connect it, see that it is.
#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "hosts/alpaca/device_record.h"
#include "hosts/alpaca/discovery.h"
#include "hosts/alpaca/surroundings.h"

namespace vantrel::hosts::alpaca {

/// The versions of the interfaces from which on a device connects in the background ("connect",
/// "connecting").
int firstWithConnect(const std::string& deviceType);

struct Connected {
    DeviceRecord device;  // where and under which number it is now
    int interfaceVersion = 1;
};

/// Servers number their devices anew at each start and change their addresses, so a device with a unique ID
/// is looked up in its server's list, and where there is no such server, searched for in the network.
class ConnectionAttempt {
  public:
    /// `over` hears of the end, from the event loop, and may let go of this. Given up when this goes.
    using Over = std::function<void(Result<Connected>)>;
    ConnectionAttempt(const Surroundings& surroundings, DeviceRecord device, Over over);

  private:
    void lookUp();
    void search(std::exception_ptr reason);
    void askVersion();
    void askWhetherConnected();
    void connect();
    void connectAsOfOld();
    void waitForConnect();
    void verify();

    using Heard = std::function<void(Result<Json>)>;
    void ask(const std::string& path, Heard heard);
    void command(const std::string& member, const Parameters& parameters, Heard heard);
    void send(const Question& question, Heard heard);
    std::string path(const std::string& member) const;
    void fail(std::exception_ptr failure);
    void end(Result<Connected> result);

    const Surroundings& surroundings_;
    Connected target_;
    Over over_;
    HttpExchange exchange_;
    std::unique_ptr<Discovery> discovery_;
    platform::TimerHandle timer_;
    platform::Milliseconds connectStarted_{0};
};

}  // namespace vantrel::hosts::alpaca

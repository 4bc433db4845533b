// What an INDI server tells: its devices and their properties, kept up to date, and what happens to them.
//
// The connection exists as long as a holder keeps it. Reading a property reads the memory of what came
// last, so reading never waits; a property found is valid until the event loop runs again.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "hosts/indi/commands.h"
#include "hosts/indi/property.h"
#include "hosts/indi/server_link.h"
#include "platform/signal.h"

namespace vantrel::hosts::indi {

/// A line for the operator. Its taker doesn't wait.
using Tell = std::function<void(const std::string& line)>;

struct Event {
    enum class Kind {
        kOpened,   // the connection stands; what the server has follows
        kLost,     // the connection, and all devices with it
        kDefined,  // a property is there
        kUpdated,
        kRemoved,  // a property or, without a name, the whole device
        kMessage,  // see Client::messageSince
        kTick,     // time has passed
    };
    Kind kind = Kind::kTick;
    std::string device = {}, property = {};
};

class Client {
  public:
    Client(platform::EventLoop& loop, ByteStreams& streams, const ServerAddress& server, Tell tell);

    /// Connects, and stays connected until every handle has gone. Not to be called by a listener.
    [[nodiscard]] std::shared_ptr<void> keepOpen();

    bool open() const { return link_.open(); }
    const ServerLink& link() const { return link_; }
    std::string server() const { return link_.server().text(); }
    bool serve(platform::Milliseconds atMost) { return link_.serve(atMost); }

    std::vector<std::string> devices() const;
    bool has(const std::string& device) const { return devices_.contains(device); }
    const Property* find(const std::string& device, std::string_view property) const;

    /// Counts what comes from the server: later words have greater numbers.
    long serial() const { return serial_; }
    /// The device's latest message after the serial, complaints first; empty when there is none.
    std::string messageSince(const std::string& device, long serial) const;
    /// When the device said anything, by the loop's clock.
    platform::Milliseconds lastHeard(const std::string& device) const;

    /// Asks the device for one of its properties, as a sign of life.
    void ask(const std::string& device, const std::string& property);
    /// Elements that aren't named keep their values: drivers take whole properties only.
    void setNumbers(const std::string& device, const std::string& property, const NumberValues& values);
    void setTexts(const std::string& device, const std::string& property, const TextValues& values);
    /// Turns this one on and the others off.
    void setSwitch(const std::string& device, const std::string& property, const std::string& element);

    /// Listeners neither wait nor connect.
    platform::Signal<const Event&> events;

  private:
    struct Message {
        long serial = 0;
        std::string text;
    };
    struct Device {
        std::map<std::string, Property, std::less<>> properties;
        std::deque<Message> messages;
        platform::Milliseconds heard{0};
    };

    void handle(const XmlElement& element);
    void define(const std::string& device, Property property);
    void updateKnown(const std::string& device, const XmlElement& element);
    void remove(const std::string& device, const std::string& property);
    void keepMessage(const std::string& device, const std::string& text);
    bool askForLife();
    void lost(const std::string& why);
    void forget();

    platform::EventLoop& loop_;
    Tell tell_;
    ServerLink link_;
    std::weak_ptr<void> kept_;
    std::map<std::string, Device> devices_;
    std::size_t memory_ = 0;  // bytes that the properties take
    long serial_ = 0;
    bool wasLost_ = false;
};

}  // namespace vantrel::hosts::indi

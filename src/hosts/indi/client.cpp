#include "hosts/indi/client.h"

#include <algorithm>
#include <utility>

#include "hosts/indi/numbers.h"
#include "platform/text.h"

namespace vantrel::hosts::indi {

using platform::EventLoop;
using platform::Milliseconds;

namespace {

constexpr Milliseconds kLongestElement{30'000};
constexpr std::size_t kMostMemory = 32U << 20U;
constexpr std::size_t kMostDevices = 200;
constexpr std::size_t kMostProperties = 1000;  // of a device
constexpr std::size_t kMostMessages = 20;      // of a device
constexpr std::size_t kLongestMessage = 300;

bool isComplaint(const std::string& message) {
    return message.starts_with("[ERROR]") || message.starts_with("[WARNING]") || message.starts_with("Error");
}

/// "[ERROR] 3x3 binning is not supported." without the mark.
std::string withoutMark(const std::string& message) {
    if (!message.starts_with('[')) return message;
    const auto start = message.find_first_not_of(' ', std::min(message.find(']'), message.size() - 1) + 1);
    return start == std::string::npos ? message : message.substr(start);
}

}  // namespace

Client::Client(EventLoop& loop, ByteStreams& streams, const ServerAddress& server, Tell tell)
    : loop_(loop),
      tell_(std::move(tell)),
      link_(loop, streams, server, kLongestElement,
            {.onOpen =
                 [this] {
                     if (std::exchange(wasLost_, false))
                         tell_("The INDI server at " + this->server() + " is back");
                     link_.send(getProperties());
                     events.emit({Event::Kind::kOpened});
                 },
             .onElement = [this](const XmlElement& element) { handle(element); },
             .onLost = [this](const std::string& why) { lost(why); },
             .onTick = [this] { events.emit({Event::Kind::kTick}); },
             .askOtherwise = [this] { return askForLife(); }}) {}

std::shared_ptr<void> Client::keepOpen() {
    auto kept = kept_.lock();
    if (!kept) {
        kept = std::shared_ptr<void>(this, [](void* client) {
            auto* const self = static_cast<Client*>(client);
            self->link_.stop();
            self->forget();
            self->wasLost_ = false;
        });
        kept_ = kept;
    }
    link_.start();
    return kept;
}

// ---- what the server has

std::vector<std::string> Client::devices() const {
    std::vector<std::string> names;
    for (const auto& [name, device] : devices_) names.push_back(name);
    return names;
}

const Property* Client::find(const std::string& device, std::string_view property) const {
    const auto found = devices_.find(device);
    if (found == devices_.end()) return nullptr;
    const auto one = found->second.properties.find(property);
    return one == found->second.properties.end() ? nullptr : &one->second;
}

std::string Client::messageSince(const std::string& device, long serial) const {
    const auto found = devices_.find(device);
    if (found == devices_.end()) return {};
    std::string latest, complaint;
    for (const Message& message : found->second.messages) {
        if (message.serial <= serial) continue;
        latest = message.text;
        if (isComplaint(message.text)) complaint = message.text;
    }
    return withoutMark(complaint.empty() ? latest : complaint);
}

Milliseconds Client::lastHeard(const std::string& device) const {
    const auto found = devices_.find(device);
    return found == devices_.end() ? Milliseconds{0} : found->second.heard;
}

// ---- what the server says

void Client::handle(const XmlElement& element) {
    ++serial_;
    const std::string& device = element.attribute("device");
    if (const auto known = devices_.find(device); known != devices_.end())
        known->second.heard = loop_.clock().sinceStart();
    // The message that comes with a refusal has to be there when its state is looked at.
    if (!element.attribute("message").empty()) keepMessage(device, element.attribute("message"));
    if (!open()) return;  // a listener has let go of it
    if (element.name.starts_with("def")) {
        if (auto property = definedProperty(element)) define(device, std::move(*property));
    } else if (element.name.starts_with("set")) {
        updateKnown(device, element);
    } else if (element.name == "delProperty") {
        remove(device, element.attribute("name"));
    }
}

void Client::define(const std::string& device, Property property) {
    if (device.empty()) return;
    if (!devices_.contains(device) && devices_.size() == kMostDevices) return;
    Device& known = devices_[device];
    known.heard = loop_.clock().sinceStart();
    const auto before = known.properties.find(property.name);
    if (before == known.properties.end() && known.properties.size() == kMostProperties) return;
    if (before != known.properties.end()) memory_ -= before->second.size();
    memory_ += property.size();
    if (memory_ > kMostMemory) throw StreamError("it sends more than this program can keep");
    property.defined = known.heard;
    const std::string name = property.name;
    known.properties.insert_or_assign(name, std::move(property));
    events.emit({Event::Kind::kDefined, device, name});
}

void Client::updateKnown(const std::string& device, const XmlElement& element) {
    const auto found = devices_.find(device);
    if (found == devices_.end()) return;
    const auto known = found->second.properties.find(element.attribute("name"));
    if (known == found->second.properties.end()) return;
    memory_ -= known->second.size();
    update(known->second, element, serial_);
    memory_ += known->second.size();
    if (memory_ > kMostMemory) throw StreamError("it sends more than this program can keep");
    events.emit({Event::Kind::kUpdated, device, element.attribute("name")});
}

void Client::remove(const std::string& device, const std::string& property) {
    const auto found = devices_.find(device);
    if (found == devices_.end()) return;
    auto& properties = found->second.properties;
    const auto forgetOne = [&](auto one) {
        memory_ -= one->second.size();
        return properties.erase(one);
    };
    if (property.empty()) {
        while (!properties.empty()) forgetOne(properties.begin());
        devices_.erase(found);
    } else if (const auto one = properties.find(property); one != properties.end()) {
        forgetOne(one);
    }
    events.emit({Event::Kind::kRemoved, device, property});
}

void Client::keepMessage(const std::string& device, const std::string& text) {
    const auto found = devices_.find(device);
    if (found == devices_.end()) return;
    auto& messages = found->second.messages;
    messages.push_back({serial_, platform::firstCharacters(text, kLongestMessage)});
    if (messages.size() > kMostMessages) messages.pop_front();
    events.emit({Event::Kind::kMessage, device});
}

void Client::lost(const std::string& why) {
    wasLost_ = true;
    forget();
    tell_("The connection to the INDI server at " + server() + " was lost: " + why);
    events.emit({Event::Kind::kLost});
}

void Client::forget() {
    devices_.clear();
    memory_ = 0;
}

// ---- what is said to it

void Client::ask(const std::string& device, const std::string& property) {
    link_.send(getProperties(device, property));
}

/// Every driver defines what it is asked for, once more.
bool Client::askForLife() {
    if (devices_.empty()) return false;
    ask(devices_.begin()->first, "CONNECTION");
    return true;
}

void Client::setNumbers(const std::string& device, const std::string& property, const NumberValues& values) {
    const Property* known = find(device, property);
    if (known == nullptr) return;
    TextValues all;
    for (const PropertyElement& element : known->elements) {
        const auto given = std::find_if(values.begin(), values.end(),
                                        [&](const auto& value) { return value.first == element.name; });
        all.emplace_back(element.name, writeNumber(given == values.end() ? element.number : given->second));
    }
    link_.send(newVector("Number", device, property, all));
}

void Client::setTexts(const std::string& device, const std::string& property, const TextValues& values) {
    const Property* known = find(device, property);
    if (known == nullptr) return;
    TextValues all;
    for (const PropertyElement& element : known->elements) {
        const auto given = std::find_if(values.begin(), values.end(),
                                        [&](const auto& value) { return value.first == element.name; });
        all.emplace_back(element.name, given == values.end() ? element.text : given->second);
    }
    link_.send(newVector("Text", device, property, all));
}

void Client::setSwitch(const std::string& device, const std::string& property, const std::string& element) {
    const Property* known = find(device, property);
    if (known == nullptr) return;
    TextValues all;
    for (const PropertyElement& one : known->elements)
        all.emplace_back(one.name, one.name == element ? "On" : "Off");
    link_.send(newVector("Switch", device, property, all));
}

}  // namespace vantrel::hosts::indi

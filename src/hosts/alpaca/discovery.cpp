#include "hosts/alpaca/discovery.h"

#include <algorithm>

namespace vantrel::hosts::alpaca {

namespace {

using platform::Milliseconds;

constexpr const char* kQuestion = "alpacadiscovery1";
constexpr const char* kGroup = "ff12::a1:9aca";
constexpr Milliseconds kTimeToAnswer{1500};
constexpr Milliseconds kTimeToList{2000};
constexpr Milliseconds kBetweenAnswers{50};
constexpr std::size_t kMostServers = 50;

/// The way to a device that is worth remembering: this machine's own address, then IPv4.
int preference(const ServerAddress& server) {
    if (server.host.starts_with("127.")) return 0;
    return server.host.find(':') == std::string::npos ? 1 : 2;
}

}  // namespace

std::optional<int> portIn(const std::string& answer) {
    try {
        const int port = intMember(parseJson(answer), "AlpacaPort", 0);
        if (port >= 1 && port <= 65535) return port;
    } catch (const std::runtime_error&) {
        // Another protocol's datagram.
    }
    return std::nullopt;
}

Discovery::Discovery(const Surroundings& surroundings, Found found, std::string wantedId)
    : surroundings_(surroundings),
      found_(std::move(found)),
      wantedId_(std::move(wantedId)),
      start_(surroundings.loop.clock().sinceStart()),
      search_(surroundings.search({surroundings.discoveryPort(), kGroup, kQuestion})),
      timer_(surroundings.loop.every(kBetweenAnswers, [this] { tick(); })) {}

void Discovery::tick() {
    if (search_ != nullptr) listen();
    if (isComplete()) end();
}

void Discovery::listen() {
    for (const UdpAnswer& answer : search_->answers()) {
        const auto port = portIn(answer.words);
        if (!port) continue;
        const ServerAddress server{answer.host, *port};
        if (servers_.size() == kMostServers ||
            std::find(servers_.begin(), servers_.end(), server) != servers_.end())
            continue;
        servers_.push_back(server);
        askForDevices(server);
    }
    if (surroundings_.loop.clock().sinceStart() - start_ >= kTimeToAnswer) search_.reset();
}

/// First who the server is, then what it has.
void Discovery::askForDevices(const ServerAddress& server) {
    ++waitingFor_;
    const auto ask = [this, server](const char* what, std::function<void(Json)> heard) {
        const Question question{
            .server = server, .path = std::string("/management/v1/") + what, .patience = kTimeToList};
        exchanges_.push_back(
            surroundings_.client.ask(question, [heard = std::move(heard)](Result<Json> result) {
                const Json* const value = std::get_if<Json>(&result);
                heard(value == nullptr ? Json() : *value);
            }));
    };
    ask("description", [this, ask, server](const Json& description) {
        // Some servers send a plain text.
        const std::string name = description.is_string() ? textMember({{"Name", description}}, "Name")
                                                         : textMember(description, "ServerName");
        ask("configureddevices", [this, server, name](const Json& list) {
            --waitingFor_;
            note(server, name, devicesIn(list, server));
        });
    });
}

void Discovery::note(const ServerAddress& server, const std::string& serverName,
                     std::vector<DeviceRecord> devices) {
    for (DeviceRecord& device : devices) {
        device.serverName = serverName;
        const auto known = std::find_if(devices_.begin(), devices_.end(),
                                        [&](const auto& other) { return other.id() == device.id(); });
        if (known == devices_.end())
            devices_.push_back(std::move(device));
        else if (preference(server) < preference(known->server))
            *known = std::move(device);
    }
}

bool Discovery::isComplete() const {
    const bool hasWanted = std::any_of(devices_.begin(), devices_.end(),
                                       [this](const auto& device) { return device.id() == wantedId_; });
    return hasWanted || (search_ == nullptr && waitingFor_ == 0);
}

void Discovery::end() {
    timer_.reset();
    exchanges_.clear();
    const Found found = std::move(found_);
    found(std::move(devices_));
}

}  // namespace vantrel::hosts::alpaca

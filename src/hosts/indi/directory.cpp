#include "hosts/indi/directory.h"

#include <algorithm>
#include <memory>

#include "hosts/indi/numbers.h"

namespace vantrel::hosts::indi {

using platform::Milliseconds;

namespace {

constexpr Milliseconds kQuiet{300};       // nothing more has come: that was all
constexpr Milliseconds kFirstWord{1000};  // from a server whose drivers are slow
constexpr Milliseconds kAtMost{2500};

// Bits of DRIVER_INTERFACE.
constexpr int kTelescope = 1, kCcd = 2;

/// One server being asked.
class Inquiry {
  public:
    Inquiry(const platform::Clock& clock, std::shared_ptr<Client> client)
        : clock_(clock), client_(std::move(client)), failuresBefore_(client_->link().failures()) {
        listening_ = client_->events.subscribe([this](const Event& event) {
            if (event.kind != Event::Kind::kTick) lastWord_ = clock_.sinceStart();
        });
        kept_ = client_->keepOpen();
        lastWord_ = clock_.sinceStart();
    }

    bool over() const {
        if (!client_->open()) return client_->link().failures() > failuresBefore_;
        const Milliseconds silence = clock_.sinceStart() - lastWord_;
        return silence >= (client_->devices().empty() ? kFirstWord : kQuiet);
    }

    void report(Search& search) const {
        const std::size_t before = search.devices.size();
        for (const std::string& device : client_->devices()) {
            const Property* info = client_->find(device, "DRIVER_INFO");
            const int kinds = info == nullptr ? 0 : readKinds(info->text("DRIVER_INTERFACE"));
            if ((kinds & (kTelescope | kCcd)) == 0) continue;
            search.devices.push_back({.id = {client_->link().server(), device},
                                      .isMount = (kinds & kTelescope) != 0,
                                      .isCamera = (kinds & kCcd) != 0});
        }
        if (search.devices.size() > before) return;
        const std::string server = "The INDI server at " + client_->server();
        if (client_->open())
            search.problems.push_back(server + " has neither mount nor camera");
        else
            search.problems.push_back(server + " doesn't answer: is it running?");
    }

    Client& client() const { return *client_; }

  private:
    static int readKinds(const std::string& text) {
        const auto number = readNumber(text);
        return number && *number >= 0 && *number < 1e6 ? static_cast<int>(*number) : 0;
    }

    const platform::Clock& clock_;
    std::shared_ptr<Client> client_;
    long failuresBefore_;
    Milliseconds lastWord_{0};
    std::shared_ptr<void> kept_;
    platform::Subscription listening_;
};

}  // namespace

Search searchServers(Servers& servers, const std::vector<ServerAddress>& addresses) {
    const Surroundings& surroundings = servers.surroundings();
    std::vector<std::unique_ptr<Inquiry>> inquiries;
    inquiries.reserve(addresses.size());
    for (const ServerAddress& address : addresses)
        inquiries.push_back(std::make_unique<Inquiry>(surroundings.loop.clock(), servers.client(address)));
    surroundings.wait.until(
        [&] {
            return std::all_of(inquiries.begin(), inquiries.end(),
                               [](const auto& one) { return one->over(); });
        },
        kAtMost);
    Search search;
    for (const auto& inquiry : inquiries) inquiry->report(search);
    return search;
}

}  // namespace vantrel::hosts::indi

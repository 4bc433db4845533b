// Alpaca devices with everything around them, in virtual time.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "hosts/alpaca/client.h"
#include "hosts/alpaca/fake_server.h"
#include "hosts/alpaca/surroundings.h"
#include "hosts/fake_http.h"
#include "platform/outside_call.h"
#include "platform/queued_event_loop.h"

namespace vantrel::test {

/// Datagrams that arrive after their time, once somebody asked.
struct FakeDatagram {
    platform::Milliseconds after;
    hosts::UdpAnswer answer;
};

class AlpacaWorld {
  public:
    AlpacaWorld() {
        http.answer = [this](const platform::HttpRequest& request) {
            const std::string place = request.url.substr(7, request.url.find('/', 7) - 7);
            if (!servers.contains(place))
                return FakeReply{platform::HttpError(platform::HttpError::Kind::kUnreachable, "nobody"),
                                 platform::Milliseconds{2}};
            return servers[place].answer(request);
        };
    }

    platform::Milliseconds now() const { return time.sinceStart(); }

    /// The line that was told and has this in it; empty when there is none.
    std::string told(const std::string& part) const {
        for (const std::string& line : lines)
            if (line.find(part) != std::string::npos) return line;
        return "";
    }

    platform::VirtualTime time{platform::parseInstant("2026-11-24T20:00:00Z").value()};
    platform::QueuedEventLoop loop{time};
    platform::OutsideCalls calls;
    bool stopped = false;
    FakeHttp http{loop};
    std::map<std::string, FakeServer> servers;  // by "host:port"
    hosts::alpaca::Client client{http, hosts::PumpedWait(loop, calls, [this] { return stopped; }), 17};
    platform::BackgroundOfLoop background{loop};
    std::vector<FakeDatagram> datagrams;
    std::vector<hosts::UdpQuestion> searches;
    std::vector<std::string> pages;
    std::vector<std::string> lines;

    hosts::alpaca::Surroundings surroundings{
        .loop = loop,
        .client = client,
        .background = background,
        .search =
            [this](const hosts::UdpQuestion& question) {
                searches.push_back(question);
                return std::make_unique<Search>(*this);
            },
        .discoveryPort = [] { return 32227; },
        // As if J2000 lay 0.1 hours and 1 degree below.
        .equinox = {.toDate = [](const auto& j2000, auto) -> hosts::MountPosition {
                        return {j2000.rightAscension + 0.1, j2000.declination + 1};
                    },
                    .toJ2000 = [](const auto& ofDate, auto) -> hosts::MountPosition {
                        return {ofDate.rightAscension - 0.1, ofDate.declination - 1};
                    }},
        .openPage =
            [this](const std::string& page) {
                pages.push_back(page);
                return true;
            },
        .tell = [this](const std::string& line) { lines.push_back(line); }};

  private:
    class Search : public hosts::UdpSearch {
      public:
        explicit Search(AlpacaWorld& world) : world_(world), start_(world.now()) {}
        std::vector<hosts::UdpAnswer> answers() override {
            std::vector<hosts::UdpAnswer> arrived;
            for (;
                 given_ < world_.datagrams.size() && world_.datagrams[given_].after <= world_.now() - start_;
                 ++given_)
                arrived.push_back(world_.datagrams[given_].answer);
            return arrived;
        }

      private:
        AlpacaWorld& world_;
        platform::Milliseconds start_;
        std::size_t given_ = 0;
    };
};

}  // namespace vantrel::test

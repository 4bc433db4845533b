// A program with an INDI server somewhere, in virtual time.
#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "hosts/indi/fake_indi.h"
#include "hosts/indi/host.h"
#include "platform/queued_event_loop.h"
#include "support/refusal.h"

namespace vantrel::test {

using namespace std::chrono_literals;

class IndiWorld : public testing::Test {
  protected:
    /// What goes wrong, what is said then, and how long that takes at most.
    struct Trouble {
        const char* why;
        std::function<void()> spoil;
        std::string problem;
        Milliseconds latest;
    };

    Milliseconds now() const { return time.sinceStart(); }

    /// From then on the server takes the property like this.
    std::function<void()> treated(const char* property, const Treatment& how) {
        return [this, property, how] { server.treatment[property] = how; };
    }
    /// The server takes no notice of it, and while that is waited for something happens.
    std::function<void()> meanwhile(const char* property, std::function<void()> what) {
        return [this, property, what = std::move(what)] {
            server.treatment[property] = {Treatment::Kind::kIgnore};
            loop.post(what);
        };
    }
    template <typename Action>
    static std::string problemOf(Action&& action) {
        return refusalOf<std::exception>(action);
    }

    platform::VirtualTime time{platform::parseInstant("2026-11-24T20:00:00Z").value()};
    platform::QueuedEventLoop loop{time};
    platform::OutsideCalls calls;
    bool givenUp = false;
    hosts::PumpedWait wait{loop, calls, [this] { return givenUp; }};
    FakeIndi server{time, loop};
    std::vector<std::string> told;
    hosts::indi::Surroundings surroundings{
        loop,
        server.network,
        wait,
        [this](const std::string& line) { told.push_back(line); },
        // The equinox moves by an hour and a degree, so that a forgotten conversion shows.
        {.toDate =
             [](const hosts::MountPosition& p, platform::Instant) {
                 return hosts::MountPosition{p.rightAscension + 1, p.declination + 1};
             },
         .toJ2000 =
             [](const hosts::MountPosition& p, platform::Instant) {
                 return hosts::MountPosition{p.rightAscension - 1, p.declination - 1};
             }}};
    hosts::indi::Servers servers{surroundings};
    const hosts::ServerAddress address{"localhost", 7624};
};

}  // namespace vantrel::test

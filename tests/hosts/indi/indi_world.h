// A program with an INDI server somewhere, in virtual time.
#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "hosts/indi/fake_indi.h"
#include "hosts/indi/host.h"
#include "platform/queued_event_loop.h"

namespace vantrel::test {

using namespace std::chrono_literals;

class IndiWorld : public testing::Test {
  protected:
    Milliseconds now() const { return time.sinceStart(); }

    /// What goes wrong in it; empty when nothing does.
    template <typename Action>
    static std::string problemOf(Action&& action) {
        try {
            action();
            return {};
        } catch (const std::exception& error) {
            return error.what();
        }
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

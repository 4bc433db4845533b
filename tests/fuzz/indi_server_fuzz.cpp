// A mount and a camera at a server that says anything: the parts of the input one after the other, a second
// apart, on every connection.
#include "fuzz/input.h"
#include "hosts/fake_network.h"
#include "hosts/indi/host.h"
#include "platform/class_registry.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vantrel;
    using namespace std::chrono_literals;
    platform::VirtualTime time{platform::Instant{}};
    platform::QueuedEventLoop loop{time};
    platform::OutsideCalls calls;
    const hosts::PumpedWait wait{loop, calls};
    test::FakeNetwork network{time, loop};
    const auto parts = fuzz::pieces(fuzz::textOf(data, size), 6);
    std::vector<std::shared_ptr<test::FakeConnection>> connections;
    network.onConnection = [&](const std::shared_ptr<test::FakeConnection>& connection) {
        connections.push_back(connection);
        auto delay = 1ms;
        for (const std::string_view part : parts) {
            connection->send(std::string(part), delay);
            delay += 1000ms;
        }
    };
    hosts::indi::IndiHost host{
        {loop,
         network,
         wait,
         [](const std::string&) {},
         {.toDate = [](const auto& p, auto) { return p; }, .toJ2000 = [](const auto& p, auto) { return p; }}},
        {}};
    platform::ClassRegistry registry;
    host.install(registry, "Indi:here:7624/M");
    const auto mount = registry.create("Indi:here:7624/M");
    const auto camera = host.camera("Indi:here:7624/C");
    const auto attempt = [](const auto& action) {
        try {
            action();
        } catch (const std::runtime_error&) {  // what a device that fails throws
        }
    };
    host.search({{"here", 7624}});
    attempt([&] { mount->put("Connected", true); });
    attempt([&] { camera->connect(); });
    for (int step = 0; step < 3; ++step) {
        for (const char* member : {"RightAscension", "Declination", "Slewing", "Tracking", "AtPark",
                                   "SiderealTime", "SiteLatitude"})
            attempt([&] { mount->get(member); });
        attempt([&] { mount->call("SlewToCoordinatesAsync", {5, 20}); });
        attempt([&] { camera->start({.seconds = 0.1, .filter = 1}); });
        loop.sleep(2s);
        attempt([&] { camera->take(); });
    }
    attempt([&] { mount->call("AbortSlew"); });
    attempt([&] { camera->abort(); });
    camera->disconnect();
    attempt([&] { mount->put("Connected", false); });
    return 0;
}

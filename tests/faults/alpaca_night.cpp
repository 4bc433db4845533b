#include "faults/network_night.h"
#include "hosts/alpaca/alpaca_world.h"
#include "hosts/alpaca/camera.h"
#include "hosts/alpaca/telescope.h"

namespace vantrel::faults {
namespace {

using hosts::alpaca::DeviceRecord;
using platform::Milliseconds;
using test::FakeReply;
using test::FakeServer;
using test::Fault;
using enum test::Fault;
using test::Request;

constexpr const char* kAlpacaMount = "Alpaca:M1/telescope";
const std::string kMount = "telescope/0/";
const std::string kCamera = "camera/0/";

class AlpacaDevices : public NetworkDevices {
  public:
    explicit AlpacaDevices(const Workshop& workshop)
        : loop_(workshop.loop),
          instruments_(workshop.loop),
          http_(workshop.loop),
          client_(http_, hosts::PumpedWait(workshop.loop, workshop.calls, workshop.stopping), 17),
          background_(workshop.loop),
          surroundings_{.loop = workshop.loop,
                        .client = client_,
                        .background = background_,
                        .search = [](const auto&) -> std::unique_ptr<hosts::UdpSearch> { return nullptr; },
                        .discoveryPort = [] { return 32227; },
                        .equinox = {},
                        .openPage = [](const auto&) { return true; },
                        .tell = workshop.tell} {
        server_.list({{"Telescope", "Telescope", 0, "M1"}, {"Camera", "Camera", 0, "C1"}});
        instruments_.addMount(server_);
        instruments_.addCamera(server_);
        http_.answer = [this](const platform::HttpRequest& request) { return answer(request); };
        const hosts::ServerAddress server{"10.0.0.7", 11111};
        // Also for the solver that knows where the mount points.
        mount_ = std::make_shared<hosts::alpaca::Telescope>(
            surroundings_, DeviceRecord{"telescope", "M1", "Mount", server, 0}, [](const auto&) {});
        workshop.classes.install(kAlpacaMount, {[this] { return mount_; }, "", "Telescope", "Mount"});
        workshop.observatory.imaging().useCamera(std::make_shared<hosts::alpaca::Camera>(
            surroundings_, DeviceRecord{"camera", "C1", "Camera", server, 0}, [](const auto&) {}));
    }

    std::vector<std::string> takeRequests() override {
        std::vector<std::string> requests;
        for (const Request& request : server_.requests) {
            const std::string key = (request.isPut ? "PUT " : "") + request.path;
            if (std::find(requests.begin(), requests.end(), key) == requests.end()) requests.push_back(key);
        }
        server_.requests = {};
        return requests;
    }

    std::vector<NetworkFault> faultsOf(const std::string& request) override {
        std::vector<NetworkFault> faults;
        const std::vector<std::pair<const char*, Fault>> kinds = {
            {"refused", kRefused},
            {"lost", kSilence},
            {"cut", kCut},
            {"answered without end", kTooMuch},
            {"not found", kNotFound},
            {"a fault of the server", kServerFault},
            {"answered by a page", kWebPage},
            {"answered by nonsense", kNoJson},
            {"answered without a value", kNoValue},
            {"answered by another type", kWrongType},
            {"an error of the device", kDeviceError},
            {"told not to exist", kNotImplemented},
            {"not connected", kNotConnected},
        };
        faults.reserve(kinds.size());
        for (const auto& [name, kind] : kinds)
            faults.push_back(
                {request + " " + name, [this, request, kind = kind] { server_.faults[request] = kind; }});
        for (const long delay : {100, 1000, 10'000})
            faults.push_back({request + " late by " + std::to_string(delay) + " ms",
                              [this, request, delay] { server_.delays[request] = Milliseconds{delay}; }});
        faults.push_back({request + " done twice", [this, request] { twice_ = request; }});
        return faults;
    }

    std::vector<NetworkFault> accidents() override {
        return {{"the mount is disconnected", [this] { server_.values[kMount + "connected"] = false; }},
                {"the camera is disconnected", [this] { server_.values[kCamera + "connected"] = false; }},
                {"the server dies and is started again",
                 [this] {
                     die();
                     back_ = loop_.after(Milliseconds{5000}, [this] { repair(); });
                 }},
                {"the server dies", [this] { die(); }},
                {"the cable is pulled", [this] { fail(kSilence); }},
                {"the cable is pulled for a while", [this] {
                     fail(kSilence);
                     back_ = loop_.after(Milliseconds{20'000}, [this] { repair(); });
                 }}};
    }

    void repair() override {
        server_.faults.clear();
        server_.delays.clear();
        twice_.clear();
    }

    bool mountSlews() const override { return server_.values.at(kMount + "slewing").get<bool>(); }

  private:
    FakeReply answer(const platform::HttpRequest& request) {
        const auto before = server_.requests.size();
        FakeReply reply = server_.answer(request);
        const Request& came = server_.requests[before];
        if (!twice_.empty() && (came.isPut ? "PUT " : "") + came.path == twice_)
            reply = server_.answer(request);
        return reply;
    }
    void fail(Fault fault) { server_.faults[""] = fault; }
    /// With all that it was doing.
    void die() {
        fail(kRefused);
        instruments_.stop(server_);
        instruments_.rest(server_);
        for (const std::string& device : {kMount, kCamera}) server_.values[device + "connected"] = false;
    }

    platform::QueuedEventLoop& loop_;
    FakeServer server_;
    test::Instruments instruments_;
    test::FakeHttp http_;
    hosts::alpaca::Client client_;
    platform::BackgroundOfLoop background_;
    hosts::alpaca::Surroundings surroundings_;
    std::shared_ptr<hosts::alpaca::Telescope> mount_;
    std::string twice_;
    platform::TimerHandle back_;
};

}  // namespace

NetworkEquipment alpacaEquipment() {
    return {{"Alpaca", kAlpacaMount, "BuiltIn", "0"},
            [](const Workshop& workshop) { return std::make_shared<AlpacaDevices>(workshop); }};
}

}  // namespace vantrel::faults

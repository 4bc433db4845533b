#include "faults/network_night.h"
#include "hosts/alpaca/alpaca_world.h"
#include "hosts/alpaca/camera.h"
#include "hosts/alpaca/image_messages.h"
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

/// A server with a mount and a camera that do as they are told.
class Instruments {
  public:
    explicit Instruments(platform::QueuedEventLoop& loop) : loop_(loop) {
        server.list({{"Telescope", "Telescope", 0, "M1"}, {"Camera", "Camera", 0, "C1"}});
        server.fill(kMount, R"({
            "interfaceversion": 3, "connected": false, "equatorialsystem": 1, "rightascension": 5, "declination": 40,
            "siderealtime": 6.5, "sitelatitude": 50, "sitelongitude": 10, "slewing": false, "tracking": true,
            "canslew": true, "canslewasync": true, "atpark": false})");
        server.fill(kCamera, R"({
            "interfaceversion": 3, "connected": false, "cameraxsize": 24, "cameraysize": 16, "pixelsizex": 3.8,
            "pixelsizey": 3.8, "maxbinx": 4, "maxbiny": 4, "exposuremin": 0.001, "exposuremax": 3600,
            "sensortype": 0, "canabortexposure": true, "imageready": false, "camerastate": 0,
            "lastexposurestarttime": "2026-11-24T20:00:01.25", "lastexposureduration": 10})");
        server.commands[kMount + "tracking"] = [this](const Request& put) {
            server.values[kMount + "tracking"] = put.parameters.at("Tracking") == "True";
        };
        server.commands[kMount + "slewtocoordinatesasync"] = [this](const Request& put) { slew(put); };
        server.commands[kMount + "abortslew"] = [this](const Request&) { stand(); };
        server.take(kCamera, {"binx", "biny", "startx", "starty", "numx", "numy"});
        server.commands[kCamera + "startexposure"] = [this](const Request& put) { expose(put); };
        for (const char* name : {"abortexposure", "stopexposure"})
            server.commands[kCamera + name] = [this](const Request&) { rest(); };
        server.raw[kCamera + "imagearray"] = [] {
            const std::vector<std::uint16_t> pixels(24 * 16, 100);
            return platform::HttpAnswer{200, "application/imagebytes",
                                        test::imageBytes(hosts::alpaca::Element::kUInt16, 24, 16, pixels)};
        };
    }

    bool slewing() const { return server.values.at(kMount + "slewing").get<bool>(); }
    void disconnect(const std::string& which) { server.values[which + "connected"] = false; }
    void rest() {
        exposing_.reset();
        server.values[kCamera + "camerastate"] = 0;
    }
    void stand() {
        slewing_.reset();
        server.values[kMount + "slewing"] = false;
    }

    FakeServer server;

  private:
    void slew(const Request& put) {
        server.values[kMount + "slewing"] = true;
        slewing_ = loop_.after(Milliseconds{4000}, [this, put] {
            server.values[kMount + "rightascension"] = std::stod(put.parameters.at("RightAscension"));
            server.values[kMount + "declination"] = std::stod(put.parameters.at("Declination"));
            server.values[kMount + "slewing"] = false;
        });
    }
    void expose(const Request& put) {
        server.values[kCamera + "imageready"] = false;
        server.values[kCamera + "camerastate"] = 2;
        const auto time = std::chrono::duration<double>(std::stod(put.parameters.at("Duration")));
        exposing_ = loop_.after(std::chrono::duration_cast<Milliseconds>(time), [this] {
            server.values[kCamera + "imageready"] = true;
            server.values[kCamera + "camerastate"] = 0;
        });
    }

    platform::QueuedEventLoop& loop_;
    platform::TimerHandle slewing_, exposing_;
};

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
        for (const Request& request : instruments_.server.requests) {
            const std::string key = (request.isPut ? "PUT " : "") + request.path;
            if (std::find(requests.begin(), requests.end(), key) == requests.end()) requests.push_back(key);
        }
        instruments_.server.requests = {};
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
            {"a bad request", kBadRequest},
            {"a fault of the server", kServerFault},
            {"moved", kMoved},
            {"answered by a page", kWebPage},
            {"answered by nonsense", kNoJson},
            {"answered by no object", kNoObject},
            {"answered without a value", kNoValue},
            {"answered by null", kNull},
            {"answered by another type", kWrongType},
            {"an error of the device", kDeviceError},
            {"not implemented", kNotImplemented},
            {"not connected", kNotConnected},
        };
        faults.reserve(kinds.size());
        for (const auto& [name, kind] : kinds)
            faults.push_back({request + " " + name,
                              [this, request, kind = kind] { instruments_.server.faults[request] = kind; }});
        for (const long delay : {100, 1000, 10'000})
            faults.push_back({request + " late by " + std::to_string(delay) + " ms", [this, request, delay] {
                                  instruments_.server.delays[request] = Milliseconds{delay};
                              }});
        faults.push_back({request + " done twice", [this, request] { twice_ = request; }});
        return faults;
    }

    std::vector<NetworkFault> accidents() override {
        return {{"the mount is disconnected", [this] { instruments_.disconnect(kMount); }},
                {"the camera is disconnected", [this] { instruments_.disconnect(kCamera); }},
                {"the server dies and is started again",
                 [this] {
                     die(kRefused);
                     back_ = loop_.after(Milliseconds{5000}, [this] { repair(); });
                 }},
                {"the server dies", [this] { die(kRefused); }},
                {"the cable is pulled", [this] { fail(kSilence); }},
                {"the cable is pulled for a while", [this] {
                     fail(kSilence);
                     back_ = loop_.after(Milliseconds{20'000}, [this] { repair(); });
                 }}};
    }

    void repair() override {
        instruments_.server.faults.clear();
        instruments_.server.delays.clear();
        twice_.clear();
    }

    bool mountSlews() const override { return instruments_.slewing(); }

  private:
    FakeReply answer(const platform::HttpRequest& request) {
        const auto before = instruments_.server.requests.size();
        FakeReply reply = instruments_.server.answer(request);
        const Request& came = instruments_.server.requests[before];
        if (!twice_.empty() && (came.isPut ? "PUT " : "") + came.path == twice_)
            reply = instruments_.server.answer(request);
        return reply;
    }
    void fail(Fault fault) { instruments_.server.faults[""] = fault; }
    /// With all that it was doing.
    void die(Fault fault) {
        fail(fault);
        instruments_.stand();
        instruments_.rest();
        instruments_.disconnect(kMount);
        instruments_.disconnect(kCamera);
    }

    platform::QueuedEventLoop& loop_;
    Instruments instruments_;
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

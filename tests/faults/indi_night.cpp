#include "faults/network_night.h"
#include "hosts/indi/fake_indi.h"
#include "hosts/indi/host.h"
#include "support/fits_bytes.h"

namespace vantrel::faults {
namespace {

using platform::Milliseconds;
using test::FakeIndi;
using test::Treatment;

constexpr const char* kIndiMount = "Indi:localhost:7624/Mount";
constexpr const char* kCameraId = "Indi:localhost:7624/Camera";

std::string smallPicture() {
    constexpr int kWidth = 24, kHeight = 16;
    std::string pixels;
    for (int i = 0; i < kWidth * kHeight; ++i) pixels += test::bigEndian(static_cast<std::uint16_t>(i));
    return test::fitsHeader({"SIMPLE  =                    T", "BITPIX  =                   16",
                             "NAXIS   =                    2", "NAXIS1  =                   24",
                             "NAXIS2  =                   16", "BZERO   =                32768"}) +
           test::padded(pixels);
}

class IndiDevices : public NetworkDevices {
  public:
    explicit IndiDevices(const Workshop& workshop)
        : loop_(workshop.loop),
          server_(workshop.time, workshop.loop),
          wait_(workshop.loop, workshop.calls, workshop.stopping),
          host_({workshop.loop, server_.network, wait_, workshop.tell, {}}, {}) {
        server_.picture = smallPicture();
        server_.tracking = true;
        host_.install(workshop.classes, kIndiMount);
        workshop.observatory.imaging().useCamera(host_.camera(kCameraId));
    }

    std::vector<std::string> takeRequests() override {
        std::vector<std::string> properties;
        for (const std::string& command : server_.commands) {
            const std::string property = command.substr(0, command.find(' '));
            if (std::find(properties.begin(), properties.end(), property) == properties.end())
                properties.push_back(property);
        }
        server_.commands = {};
        return properties;
    }

    std::vector<NetworkFault> faultsOf(const std::string& request) override {
        using enum Treatment::Kind;
        const auto fault = [&](const char* name, const Treatment& treatment) {
            return NetworkFault{request + " " + name,
                                [this, request, treatment] { server_.treatment[request] = treatment; }};
        };
        return {fault("lost", {kIgnore}),
                fault("refused", {kRefuse}),
                fault("complained of", {kIgnoreWithMessage}),
                fault("cut", {kCut}),
                fault("hung up on", {kHangUp}),
                fault("followed by silence", {kSilence}),
                fault("deadly for the driver", {kDie}),
                fault("late by 0.1 s", {.delay = Milliseconds{100}}),
                fault("late by 1 s", {.delay = Milliseconds{1000}}),
                fault("late by 10 s", {.delay = Milliseconds{10'000}}),
                fault("doubled", {.twice = true}),
                fault("doubled and late", {.delay = Milliseconds{1000}, .twice = true})};
    }

    std::vector<NetworkFault> accidents() override {
        return {{"the mount's driver dies", [this] { server_.restartDriver(FakeIndi::kMount); }},
                {"the camera's driver dies", [this] { server_.restartDriver(FakeIndi::kCamera); }},
                {"the server dies and is started again", [this] { dieFor(Milliseconds{5000}); }},
                {"the server dies", [this] { die(); }},
                {"the cable is pulled", [this] { pullCable(); }},
                {"the cable is pulled for a while",
                 [this] {
                     pullCable();
                     back_ = loop_.after(Milliseconds{20'000}, [this] { repair(); });
                 }},
                {"another program disconnects the mount",
                 [this] { server_.disconnectByOthers(FakeIndi::kMount); }},
                {"another program disconnects the camera",
                 [this] { server_.disconnectByOthers(FakeIndi::kCamera); }}};
    }

    void repair() override {
        server_.treatment.clear();
        server_.network.answer = test::FakeNetwork::Answer::kAccept;
    }

    bool mountSlews() const override { return server_.slewing(); }

  private:
    void die() {
        server_.network.answer = test::FakeNetwork::Answer::kRefuse;
        server_.stop();
    }
    void dieFor(Milliseconds time) {
        die();
        back_ = loop_.after(time, [this] { repair(); });
    }
    void pullCable() {
        server_.network.answer = test::FakeNetwork::Answer::kNothing;
        server_.cutCables();
    }

    platform::QueuedEventLoop& loop_;
    FakeIndi server_;
    hosts::PumpedWait wait_;
    hosts::indi::IndiHost host_;
    platform::TimerHandle back_;
};

}  // namespace

NetworkEquipment indiEquipment() {
    return {{"INDI", kIndiMount, "BuiltIn", "0"},
            [](const Workshop& workshop) { return std::make_shared<IndiDevices>(workshop); }};
}

}  // namespace vantrel::faults

// The real mounts and cameras: where they are looked for, which are known, and which camera is used.
//
// A mount becomes a class of automation objects of its name, so that the chooser lists it and a stored choice
// means something before its server answers. A camera is given to the built-in camera program.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hosts/adjusted_camera.h"
#include "hosts/alpaca/host.h"
#include "hosts/indi/host.h"
#include "hosts/network_client.h"
#include "hosts/pumped_wait.h"
#include "hosts/tcp_stream.h"
#include "observatory/observatory.h"
#include "platform/background.h"
#include "platform/class_registry.h"
#include "platform/dialogs.h"
#include "platform/event_loop.h"
#include "platform/outside_call.h"
#include "platform/picture_facts.h"
#include "platform/settings_root.h"

namespace vantrel::station {

/// What the devices stand on; all of it outlives them.
struct DeviceSurroundings {
    platform::EventLoop& loop;
    platform::OutsideCalls& outsideCalls;
    platform::Background& background;
    platform::SettingsRoot& settings;
    platform::Dialogs& dialogs;
    platform::ClassRegistry& classes;
    observatory::Observatory& observatory;
    std::function<bool()> stopping;
    std::function<void(const std::string& line)> tell;
    std::function<bool(const std::string& address)> openPage;
    std::function<platform::PictureFacts()> pictureFacts;
    bool mayLook = false;  // for devices in the network
};

class Devices {
  public:
    explicit Devices(const DeviceSurroundings& surroundings);

    /// Makes the mount and the camera that the settings name known, without contacting anybody. Throws what
    /// the settings throw when they can't be read.
    void restore();

    /// Asks all servers which mounts they have, and makes these classes. A second or two at most.
    void findMounts();

    /// Tells of the mounts at the INDI servers, unless one is in use or no server runs.
    void offerMounts();

    /// Lets the operator choose the camera of the built-in camera program; stores the choice.
    void chooseCamera();

    /// The settings of the camera have changed. May wait.
    void adjustCamera() {
        if (camera_) camera_->adjust();
    }

    /// What an INDI mount's set-up shows; until it is given, nothing.
    void setSetUp(std::function<void()> setUp) { setUp_ = std::move(setUp); }

    /// Whether the mount in use is one of these rather than a simulated one.
    bool mountIsReal() const;

  private:
    struct Found {
        std::string id, description;
    };

    std::string setting(const char* key, const char* otherwise = "") const;
    std::vector<hosts::ServerAddress> indiServers() const;
    std::vector<Found> find(bool cameras);
    std::vector<Found> findIndi(bool cameras);
    std::vector<Found> findAlpaca(bool cameras);
    void askAlpacaServers();
    void useCamera(const std::string& id);
    std::shared_ptr<platform::CameraHardware> realCamera(const std::string& id);
    hosts::CameraWishes cameraWishes() const;
    hosts::indi::MountOptions mountOptions() const;
    std::optional<hosts::indi::DriverSite> siteForMount() const;

    DeviceSurroundings surroundings_;
    std::function<void()> setUp_;
    hosts::PumpedWait wait_;
    hosts::TcpStreams streams_;
    hosts::indi::IndiHost indi_;
    hosts::NetworkClient http_;
    hosts::alpaca::Client alpacaClient_;
    std::optional<hosts::alpaca::Host> alpaca_;  // once the settings could be read
    std::string cameraId_;
    std::shared_ptr<hosts::AdjustedCamera> camera_;  // nothing: the simulated one is used
};

}  // namespace vantrel::station

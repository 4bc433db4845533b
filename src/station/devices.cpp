#include "station/devices.h"

#include <stdexcept>
#include <utility>

#include "platform/text.h"
#include "sky/epoch.h"
#include "station/picture_cards.h"

namespace vantrel::station {
namespace {

constexpr const char* kSection = "Hosts";
constexpr const char* kServersKey = "IndiServers";
constexpr const char* kCameraKey = "Camera";
constexpr const char* kUsualServer = "localhost:7624";
constexpr const char* kSimulated = "Simulated";
constexpr const char* kAlpacaServersKey = "AlpacaServers";
constexpr const char* kPortKey = "AlpacaPort";  // of the search
constexpr const char* kUsualPort = "32227";
constexpr std::uint32_t kClientId = 4711;  // tells this program from others at the same server

hosts::EquinoxConversion equinoxConversion() {
    const auto convert = [](const hosts::MountPosition& position, platform::Instant utc,
                            sky::SkyPosition (sky::SkyOfDate::*turn)(const sky::SkyPosition&) const) {
        const sky::SkyPosition from{position.rightAscension * 15, position.declination};
        const sky::SkyPosition to = (sky::SkyOfDate(utc).*turn)(from);
        return hosts::MountPosition{to.ra / 15, to.dec};
    };
    return {[convert](const auto& position, platform::Instant utc) {
                return convert(position, utc, &sky::SkyOfDate::apparent);
            },
            [convert](const auto& position, platform::Instant utc) {
                return convert(position, utc, &sky::SkyOfDate::catalogue);
            }};
}

/// Addresses between blanks and commas.
std::vector<std::string> words(const std::string& text) {
    std::vector<std::string> found(1);
    for (const char c : text) {
        if (c != ' ' && c != ',' && c != ';')
            found.back() += c;
        else if (!found.back().empty())
            found.emplace_back();
    }
    if (found.back().empty()) found.pop_back();
    return found;
}

bool isReal(const std::string& progId) {
    return progId.starts_with("Indi:") || progId.starts_with("Alpaca:");
}

}  // namespace

Devices::Devices(const DeviceSurroundings& surroundings)
    : surroundings_(surroundings),
      wait_(surroundings.loop, surroundings.outsideCalls, surroundings.stopping),
      streams_(surroundings.loop),
      indi_({surroundings.loop, streams_, wait_, surroundings.tell, equinoxConversion()},
            {[this](const hosts::indi::DeviceId&) { return mountOptions(); },
             [this](const hosts::indi::DeviceId&) {
                 if (setUp_) setUp_();
             }}),
      http_(surroundings.loop),
      alpacaClient_(http_, wait_, kClientId) {}

void Devices::restore() {
    const auto port = [this] {
        return static_cast<int>(platform::leadingNumber(setting(kPortKey, kUsualPort)));
    };
    alpaca_.emplace(hosts::alpaca::Surroundings{surroundings_.loop, alpacaClient_, surroundings_.background,
                                                hosts::searchNetwork, port, equinoxConversion(),
                                                surroundings_.openPage, surroundings_.tell},
                    surroundings_.settings, surroundings_.classes);
    indi_.install(surroundings_.classes, surroundings_.settings.read("Main", "MyTelescopeID").value_or(""));
    useCamera(setting(kCameraKey));
}

bool Devices::mountIsReal() const {
    return isReal(surroundings_.settings.read("Main", "MyTelescopeID").value_or(""));
}

std::string Devices::setting(const char* key, const char* otherwise) const {
    return surroundings_.settings.read(kSection, key).value_or(otherwise);
}

std::vector<hosts::ServerAddress> Devices::indiServers() const {
    std::vector<hosts::ServerAddress> servers;
    for (const std::string& word : words(setting(kServersKey, kUsualServer))) {
        if (const auto address = hosts::indi::readServerAddress(word))
            servers.push_back(*address);
        else
            surroundings_.tell("\"" + word + "\" is no address of an INDI server");
    }
    return servers;
}

/// What the operator wants an INDI mount's driver to be told on connecting.
hosts::indi::MountOptions Devices::mountOptions() const {
    const bool tell = platform::leadingNumber(setting("TellMount", "0")) != 0;
    return {.port = setting("MountPort"),
            .baudRate = setting("MountBaudRate"),
            .site = tell ? siteForMount() : std::nullopt,
            .setTime = tell};
}

/// None when the mount is the one that tells it, or nobody has told it yet.
std::optional<hosts::indi::DriverSite> Devices::siteForMount() const {
    const auto stored = [this](const char* key, const char* otherwise = "") {
        return surroundings_.settings.read("Main", key).value_or(otherwise);
    };
    const std::string mountTells = stored("UseTelescopeSiteLocation", "1");
    if (mountTells == "True" || platform::leadingNumber(mountTells) != 0) return std::nullopt;
    const std::string latitude = stored("SiteLatitude"), longitude = stored("SiteLongitude");
    if (latitude.empty() || longitude.empty()) return std::nullopt;
    return hosts::indi::DriverSite{platform::leadingNumber(latitude), platform::leadingNumber(longitude), 0};
}

void Devices::findMounts() { find(false); }

void Devices::offerMounts() {
    if (!surroundings_.mayLook || mountIsReal()) return;
    for (const hosts::indi::FoundDevice& device : indi_.search(indiServers()).devices)
        if (device.isMount)
            surroundings_.tell(device.id.device + " at the INDI server at " + device.id.server.text() +
                               " can be used: Select in the Telescope window offers it");
}

std::vector<Devices::Found> Devices::find(bool cameras) {
    if (!surroundings_.mayLook) return {};
    std::vector<Found> found = findIndi(cameras);
    for (Found& device : findAlpaca(cameras)) found.push_back(std::move(device));
    return found;
}

std::vector<Devices::Found> Devices::findIndi(bool cameras) {
    std::vector<Found> found;
    const hosts::indi::Search search = indi_.search(indiServers());
    for (const std::string& problem : search.problems) surroundings_.tell(problem);
    for (const hosts::indi::FoundDevice& device : search.devices) {
        const std::string id = device.id.progId();
        if (device.isMount) indi_.install(surroundings_.classes, id);
        if (cameras ? device.isCamera : device.isMount)
            found.push_back({id, device.id.device + " (INDI, " + device.id.server.text() + ")"});
    }
    return found;
}

std::vector<Devices::Found> Devices::findAlpaca(bool cameras) {
    std::vector<Found> found;
    if (!alpaca_) return found;
    try {
        for (const auto& device : alpaca_->search()) alpaca_->remember(device);
    } catch (const std::exception& error) {
        surroundings_.tell(std::string("Alpaca: ") + error.what());
    }
    askAlpacaServers();
    for (const auto& device : alpaca_->known(cameras ? "camera" : "telescope"))
        found.push_back({device.id(), device.name + " (Alpaca, " + device.server.text() + ")"});
    return found;
}

/// Those that the operator has named, as no search finds them.
void Devices::askAlpacaServers() {
    for (const std::string& word : words(setting(kAlpacaServersKey))) {
        try {
            if (const auto server = hosts::alpaca::parseServerAddress(word)) {
                for (const auto& device : alpaca_->devicesAt(*server)) alpaca_->remember(device);
            } else if (const auto device = hosts::alpaca::parseDevice(word)) {
                alpaca_->remember(*device);
            } else {
                surroundings_.tell("\"" + word +
                                   "\" is neither an address of an Alpaca server nor a device at one");
            }
        } catch (const std::exception& error) {
            surroundings_.tell(error.what());
        }
    }
}

void Devices::chooseCamera() {
    std::vector<platform::Dialogs::Choice> choices = {{kSimulated, "Simulated camera"}};
    for (const Found& camera : find(true)) choices.push_back({camera.id, camera.description});
    const std::string current = setting(kCameraKey);
    const std::string chosen =
        surroundings_.dialogs.choose("Camera", choices, current.empty() ? kSimulated : current);
    if (chosen.empty()) return;
    const std::string id = chosen == kSimulated ? "" : chosen;
    surroundings_.settings.write(kSection, kCameraKey, id);
    useCamera(id);
    surroundings_.tell("Camera: " + surroundings_.observatory.imaging().chosenCamera().name());
}

/// A camera that can't be had leaves the simulated one, and says so.
void Devices::useCamera(const std::string& id) {
    if (camera_ && id == cameraId_) return;
    std::shared_ptr<hosts::AdjustedCamera> camera;
    try {
        if (const auto real = realCamera(id))
            camera = std::make_shared<hosts::AdjustedCamera>(
                real, [this] { return cameraWishes(); }, surroundings_.tell);
    } catch (const std::exception& error) {
        surroundings_.tell(error.what());
    }
    surroundings_.observatory.imaging().useCamera(camera, [this] {
        return picturesCards(surroundings_.pictureFacts(), surroundings_.loop.clock().utc());
    });
    camera_ = std::move(camera);
    cameraId_ = id;
}

/// Nothing for the simulated one.
std::shared_ptr<platform::CameraHardware> Devices::realCamera(const std::string& id) {
    if (id.starts_with("Indi:")) return indi_.camera(id);
    if (id.starts_with("Alpaca:") && alpaca_) return alpaca_->camera(id);
    return nullptr;
}

hosts::CameraWishes Devices::cameraWishes() const {
    return {.gain = setting("CameraGain"),
            .offset = setting("CameraOffset"),
            .cool = platform::leadingNumber(setting("CameraCooling", "0")) != 0,
            .celsius = setting("CameraTemperature", "-10")};
}

}  // namespace vantrel::station

#include "observatory/telescopes/axis_simulator.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "fits/fits_image.h"
#include "fits/fits_writing.h"
#include "platform/image_array.h"

namespace vantrel::observatory {

using platform::Arguments;
using platform::Value;

AxisSimulator::AxisSimulator(const DriverIdentity& identity, std::shared_ptr<AxisSimulatorDevice> device,
                             SetupDialog setupDialog, const platform::FolderMap& folders)
    : TelescopeDriver(identity, device, std::move(setupDialog)),
      identity_(identity),
      device_(std::move(device)),
      folders_(folders) {
    addAxis();
    addFaults();
    addOptics();
    addSensor();
    addPictures();
}

void AxisSimulator::addAxis() {
    MountSettings& settings = device_->mount.settings();
    const Range azimuth{-5400, 5400, "arc-minutes"};
    const Range elevation{-1800, 1800, "arc-minutes"};
    setting("PolarAzimuthError", settings.axisError.azimuth, azimuth);
    setting("PolarElevationError", settings.axisError.elevation, elevation);
    addAdjuster("TurnAzimuthAdjuster", settings.axisError.azimuth, azimuth);
    addAdjuster("TurnElevationAdjuster", settings.axisError.elevation, elevation);
    setting("PointingNoise", settings.pointingNoise, {0, 3600, "arcsec"});
    property("CameraAxisHourAngle", [this] { return Value(device_->camera.axis().hourAngle / 15); });
    property("CameraAxisDeclination", [this] { return Value(device_->camera.axis().declination); });
}

void AxisSimulator::addFaults() {
    MountFaults& faults = device_->mount.settings().faults;
    setting("RollNoise", faults.rollNoise, {0, 36'000, "arcsec"});
    setting("Flexure", faults.flexure, {0, 3600, "arcsec"});
    setting("PeriodicError", faults.periodicError, {0, 3600, "arcsec"});
    setting("WormPeriod", faults.wormPeriod, {1, 86'400, "seconds"});
    setting("ClockError", faults.clockError, {-3600, 3600, "seconds"});
    Mount& mount = device_->mount;
    property(
        "DeclinationJump", [&mount] { return Value(mount.declinationJump().amount); },
        [&mount](const Value& value) {
            const double amount = checked("DeclinationJump", value, {-36'000, 36'000, "arcsec"});
            mount.setDeclinationJump({amount, mount.declinationJump().slew});
        });
    property(
        "DeclinationJumpSlew", [&mount] { return Value(mount.declinationJump().slew); },
        [&mount](const Value& value) {
            const double slew = checked("DeclinationJumpSlew", value, {1, 1000, ""});
            mount.setDeclinationJump({mount.declinationJump().amount, static_cast<int>(std::round(slew))});
        });
}

void AxisSimulator::addAdjuster(const std::string& name, double& error, const Range& range) {
    method(name, [name, &error, range](const Arguments& arguments) {
        const double turn = argument(arguments, 0).toDouble();
        error = checked("The axis error after " + name, error + turn, range);
        return Value();
    });
}

void AxisSimulator::addOptics() {
    CameraSettings& settings = device_->camera.settings();
    setting("FocalLength", settings.focalLength, {10, 20'000, "mm"});
    setting("PixelSize", settings.pixelSize, {0.5, 100, "micrometres"});
    addPixelCount("CameraWidth", settings.width);
    addPixelCount("CameraHeight", settings.height);
    setting("CameraRotation", settings.rotation, {-360, 360, "degrees"});
    setting("CameraMirrored", settings.mirrored);
}

void AxisSimulator::addPixelCount(const std::string& name, double& pixels) {
    property(
        name, [&pixels] { return Value(static_cast<int>(pixels)); },
        [name, &pixels](const Value& value) {
            pixels = std::round(checked(name, value, {16, 16'384, "pixels"}));
        });
}

void AxisSimulator::addSensor() {
    CameraSettings& settings = device_->camera.settings();
    setting("Seeing", settings.seeing, {0.1, 120, "arcsec"});
    setting("ImageMotion", settings.imageMotion, {0, 60, "arcsec"});
    setting("SkyLevel", settings.skyLevel, {0, 1e6, "electrons per second and pixel"});
    setting("LimitingMagnitude", settings.limitingMagnitude, {-5, 30, ""});
    setting("HotPixels", settings.hotPixels, {0, 1e7, "pixels"});
    setting("Refraction", settings.refraction);
    setting("AirPressure", settings.air.pressure, {0, 1100, "hPa"});
    setting("AirTemperature", settings.air.temperature, {-60, 60, "degrees Celsius"});
    setting("ExposureTime", settings.exposureTime, {0.001, 3600, "seconds"});
}

void AxisSimulator::addPictures() {
    method("Expose", [this](const Arguments&) {
        expose();
        return Value();
    });
    method("SaveImageToFile", [this](const Arguments& arguments) {
        save(argument(arguments, 0).toText());
        return Value();
    });
    property("ImageArray", [this] {
        if (!device_->picture.pixels) throw std::runtime_error("There is no image yet");
        return Value(device_->picture.pixels);
    });
}

void AxisSimulator::expose() {
    requireConnected();
    const auto device = device_;  // this object may be released during the wait
    if (device->exposing) throw std::runtime_error("The camera is exposing already");
    struct Busy {
        bool& flag;
        explicit Busy(bool& busy) : flag(busy) { flag = true; }
        ~Busy() { flag = false; }
    } const busy(device->exposing);
    const platform::Clock& clock = device->loop.clock();
    const auto ends = clock.sinceStart() +
                      platform::Milliseconds{std::lround(device->camera.settings().exposureTime * 1000)};
    const LatentPicture latent = device->camera.expose(clock.utc(), identity_.name);
    imaging::Picture picture;
    device->background.await([&] { picture = latent(); });
    device->loop.sleep(std::max(ends - clock.sinceStart(), platform::Milliseconds{0}));
    device->picture = std::move(picture);
    if (device->onPicture) device->onPicture(device->picture);
}

void AxisSimulator::save(const std::string& path) const {
    const imaging::Picture picture = device_->picture;
    if (!picture.pixels) throw std::runtime_error("There is no image to save yet");
    try {
        device_->background.await(
            [&] { fits::writeFits(folders_.real(path), *picture.pixels, picture.header); });
    } catch (const fits::FitsError& error) {
        throw std::runtime_error("The image could not be saved as " + path + ": " + error.what());
    }
}

}  // namespace vantrel::observatory

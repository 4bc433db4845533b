#include "observatory/telescopes/telescope_driver.h"

#include <cmath>
#include <stdexcept>

#include "platform/text.h"

namespace vantrel::observatory {

using platform::Arguments;
using platform::Value;

TelescopeDriver::TelescopeDriver(const DriverIdentity& identity, std::shared_ptr<TelescopeDevice> device,
                                 SetupDialog setupDialog)
    : DispatchObject(identity.progId), name_(identity.name), device_(std::move(device)) {
    addIdentity(identity, std::move(setupDialog));
    addCapabilities();
    addSite();
    addPosition();
    addMotion();
    addParking();
}

double TelescopeDriver::checked(const std::string& name, const Value& value, const Range& range) {
    const double number = value.toDouble();
    if (!(number >= range.low && number <= range.high))
        throw std::runtime_error(name + " must be between " + platform::toText(range.low) + " and " +
                                 platform::toText(range.high) + (range.unit.empty() ? "" : " " + range.unit));
    return number;
}

void TelescopeDriver::setting(const std::string& name, double& value, Range range) {
    property(
        name, [&value] { return Value(value); },
        [name, &value, range = std::move(range)](const Value& put) { value = checked(name, put, range); });
}

void TelescopeDriver::setting(const std::string& name, bool& value) {
    property(
        name, [&value] { return Value(value); }, [&value](const Value& put) { value = put.toBool(); });
}

void TelescopeDriver::requireConnected() const {
    if (!device_->connected) throw std::runtime_error(name_ + " is not connected");
}

void TelescopeDriver::addIdentity(const DriverIdentity& identity, SetupDialog setupDialog) {
    const auto text = [this](const std::string& name, const std::string& value) {
        property(name, [value] { return Value(value); });
    };
    text("Name", identity.name);
    text("Description", identity.description);
    text("DriverInfo", identity.name + ", part of the built-in observatory");
    text("DriverVersion", "1.0");
    property("InterfaceVersion", [] { return Value(3); });
    property(
        "Connected", [this] { return Value(device_->connected); },
        [this](const Value& value) { device_->connected = value.toBool(); });
    method("SetupDialog", [progId = identity.progId, dialog = std::move(setupDialog)](const Arguments&) {
        if (dialog) dialog(progId);
        return Value();
    });
}

void TelescopeDriver::addCapabilities() {
    for (const char* can : {"CanSlew", "CanSlewAsync", "CanSync", "CanSetTracking", "CanPark", "CanUnpark"})
        property(can, [] { return Value(true); });
    property("EquatorialSystem", [] { return Value(1); });  // topocentric, equinox of date
}

void TelescopeDriver::addSite() {
    MountSettings& settings = device_->mount.settings();
    setting("SiteLatitude", settings.latitude, {-90, 90, "degrees"});
    setting("SiteLongitude", settings.longitude, {-180, 180, "degrees"});
    setting("SiteElevation", settings.elevation, {-500, 9000, "metres"});
    setting("SlewRate", settings.slewRate, {0.001, 3600, "degrees per second"});
    setting("HourAngleOffset", settings.hourAngleOffset, {-24, 24, "hours"});
    setting("DeclinationOffset", settings.declinationOffset, {-90, 90, "degrees"});
}

void TelescopeDriver::addPosition() {
    const auto reading = [this](const std::string& name, std::function<double(const Mount&)> value) {
        property(name, [this, value = std::move(value)] {
            requireConnected();
            return Value(value(device_->mount));
        });
    };
    const auto horizon = [](const Mount& mount) {
        const MountCounts now = mount.reading();
        const double hourAngle = 15 * (mount.siderealTime() - now.rightAscension);
        return altAzOf(hourAngleDirection(hourAngle, now.declination), mount.settings().latitude);
    };
    reading("RightAscension", [](const Mount& mount) { return mount.reading().rightAscension; });
    reading("Declination", [](const Mount& mount) { return mount.reading().declination; });
    reading("SiderealTime", [](const Mount& mount) { return mount.siderealTime(); });
    reading("Altitude", [horizon](const Mount& mount) { return horizon(mount).altitude; });
    reading("Azimuth", [horizon](const Mount& mount) { return horizon(mount).azimuth; });
}

MountCounts TelescopeDriver::positionFrom(const Arguments& arguments) {
    return {argument(arguments, 0).toDouble(), argument(arguments, 1).toDouble()};
}

void TelescopeDriver::slew(const Arguments& arguments) {
    requireConnected();
    device_->mount.startSlew(positionFrom(arguments));
}

void TelescopeDriver::addMotion() {
    property("Slewing", [this] {
        requireConnected();
        return Value(device_->mount.isSlewing());
    });
    property(
        "Tracking", [this] { return Value(device_->mount.isTracking()); },
        [this](const Value& value) { device_->mount.setTracking(value.toBool()); });
    method("SlewToCoordinatesAsync", [this](const Arguments& arguments) {
        slew(arguments);
        return Value();
    });
    method("SlewToCoordinates", [this](const Arguments& arguments) {
        slew(arguments);
        const auto device = device_;  // this object may be released during the wait
        while (device->mount.isSlewing()) device->loop.sleep(platform::Milliseconds{100});
        return Value();
    });
    method("SyncToCoordinates", [this](const Arguments& arguments) {
        requireConnected();
        device_->mount.sync(positionFrom(arguments));
        return Value();
    });
    method("AbortSlew", [this](const Arguments&) {
        requireConnected();
        device_->mount.abortSlew();
        return Value();
    });
}

void TelescopeDriver::addParking() {
    property("AtPark", [this] { return Value(device_->mount.isParked()); });
    method("Park", [this](const Arguments&) {
        requireConnected();
        device_->mount.park();
        return Value();
    });
    method("Unpark", [this](const Arguments&) {
        requireConnected();
        device_->mount.unpark();
        return Value();
    });
}

}  // namespace vantrel::observatory

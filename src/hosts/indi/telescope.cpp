#include "hosts/indi/telescope.h"

#include <utility>

namespace vantrel::hosts::indi {

using platform::Arguments;
using platform::Value;

namespace {

constexpr int kLocalTopocentric = 1;  // the equinox as programs number it

}  // namespace

Telescope::Telescope(const std::string& progId, std::shared_ptr<Mount> mount,
                     std::function<void()> setupDialog)
    : DispatchObject(progId), mount_(std::move(mount)) {
    property(
        "Connected", [this] { return Value(mount_->connected()); },
        [this](const Value& value) { value.toBool() ? mount_->connect() : mount_->disconnect(); });
    method("SetupDialog", [setupDialog = std::move(setupDialog)](const Arguments&) {
        if (setupDialog) setupDialog();
        return Value();
    });
    addState();
    addMotion();
}

void Telescope::addState() {
    property("Name", [this] { return Value(mount_->name()); });
    property("Description", [this] { return Value(mount_->name() + ", an INDI device"); });
    property("RightAscension", [this] { return Value(mount_->position().rightAscension); });
    property("Declination", [this] { return Value(mount_->position().declination); });
    property("EquatorialSystem", [] { return Value(kLocalTopocentric); });
    property("SiderealTime", [this] { return Value(mount_->siderealTime()); });
    property("SiteLatitude", [this] { return Value(mount_->site().latitude); });
    property("SiteLongitude", [this] { return Value(mount_->site().longitude); });
    property("SiteElevation", [this] { return Value(mount_->site().elevation); });
    property("AtPark", [this] { return Value(mount_->parked()); });
}

void Telescope::addMotion() {
    property(
        "Tracking", [this] { return Value(mount_->tracking()); },
        [this](const Value& value) { mount_->setTracking(value.toBool()); });
    property("CanSlew", [] { return Value(true); });
    property("CanSlewAsync", [] { return Value(true); });
    property("Slewing", [this] { return Value(mount_->slewing()); });
    method("SlewToCoordinatesAsync", [this](const Arguments& arguments) {
        mount_->slewTo({argument(arguments, 0).toDouble(), argument(arguments, 1).toDouble()});
        return Value();
    });
    method("AbortSlew", [this](const Arguments&) {
        mount_->abort();
        return Value();
    });
    method("Unpark", [this](const Arguments&) {
        mount_->unpark();
        return Value();
    });
}

}  // namespace vantrel::hosts::indi

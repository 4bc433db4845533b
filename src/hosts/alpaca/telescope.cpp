#include "hosts/alpaca/telescope.h"

#include <stdexcept>

#include "hosts/alpaca/device_error.h"
#include "hosts/server_text.h"
#include "platform/text.h"

namespace vantrel::hosts::alpaca {

namespace {

using platform::Arguments;
using platform::Milliseconds;
using platform::Value;

constexpr Milliseconds kTimeToBeginSlew{10'000};

/// A member that the device doesn't have, as automation programs know it.
[[noreturn]] void raiseNoSuchMember(const std::exception& error) {
    throw platform::OperationError(platform::error_number::kNoSuchMember, "", error.what());
}

double checked(const Json& value, const std::string& what, double least, double most) {
    const auto number = numberIn(value);
    if (!number || !(*number >= least && *number <= most))
        throw std::runtime_error("The mount gives no sensible " + what + ".");
    return *number;
}

MountPosition checkedPosition(const Json& ra, const Json& dec) {
    const double hours = checked(ra, "right ascension", 0, 24);
    return {hours == 24 ? 0 : hours, checked(dec, "declination", -90, 90)};
}

Value toValue(const Json& json) {
    if (json.is_boolean()) return json.get<bool>();
    if (json.is_number_integer()) return json.get<std::int64_t>();
    if (json.is_number()) return json.get<double>();
    if (json.is_string()) return oneLine(json.get_ref<const std::string&>());
    return {};
}

}  // namespace

Telescope::Telescope(const Surroundings& surroundings, const DeviceRecord& device,
                     std::function<void(const DeviceRecord&)> moved)
    : DispatchObject(device.id()),
      surroundings_(surroundings),
      link_(surroundings, device, std::move(moved)) {
    addIdentity();
    addPosition();
    addMotion();
    addSite();
}

// ---- members

void Telescope::addIdentity() {
    property(
        "Connected", [this] { return Value(link_.connected()); },
        [this](const Value& value) { connect(value.toBool()); });
    property("Name", [this] { return Value(link_.name()); });
    property("InterfaceVersion", [this] { return Value(link_.interfaceVersion()); });
    for (const char* name : {"Description", "DriverInfo", "DriverVersion"})
        property(name, [this, name] { return toValue(member(platform::toLower(name))); });
    method("SetupDialog", [this](const Arguments&) {
        const DeviceRecord& device = link_.device();
        const std::string page = baseUrl(device.server) + "/setup/v1/" + device.type + "/" +
                                 std::to_string(device.number) + "/setup";
        if (!surroundings_.openPage(page)) throw std::runtime_error("The page " + page + " can't be opened.");
        return Value();
    });
}

void Telescope::addPosition() {
    property("EquatorialSystem", [] { return Value(1); });  // whatever the mount's own is
    property("RightAscension", [this] { return Value(position().rightAscension); });
    property("Declination", [this] { return Value(position().declination); });
    property("SiderealTime", [this] { return Value(number("siderealtime", "sidereal time", 0, 24)); });
}

void Telescope::addMotion() {
    property("CanSlew", [this] { return Value(flagOr("canslew", false)); });
    property("CanSlewAsync", [this] { return Value(flagOr("canslewasync", false)); });
    property("CanSetTracking", [this] { return Value(flagOr("cansettracking", false)); });
    property("Slewing", [this] { return Value(isSlewing()); });
    property(
        "Tracking", [this] { return Value(flag("tracking")); },
        [this](const Value& value) {
            link_.put("tracking", {{"Tracking", formText(value.toBool())}});
        });
    property("AtPark", [this] { return Value(flagOr("atpark", false)); });
    method("Unpark", [this](const Arguments&) {
        link_.put("unpark", {});
        return Value();
    });
    method("SlewToCoordinatesAsync", [this](const Arguments& arguments) {
        slew(arguments);
        return Value();
    });
    method("AbortSlew", [this](const Arguments&) {
        slew_.reset();
        link_.put("abortslew", {});
        return Value();
    });
}

void Telescope::addSite() {
    property("SiteLatitude", [this] { return Value(number("sitelatitude", "latitude", -90, 90)); });
    property("SiteLongitude", [this] { return Value(number("sitelongitude", "longitude", -180, 180)); });
    property("SiteElevation", [this] { return Value(number("siteelevation", "elevation", -500, 10'000)); });
}

// ---- the connection

void Telescope::connect(bool wanted) {
    slew_.reset();
    if (!wanted) return link_.disconnect();
    link_.connect();
    hasState_ = true;
    try {
        system_ = equatorialSystem();
    } catch (...) {
        link_.disconnect();
        throw;
    }
}

/// A mount that doesn't say counts as nearly all do.
Telescope::System Telescope::equatorialSystem() {
    constexpr int kOfDate = 1;
    constexpr int kJ2000 = 2;
    int number = kOfDate;
    try {
        number = intMember({{"Value", link_.get("equatorialsystem")}}, "Value", kOfDate);
    } catch (const UnknownMember&) {
    } catch (const DeviceError&) {
    }
    if (number == kOfDate) return System::kOfDate;
    if (number == kJ2000) return System::kJ2000;
    throw std::runtime_error(
        link_.name() +
        " counts its coordinates from another equinox than J2000 or the date's: please choose "
        "one of these in its setup.");
}

// ---- where it is

/// Of date.
MountPosition Telescope::position() {
    const MountPosition raw = rawPosition();
    return system_ == System::kJ2000 ? surroundings_.equinox.toDate(raw, surroundings_.loop.clock().utc())
                                     : raw;
}

std::optional<MountPosition> Telescope::positionIfKnown() {
    try {
        return position();
    } catch (const GivenUp&) {
        throw;
    } catch (const std::runtime_error&) {
        return std::nullopt;
    }
}

/// In the mount's own system. Both numbers at once from those that can.
MountPosition Telescope::rawPosition() {
    if (link_.isPlatform7() && hasState_) {
        const auto state = deviceState();
        const auto ra = state.find("RightAscension");
        const auto dec = state.find("Declination");
        hasState_ = ra != state.end() && dec != state.end();
        if (hasState_) return checkedPosition(ra->second, dec->second);
    }
    return checkedPosition(member("rightascension"), member("declination"));
}

// ---- slews

void Telescope::slew(const Arguments& arguments) {
    MountPosition target{argument(arguments, 0).toDouble(), argument(arguments, 1).toDouble()};
    if (!(target.rightAscension >= 0 && target.rightAscension <= 24))
        throw std::runtime_error("A right ascension must be between 0 and 24 hours.");
    if (!(target.declination >= -90 && target.declination <= 90))
        throw std::runtime_error("A declination must be between -90 and 90 degrees.");
    if (target.rightAscension == 24) target.rightAscension = 0;
    if (!flagOr("canslewasync", true)) throw std::runtime_error(link_.name() + " can't slew by itself.");

    if (!flagOr("tracking", true)) link_.put("tracking", {{"Tracking", formText(true)}});
    const auto from = positionIfKnown();
    const MountPosition sent = system_ == System::kJ2000
                                   ? surroundings_.equinox.toJ2000(target, surroundings_.loop.clock().utc())
                                   : target;
    slew_.reset();
    link_.put(
        "slewtocoordinatesasync",
        {{"RightAscension", formText(sent.rightAscension)}, {"Declination", formText(sent.declination)}},
        kTimeToBeginSlew);
    slew_.emplace(surroundings_.loop.clock().sinceStart(), from, target);
}

bool Telescope::isSlewing() {
    const bool saysSlewing = flag("slewing");
    if (!slew_) return saysSlewing;
    const auto where = saysSlewing ? std::nullopt : positionIfKnown();
    if (!slew_) return saysSlewing;  // aborted while the place was asked for
    switch (slew_->judge(surroundings_.loop.clock().sinceStart(), saysSlewing, where)) {
        case SlewLatch::Verdict::kSlewing:
            return true;
        case SlewLatch::Verdict::kOver:
            slew_.reset();
            return false;
        case SlewLatch::Verdict::kTookNoNotice:
            break;
    }
    slew_.reset();
    throw std::runtime_error(link_.name() + " took no notice of the slew.");
}

// ---- single members

Json Telescope::member(const std::string& name) {
    try {
        return link_.get(name);
    } catch (const UnknownMember& error) {
        raiseNoSuchMember(error);
    } catch (const DeviceError& error) {
        if (error.isNotImplemented()) raiseNoSuchMember(error);
        throw;
    }
}

bool Telescope::flag(const std::string& name) {
    const auto value = flagIn(member(name));
    if (!value) throw std::runtime_error("The mount answers neither yes nor no to \"" + name + "\".");
    return *value;
}

/// For what a mount needn't have.
bool Telescope::flagOr(const std::string& name, bool otherwise) {
    try {
        return flag(name);
    } catch (const platform::OperationError&) {
        return otherwise;
    }
}

double Telescope::number(const std::string& name, const char* what, double least, double most) {
    return checked(member(name), what, least, most);
}

/// Empty from a mount that hasn't got it.
std::map<std::string, Json> Telescope::deviceState() {
    try {
        return namedValuesIn(member("devicestate"));
    } catch (const platform::OperationError&) {
        return {};
    }
}

}  // namespace vantrel::hosts::alpaca

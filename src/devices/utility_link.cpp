#include "devices/utility_link.h"

namespace vantrel::devices {

using platform::Arguments;
using platform::ObjectRef;
using platform::Value;

void UtilityLink::create() { utility_ = automation_.create("DriverHelper.Util"); }

Value UtilityLink::call(const std::string& member, const Arguments& arguments) {
    const ObjectRef held = utility_;  // a wait may see the object released
    return platform::required(held).call(member, arguments);
}

std::string UtilityLink::HoursToHMS(double hours) { return call("HoursToHMS", {hours}).toText(); }

std::string UtilityLink::DegreesToDMS(double degrees) { return call("DegreesToDMS", {degrees}).toText(); }

std::string UtilityLink::DegreesToHMS(double degrees) { return call("DegreesToHMS", {degrees}).toText(); }

std::string UtilityLink::HoursToHMS(double hours, const std::string& hourMark,
                                    const std::string& minuteMark) {
    return call("HoursToHMS", {hours, hourMark, minuteMark}).toText();
}

std::string UtilityLink::DegreesToDMS(double degrees, const std::string& degreeMark,
                                      const std::string& minuteMark, const std::string& secondMark) {
    return call("DegreesToDMS", {degrees, degreeMark, minuteMark, secondMark}).toText();
}

// The number of decimals comes after the marks; where these are left out, the object's own stand.
std::string UtilityLink::HoursToHMS(double hours, int decimals) {
    return call("HoursToHMS", {hours, Value(), Value(), Value(), decimals}).toText();
}

std::string UtilityLink::DegreesToDMS(double degrees, int decimals) {
    return call("DegreesToDMS", {degrees, Value(), Value(), Value(), decimals}).toText();
}

double UtilityLink::DMSToDegrees(const std::string& text) { return call("DMSToDegrees", {text}).toDouble(); }

void UtilityLink::WaitForMilliseconds(int milliseconds) { call("WaitForMilliseconds", {milliseconds}); }

}  // namespace vantrel::devices

#include "helpers/util_object.h"

#include <stdexcept>

#include "helpers/angle_texts.h"

namespace vantrel::helpers {
namespace {

using platform::Arguments;
using platform::Value;

std::string textAt(const Arguments& arguments, std::size_t index, const std::string& otherwise) {
    return index < arguments.size() && !arguments[index].isEmpty() ? arguments[index].toText() : otherwise;
}

int decimalsAt(const Arguments& arguments, std::size_t index) {
    return index < arguments.size() ? arguments[index].toInt() : 0;
}

/// Arguments: value, three delimiters, decimals.
std::string seconds(double value, const Arguments& arguments, const Delimiters& defaults) {
    const Delimiters delimiters{textAt(arguments, 1, defaults.units), textAt(arguments, 2, defaults.minutes),
                                textAt(arguments, 3, defaults.seconds)};
    return formatSeconds(value, delimiters, decimalsAt(arguments, 4));
}

/// Arguments: value, two delimiters, decimals.
std::string minutes(double value, const Arguments& arguments, const Delimiters& defaults) {
    const Delimiters delimiters{textAt(arguments, 1, defaults.units), textAt(arguments, 2, defaults.minutes),
                                ""};
    return formatMinutes(value, delimiters, decimalsAt(arguments, 3));
}

}  // namespace

UtilObject::UtilObject(platform::EventLoop& loop) : DispatchObject("DriverHelper.Util") {
    addFormatters();
    addParsers();
    method("WaitForMilliseconds", [&loop](const Arguments& arguments) {
        const double duration = argument(arguments, 0).toDouble();
        if (!(duration >= 0 && duration <= 86'400'000))
            throw std::invalid_argument("WaitForMilliseconds takes 0 to 86400000 milliseconds");
        loop.sleep(platform::Milliseconds{static_cast<long>(duration)});
        return Value();
    });
}

void UtilObject::addFormatters() {
    static const Delimiters kHours{":", ":", ""};
    static const Delimiters kHoursToMinutes{":", "", ""};
    static const Delimiters kDegrees{"° ", "' ", "\""};
    static const Delimiters kDegreesToMinutes{"° ", "'", ""};

    method("HoursToHMS", [](const Arguments& a) { return seconds(argument(a, 0).toDouble(), a, kHours); });
    method("DegreesToHMS",
           [](const Arguments& a) { return seconds(argument(a, 0).toDouble() / 15, a, kHours); });
    method("DegreesToDMS",
           [](const Arguments& a) { return seconds(argument(a, 0).toDouble(), a, kDegrees); });
    method("HoursToHM",
           [](const Arguments& a) { return minutes(argument(a, 0).toDouble(), a, kHoursToMinutes); });
    method("DegreesToHM",
           [](const Arguments& a) { return minutes(argument(a, 0).toDouble() / 15, a, kHoursToMinutes); });
    method("DegreesToDM",
           [](const Arguments& a) { return minutes(argument(a, 0).toDouble(), a, kDegreesToMinutes); });
}

void UtilObject::addParsers() {
    method("HMSToHours", [](const Arguments& a) { return parseSexagesimal(argument(a, 0).toText()); });
    method("DMSToDegrees", [](const Arguments& a) { return parseSexagesimal(argument(a, 0).toText()); });
    method("HMSToDegrees", [](const Arguments& a) { return 15 * parseSexagesimal(argument(a, 0).toText()); });
}

}  // namespace vantrel::helpers

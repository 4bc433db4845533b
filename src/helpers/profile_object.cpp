#include "helpers/profile_object.h"

#include <algorithm>
#include <memory>
#include <stdexcept>

#include "platform/text.h"

namespace vantrel::helpers {

using platform::Arguments;
using platform::Value;

namespace {

std::string textAt(const Arguments& arguments, std::size_t index) {
    return index < arguments.size() ? arguments[index].toText() : "";
}

class DeviceList : public platform::DispatchObject {
  public:
    explicit DeviceList(std::vector<std::string> devices)
        : DispatchObject("DriverHelper.DeviceList"), devices_(std::move(devices)) {
        property("Count", [this] { return Value(static_cast<int>(devices_.size())); });
        method("Item", [this](const Arguments& arguments) {
            const std::int32_t number = argument(arguments, 0).toInt();
            if (number < 1 || static_cast<std::size_t>(number) > devices_.size())
                throw platform::runTimeError(platform::error_number::kSubscriptOutOfRange);
            return Value(devices_[static_cast<std::size_t>(number - 1)]);
        });
    }

  private:
    std::vector<std::string> devices_;
};

}  // namespace

ProfileObject::ProfileObject(const platform::ClassRegistry& classes, platform::SettingsRoot& store)
    : DispatchObject("DriverHelper.Profile"), classes_(classes), store_(store) {
    property(
        "DeviceType", [this] { return Value(deviceType_); },
        [this](const Value& value) { deviceType_ = value.toText(); });
    method("GetValue", [this](const Arguments& arguments) { return value(arguments); });
    method("WriteValue", [this](const Arguments& arguments) {
        write(arguments);
        return Value();
    });
    method("IsRegistered", [this](const Arguments& arguments) {
        return Value(isRegistered(argument(arguments, 0).toText()));
    });
    property("RegisteredDevices",
             [this] { return Value(std::make_shared<DeviceList>(classes_.installed(deviceType_))); });
}

bool ProfileObject::isRegistered(const std::string& progId) const {
    const auto drivers = classes_.installed(deviceType_);
    return std::any_of(drivers.begin(), drivers.end(), [&](const std::string& driver) {
        return platform::equalIgnoringCase(driver, progId);
    });
}

void ProfileObject::requireRegistered(const std::string& progId) const {
    if (!isRegistered(progId))
        throw std::runtime_error("\"" + progId + "\" is not a registered " + deviceType_ + " driver");
}

std::string ProfileObject::section(const std::string& progId, const std::string& subKey) const {
    const std::string driver = deviceType_ + " Drivers\\" + progId;
    return subKey.empty() ? driver : driver + "\\" + subKey;
}

Value ProfileObject::value(const Arguments& arguments) const {
    const std::string progId = argument(arguments, 0).toText();
    const std::string name = argument(arguments, 1).toText();
    const std::string subKey = textAt(arguments, 2);
    requireRegistered(progId);
    if (const auto stored = store_.read(section(progId, subKey), name)) return *stored;
    if (name.empty() && subKey.empty()) return classes_.profileDescription(deviceType_, progId);
    return textAt(arguments, 3);
}

void ProfileObject::write(const Arguments& arguments) {
    const std::string progId = argument(arguments, 0).toText();
    requireRegistered(progId);
    store_.write(section(progId, textAt(arguments, 3)), argument(arguments, 1).toText(),
                 argument(arguments, 2).toText());
}

}  // namespace vantrel::helpers

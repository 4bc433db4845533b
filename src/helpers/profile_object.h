// The automation class "DriverHelper.Profile": what is known about the drivers of a machine.
#pragma once

#include "platform/class_registry.h"
#include "platform/dispatch_object.h"
#include "platform/settings_root.h"

namespace vantrel::helpers {

/// "DeviceType" says which kind of drivers the other members mean ("Telescope" at the start).
/// "GetValue"(ProgID, name[, sub-key[, default]]) is a stored text; the empty name at the driver's root is
/// its description. "WriteValue"(ProgID, name, text[, sub-key]) stores one. "IsRegistered"(ProgID) tells
/// whether the driver is installed, "RegisteredDevices" gives all of them, with "Count" and "Item"(number
/// from 1).
class ProfileObject : public platform::DispatchObject {
  public:
    ProfileObject(const platform::ClassRegistry& classes, platform::SettingsRoot& store);

  private:
    std::string section(const std::string& progId, const std::string& subKey) const;
    platform::Value value(const platform::Arguments& arguments) const;
    void write(const platform::Arguments& arguments);
    bool isRegistered(const std::string& progId) const;
    void requireRegistered(const std::string& progId) const;

    const platform::ClassRegistry& classes_;
    platform::SettingsRoot& store_;
    std::string deviceType_ = "Telescope";
};

}  // namespace vantrel::helpers

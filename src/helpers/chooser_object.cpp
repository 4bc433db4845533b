#include "helpers/chooser_object.h"

namespace vantrel::helpers {

using platform::Arguments;
using platform::Value;
using platform::Words;

ChooserObject::ChooserObject(const platform::ClassRegistry& classes, ChooserDialog dialog,
                             std::function<void()> beforeChoosing)
    : DispatchObject("DriverHelper.Chooser"),
      classes_(classes),
      dialog_(std::move(dialog)),
      beforeChoosing_(std::move(beforeChoosing)) {
    property(
        "DeviceType", [this] { return Value(deviceType_); },
        [this](const Value& value) { deviceType_ = value.toText(); });
    method("Choose", [this](const Arguments& arguments) {
        return Value(choose(arguments.empty() ? "" : arguments[0].toText()));
    });
}

std::string ChooserObject::choose(const std::string& current) const {
    if (beforeChoosing_) beforeChoosing_();
    std::vector<DriverChoice> drivers;
    for (const std::string& progId : classes_.installed(deviceType_))
        drivers.push_back({progId, classes_.profileDescription(deviceType_, progId)});
    const Words title =
        deviceType_ == "Telescope" ? Words::tr("Telescope Chooser") : deviceType_ + " Chooser";
    const std::string chosen = dialog_ ? dialog_(title, drivers, current) : "";
    return chosen.empty() ? current : chosen;
}

}  // namespace vantrel::helpers

// The automation class "DriverHelper.Chooser": lets the operator pick a driver.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/class_registry.h"
#include "platform/dispatch_object.h"

namespace vantrel::helpers {

struct DriverChoice {
    std::string progId;
    std::string description;
};

/// Shows the drivers under this title and returns the ProgID that was picked, empty when the operator
/// cancelled. The current one may be empty or not among them.
using ChooserDialog = std::function<std::string(
    const platform::Words& title, const std::vector<DriverChoice>& drivers, const std::string& current)>;

/// "DeviceType" says which drivers are offered ("Telescope" at the start); "Choose"(current ProgID) returns
/// the chosen ProgID; the current one when the operator cancelled.
class ChooserObject : public platform::DispatchObject {
  public:
    /// `beforeChoosing` may install drivers that aren't known yet; it may be left out.
    ChooserObject(const platform::ClassRegistry& classes, ChooserDialog dialog,
                  std::function<void()> beforeChoosing = {});

  private:
    std::string choose(const std::string& current) const;

    const platform::ClassRegistry& classes_;
    ChooserDialog dialog_;
    std::function<void()> beforeChoosing_;
    std::string deviceType_ = "Telescope";
};

}  // namespace vantrel::helpers

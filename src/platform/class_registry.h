// The automation classes that exist on this machine.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/automation.h"

namespace vantrel::platform {

/// One installed class.
struct AutomationClass {
    std::function<ObjectRef()> create;
    std::string serverPath;   // with backslashes
    std::string deviceType;   // for drivers with an entry in the profile: "Telescope"
    std::string description;  // the profile's friendly name
};

/// A host filled by hand: the built-in observatory registers its classes here.
class ClassRegistry : public AutomationHost {
  public:
    void install(const std::string& progId, AutomationClass automationClass);
    void uninstall(const std::string& progId);

    ObjectRef create(const std::string& progId) override;
    std::string serverPath(const std::string& progId) const override;
    std::string profileDescription(const std::string& deviceType, const std::string& progId) const override;

    bool isInstalled(const std::string& progId) const;
    /// ProgIDs as they were installed, in alphabetical order; all, or those of one device type.
    std::vector<std::string> installed(const std::string& deviceType = {}) const;

  private:
    struct Entry {
        std::string progId;
        AutomationClass automationClass;
    };
    const Entry* find(const std::string& progId) const;

    std::map<std::string, Entry> classes_;  // by lower-case ProgID
};

}  // namespace vantrel::platform

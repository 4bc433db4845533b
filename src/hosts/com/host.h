// Programs and drivers that Windows knows: late-bound objects of COM, and what its registry tells of them.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "hosts/pumped_wait.h"
#include "platform/automation.h"

namespace vantrel::hosts::com {

class Apartment;

class Host : public platform::AutomationHost {
  public:
    explicit Host(PumpedWait wait);
    ~Host() override;

    /// Servers are started when they have to be; a 32-bit server in a .dll lives in a process of its own.
    platform::ObjectRef create(const std::string& progId) override;
    std::string serverPath(const std::string& progId) const override;
    std::string profileDescription(const std::string& deviceType, const std::string& progId) const override;

    bool isInstalled(const std::string& progId) const;

    struct Driver {
        std::string progId, description;
    };
    /// Those that the drivers' platform has in its profile.
    std::vector<Driver> drivers(const std::string& deviceType) const;

  private:
    PumpedWait wait_;
    std::map<std::string, std::shared_ptr<Apartment>> apartments_;  // by program
};

}  // namespace vantrel::hosts::com

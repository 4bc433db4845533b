#include "hosts/com/host.h"
#include "hosts/com/system_windows.h"
#include "station/system_classes.h"

namespace vantrel::station {
namespace {

using hosts::com::Host;

platform::AutomationClass classOf(const std::shared_ptr<Host>& host, const std::string& progId,
                                  const std::string& deviceType) {
    return {[host, progId] { return host->create(progId); }, host->serverPath(progId), deviceType,
            host->profileDescription(deviceType, progId)};
}

}  // namespace

SystemPrograms installSystemClasses(platform::ClassRegistry& classes, platform::EventLoop& loop,
                                    platform::OutsideCalls& calls, const std::function<bool()>& stopping) {
    const auto host = std::make_shared<Host>(hosts::PumpedWait(loop, calls, stopping));
    const std::vector<std::string> builtIn = classes.installed();
    std::set<std::string> real;
    for (const std::string& progId : builtIn)
        if (platform::programOf(progId) != kHelperProgram && host->isInstalled(progId))
            real.insert(platform::programOf(progId));
    for (const std::string& progId : builtIn) {
        if (!real.contains(platform::programOf(progId))) continue;
        classes.uninstall(progId);
        if (host->isInstalled(progId)) classes.install(progId, classOf(host, progId, ""));
    }
    constexpr const char* kTelescope = "Telescope";
    for (const Host::Driver& driver : host->drivers(kTelescope)) {
        const std::string program = platform::programOf(driver.progId);
        if (classes.isInstalled(driver.progId) && !real.contains(program)) continue;
        classes.install(driver.progId, classOf(host, driver.progId, kTelescope));
        real.insert(program);
    }
    return {real, std::make_unique<hosts::com::SystemWindows>()};
}

}  // namespace vantrel::station

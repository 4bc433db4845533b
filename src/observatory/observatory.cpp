#include "observatory/observatory.h"

#include "observatory/helpers/profile_object.h"
#include "observatory/helpers/util_object.h"

namespace vantrel::observatory {
namespace {

const char* const kFolder = R"(C:\Program Files\Observatory\)";

DriverIdentity scopeSimIdentity() {
    return {"ScopeSim.Telescope", "Telescope Simulator", "Simulated equatorial mount"};
}

}  // namespace

Observatory::Observatory(platform::EventLoop& loop, const platform::FolderMap& folders, std::uint64_t seed,
                         ObservatorySeams seams)
    : loop_(loop),
      folders_(folders),
      seams_(std::move(seams)),
      noise_(seed),
      scopeSim_(std::make_shared<TelescopeDevice>(loop, noise_)) {
    if (!seams_.profile) seams_.profile = std::make_shared<platform::MemorySettings>();
}

void Observatory::install(platform::ClassRegistry& classes) {
    installHelpers(classes);
    installTelescopes(classes);
}

void Observatory::installHelpers(platform::ClassRegistry& classes) {
    const std::string server = std::string(kFolder) + "DriverHelper.dll";
    classes.install("DriverHelper.Util",
                    {[this] { return std::make_shared<UtilObject>(loop_); }, server, "", ""});
    classes.install("DriverHelper.Chooser",
                    {[this, &classes] { return std::make_shared<ChooserObject>(classes, seams_.chooser); },
                     server, "", ""});
    classes.install("DriverHelper.Profile",
                    {[this, &classes] { return std::make_shared<ProfileObject>(classes, *seams_.profile); },
                     server, "", ""});
}

void Observatory::installTelescopes(platform::ClassRegistry& classes) {
    const DriverIdentity scopeSim = scopeSimIdentity();
    classes.install(
        scopeSim.progId,
        {[this, scopeSim] { return std::make_shared<TelescopeDriver>(scopeSim, scopeSim_, seams_.setup); },
         std::string(kFolder) + "ScopeSim.exe", "Telescope", scopeSim.description});
}

}  // namespace vantrel::observatory

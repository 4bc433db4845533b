#include "observatory/observatory.h"

#include <stdexcept>

#include "helpers/profile_object.h"
#include "helpers/util_object.h"
#include "observatory/test_image.h"
#include "sky/compact_catalog.h"
#include "solver/deep_stars.h"
#include "solver/pattern_store.h"
#include "solver/pin_point_plate.h"

namespace vantrel::observatory {
namespace {

const char* const kFolder = R"(C:\Program Files\Observatory\)";

DriverIdentity scopeSimIdentity() {
    return {"ScopeSim.Telescope", "Telescope Simulator", "Simulated equatorial mount"};
}

DriverIdentity axisSimulatorIdentity() {
    return {"AxisSimulator.Telescope", "Polar Axis Simulator",
            "Simulated mount with a polar axis error and a camera"};
}

}  // namespace

Observatory::Observatory(platform::EventLoop& loop, const platform::FolderMap& folders, std::uint64_t seed,
                         ObservatorySeams seams)
    : loop_(loop),
      folders_(folders),
      seams_(std::move(seams)),
      noise_(seed),
      scopeSim_(std::make_shared<TelescopeDevice>(loop, noise_)),
      ownBackground_(loop),
      background_(seams_.background != nullptr ? *seams_.background : ownBackground_) {
    if (!seams_.profile) seams_.profile = std::make_shared<platform::MemorySettings>();
    if (!seams_.stars) seams_.stars = [] { return sky::CompactCatalog::openBuiltIn(); };
    axisSimulator_ = std::make_shared<AxisSimulatorDevice>(loop, background_, noise_, seams_.stars);
    scopeSimCamera_ = std::make_unique<Camera>(scopeSim_->mount, noise_, seams_.stars);
    simulatedCamera_ = std::make_unique<SimulatedCamera>(loop_, background_, pictures());
    imaging_ = std::make_unique<imaging::ImagingPrograms>(
        loop_, background_, folders_, seams_.desktop != nullptr ? *seams_.desktop : ownDesktop_,
        *simulatedCamera_, seams_.stars);
    axisSimulator_->onPicture = [this](const imaging::Picture& picture) {
        imaging::showPicture(imaging_->documents(), picture);
    };
}

/// The imaging programs' camera is the one set up at the simulator, on whichever mount is connected.
PictureSource Observatory::pictures() {
    const CameraSettings& settings = axisSimulator_->camera.settings();
    return {[&settings] {
                return PictureSource::Size{static_cast<std::size_t>(settings.width),
                                           static_cast<std::size_t>(settings.height)};
            },
            [this](const Shot& shot) { return expose(shot); }};
}

/// A sky that stands still under a real mount would be measured, and mean nothing.
LatentPicture Observatory::expose(const Shot& shot) {
    if (seams_.mountIsReal && seams_.mountIsReal())
        throw std::runtime_error(
            "The simulated camera doesn't see a real mount's sky: choose the built-in camera program and a "
            "real "
            "camera");
    const platform::Instant now = loop_.clock().utc();
    if (axisSimulator_->connected)
        return axisSimulator_->camera.expose(now, axisSimulatorIdentity().name, shot);
    scopeSimCamera_->settings() = axisSimulator_->camera.settings();
    return scopeSimCamera_->expose(now, scopeSimIdentity().name, shot);
}

void Observatory::install(platform::ClassRegistry& classes) {
    installHelpers(classes);
    installTelescopes(classes);
    installSolver(classes);
    imaging_->install(classes, kFolder);
}

void Observatory::openImagingProgram(const platform::SettingsRoot& settings) {
    const auto chosen = settings.read("PolarAlign", "ImagingSoftware");
    if (chosen != "CCDSoft" && chosen != "BuiltIn") imaging_->maxIm().start();
}

void Observatory::provideTestImage(const std::string& folder) const {
    observatory::provideTestImage(folders_.real(folder), seams_.stars);
}

void Observatory::installHelpers(platform::ClassRegistry& classes) {
    const std::string server = std::string(kFolder) + "DriverHelper.dll";
    classes.install("DriverHelper.Util",
                    {[this] { return std::make_shared<helpers::UtilObject>(loop_); }, server, "", ""});
    classes.install("DriverHelper.Chooser", {[this, &classes] {
                                                 return std::make_shared<helpers::ChooserObject>(
                                                     classes, seams_.chooser, seams_.beforeChoosing);
                                             },
                                             server, "", ""});
    classes.install(
        "DriverHelper.Profile",
        {[this, &classes] { return std::make_shared<helpers::ProfileObject>(classes, *seams_.profile); },
         server, "", ""});
}

void Observatory::installTelescopes(platform::ClassRegistry& classes) {
    const DriverIdentity scopeSim = scopeSimIdentity();
    classes.install(
        scopeSim.progId,
        {[this, scopeSim] { return std::make_shared<TelescopeDriver>(scopeSim, scopeSim_, seams_.setup); },
         std::string(kFolder) + "ScopeSim.exe", "Telescope", scopeSim.description});

    const DriverIdentity axis = axisSimulatorIdentity();
    classes.install(axis.progId, {[this, axis] {
                                      return std::make_shared<AxisSimulator>(axis, axisSimulator_,
                                                                             seams_.setup, folders_);
                                  },
                                  std::string(kFolder) + "AxisSimulator.exe", "Telescope", axis.description});
}

void Observatory::installSolver(platform::ClassRegistry& classes) {
    const auto create = [this] {
        catalogs::NetworkAccess network{seams_.downloads, seams_.downloadCache, [this] {
                                            loop_.yield();
                                            return !seams_.stopping || !seams_.stopping();
                                        }};
        const auto stars = [this] { return solver::withDeepStars(seams_.stars(), seams_.deepStars); };
        return std::make_shared<solver::PinPointPlate>(loop_.clock(), background_, folders_, stars,
                                                       std::move(network), [this] { return patterns(); });
    };
    classes.install("PinPoint.Plate", {create, std::string(kFolder) + "PinPoint.dll", "", ""});
}

/// Read, or made, when the first plate is searched over the sky.
std::shared_ptr<const solver::StarPatterns> Observatory::patterns() {
    if (patterns_) return patterns_;
    std::shared_ptr<const solver::StarPatterns> patterns;
    background_.await([&, cache = seams_.downloadCache] {
        patterns = solver::patternsOf(*sky::CompactCatalog::openBuiltIn(), cache, [](const std::string&) {});
    });
    return patterns_ = patterns;
}

}  // namespace vantrel::observatory

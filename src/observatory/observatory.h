// The built-in observatory: plays the outside programs and drivers of an observing evening.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>

#include "catalogs/downloads.h"
#include "helpers/chooser_object.h"
#include "imaging/imaging_programs.h"
#include "observatory/telescopes/axis_simulator.h"
#include "observatory/telescopes/noise.h"
#include "observatory/telescopes/simulated_camera.h"
#include "observatory/telescopes/telescope_driver.h"
#include "platform/background.h"
#include "platform/class_registry.h"
#include "platform/desktop_windows.h"
#include "platform/event_loop.h"
#include "platform/folder_map.h"
#include "platform/settings_root.h"
#include "solver/star_patterns.h"

namespace vantrel::observatory {

/// Where the observatory needs the operator's answer or a place to keep things. All may be left out: choosers
/// are then cancelled, setup dialogs close at once, the profile forgets, the stars are the built-in
/// catalogue's, the programs' windows stand on a desktop of the observatory's own, and long work is done in
/// the loop.
struct ObservatorySeams {
    helpers::ChooserDialog chooser;
    std::function<void()> beforeChoosing;  ///< finds drivers that aren't known yet
    std::function<bool()> mountIsReal;     ///< a real mount is in use: the simulated sky isn't its own
    SetupDialog setup;
    std::shared_ptr<platform::SettingsRoot> profile;
    sky::CatalogSource stars;
    platform::DesktopWindows* desktop = nullptr;
    platform::Background* background = nullptr;  ///< for what takes the processor long
    /// Without them catalogues of the network can't be asked.
    std::shared_ptr<catalogs::Downloads> downloads;
    std::filesystem::path downloadCache;  ///< folder for what was downloaded; empty keeps nothing
    std::filesystem::path deepStars;      ///< folder of the solver's deeper catalogue, if there is one
    std::function<bool()> stopping;       ///< true when a download isn't to be waited for any longer
};

/// Owns the devices. Must outlive the registry that it installs its classes in, and the objects of these.
class Observatory {
  public:
    /// All noise comes from the seed.
    Observatory(platform::EventLoop& loop, const platform::FolderMap& folders, std::uint64_t seed,
                ObservatorySeams seams = {});

    /// Registers every class; the registry's owner may uninstall some again.
    void install(platform::ClassRegistry& classes);

    /// Puts the solver's test image into the folder (a text with a drive letter) unless it is there already.
    /// Throws CatalogError or FitsError when it can't be drawn or written.
    void provideTestImage(const std::string& folder) const;

    /// The imaging programs; their documents also show the pictures of the simulator's own camera.
    imaging::ImagingPrograms& imaging() { return *imaging_; }

    /// Opens MaxIm DL, unless the operator's stored choice is CCDSoft: so that a first
    /// start finds a program open and asks nothing.
    void openImagingProgram(const platform::SettingsRoot& settings);

  private:
    void installHelpers(platform::ClassRegistry& classes);
    void installTelescopes(platform::ClassRegistry& classes);
    void installSolver(platform::ClassRegistry& classes);
    std::shared_ptr<const solver::StarPatterns> patterns();
    PictureSource pictures();
    LatentPicture expose(const Shot& shot);

    platform::EventLoop& loop_;
    const platform::FolderMap& folders_;
    ObservatorySeams seams_;
    NoiseSource noise_;
    std::shared_ptr<TelescopeDevice> scopeSim_;
    std::shared_ptr<AxisSimulatorDevice> axisSimulator_;
    std::unique_ptr<Camera> scopeSimCamera_;
    std::unique_ptr<SimulatedCamera> simulatedCamera_;
    platform::DesktopWindows ownDesktop_;
    platform::BackgroundOfLoop ownBackground_;
    platform::Background& background_;
    std::unique_ptr<imaging::ImagingPrograms> imaging_;
    std::shared_ptr<const solver::StarPatterns> patterns_;
};

}  // namespace vantrel::observatory

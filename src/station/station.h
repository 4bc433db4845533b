// The station: every outside program and device that this program can reach, put together once for both
// fronts.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "observatory/observatory.h"
#include "platform/class_registry.h"
#include "platform/dialogs.h"
#include "platform/folder_map.h"
#include "platform/joined_windows.h"
#include "platform/machine.h"
#include "platform/outside_call.h"
#include "platform/picture_facts.h"
#include "platform/settings_root.h"
#include "station/devices.h"
#include "station/file_solver.h"
#include "station/live_pages.h"
#include "station/system_classes.h"

namespace vantrel::station {

/// What a front gives; all of it must outlive the station.
struct StationSurroundings {
    platform::EventLoop& loop;
    const platform::FolderMap& folders;
    platform::SettingsRoot& settings;
    platform::Dialogs& dialogs;
    std::filesystem::path cache;     // folder for what can be fetched again
    std::filesystem::path data;      // folder for what the user adds: a deeper star catalogue
    std::function<bool()> stopping;  // nothing that takes long is worth waiting for any more
    /// Shows the set-up of a built-in driver (a ProgID); may be left out, and then it closes at once.
    std::function<void(const std::string& progId)> setUp = {};
    std::function<void(const std::string& line)> tell = {};         // a line for the log
    std::function<bool(const std::string& address)> openPage = {};  // in the browser; false when that failed
    std::function<platform::PictureFacts()> pictureFacts = {};
    bool network = false;   // devices may be looked for in it
    bool realTime = false;  // long work may go on beside the loop
};

class Station {
  public:
    /// All noise of the simulator comes from the seed.
    Station(const StationSurroundings& surroundings, std::uint64_t seed);

    /// Opens the built-in imaging program that the settings name, so that a first start finds one open and
    /// asks nothing. Not where a real one is installed. Throws what the settings throw when they can't be
    /// read.
    void openImagingProgram();

    /// Makes the real mount and camera that the settings name known. Throws what the settings throw.
    void restoreDevices() { devices_.restore(); }

    /// Forgets the classes of the programs that aren't among these. Throws std::invalid_argument with the
    /// name of a ProgID that is unknown.
    void keepInstalled(const std::vector<std::string>& progIds);

    /// The machine as the application sees it; `automation` is what it reaches the classes through.
    platform::Machine machine(platform::AutomationHost& automation, platform::Screen& screen,
                              platform::Desktop& desktop);

    platform::ClassRegistry& classes() { return classes_; }
    observatory::Observatory& observatory() { return observatory_; }

  private:
    observatory::ObservatorySeams seams();
    DeviceSurroundings deviceSurroundings();

    StationSurroundings surroundings_;
    platform::OutsideCalls outsideCalls_;
    std::unique_ptr<platform::Background> background_;
    platform::DesktopWindows playedWindows_;
    observatory::Observatory observatory_;
    platform::ClassRegistry classes_;
    SystemPrograms systemPrograms_;
    std::unique_ptr<platform::JoinedWindows> windows_;  // nothing where only the played ones are
    Devices devices_;
    FileSolver fileSolver_;
    std::unique_ptr<platform::LivePages> pages_;  // nothing where the system has no server for them
};

}  // namespace vantrel::station

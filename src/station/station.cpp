#include "station/station.h"

#include <algorithm>
#include <stdexcept>

#include "catalogs/http_downloads.h"

namespace vantrel::station {

namespace {

std::unique_ptr<platform::Background> backgroundOf(const StationSurroundings& surroundings,
                                                   platform::OutsideCalls& calls) {
    if (surroundings.realTime) return std::make_unique<platform::BackgroundThreads>(surroundings.loop, calls);
    return std::make_unique<platform::BackgroundOfLoop>(surroundings.loop);
}

}  // namespace

Station::Station(const StationSurroundings& surroundings, std::uint64_t seed)
    : surroundings_(surroundings),
      background_(backgroundOf(surroundings, outsideCalls_)),
      observatory_(surroundings.loop, surroundings.folders, seed, seams()),
      devices_(deviceSurroundings()),
      fileSolver_(*background_, surroundings.folders, surroundings.cache, surroundings.data),
      pages_(livePages(surroundings.loop, observatory_.imaging().documents())) {
    observatory_.install(classes_);
    // Where time is virtual, every run is the same on all machines; and other programs know the system's
    // folders alone.
    if (!surroundings.realTime || !surroundings.folders.areSystems()) return;
    systemPrograms_ = installSystemClasses(classes_, surroundings.loop, outsideCalls_, surroundings.stopping);
    if (systemPrograms_.windows)
        windows_ = std::make_unique<platform::JoinedWindows>(playedWindows_, *systemPrograms_.windows);
}

void Station::openImagingProgram() {
    if (!systemPrograms_.installed.contains("maxim")) observatory_.openImagingProgram(surroundings_.settings);
}

observatory::ObservatorySeams Station::seams() {
    observatory::ObservatorySeams seams;
    seams.beforeChoosing = [this] { devices_.findMounts(); };
    seams.mountIsReal = [this] {
        const auto mount = surroundings_.settings.read("Main", "MyTelescopeID").value_or("");
        return devices_.mountIsReal() || systemPrograms_.installed.contains(platform::programOf(mount));
    };
    seams.chooser = [&dialogs = surroundings_.dialogs](const platform::Words& title,
                                                       const std::vector<helpers::DriverChoice>& drivers,
                                                       const std::string& current) {
        std::vector<platform::Dialogs::Choice> choices;
        choices.reserve(drivers.size());
        for (const auto& driver : drivers) choices.push_back({driver.progId, driver.description});
        return dialogs.choose(title, choices, current);
    };
    seams.desktop = &playedWindows_;
    seams.background = background_.get();
    seams.setup = surroundings_.setUp;
    seams.downloads = std::make_shared<catalogs::HttpDownloads>();
    seams.downloadCache = surroundings_.cache;
    seams.deepStars = surroundings_.data;
    seams.stopping = surroundings_.stopping;
    return seams;
}

DeviceSurroundings Station::deviceSurroundings() {
    const auto tell = [this](const std::string& line) {
        if (surroundings_.tell) surroundings_.tell(line);
    };
    const auto openPage = [this](const std::string& address) {
        return surroundings_.openPage && surroundings_.openPage(address);
    };
    const auto pictureFacts = [this] {
        return surroundings_.pictureFacts ? surroundings_.pictureFacts() : platform::PictureFacts();
    };
    return {surroundings_.loop,
            outsideCalls_,
            *background_,
            surroundings_.settings,
            surroundings_.dialogs,
            classes_,
            observatory_,
            surroundings_.stopping,
            tell,
            openPage,
            pictureFacts,
            surroundings_.network};
}

/// The helper classes come with the drivers' platform, not with a program.
void Station::keepInstalled(const std::vector<std::string>& progIds) {
    for (const std::string& progId : progIds)
        if (!classes_.isInstalled(progId)) throw std::invalid_argument(progId);
    for (const std::string& progId : classes_.installed()) {
        const bool kept = platform::programOf(progId) == kHelperProgram ||
                          std::any_of(progIds.begin(), progIds.end(), [&](const std::string& wanted) {
                              return platform::programOf(wanted) == platform::programOf(progId);
                          });
        if (!kept) classes_.uninstall(progId);
    }
}

platform::Machine Station::machine(platform::AutomationHost& automation, platform::Screen& screen,
                                   platform::Desktop& desktop) {
    devices_.setSetUp([&screen] {
        if (platform::Form* const form = screen.find("frmDevices")) form->show();
    });
    return {surroundings_.loop,
            automation,
            surroundings_.settings,
            surroundings_.folders,
            screen,
            surroundings_.dialogs,
            desktop,
            windows_ ? static_cast<platform::WindowSystem&>(*windows_) : playedWindows_,
            [this](const std::string& folder) { observatory_.provideTestImage(folder); },
            &outsideCalls_,
            [this] { devices_.chooseCamera(); },
            [this] { devices_.offerMounts(); },
            [this]() -> const platform::CameraHardware& { return observatory_.imaging().chosenCamera(); },
            [this] { devices_.adjustCamera(); },
            &fileSolver_,
            surroundings_.network ? pages_.get() : nullptr};
}

}  // namespace vantrel::station

#include "app/folders.h"

#include <filesystem>
#include <fstream>

#include "app/settings_store.h"
#include "platform/text.h"

namespace vantrel::app {
namespace {

std::string withBackslash(const std::string& folder) { return platform::joinFolder(folder, ""); }

}  // namespace

bool FolderIsWritable(const platform::FolderMap& map, const std::string& folder) {
    const std::filesystem::path file = map.real(withBackslash(folder) + "testfile.txt");
    std::ofstream stream(file, std::ios::trunc);
    stream << "This is a test.\r\n";
    stream.close();
    std::error_code error;
    return !stream.fail() && std::filesystem::remove(file, error);
}

bool MakeFolderPath(const platform::FolderMap& map, const std::string& folder,
                    engine::MessagePort& messages) {
    const std::string path = withBackslash(folder);
    for (std::size_t end = path.find('\\'); end != std::string::npos; end = path.find('\\', end + 1)) {
        const std::string level = path.substr(0, end + 1);
        if (FolderIsWritable(map, level)) continue;
        std::error_code ignored;
        // Levels above the drive's root have no folder of their own yet on a fresh machine.
        std::filesystem::create_directories(map.real(level), ignored);
    }
    if (FolderIsWritable(map, path)) return true;
    messages.ShowPopupMessage("Could not create directory", 10);
    return false;
}

bool isVista(const std::string& osName) {
    return platform::toUpper(osName).find("VISTA") != std::string::npos;
}

DataFolders chooseDataFolders(const platform::FolderMap& map, engine::SettingsPort& settings,
                              engine::MessagePort& messages, const std::string& userProfile, bool vista) {
    const auto stored = [&](const std::string& key) {
        const std::string folder = settings.GetSetting(kProgramSection, key, "");
        return !folder.empty() && FolderIsWritable(map, folder) ? folder : "";
    };
    const auto use = [&](const DataFolders& folders) {
        const auto prepare = [&](const std::string& key, const std::string& folder) {
            if (!FolderIsWritable(map, folder)) MakeFolderPath(map, folder, messages);
            settings.SaveSetting(kProgramSection, key, folder);
        };
        prepare("LogPath", folders.log);
        prepare("ImagePath", folders.images);
        return folders;
    };

    DataFolders known{stored("LogPath"), stored("ImagePath")};
    const std::string vistaFolder = userProfile + "\\Documents\\Vantrel";
    if (known.log.empty() || known.images.empty()) {
        if (vista) return use({vistaFolder + "\\Messaage Logs", vistaFolder});
        const std::string folder = userProfile + "\\My Documents\\Vantrel";
        return use({folder + "\\Message Logs", folder});
    }
    if (vista && platform::containsIgnoringCase(known.log, "Program Files\\Vantrel\\Message Logs"))
        return use({vistaFolder + "\\Message Logs", vistaFolder});
    return known;
}

}  // namespace vantrel::app

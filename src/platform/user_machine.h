// Where the program keeps what belongs to its user, and the store and folders that stand on it.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "platform/folder_map.h"
#include "platform/settings_file.h"

namespace vantrel::platform {

/// A variable of the environment; nothing when it isn't set.
using Environment = std::function<std::optional<std::string>(const std::string& name)>;
std::optional<std::string> processEnvironment(const std::string& name);

struct UserPaths {
    std::string userName;
    std::filesystem::path settings;  // file
    std::string profile = {};        // the user's folder as a folder text; empty: C:\Users and the name
    std::filesystem::path drives;  // folder with one folder a drive letter; empty: the system has such drives
    std::filesystem::path documents;  // the desktop's folder for documents
    std::filesystem::path lock;       // file, locked by the instance that runs
    std::filesystem::path cache;      // folder for what can be fetched again
    std::filesystem::path data;       // folder for what the user adds to what came with the program
};

/// Everything below the one folder.
UserPaths pathsBelow(const std::filesystem::path& home);

/// The desktop's usual places: XDG base directories and the documents folder of user-dirs.dirs, on Windows
/// the folders of the user's profile. Throws std::runtime_error when the environment names no home.
UserPaths desktopPaths(const Environment& environment);

/// The user's folder for what can be made again (XDG_CACHE_HOME or ~/.cache, and in it "vantrel"; on Windows
/// the program's part of the local application data). Empty when the environment names neither.
std::filesystem::path cacheFolder(const Environment& environment);

/// The user's folder for what he adds to what came with the program (XDG_DATA_HOME or ~/.local/share, and in
/// it "vantrel"; on Windows the program's part of the local application data). Empty when the environment
/// names neither.
std::filesystem::path dataFolder(const Environment& environment);

/// What came with the program: the built-in catalogue, the manual. ../share/vantrel beside the folder that it
/// runs from.
std::filesystem::path sharedDataFolder();

/// The settings and folders of one user. Settings are opened at their first use, folders are created when
/// something is stored in them.
class UserMachine {
  public:
    explicit UserMachine(const UserPaths& paths);

    SettingsFile settings;
    /// "C:\Program Files\Vantrel" is the folder of what came with the program.
    FolderMap folders;
    std::filesystem::path cache;
    std::filesystem::path data;
    /// "C:\Users\name"; its "My Documents" and "Documents" are the desktop's documents folder.
    std::string userProfile;
};

}  // namespace vantrel::platform

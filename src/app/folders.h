// Folders that the program writes into, given with drive letter and backslashes.
#pragma once

#include <string>

#include "engine/ports.h"
#include "platform/folder_map.h"

namespace vantrel::app {

/// True when a file can be created, written and deleted in the folder; tried with a file of its own.
bool FolderIsWritable(const platform::FolderMap& map, const std::string& folder);

/// Creates every missing level of the folder; true when it is writable afterwards. Otherwise the operator is
/// told.
bool MakeFolderPath(const platform::FolderMap& map, const std::string& folder, engine::MessagePort& messages);

/// Where a new user's log and images go below the profile; they depend on the operating system's name.
struct DataFolders {
    std::string log, images;
    bool operator==(const DataFolders&) const = default;
};

/// The log and image folders of the settings "LogPath" and "ImagePath", made usable: when one of them is
/// missing or not writable both start afresh below the profile, are created and stored.
DataFolders chooseDataFolders(const platform::FolderMap& map, engine::SettingsPort& settings,
                              engine::MessagePort& messages, const std::string& userProfile, bool vista);

/// True for the operating systems that keep documents in "Documents".
bool isVista(const std::string& osName);

}  // namespace vantrel::app

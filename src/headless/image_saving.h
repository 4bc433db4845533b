// Saving what an imaging program shows, for scripts.
#pragma once

#include <string>

#include "platform/folder_map.h"
#include "platform/recording_host.h"

namespace vantrel::headless {

/// Lets the program that holds the image write it as FITS: the imaging program in use, else the simulator.
/// `path` has a drive letter or backslashes, or is a path of this machine. Throws CommandError when nobody
/// shows an image, OperationError when the program refuses.
void saveShownImage(const platform::RecordingHost& automation, const platform::FolderMap& folders,
                    const std::string& path);

}  // namespace vantrel::headless

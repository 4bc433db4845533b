#include "headless/image_saving.h"

#include <filesystem>

#include "headless/json_values.h"

namespace vantrel::headless {

using namespace platform;

namespace {

std::string machinePath(const FolderMap& folders, const std::string& path) {
    const bool hasDrive = path.size() >= 2 && path[1] == ':';
    if (hasDrive || path.find('\\') != std::string::npos) return folders.real(path).string();
    return std::filesystem::absolute(path).string();
}

}  // namespace

void saveShownImage(const RecordingHost& automation, const FolderMap& folders, const std::string& path) {
    const std::string target = machinePath(folders, path);
    if (const ObjectRef simulator = automation.newest("AxisSimulator.Telescope")) {
        simulator->call("SaveImageToFile", {target});
        return;
    }
    throw CommandError("No imaging program shows an image");
}

}  // namespace vantrel::headless

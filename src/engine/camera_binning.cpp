#include "engine/camera_binning.h"

#include "platform/text.h"

namespace vantrel::engine {

void limitBinning(SettingsPort& settings, LogPort& log, int greatest) {
    const std::string stored = settings.GetSetting("Solve", "CamBin", "3");
    const auto binning = platform::parseNumber(stored);
    if (!binning || *binning <= greatest || greatest < 1) return;
    const std::string most = std::to_string(greatest);
    settings.SaveSetting("Solve", "CamBin", most);
    log.AddToLog("Camera binning " + stored + " is more than the camera takes: it is " + most +
                 " from now on, and the image scale has to be that of it");
}

}  // namespace vantrel::engine

#include "platesolve/method_selection.h"

#include "platesolve/pinpoint_probe.h"
#include "platform/text.h"

namespace vantrel::platesolve {

using namespace platform;

MethodSelection::MethodSelection(const SolveServices& services, PlateSolvePanel& panel,
                                 PinPointSolver& pinPoint, engine::MessagePort& messages)
    : services_(services), panel_(panel), pinPoint_(pinPoint), messages_(messages) {
    panel_.optPinPoint.onClick = [this] { optPlateSolveMethod_Click(0); };
    panel_.optAutoAstrometry.onClick = [this] { optPlateSolveMethod_Click(1); };
    panel_.optImageLinkCCDSoft.onClick = [this] { chooseImageLink(true); };
    panel_.optImageLinkTheSky.onClick = [this] { chooseImageLink(false); };
}

void MethodSelection::restore() {
    const auto index = parseNumber(services_.settings.GetSetting("PolarAlign", "PlateSolveMethod", ""));
    if (index == 0.0) panel_.optPinPoint.select();
    if (index == 1.0) panel_.optAutoAstrometry.select();
}

void MethodSelection::restoreImageLink() {
    const bool throughCCDSoft =
        services_.settings.GetSetting("PolarAlign", "PlateSolveThroughCCDSoft", "True") == "True";
    (throughCCDSoft ? panel_.optImageLinkCCDSoft : panel_.optImageLinkTheSky).select();
}

void MethodSelection::save() {
    const std::string& method = services_.state.PlateSolveMethod;
    if (method.empty()) return;
    services_.settings.SaveSetting("PolarAlign", "PlateSolveMethod", method == "PP" ? "0" : "1");
}

void MethodSelection::optPlateSolveMethod_Click(int index) {
    const char* errorText = "Error creating PinPoint.Plate";
    try {
        if (index == 1) {
            selectTheSky();
        } else if (!selectPinPoint()) {
            services_.log.AddToLog("PinPoint is not connected");
            services_.log.AddToLog(errorText);
            return;
        }
        services_.settings.SaveSetting("PolarAlign", "PlateSolveMethod", std::to_string(index));
    } catch (const OperationError&) {
        services_.log.AddToLog(errorText);
        messages_.ShowPopupMessage(errorText, messages_.displaySeconds());
    }
}

/// False when this machine has no PinPoint.
bool MethodSelection::selectPinPoint() {
    if (!PinPointIsInstalled(services_.automation)) return false;
    pinPoint_.createPinPointPlate();
    services_.state.PlateSolveMethod = "PP";
    panel_.framePP.setVisible(true);
    panel_.frameTheSky.setVisible(false);
    services_.log.AddToLog("PinPoint is connected");
    return true;
}

void MethodSelection::selectTheSky() {
    services_.log.AddToLog("Plate solve using TheSky");
    services_.state.PlateSolveMethod = "TheSky";
    panel_.framePP.setVisible(false);
    panel_.frameTheSky.setVisible(true);
}

void MethodSelection::chooseImageLink(bool throughCCDSoft) {
    ImageLinkThroughCCDSoft_ = throughCCDSoft;
    services_.settings.SaveSetting("PolarAlign", "PlateSolveThroughCCDSoft",
                                   throughCCDSoft ? "True" : "False");
}

}  // namespace vantrel::platesolve

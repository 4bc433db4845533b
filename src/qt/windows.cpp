#include "qt/windows.h"

#include "app/frm_main.h"
#include "qt/simulator_window.h"
#include "qt/window_keys.h"

namespace vantrel::qt {
namespace {

std::unique_ptr<FormWindow> windowFor(platform::Form& form, const Front& front) {
    if (auto* const main = dynamic_cast<app::frmMain*>(&form))
        return std::make_unique<MainWindow>(*main, front);
    if (form.name() == "frmLog") return std::make_unique<LogWindow>(form, front);
    if (form.name() == "frmTelescope") return std::make_unique<TelescopeWindow>(form, front);
    if (form.name() == "frmPolarPlot") return std::make_unique<PolarPlotWindow>(form, front);
    if (form.name() == "frmAdjust") return std::make_unique<AdjustWindow>(form, front);
    if (form.name() == "frmHistory") return std::make_unique<HistoryWindow>(form, front);
    if (form.name() == "frmPlates") return std::make_unique<PlatesWindow>(form, front);
    if (form.name() == "frmPreflight") return std::make_unique<PreflightWindow>(form, front);
    if (form.name() == "frmPixelScale") return std::make_unique<PixelScaleWindow>(form, front);
    if (form.name() == "frmSolvePicture") return std::make_unique<SolvePictureWindow>(form, front);
    if (form.name() == "frmWelcome") return std::make_unique<WelcomeWindow>(form, front);
    if (form.name() == "frmDevices") return std::make_unique<DevicesWindow>(form, front);
    if (form.name() == "frmOptions") return std::make_unique<OptionsWindow>(form, front);
    if (form.name() == "frmAbout") return std::make_unique<AboutWindow>(form, front);
    if (form.name() == "frmPopupMsg") return std::make_unique<PopupWindow>(form, front);
    if (form.name() == "frmSimulator") return std::make_unique<SimulatorWindow>(form, front);
    return std::make_unique<PlainWindow>(form, front);
}

}  // namespace

std::vector<std::unique_ptr<FormWindow>> windowsFor(platform::Screen& screen, const Front& front) {
    std::vector<std::unique_ptr<FormWindow>> windows;
    for (platform::Form* form : screen.forms()) {
        windows.push_back(windowFor(*form, front));
        FormWindow& window = *windows.back();
        pressByEnter(window);
        if (form->name() != "frmMain") closeByKeys(window);
    }
    return windows;
}

}  // namespace vantrel::qt

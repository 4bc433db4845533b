#include "imaging/maxim_program.h"

#include "platform/text.h"

namespace vantrel::imaging {

using platform::DesktopWindow;
using platform::WindowId;

WindowId MaxImProgram::openWindows() {
    constexpr const char* kDialog = "#32770";
    platform::DesktopWindows& desktop = bench_.desktop;
    const WindowId main = desktop.open({"MaxIm DL Version " + platform::toText(kVersion), "MaxImFrame"});
    const WindowId dialog = desktop.open({"MaxIm CCD", kDialog, 0, main});
    desktop.open({"", "SysTabControl32", dialog});
    const WindowId setup = desktop.open({"Setup", kDialog, dialog});
    connectButton_ = desktop.open({"&Connect", "Button", setup});
    return main;
}

/// The button stays down while the camera is connected.
void MaxImProgram::showConnection() {
    constexpr int kTicked = 1;
    if (DesktopWindow* button = bench_.desktop.find(connectButton_))
        button->buttonState = connected() ? kTicked : 0;
}

void MaxImProgram::reset() {
    settings = {};
    imageReady_ = false;
}

SubFrame MaxImProgram::frame() const {
    if (settings.subFrame) return *settings.subFrame;
    const platform::CameraFacts& sensor = bench_.camera.get().facts();
    return {0, 0, static_cast<int>(sensor.width) / settings.binX,
            static_cast<int>(sensor.height) / settings.binY};
}

void MaxImProgram::expose(double seconds, bool light) {
    requireConnected();
    imageReady_ = false;
    ExposureOrder order;
    order.seconds = seconds;
    order.frame = light ? ExposureOrder::Frame::kLight : ExposureOrder::Frame::kDark;
    order.binX = settings.binX;
    order.binY = settings.binY;
    order.part = settings.subFrame;
    if (!bench_.camera.get().facts().filters.empty()) order.filter = settings.filter;
    bench_.camera.get().start(order, [this](Picture picture) {
        showPicture(std::move(picture));
        imageReady_ = true;
    });
}

bool MaxImProgram::imageReady() const {
    requireConnected();
    bench_.camera.get().requireSuccess();
    return imageReady_;
}

void MaxImProgram::clientLeft(int run) {
    --clients_;
    if (clients_ == 0 && run == this->run() && !settings.disableAutoShutdown) disconnect();
}

WindowId BuiltInCameraProgram::openWindows() { return bench_.desktop.open({kName, "VantrelCamera"}); }

}  // namespace vantrel::imaging

#include "devices/imaging_windows.h"

#include <algorithm>

#include "platform/text.h"

namespace vantrel::devices {

using namespace platform;

namespace {

constexpr const char* kDialogClass = "#32770";
constexpr const char* kCameraDialog = "MaxIm CCD";
constexpr const char* kNoCameraDialog = "Could not find MaxIm CCD Window";

bool contains(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

}  // namespace

ImagingWindows::ImagingWindows(const LinkServices& services, WindowSystem& desktop,
                               const ImagingObjects& programs)
    : services_(services), desktop_(desktop), programs_(programs) {}

WindowId ImagingWindows::FindMaxImMainWindow() const {
    for (const WindowId window : desktop_.topLevelWindows())
        if (desktop_.titleOf(window).starts_with("MaxIm DL")) return window;
    return 0;
}

/// The program also shows image windows and hidden ones of its automation server under its name. An image's
/// window is only taken when nothing else is there: a maximised image writes its name into the main window's
/// title.
WindowId ImagingWindows::searchCCDSoftWindow() const {
    WindowId withImage = 0;
    for (const WindowId window : desktop_.topLevelWindows()) {
        const std::string title = desktop_.titleOf(window);
        if (!contains(title, "CCDSoft") || contains(title, "App") || contains(title, "Server")) continue;
        if (!contains(title, "Image")) return window;
        if (withImage == 0) withImage = window;
    }
    return withImage;
}

WindowId ImagingWindows::FindCCDSoftWindow() {
    const WindowId window = searchCCDSoftWindow();
    if (window == 0) reportMissing("Could not find CCDSoft Window");
    return window;
}

WindowId ImagingWindows::FindMaxImCameraWindow() {
    const WindowId dialog = findDialog(MaxImVersion() >= 5 ? "Camera Control" : kCameraDialog);
    if (dialog == 0) {
        services_.log.AddToLog(kNoCameraDialog);
        return 0;
    }
    const WindowId main = desktop_.parentOf(dialog);
    if (main == 0) services_.log.AddToLog("Could not find MaxIm Main Window");
    return main;
}

int ImagingWindows::countTitles(const std::string& text, bool partial, bool caseSensitive) const {
    const std::string wanted = caseSensitive ? text : toLower(text);
    int count = 0;
    for (const WindowId window : desktop_.topLevelWindows()) {
        std::string title = desktop_.titleOf(window);
        if (!caseSensitive) title = toLower(title);
        if (partial ? title.find(wanted) != std::string::npos : title == wanted) ++count;
    }
    return count;
}

void ImagingWindows::BringImagingSWToFront() {
    WindowId window = 0;
    if (programs_.usesMaxIm()) window = FindMaxImCameraWindow();
    if (programs_.usesCCDSoft()) window = FindCCDSoftWindow();
    if (window == 0) return;
    if (desktop_.minimised(window)) desktop_.restore(window);
    desktop_.bringToTop(window);
}

bool ImagingWindows::MaxImCameraIsConnected() {
    try {
        return connectButtonIsSet();
    } catch (...) {
        const std::string report =
            " " + errorReport(currentError(), "modUtility Function MaxImCameraIsConnected");
        services_.messages.ShowPopupMessage(report, kMessageSeconds);
        services_.log.AddToLog(report);
        return false;
    }
}

bool ImagingWindows::connectButtonIsSet() {
    const WindowId dialog = findDialog(kCameraDialog);
    if (dialog == 0) {
        reportMissing(kNoCameraDialog);
        return false;
    }
    const std::string setupTitle = "Setup", buttonTitle = "&Connect";
    const WindowId setup = findChild(dialog, kDialogClass, &setupTitle);
    if (setup == 0) {
        reportMissing("Could not find MaxIm CCD Setup Tab");
        return false;
    }
    constexpr int kTickedOrHeldDown = 1 | 4;  // the button stays down while the camera is connected
    return (desktop_.buttonState(findChild(setup, "Button", &buttonTitle)) & kTickedOrHeldDown) != 0;
}

void ImagingWindows::SelectMaxImCameraTab(int index) {
    const WindowId tabs = findChild(findDialog(kCameraDialog), "SysTabControl32", nullptr);
    if (tabs != 0 && (index == 0 || index == 4)) desktop_.selectTab(tabs, index);
}

std::int16_t ImagingWindows::GetCameraFilter() {
    try {
        const ObjectRef camera = programs_.maxImCamera;
        return toInt16(required(camera).get("Filter").toDouble());
    } catch (...) {
        // The dialog writes the filter into the settings when its tabs change.
        SelectMaxImCameraTab(0);
        SelectMaxImCameraTab(4);
        const double stored =
            leadingNumber(services_.settings.GetSetting("CurrentVersion", "D3130_EXP_FILTER", ""));
        return toInt16(std::clamp(stored, -32768.0, 32767.0));
    }
}

double ImagingWindows::MaxImVersion() const {
    try {
        return required(services_.automation.create("MaxIm.Application")).get("Version").toDouble();
    } catch (...) {
        return 0;
    }
}

WindowId ImagingWindows::findDialog(const std::string& title) const {
    return findChild(0, kDialogClass, &title);
}

/// Directly inside the window, or on the desktop (0); without a title, the first of the class.
WindowId ImagingWindows::findChild(WindowId window, const std::string& className,
                                   const std::string* title) const {
    for (const WindowId child : window == 0 ? desktop_.topLevelWindows() : desktop_.childrenOf(window))
        if (desktop_.classOf(child) == className && (title == nullptr || desktop_.titleOf(child) == *title))
            return child;
    return 0;
}

void ImagingWindows::reportMissing(const std::string& text) {
    services_.log.AddToLog(text);
    services_.messages.ShowPopupMessage(text, kMessageSeconds);
}

}  // namespace vantrel::devices

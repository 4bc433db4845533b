// The imaging programs' own windows: found by title and class, looked at, brought to the front.
#pragma once

#include <cstdint>
#include <string>

#include "devices/imaging_objects.h"
#include "devices/link_services.h"
#include "platform/window_system.h"

namespace vantrel::devices {

/// Window results are zero when there is no such window. Nothing here throws.
class ImagingWindows {
  public:
    ImagingWindows(const LinkServices& services, platform::WindowSystem& desktop,
                   const ImagingObjects& programs);

    platform::WindowId FindMaxImMainWindow() const;
    /// CCDSoft's main window, without a report when it is missing.
    platform::WindowId searchCCDSoftWindow() const;
    /// The same; a missing window is logged and shown.
    platform::WindowId FindCCDSoftWindow();
    /// The window that the camera dialog belongs to; a missing one is logged.
    platform::WindowId FindMaxImCameraWindow();

    /// How many top-level windows have the title, or, when partial, contain the text in it.
    int countTitles(const std::string& text, bool partial, bool caseSensitive) const;
    bool WindowTitleExists(const std::string& text, bool partial, bool caseSensitive) const {
        return countTitles(text, partial, caseSensitive) > 0;
    }

    /// Restores the window of the program in use if it is minimised, and puts it in front.
    void BringImagingSWToFront();
    /// By the state of the camera dialog's Connect button; what is missing is logged and shown.
    bool MaxImCameraIsConnected();
    /// Selects a tab (0 or 4) of the camera dialog.
    void SelectMaxImCameraTab(int index);
    /// The filter in use, else the one stored; 0 when neither is known.
    std::int16_t GetCameraFilter();
    /// Of the installed program; 0 when it can't be asked.
    double MaxImVersion() const;

  private:
    platform::WindowId findDialog(const std::string& title) const;
    platform::WindowId findChild(platform::WindowId window, const std::string& className,
                                 const std::string* title) const;
    bool connectButtonIsSet();
    void reportMissing(const std::string& text);

    LinkServices services_;
    platform::WindowSystem& desktop_;
    const ImagingObjects& programs_;
};

}  // namespace vantrel::devices

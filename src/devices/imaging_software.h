// Which imaging program is used: found, chosen, started, checked, and its camera connected.
//
// Decided once at start-up (startUp); later the operator changes it with the main window's options. Nothing
// here throws: a program that is missing or too old is reported, and exposures then fail in the camera link.
#pragma once

#include <string>

#include "devices/camera_link.h"
#include "devices/frm_select_cc_software.h"
#include "devices/imaging_panel.h"
#include "engine/run_panel.h"

namespace vantrel::devices {

/// The controls of the main window that the choice acts on.
struct ImagingSoftwareControls {
    ImagingPanel& imaging;
    platform::Button& cmdExpose;
    platform::OptionButton& optPinPoint;        // optPlateSolveMethod(0)
    platform::OptionButton& optAutoAstrometry;  // optPlateSolveMethod(1), needs CCDSoft
};

class ImagingSoftwareChoice {
  public:
    /// Takes over the events of the options and of the dialog.
    ImagingSoftwareChoice(const LinkServices& services, platform::WindowSystem& desktop,
                          ImagingObjects& programs, ImagingWindows& windows, CameraLink& camera,
                          const ImagingSoftwareControls& controls, frmSelectCCSoftware& dialog);

    /// The program whose window is open, else the stored one, else the one that is installed, else the
    /// operator's choice; returns when it is started.
    void startUp();

    /// The stored program, else as above.
    void GetImagingSW();

    /// Path of the class's server; empty when it is not installed.
    std::string GetProgIDServerPath(const std::string& progId) const;

    struct VersionTest {
        bool recent = false;
        std::string version;
    };
    /// Compares the first three parts of the file's version with the required one.
    VersionTest FileVersionIsRecent(const std::string& path, const std::string& required);

    void LaunchMaxIm();
    void LaunchCCDSoft();
    /// Whether a camera object can be had and driven.
    bool MaxImSupportsScripting();
    /// Opens the program and waits for its window.
    void ShellOpenFile(const std::string& path);

  private:
    void storeProgramThatIsOpen();
    void useCCDSoft();
    void useMaxIm();
    void useBuiltIn();
    void startBuiltIn();
    void setProgram(const std::string& program);
    void selectOption(const std::string& program);
    bool isInForce(const std::string& program) const;
    void stopExposeSeries();
    void reportNoProgram();
    void askOperator();
    void cmdImagingSoftwareOK_Click();

    void connectMaxIm();
    void reportNoScripting();
    bool ccdSoftIsUsable(const std::string& path);
    void connectCCDSoft();
    void linkCamera(const char* verifyText);
    void finishLaunch();

    void popUp(const std::string& text, double seconds);

    LinkServices services_;
    platform::WindowSystem& desktop_;
    ImagingObjects& programs_;
    ImagingWindows& windows_;
    CameraLink& camera_;
    ImagingSoftwareControls controls_;
    frmSelectCCSoftware& dialog_;
    bool ImagingSoftwareSelected_ = false;
};

}  // namespace vantrel::devices

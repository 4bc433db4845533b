// One desktop of two: the windows that the built-in instruments play, in front of the system's own.
#pragma once

#include "platform/desktop_windows.h"

namespace vantrel::platform {

/// A program belongs to the played desktop when that knows its path, to the system otherwise.
class JoinedWindows : public WindowSystem {
  public:
    JoinedWindows(DesktopWindows& played, WindowSystem& system) : played_(played), system_(system) {}

    std::vector<WindowId> topLevelWindows() const override;
    std::vector<WindowId> childrenOf(WindowId window) const override;
    WindowId parentOf(WindowId window) const override;
    std::string titleOf(WindowId window) const override;
    std::string classOf(WindowId window) const override;
    bool minimised(WindowId window) const override;
    bool maximised(WindowId window) const override;
    void restore(WindowId window) override;
    void bringToTop(WindowId window) override;
    int buttonState(WindowId button) const override;
    void selectTab(WindowId tabControl, int tab) override;
    void startProgram(const std::string& path) override;
    int shellOpen(const std::string& path, const std::string& workingFolder) override;
    bool programIsIdle(const std::string& path) const override;
    std::optional<std::string> fileVersion(const std::string& path) const override;

  private:
    WindowSystem& of(WindowId window) const;
    WindowSystem& of(const std::string& path) const;

    DesktopWindows& played_;
    WindowSystem& system_;
};

}  // namespace vantrel::platform

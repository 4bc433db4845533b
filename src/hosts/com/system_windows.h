// The windows of the programs that run on this Windows, and starting such programs.
#pragma once

#include <map>

#include "platform/win32_calls.h"
#include "platform/window_system.h"

namespace vantrel::hosts::com {

/// A program that doesn't answer holds nobody up: what it is asked is given up after a second, what it is
/// told isn't waited for. Windows of this program are none.
class SystemWindows : public platform::WindowSystem {
  public:
    std::vector<platform::WindowId> topLevelWindows() const override;
    std::vector<platform::WindowId> childrenOf(platform::WindowId window) const override;
    platform::WindowId parentOf(platform::WindowId window) const override;
    std::string titleOf(platform::WindowId window) const override;
    std::string classOf(platform::WindowId window) const override;
    bool minimised(platform::WindowId window) const override;
    bool maximised(platform::WindowId window) const override;
    void restore(platform::WindowId window) override;
    void bringToTop(platform::WindowId window) override;
    int buttonState(platform::WindowId button) const override;
    void selectTab(platform::WindowId tabControl, int tab) override;
    void startProgram(const std::string& path) override;
    int shellOpen(const std::string& path, const std::string& workingFolder) override;
    bool programIsIdle(const std::string& path) const override;
    std::optional<std::string> fileVersion(const std::string& path) const override;

  private:
    std::map<std::string, platform::Handle> started_;  // by lower-case path
};

}  // namespace vantrel::hosts::com

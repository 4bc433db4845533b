// A desktop in memory: the windows and programs that the built-in instruments play.
#pragma once

#include <functional>
#include <map>

#include "platform/window_system.h"

namespace vantrel::platform {

/// One window. `parent` zero: a top-level window. `owner`: the main window that a top-level dialog belongs
/// to.
struct DesktopWindow {
    std::string title;
    std::string className;
    WindowId parent = 0;
    WindowId owner = 0;
    bool minimised = false;
    bool maximised = false;
    int buttonState = 0;
    int selectedTab = 0;
};

/// One installed program.
struct DesktopProgram {
    std::function<void()> start;             // shows its windows
    std::optional<std::string> fileVersion;  // nothing: no version record
    std::function<bool()> isIdle = nullptr;  // nullptr: always
};

class DesktopWindows : public WindowSystem {
  public:
    /// Opens a window in front of the others (a child: behind its neighbours).
    WindowId open(DesktopWindow window);
    /// Closes the window with everything in it and all that belongs to it.
    void close(WindowId window);
    /// For changing it; nullptr when it doesn't exist. Good until the next window is opened or closed.
    DesktopWindow* find(WindowId window);

    /// Paths are compared without regard to case.
    void installProgram(const std::string& path, DesktopProgram program);
    bool knowsProgram(const std::string& path) const { return program(path) != nullptr; }

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
    const DesktopWindow* find(WindowId window) const;
    const DesktopProgram* program(const std::string& path) const;

    std::map<WindowId, DesktopWindow> windows_;
    std::vector<WindowId> order_;  // all windows, the foremost first
    WindowId lastId_ = 0;
    std::map<std::string, DesktopProgram> programs_;  // by lower-case path
};

}  // namespace vantrel::platform

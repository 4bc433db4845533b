// The windows of other programs, and starting these programs.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vantrel::platform {

/// Names a window of the desktop for as long as it exists. Zero names none.
using WindowId = std::uint64_t;

/// Questions about a window that doesn't exist (any more) are answered with nothing: an empty text, false,
/// no windows; wishes are ignored.
class WindowSystem {
  public:
    virtual ~WindowSystem() = default;

    /// The top-level windows, dialogs of programs included, the foremost first.
    virtual std::vector<WindowId> topLevelWindows() const = 0;
    /// Directly inside the window.
    virtual std::vector<WindowId> childrenOf(WindowId window) const = 0;
    /// The window that this one lies in or belongs to; zero when there is none.
    virtual WindowId parentOf(WindowId window) const = 0;

    virtual std::string titleOf(WindowId window) const = 0;
    /// The kind of window: "#32770" for dialogs, "Button", "SysTabControl32", …
    virtual std::string classOf(WindowId window) const = 0;

    virtual bool minimised(WindowId window) const = 0;
    virtual bool maximised(WindowId window) const = 0;
    /// Gives a minimised or maximised window its normal size.
    virtual void restore(WindowId window) = 0;
    virtual void bringToTop(WindowId window) = 0;

    /// What a button looks like now: the bits 1 ticked, 2 undecided, 4 held down, 8 has the focus.
    virtual int buttonState(WindowId button) const = 0;
    /// Chooses a tab, counted from 0, of a tab control.
    virtual void selectTab(WindowId tabControl, int tab) = 0;

    /// Starts the program at this path (with backslashes) without giving it the focus. Throws OperationError,
    /// number 53, when there is no such program.
    virtual void startProgram(const std::string& path) = 0;
    /// Opens the file with the desktop's "open", in the working folder. Above 32: done; otherwise the
    /// failure's number, such as 2 for a file that doesn't exist.
    virtual int shellOpen(const std::string& path, const std::string& workingFolder) = 0;
    /// False while the program at this path is still coming up.
    virtual bool programIsIdle(const std::string& path) const = 0;

    /// The "FileVersion" text of the program's version record; nothing when it has none.
    virtual std::optional<std::string> fileVersion(const std::string& path) const = 0;
};

}  // namespace vantrel::platform

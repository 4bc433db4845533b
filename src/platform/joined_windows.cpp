#include "platform/joined_windows.h"

namespace vantrel::platform {
namespace {

/// Systems don't use it: their windows' names have 32 bits.
constexpr WindowId kPlayed = WindowId{1} << 63U;

bool isPlayed(WindowId window) { return (window & kPlayed) != 0; }
WindowId inner(WindowId window) { return window & ~kPlayed; }
/// Of a window of the same desktop as `like`; none stays none.
WindowId outer(WindowId window, WindowId like) { return window == 0 ? 0 : window | (like & kPlayed); }

std::vector<WindowId> outer(std::vector<WindowId> windows, WindowId like) {
    for (WindowId& window : windows) window = outer(window, like);
    return windows;
}

}  // namespace

WindowSystem& JoinedWindows::of(WindowId window) const {
    return isPlayed(window) ? static_cast<WindowSystem&>(played_) : system_;
}

WindowSystem& JoinedWindows::of(const std::string& path) const {
    return played_.knowsProgram(path) ? static_cast<WindowSystem&>(played_) : system_;
}

std::vector<WindowId> JoinedWindows::topLevelWindows() const {
    std::vector<WindowId> all = outer(played_.topLevelWindows(), kPlayed);
    const std::vector<WindowId> others = system_.topLevelWindows();
    all.insert(all.end(), others.begin(), others.end());
    return all;
}

std::vector<WindowId> JoinedWindows::childrenOf(WindowId window) const {
    return outer(of(window).childrenOf(inner(window)), window);
}

WindowId JoinedWindows::parentOf(WindowId window) const {
    return outer(of(window).parentOf(inner(window)), window);
}

std::string JoinedWindows::titleOf(WindowId window) const { return of(window).titleOf(inner(window)); }
std::string JoinedWindows::classOf(WindowId window) const { return of(window).classOf(inner(window)); }
bool JoinedWindows::minimised(WindowId window) const { return of(window).minimised(inner(window)); }
bool JoinedWindows::maximised(WindowId window) const { return of(window).maximised(inner(window)); }
void JoinedWindows::restore(WindowId window) { of(window).restore(inner(window)); }
void JoinedWindows::bringToTop(WindowId window) { of(window).bringToTop(inner(window)); }
int JoinedWindows::buttonState(WindowId button) const { return of(button).buttonState(inner(button)); }
void JoinedWindows::selectTab(WindowId control, int tab) { of(control).selectTab(inner(control), tab); }
void JoinedWindows::startProgram(const std::string& path) { of(path).startProgram(path); }
int JoinedWindows::shellOpen(const std::string& path, const std::string& workingFolder) {
    return of(path).shellOpen(path, workingFolder);
}
bool JoinedWindows::programIsIdle(const std::string& path) const { return of(path).programIsIdle(path); }
std::optional<std::string> JoinedWindows::fileVersion(const std::string& path) const {
    return of(path).fileVersion(path);
}

}  // namespace vantrel::platform

#include "platform/desktop_windows.h"

#include <algorithm>
#include <utility>

#include "platform/errors.h"
#include "platform/text.h"

namespace vantrel::platform {

WindowId DesktopWindows::open(DesktopWindow window) {
    const WindowId id = ++lastId_;
    if (window.parent == 0)
        order_.insert(order_.begin(), id);
    else
        order_.push_back(id);
    windows_.emplace(id, std::move(window));
    return id;
}

void DesktopWindows::close(WindowId window) {
    if (windows_.erase(window) == 0) return;
    std::erase(order_, window);
    const std::vector<WindowId> others = order_;
    for (const WindowId other : others) {
        const DesktopWindow* held = find(other);
        if (held != nullptr && (held->parent == window || held->owner == window)) close(other);
    }
}

const DesktopWindow* DesktopWindows::find(WindowId window) const {
    const auto found = windows_.find(window);
    return found == windows_.end() ? nullptr : &found->second;
}

DesktopWindow* DesktopWindows::find(WindowId window) {
    return const_cast<DesktopWindow*>(std::as_const(*this).find(window));
}

void DesktopWindows::installProgram(const std::string& path, DesktopProgram program) {
    programs_.insert_or_assign(toLower(path), std::move(program));
}

const DesktopProgram* DesktopWindows::program(const std::string& path) const {
    const auto found = programs_.find(toLower(path));
    return found == programs_.end() ? nullptr : &found->second;
}

std::vector<WindowId> DesktopWindows::topLevelWindows() const { return childrenOf(0); }

std::vector<WindowId> DesktopWindows::childrenOf(WindowId window) const {
    std::vector<WindowId> children;
    std::copy_if(order_.begin(), order_.end(), std::back_inserter(children),
                 [&](WindowId id) { return find(id)->parent == window; });
    return children;
}

WindowId DesktopWindows::parentOf(WindowId window) const {
    const DesktopWindow* held = find(window);
    if (held == nullptr) return 0;
    return held->parent != 0 ? held->parent : held->owner;
}

std::string DesktopWindows::titleOf(WindowId window) const {
    const DesktopWindow* held = find(window);
    return held == nullptr ? std::string() : held->title;
}

std::string DesktopWindows::classOf(WindowId window) const {
    const DesktopWindow* held = find(window);
    return held == nullptr ? std::string() : held->className;
}

bool DesktopWindows::minimised(WindowId window) const {
    const DesktopWindow* held = find(window);
    return held != nullptr && held->minimised;
}

bool DesktopWindows::maximised(WindowId window) const {
    const DesktopWindow* held = find(window);
    return held != nullptr && held->maximised;
}

void DesktopWindows::restore(WindowId window) {
    if (DesktopWindow* held = find(window)) held->minimised = held->maximised = false;
}

void DesktopWindows::bringToTop(WindowId window) {
    if (std::erase(order_, window) > 0) order_.insert(order_.begin(), window);
}

int DesktopWindows::buttonState(WindowId button) const {
    const DesktopWindow* held = find(button);
    return held == nullptr ? 0 : held->buttonState;
}

void DesktopWindows::selectTab(WindowId tabControl, int tab) {
    if (DesktopWindow* held = find(tabControl)) held->selectedTab = tab;
}

void DesktopWindows::startProgram(const std::string& path) {
    const DesktopProgram* found = program(path);
    if (found == nullptr) throw runTimeError(error_number::kFileNotFound);
    if (found->start) found->start();
}

int DesktopWindows::shellOpen(const std::string& path, const std::string& /*workingFolder*/) {
    constexpr int kDone = 33;
    constexpr int kNoSuchFile = 2;
    const DesktopProgram* found = program(path);
    if (found == nullptr) return kNoSuchFile;
    if (found->start) found->start();
    return kDone;
}

bool DesktopWindows::programIsIdle(const std::string& path) const {
    const DesktopProgram* found = program(path);
    return found == nullptr || !found->isIdle || found->isIdle();
}

std::optional<std::string> DesktopWindows::fileVersion(const std::string& path) const {
    const DesktopProgram* found = program(path);
    return found == nullptr ? std::nullopt : found->fileVersion;
}

}  // namespace vantrel::platform

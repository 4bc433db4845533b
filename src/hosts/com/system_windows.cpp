#include "hosts/com/system_windows.h"

#include <cwchar>

#include <commctrl.h>

#include "platform/errors.h"
#include "platform/text.h"

namespace vantrel::hosts::com {

using platform::Handle;
using platform::WindowId;

namespace {

HWND windowOf(WindowId id) { return reinterpret_cast<HWND>(static_cast<std::uintptr_t>(id)); }
WindowId idOf(HWND window) { return static_cast<WindowId>(reinterpret_cast<std::uintptr_t>(window)); }

bool isOurs(HWND window) {
    DWORD process = 0;
    ::GetWindowThreadProcessId(window, &process);
    return process == ::GetCurrentProcessId();
}

/// The window's answer; 0 when it has none in time.
DWORD_PTR ask(WindowId window, UINT message, WPARAM first = 0, LPARAM second = 0) {
    constexpr UINT kLongest = 1000;
    DWORD_PTR answer = 0;
    const LRESULT came = ::SendMessageTimeoutW(windowOf(window), message, first, second,
                                               SMTO_ABORTIFHUNG | SMTO_NORMAL, kLongest, &answer);
    return came == 0 ? 0 : answer;
}

}  // namespace

std::vector<WindowId> SystemWindows::topLevelWindows() const {
    std::vector<WindowId> all;
    ::EnumWindows(
        [](HWND window, LPARAM list) -> BOOL {
            if (!isOurs(window)) reinterpret_cast<std::vector<WindowId>*>(list)->push_back(idOf(window));
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&all));
    return all;
}

std::vector<WindowId> SystemWindows::childrenOf(WindowId window) const {
    std::vector<WindowId> children;
    for (HWND child = ::GetWindow(windowOf(window), GW_CHILD); child != nullptr;
         child = ::GetWindow(child, GW_HWNDNEXT))
        children.push_back(idOf(child));
    return children;
}

/// The parent is the owner as well, but of pop-up windows only.
WindowId SystemWindows::parentOf(WindowId window) const {
    const HWND parent = ::GetParent(windowOf(window));
    return idOf(parent != nullptr ? parent : ::GetWindow(windowOf(window), GW_OWNER));
}

std::string SystemWindows::titleOf(WindowId window) const {
    wchar_t title[512] = L"";
    const int length = ::GetWindowTextW(windowOf(window), title, 512);
    return platform::narrow({title, static_cast<std::size_t>(length)});
}

std::string SystemWindows::classOf(WindowId window) const {
    wchar_t name[256] = L"";
    const int length = ::GetClassNameW(windowOf(window), name, 256);
    return platform::narrow({name, static_cast<std::size_t>(length)});
}

bool SystemWindows::minimised(WindowId window) const { return ::IsIconic(windowOf(window)) != 0; }
bool SystemWindows::maximised(WindowId window) const { return ::IsZoomed(windowOf(window)) != 0; }

void SystemWindows::restore(WindowId window) { ::ShowWindowAsync(windowOf(window), SW_RESTORE); }

void SystemWindows::bringToTop(WindowId window) {
    ::SetWindowPos(windowOf(window), HWND_TOP, 0, 0, 0, 0,
                   SWP_ASYNCWINDOWPOS | SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    ::SetForegroundWindow(windowOf(window));
}

int SystemWindows::buttonState(WindowId button) const { return static_cast<int>(ask(button, BM_GETSTATE)); }

void SystemWindows::selectTab(WindowId tabControl, int tab) {
    ask(tabControl, TCM_SETCURSEL, static_cast<WPARAM>(tab));
}

void SystemWindows::startProgram(const std::string& path) {
    STARTUPINFOW how{};
    how.cb = sizeof how;
    how.dwFlags = STARTF_USESHOWWINDOW;
    how.wShowWindow = SW_SHOWNOACTIVATE;
    PROCESS_INFORMATION process{};
    const std::wstring file = platform::wide(path);
    std::wstring command = L"\"" + file + L"\"";
    if (::CreateProcessW(file.c_str(), command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &how,
                         &process) == 0)
        throw platform::runTimeError(platform::error_number::kFileNotFound);
    const Handle thread(process.hThread);
    started_.insert_or_assign(platform::toLower(path), Handle(process.hProcess));
}

int SystemWindows::shellOpen(const std::string& path, const std::string& workingFolder) {
    const std::wstring file = platform::wide(path), folder = platform::wide(workingFolder);
    SHELLEXECUTEINFOW order{};
    order.cbSize = sizeof order;
    order.fMask = SEE_MASK_NOCLOSEPROCESS | SEE_MASK_FLAG_NO_UI;
    order.lpVerb = L"open";
    order.lpFile = file.c_str();
    order.lpDirectory = folder.empty() ? nullptr : folder.c_str();
    order.nShow = SW_SHOWNORMAL;
    ::ShellExecuteExW(&order);
    if (order.hProcess != nullptr) started_.insert_or_assign(platform::toLower(path), Handle(order.hProcess));
    return static_cast<int>(reinterpret_cast<std::intptr_t>(order.hInstApp));
}

bool SystemWindows::programIsIdle(const std::string& path) const {
    const auto started = started_.find(platform::toLower(path));
    return started == started_.end() || ::WaitForInputIdle(started->second.get(), 0) != WAIT_TIMEOUT;
}

/// The text in the language that the record names first.
std::optional<std::string> SystemWindows::fileVersion(const std::string& path) const {
    const std::wstring file = platform::wide(path);
    DWORD unused = 0;
    const DWORD size = ::GetFileVersionInfoSizeW(file.c_str(), &unused);
    std::vector<std::byte> record(size);
    if (size == 0 || ::GetFileVersionInfoW(file.c_str(), 0, size, record.data()) == 0) return std::nullopt;
    struct Translation {
        WORD language, codePage;
    };
    void* found = nullptr;
    UINT length = 0;
    if (::VerQueryValueW(record.data(), L"\\VarFileInfo\\Translation", &found, &length) == 0 ||
        length < sizeof(Translation))
        return std::nullopt;
    const auto* translation = static_cast<const Translation*>(found);
    wchar_t key[64] = L"";
    ::swprintf(key, 64, L"\\StringFileInfo\\%04x%04x\\FileVersion", translation->language,
               translation->codePage);
    if (::VerQueryValueW(record.data(), key, &found, &length) == 0) return std::nullopt;
    return platform::narrow(static_cast<const wchar_t*>(found));
}

}  // namespace vantrel::hosts::com

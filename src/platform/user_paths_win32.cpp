#include <cwchar>
#include <stdexcept>

#include "platform/paths.h"
#include "platform/user_machine.h"
#include "platform/win32_calls.h"

namespace vantrel::platform {
namespace {

namespace fs = std::filesystem;

/// Where the user, or who looks after his computer, has put the folder; empty when there is none.
fs::path knownFolder(const KNOWNFOLDERID& id) {
    wchar_t* text = nullptr;
    const HRESULT failed = ::SHGetKnownFolderPath(id, KF_FLAG_DONT_VERIFY, nullptr, &text);
    const fs::path found = failed == S_OK ? text : L"";
    ::CoTaskMemFree(text);
    return found;
}

/// By the environment, else as the system knows it.
fs::path folderOf(const Environment& environment, const char* variable, const KNOWNFOLDERID& id) {
    const fs::path named = pathOf(environment(variable).value_or(""));
    return named.is_absolute() ? named : knownFolder(id);
}

}  // namespace

std::optional<std::string> processEnvironment(const std::string& name) {
    const wchar_t* value = ::_wgetenv(wide(name).c_str());
    if (value == nullptr) return std::nullopt;
    return narrow(value);
}

UserPaths desktopPaths(const Environment& environment) {
    const fs::path profile = folderOf(environment, "USERPROFILE", FOLDERID_Profile);
    const fs::path roaming = folderOf(environment, "APPDATA", FOLDERID_RoamingAppData);
    const fs::path local = folderOf(environment, "LOCALAPPDATA", FOLDERID_LocalAppData);
    if (profile.empty() || roaming.empty() || local.empty())
        throw std::runtime_error("The system names no folder for the user's settings");
    const fs::path documents = knownFolder(FOLDERID_Documents);
    return {.userName = profile.filename().string(),
            .settings = roaming / "Vantrel" / "settings",
            .profile = profile.string(),
            .drives = {},
            .documents = documents.empty() ? profile / "Documents" : documents,
            .lock = local / "Vantrel" / "vantrel.lock",
            .cache = cacheFolder(environment),
            .data = dataFolder(environment)};
}

fs::path cacheFolder(const Environment& environment) {
    const fs::path local = folderOf(environment, "LOCALAPPDATA", FOLDERID_LocalAppData);
    return local.empty() ? local : local / "Vantrel" / "cache";
}

fs::path dataFolder(const Environment& environment) {
    const fs::path local = folderOf(environment, "LOCALAPPDATA", FOLDERID_LocalAppData);
    return local.empty() ? local : local / "Vantrel";
}

}  // namespace vantrel::platform

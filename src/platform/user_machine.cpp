#include "platform/user_machine.h"

#include "platform/own_program.h"

namespace vantrel::platform {

namespace fs = std::filesystem;

UserPaths pathsBelow(const fs::path& home) {
    const fs::path base = fs::absolute(home);
    return {.userName = "observer",
            .settings = base / "settings",
            .drives = base / "drives",
            .documents = base / "Documents",
            .lock = base / "lock",
            .cache = base / "cache",
            .data = base / "data"};
}

std::filesystem::path sharedDataFolder() {
    return ownProgram().parent_path().parent_path() / "share" / "vantrel";
}

UserMachine::UserMachine(const UserPaths& paths)
    : settings(paths.settings),
      folders(paths.drives),
      cache(paths.cache),
      data(paths.data),
      userProfile(paths.profile.empty() ? "C:\\Users\\" + paths.userName : paths.profile) {
    folders.map("C:\\Program Files\\Vantrel", sharedDataFolder());
    folders.map(userProfile + "\\My Documents", paths.documents);
    folders.map(userProfile + "\\Documents", paths.documents);
}

}  // namespace vantrel::platform

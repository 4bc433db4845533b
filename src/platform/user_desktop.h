// The part of a desktop that every front has: whose it is, on a system that the program has no name for.
#pragma once

#include "platform/desktop.h"
#include "platform/folder_map.h"
#include "platform/system_name.h"

namespace vantrel::platform {

class UserDesktop : public Desktop {
  public:
    UserDesktop(const FolderMap& folders, std::string userProfile)
        : folders_(folders), userProfile_(std::move(userProfile)) {}

    std::optional<SystemVersion> systemVersion() const override {
        constexpr int kUnknownPlatform = 3;
        SystemVersion version;
        version.platformId = kUnknownPlatform;
        return version;
    }
    std::string systemName() const override { return platform::systemName(); }
    std::string userProfile() const override { return userProfile_; }
    std::filesystem::path shownFor(const std::string& file) const override { return folders_.real(file); }

  protected:
    const FolderMap& folders() const { return folders_; }

  private:
    const FolderMap& folders_;
    std::string userProfile_;
};

}  // namespace vantrel::platform

// The desktop of a machine without one.
#pragma once

#include <string>
#include <vector>

#include "platform/desktop.h"
#include "platform/folder_map.h"

namespace vantrel::headless {

class HeadlessDesktop : public platform::Desktop {
  public:
    HeadlessDesktop(const platform::FolderMap& folders, std::string userProfile)
        : folders_(folders), userProfile_(std::move(userProfile)) {}

    /// None of the systems that the program has names for.
    std::optional<platform::SystemVersion> systemVersion() const override;
    std::string userProfile() const override { return userProfile_; }
    /// Shows nothing; true for web pages and for files that exist.
    bool open(const std::string& file) override;

  private:
    const platform::FolderMap& folders_;
    std::string userProfile_;
};

}  // namespace vantrel::headless

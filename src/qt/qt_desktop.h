// The desktop that the windows stand on.
#pragma once

#include "platform/desktop.h"
#include "platform/folder_map.h"

namespace vantrel::qt {

class QtDesktop : public platform::Desktop {
  public:
    QtDesktop(const platform::FolderMap& folders, std::string userProfile)
        : folders_(folders), userProfile_(std::move(userProfile)) {}

    /// None of the systems that the program has names for.
    std::optional<platform::SystemVersion> systemVersion() const override;
    std::string userProfile() const override { return userProfile_; }
    bool open(const std::string& file) override;

  private:
    const platform::FolderMap& folders_;
    std::string userProfile_;
};

}  // namespace vantrel::qt

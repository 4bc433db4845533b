// The desktop that the windows stand on.
#pragma once

#include "platform/desktop.h"
#include "platform/folder_map.h"

namespace vantrel::qt {

class QtDesktop : public platform::Desktop {
  public:
    QtDesktop(const platform::FolderMap& folders, std::string userProfile)
        : folders_(folders), userProfile_(std::move(userProfile)) {}

    /// This kind of system has no such record.
    std::optional<platform::SystemVersion> systemVersion() const override { return std::nullopt; }
    std::string userProfile() const override { return userProfile_; }
    bool open(const std::string& file) override;

  private:
    const platform::FolderMap& folders_;
    std::string userProfile_;
};

}  // namespace vantrel::qt

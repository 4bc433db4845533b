// Where the folders of the set-up tab are on this machine, which knows no drive letters.
#pragma once

#include <vector>

#include "app/setup_panel.h"
#include "platform/folder_map.h"

namespace vantrel::app {

/// Shows the real path below each box that holds a folder text, and follows the box.
class RealFolders {
  public:
    RealFolders(SetupPanel& panel, const platform::FolderMap& folders);

  private:
    void follow(platform::TextBox& box, platform::Label& label);

    const platform::FolderMap& folders_;
    std::vector<platform::Subscription> subscriptions_;
};

}  // namespace vantrel::app

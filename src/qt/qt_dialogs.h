// Dialogs that wait for the operator.
#pragma once

#include <string>

#include "platform/dialogs.h"
#include "platform/folder_map.h"

namespace vantrel::qt {

class QtDialogs : public platform::Dialogs {
  public:
    /// Folders are chosen from `startFolder` (a folder text) on.
    QtDialogs(const platform::FolderMap& folders, std::string startFolder)
        : folders_(folders), startFolder_(std::move(startFolder)) {}

    void messageBox(const std::string& title, const std::string& text, Icon icon, Buttons buttons) override;
    std::string chooseFolder(const std::string& title) override;
    std::string choose(const std::string& title, const std::vector<Choice>& choices,
                       const std::string& current) override;

  private:
    const platform::FolderMap& folders_;
    std::string startFolder_;
};

}  // namespace vantrel::qt

// Dialogs that wait for the operator.
#pragma once

#include <QFileDialog>
#include <string>

#include "platform/dialogs.h"
#include "platform/folder_map.h"

namespace vantrel::qt {

class QtDialogs : public platform::Dialogs {
  public:
    /// Folders are chosen from `startFolder` (a folder text) on.
    QtDialogs(const platform::FolderMap& folders, std::string startFolder)
        : folders_(folders), startFolder_(std::move(startFolder)) {}

    void messageBox(const std::string& title, const platform::Words& text, Icon icon,
                    Buttons buttons) override;
    std::string chooseFolder(const platform::Words& title) override;
    /// Begins where the last file was chosen.
    std::string chooseFile(const platform::Words& title) override;
    std::string choose(const platform::Words& title, const std::vector<Choice>& choices,
                       const std::string& current) override;

  private:
    std::string choosePath(const platform::Words& title, const std::string& begin,
                           QFileDialog::FileMode mode);

    const platform::FolderMap& folders_;
    std::string startFolder_;
    std::string lastFolder_;  // of a chosen file; empty: none was chosen yet
};

}  // namespace vantrel::qt

#include "app/folder_buttons.h"

#include "app/settings_store.h"

namespace vantrel::app {

FolderButtons::FolderButtons(SetupPanel& panel, platform::Dialogs& dialogs, engine::SettingsPort& settings,
                             MessageLog& log, engine::MessagePort& messages)
    : dialogs_(dialogs), settings_(settings) {
    panel.cmdSetLogPath.onClick = [this, &panel, &log, &messages] {
        log.SetLogStream(choose("Set Log Path", panel.txtLogPath, "LogPath"), messages);
    };
    panel.Command1.onClick = [this, &panel] { choose("Set Image Path", panel.txtImagePath, "ImagePath"); };
}

std::string FolderButtons::choose(const char* title, platform::TextBox& box, const char* key) {
    std::string folder = dialogs_.chooseFolder(title);
    if (folder.empty()) return folder;
    box.setText(folder);
    settings_.SaveSetting(kProgramSection, key, folder);
    return folder;
}

}  // namespace vantrel::app

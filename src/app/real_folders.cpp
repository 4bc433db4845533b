#include "app/real_folders.h"

namespace vantrel::app {

RealFolders::RealFolders(SetupPanel& panel, const platform::FolderMap& folders) : folders_(folders) {
    follow(panel.txtImagePath, panel.lblImageFolder);
    follow(panel.txtLogPath, panel.lblLogFolder);
}

void RealFolders::follow(platform::TextBox& box, platform::Label& label) {
    const auto show = [this, &box, &label] {
        const std::string real = box.text().empty() ? "" : folders_.real(box.text()).string();
        label.setCaption(real == box.text() ? "" : real);
        label.setToolTip(label.caption());  // which may be longer than there is room for
    };
    show();
    subscriptions_.push_back(box.changed.subscribe(show));
}

}  // namespace vantrel::app

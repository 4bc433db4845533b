// The desktop that the windows stand on.
#pragma once

#include <string>

#include "platform/user_desktop.h"

namespace vantrel::qt {

class QtDesktop : public platform::UserDesktop {
  public:
    using UserDesktop::UserDesktop;
    /// Pages go to the browser, everything else is a file.
    bool open(const std::string& file) override;
    /// For a help file that is missing or that no program here shows: the web pages beside it, if there are
    /// any.
    std::filesystem::path shownFor(const std::string& file) const override;
    void beep() override;
    void say(const std::string& words) override;
    bool copyText(const std::string& text) override;
    bool copyDial(const platform::Drawing& drawing) override;
    std::string pngOfDial(const platform::Drawing& drawing) const override;
};

}  // namespace vantrel::qt

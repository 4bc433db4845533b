// The desktop of a machine without one.
#pragma once

#include <string>

#include "platform/user_desktop.h"

namespace vantrel::headless {

class HeadlessDesktop : public platform::UserDesktop {
  public:
    using UserDesktop::UserDesktop;
    /// Shows nothing; true for web pages and for files that exist.
    bool open(const std::string& file) override;
};

}  // namespace vantrel::headless

// The desktop that the windows stand on.
#pragma once

#include <string>

#include "platform/user_desktop.h"

namespace vantrel::qt {

class QtDesktop : public platform::UserDesktop {
  public:
    using UserDesktop::UserDesktop;
    bool open(const std::string& file) override;
};

}  // namespace vantrel::qt

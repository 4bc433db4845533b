// The automation object of a mount at an INDI server, with the members that programs drive telescopes by.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "hosts/indi/mount.h"
#include "platform/dispatch_object.h"

namespace vantrel::hosts::indi {

class Telescope : public platform::DispatchObject {
  public:
    Telescope(const std::string& progId, std::shared_ptr<Mount> mount, std::function<void()> setupDialog);

  private:
    void addState();
    void addMotion();

    std::shared_ptr<Mount> mount_;
};

}  // namespace vantrel::hosts::indi

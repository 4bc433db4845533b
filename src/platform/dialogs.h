// Dialogs that block until the operator has answered. The fronts show them; scripts and tests answer in
// advance.
#pragma once

#include <string>
#include <vector>

#include "platform/words.h"

namespace vantrel::platform {

class Dialogs {
  public:
    virtual ~Dialogs() = default;

    enum class Icon { kInformation, kExclamation, kCritical };
    /// How a message can be closed; it makes no difference to what follows.
    enum class Buttons { kOk, kOkCancel };

    virtual void messageBox(const std::string& title, const Words& text, Icon icon, Buttons buttons) = 0;

    /// A folder with drive letter and backslashes; empty when the operator cancels.
    virtual std::string chooseFolder(const Words& title) = 0;

    /// A file that exists, likewise.
    virtual std::string chooseFile(const Words& title) = 0;

    struct Choice {
        std::string id;
        std::string description;
    };
    /// The id of one of the choices; empty when the operator cancels.
    virtual std::string choose(const Words& title, const std::vector<Choice>& choices,
                               const std::string& current) = 0;
};

}  // namespace vantrel::platform

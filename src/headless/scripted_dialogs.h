// Dialogs that the script has answered in advance.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/dialogs.h"

namespace vantrel::headless {

class ScriptedDialogs : public platform::Dialogs {
  public:
    /// `clock` tells when a message box was shown.
    explicit ScriptedDialogs(const platform::Clock& clock) : clock_(clock) {}

    enum class Kind { kFolder, kFile, kChooser, kBox };
    /// What the operator will answer to the next dialog of this kind that has no answer yet; an empty text
    /// cancels, as does a missing answer.
    void answer(Kind kind, std::string with);

    struct Box {
        platform::Instant time;
        std::string title;
        std::string text;
    };
    /// Every message box so far.
    const std::vector<Box>& boxes() const { return boxes_; }

    void messageBox(const std::string& title, const platform::Words& text, Icon icon,
                    Buttons buttons) override;
    std::string chooseFolder(const platform::Words& title) override;
    std::string chooseFile(const platform::Words& title) override;
    /// An answer may be a choice's id or its description; anything else is handed over as it is, as an entry
    /// of a list that the program doesn't know.
    std::string choose(const platform::Words& title, const std::vector<Choice>& choices,
                       const std::string& current) override;

  private:
    static std::string take(std::deque<std::string>& answers);

    const platform::Clock& clock_;
    std::deque<std::string> folders_, files_, choices_, confirmations_;
    std::vector<Box> boxes_;
};

}  // namespace vantrel::headless

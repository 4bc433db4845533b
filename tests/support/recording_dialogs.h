// Dialogs that write down what they were asked and answer as the test said.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "platform/dialogs.h"

namespace vantrel::test {

class RecordingDialogs : public platform::Dialogs {
  public:
    struct Box {
        std::string title, text;
        Icon icon = Icon::kInformation;
        Buttons buttons = Buttons::kOk;
    };
    std::vector<Box> boxes;
    std::vector<std::string> titles;  // of the dialogs for folders and files, and of choosers
    std::deque<std::string> answers;  // to the next of them; none: cancelled

    void messageBox(const std::string& title, const platform::Words& text, Icon icon,
                    Buttons buttons) override {
        boxes.push_back({title, text.english(), icon, buttons});
    }
    std::string chooseFolder(const platform::Words& title) override { return answer(title.english()); }
    std::string chooseFile(const platform::Words& title) override { return answer(title.english()); }
    std::string choose(const platform::Words& title, const std::vector<Choice>& /*choices*/,
                       const std::string& /*current*/) override {
        return answer(title.english());
    }

  private:
    std::string answer(const std::string& title) {
        titles.push_back(title);
        if (answers.empty()) return "";
        std::string next = answers.front();
        answers.pop_front();
        return next;
    }
};

}  // namespace vantrel::test

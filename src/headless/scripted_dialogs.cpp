#include "headless/scripted_dialogs.h"

#include <utility>

#include "platform/text.h"

namespace vantrel::headless {

using namespace platform;

void ScriptedDialogs::answer(Kind kind, std::string with) {
    switch (kind) {
        case Kind::kFolder:
            folders_.push_back(std::move(with));
            return;
        case Kind::kFile:
            files_.push_back(std::move(with));
            return;
        case Kind::kChooser:
            choices_.push_back(std::move(with));
            return;
        case Kind::kBox:
            confirmations_.push_back(std::move(with));
            return;
    }
}

std::string ScriptedDialogs::take(std::deque<std::string>& answers) {
    if (answers.empty()) return {};
    std::string answer = std::move(answers.front());
    answers.pop_front();
    return answer;
}

void ScriptedDialogs::messageBox(const std::string& title, const Words& text, Icon, Buttons) {
    boxes_.push_back({clock_.utc(), title, text.english()});
    take(confirmations_);
}

std::string ScriptedDialogs::chooseFolder(const Words&) { return take(folders_); }

std::string ScriptedDialogs::chooseFile(const Words&) { return take(files_); }

std::string ScriptedDialogs::choose(const Words&, const std::vector<Choice>& choices, const std::string&) {
    std::string answer = take(choices_);
    for (const Choice& choice : choices)
        if (equalIgnoringCase(choice.id, answer) || choice.description == answer) return choice.id;
    return answer;
}

}  // namespace vantrel::headless

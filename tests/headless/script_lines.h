// Commands from memory and replies to it, and dialogues written down as text.
#pragma once

#include <deque>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "headless/command_source.h"

namespace vantrel::headless::test {

class ListedCommands : public CommandSource {
  public:
    void add(const std::string& line) { lines_.push_back({Incoming::Kind::kLine, line}); }
    void addTooLong() { lines_.push_back({Incoming::Kind::kTooLong, {}}); }

    Incoming next(bool) override {
        if (lines_.empty()) return {Incoming::Kind::kEnd, {}};
        Incoming first = lines_.front();
        lines_.pop_front();
        return first;
    }

  private:
    std::deque<Incoming> lines_;
};

class KeptReplies : public ReplySink {
  public:
    bool send(const std::string& line) override {
        replies.push_back(nlohmann::json::parse(line));
        return true;
    }
    std::vector<nlohmann::json> replies;
};

/// One dialogue: lines beginning with "> " are commands, those beginning with "< " the replies to the
/// command before. A command without one is answered that it was carried out, the last ones with
/// "< nothing" aren't answered.
struct Dialogue {
    explicit Dialogue(const std::string& text) {
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with("> ")) {
                commands.push_back(line.substr(2));
                replies.emplace_back(R"({"ok":true})");
            }
            if (line == "< nothing")
                replies.pop_back();
            else if (line.starts_with("< "))
                replies.back() = line.substr(2);
        }
    }

    void check(const std::vector<nlohmann::json>& got) const {
        ASSERT_EQ(got.size(), replies.size());
        for (std::size_t i = 0; i < got.size(); ++i) {
            const auto wanted = nlohmann::json::parse(replies[i]);
            auto reply = got[i];
            if (!wanted.contains("local")) reply.erase("local");  // depends on the machine's time zone
            if (!wanted.contains("delivered") && reply.value("delivered", false)) reply.erase("delivered");
            EXPECT_EQ(reply, wanted) << "to " << commands[i];
        }
    }

    std::vector<std::string> commands;
    std::vector<std::string> replies;
};

}  // namespace vantrel::headless::test

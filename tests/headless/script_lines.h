// Commands from memory and replies to it, and dialogues written down as text.
#pragma once

#include <deque>
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
/// command before. A reply given as "< ..." may be anything.
struct Dialogue {
    explicit Dialogue(const std::string& text) {
        std::size_t start = 0;
        while (start < text.size()) {
            const std::size_t end = std::min(text.find('\n', start), text.size());
            const std::string line = text.substr(start, end - start);
            if (line.starts_with("> ")) commands.push_back(line.substr(2));
            if (line.starts_with("< ")) replies.push_back(line.substr(2));
            start = end + 1;
        }
    }

    void check(const std::vector<nlohmann::json>& got) const {
        ASSERT_EQ(got.size(), replies.size());
        for (std::size_t i = 0; i < got.size(); ++i) {
            if (replies[i] == "...") continue;
            const auto wanted = nlohmann::json::parse(replies[i]);
            auto reply = got[i];
            if (!wanted.contains("local")) reply.erase("local");  // depends on the machine's time zone
            EXPECT_EQ(reply, wanted) << "to " << commands[i];
        }
    }

    std::vector<std::string> commands;
    std::vector<std::string> replies;
};

}  // namespace vantrel::headless::test

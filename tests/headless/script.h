// A script for the whole program with the built-in observatory, in virtual time.
#pragma once

#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "headless/program.h"
#include "script_lines.h"
#include "support/temp_folder.h"

namespace vantrel::headless::test {

class Script {
  public:
    using json = nlohmann::json;

    /// The simulator with PinPoint as it comes.
    Script() {
        setting("Main", "MyTelescopeID", "AxisSimulator.Telescope");
        setting("PolarAlign", "PlateSolveMethod", "0").setting("PolarAlign", "DeltaRA", "15");
        setting("Solve", "ScaleH", "3.6").setting("Solve", "ScaleV", "3.6");
    }

    Script& setting(const char* section, const char* key, const std::string& value) {
        settings_[section][key] = value;
        return *this;
    }
    /// The outside programs that exist; by default all.
    Script& installed(std::vector<std::string> classes) {
        options_.installed = std::move(classes);
        return *this;
    }
    Script& send(const json& command) {
        commands_.add(command.dump());
        return *this;
    }
    Script& type(const char* control, const char* text) {
        return send({{"do", "type"}, {"control", control}, {"text", text}});
    }
    Script& click(const char* control) { return send({{"do", "click"}, {"control", control}}); }
    Script& check(const char* control, int value) {
        return send({{"do", "check"}, {"control", control}, {"value", value}});
    }
    /// Replies can be found by their name.
    Script& read(const char* control, const char* name) {
        return send({{"id", name}, {"do", "read"}, {"control", control}});
    }
    Script& journal(const char* object, const char* name) {
        return send({{"id", name}, {"do", "journal"}, {"object", object}});
    }
    Script& put(const char* object, const char* member, const json& value) {
        return send({{"do", "automation"}, {"object", object}, {"put", member}, {"value", value}});
    }
    Script& advance(double seconds) { return send({{"do", "advance"}, {"seconds", seconds}}); }
    Script& fail(const char* object, const char* member, int number, const char* source,
                 const char* description, int after = 0, int times = -1) {
        return send({{"do", "fault"},
                     {"object", object},
                     {"member", member},
                     {"number", number},
                     {"source", source},
                     {"description", description},
                     {"after", after},
                     {"times", times}});
    }
    Script& giveBack(const char* object, const char* member, const json& value, int after = 0,
                     int times = -1) {
        return send({{"do", "fault"},
                     {"object", object},
                     {"member", member},
                     {"returns", value},
                     {"after", after},
                     {"times", times}});
    }
    Script& waitIdle() { return send({{"do", "wait"}, {"for", {{"idle", true}}}, {"seconds", 600}}); }
    Script& waitForNext() {
        return send({{"do", "wait"},
                     {"for", {{"control", "frmMain.cmdNext"}, {"property", "enabled"}, {"is", true}}},
                     {"seconds", 600}});
    }

    struct Result {
        std::vector<json> replies;
        std::vector<std::string> log;  // without times
        std::vector<std::string> popups;
        std::vector<double> popupSeconds;  // that each was shown for

        json reply(const std::string& name) const {
            for (const json& reply : replies)
                if (reply.contains("id") && reply["id"] == name) return reply;
            ADD_FAILURE() << "no reply " << name;
            return {};
        }
        /// The journal with this name as "put BinX 2", "call Expose 1.0 1 0".
        std::vector<std::string> uses(const std::string& name) const {
            std::vector<std::string> texts;
            const json found = reply(name);
            for (const json& use : found["journal"]) {
                std::string text = use["kind"].get<std::string>() + " " + use["member"].get<std::string>();
                for (const json& argument : use["args"]) text += " " + argument.dump();
                texts.push_back(text);
            }
            return texts;
        }
    };

    /// Runs the script to its end, with questions about log and pop-ups last.
    Result run() {
        send({{"do", "log"}, {"from", 0}}).send({{"do", "popups"}});
        const vantrel::test::TempFolder home;
        std::ofstream(home / "settings.json") << settings_;
        options_.virtualTime = true;
        options_.home = home.path();
        options_.settings = home / "settings.json";
        platform::VirtualTime time(*platform::parseInstant(kVirtualStart), std::chrono::hours{3});
        KeptReplies replies;
        EXPECT_TRUE(Program(options_, time, commands_, replies).run());

        Result result{replies.replies, {}, {}, {}};
        for (const json& reply : result.replies) EXPECT_TRUE(reply["ok"]) << reply;
        for (const json& line : result.replies[result.replies.size() - 2]["lines"])
            result.log.push_back(line.get<std::string>().substr(11));
        for (const json& popup : result.replies.back()["popups"]) {
            result.popups.push_back(popup["text"]);
            result.popupSeconds.push_back(popup["seconds"]);
        }
        return result;
    }

  private:
    json settings_;
    Options options_;
    ListedCommands commands_;
};

}  // namespace vantrel::headless::test

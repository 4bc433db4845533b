// Scripts for the whole program with the built-in instruments, in virtual time, and what comes of them.
#pragma once

#include <algorithm>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "headless/headless_program.h"
#include "script_lines.h"
#include "support/temp_folder.h"

namespace vantrel::headless::test {

using nlohmann::json;

using Lines = std::vector<std::string>;

/// What a script saw. Replies stand in the order of the commands.
struct ScriptResult {
    std::vector<json> replies;
    Lines log;                         // without times, from startLog() on
    Lines popups;                      // likewise
    std::map<std::string, json> read;  // the last reply about each control and setting, by its name

    json reply(const std::string& name) const {
        if (const auto found = read.find(name); found != read.end()) return found->second;
        ADD_FAILURE() << "no reply " << name;
        return {};
    }
    /// Of the journal with this name, as "put BinX 2", "call Expose 1.0 1 0".
    long times(const std::string& name, const std::string& wanted) const {
        long count = 0;
        const json found = reply(name);
        for (const json& use : found["journal"]) {
            std::string text = use["kind"].get<std::string>() + " " + use["member"].get<std::string>();
            for (const json& argument : use["args"]) text += " " + argument.dump();
            count += text == wanted;
        }
        return count;
    }
};

/// Commands one after the other; run() carries them out. By default the simulator is mount and camera and is
/// solved by PinPoint.
class Script {
  public:
    using Result = ScriptResult;

    Script() { settings_["PolarAlign"]["DeltaRA"] = "15"; }

    Script& setting(const char* section, const char* key, const std::string& value) {
        settings_[section][key] = value;
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
    Script& read(const std::string& control, const std::string& name) {
        return send({{"id", name}, {"do", "read"}, {"control", control}});
    }
    Script& journal(const char* object, const char* name) {
        return send({{"id", name}, {"do", "journal"}, {"object", object}});
    }
    Script& call(const char* object, const char* member, const json& argument) {
        return send({{"do", "automation"}, {"object", object}, {"call", member}, {"args", {argument}}});
    }
    Script& put(const char* object, const char* member, const json& value) {
        return send({{"do", "automation"}, {"object", object}, {"put", member}, {"value", value}});
    }
    Script& read(const std::string& control) {
        return send({{"id", control}, {"do", "read"}, {"control", control}});
    }
    /// The stored value, as "key".
    Script& readSetting(const char* section, const char* key) {
        return send({{"id", key}, {"do", "setting"}, {"section", section}, {"key", key}});
    }
    /// The result's log and pop-ups begin here.
    Script& startLog() {
        return send({{"id", "log"}, {"do", "log"}}).send({{"id", "popups"}, {"do", "popups"}});
    }
    /// From now on.
    Script& fail(const char* object, const char* member) {
        return send({{"do", "fault"},
                     {"object", object},
                     {"member", member},
                     {"number", 7},
                     {"source", "Src"},
                     {"description", "Broken"},
                     {"times", -1}});
    }
    Script& giveBack(const char* object, const char* member, const json& value) {
        return send(
            {{"do", "fault"}, {"object", object}, {"member", member}, {"returns", value}, {"times", -1}});
    }
    Script& advance(double seconds) { return send({{"do", "advance"}, {"seconds", seconds}}); }
    Script& waitIdle() { return send({{"do", "wait"}, {"for", {{"idle", true}}}, {"seconds", 600}}); }
    Script& waitForLog(const std::string& line) {
        return send({{"do", "wait"}, {"for", {{"log", line}}}, {"seconds", 600}});
    }
    Script& waitForNext() {
        return send({{"do", "wait"},
                     {"for", {{"control", "frmMain.cmdNext"}, {"property", "enabled"}, {"is", true}}},
                     {"seconds", 600}});
    }

    /// Runs the script to its end, with questions about log and pop-ups last.
    ScriptResult run() {
        send({{"do", "log"}, {"from", 0}}).send({{"do", "popups"}});
        const vantrel::test::TempFolder home;
        std::ofstream(home / "settings.json") << settings_;
        Options options;
        options.virtualTime = true;
        options.home = home.path();
        options.settings = home / "settings.json";
        platform::VirtualTime time(*platform::parseInstant(kVirtualStart), std::chrono::hours{3});
        KeptReplies replies;
        EXPECT_TRUE(HeadlessProgram(options, time, commands_, replies).run([] { return false; }));
        return resultOf(replies.replies);
    }

  private:
    static ScriptResult resultOf(const std::vector<json>& replies) {
        ScriptResult result;
        result.replies = replies;
        for (const json& reply : replies) {
            EXPECT_TRUE(reply["ok"]) << reply;
            if (reply.contains("id")) result.read[reply["id"]] = reply;
        }
        const auto last = replies.end();
        constexpr std::size_t kTime = 11;  // "HH:mm:ss" and three blanks
        const json& lines = (last - 2)->at("lines");
        const auto start = result.read.contains("log") ? result.read["log"]["next"].get<std::size_t>() : 0;
        for (std::size_t i = start; i < lines.size(); ++i)
            result.log.push_back(lines[i].get<std::string>().substr(kTime));
        const json& popups = (last - 1)->at("popups");
        for (std::size_t i = result.read.contains("popups") ? result.read["popups"]["popups"].size() : 0;
             i < popups.size(); ++i)
            result.popups.push_back(popups[i]["text"]);
        return result;
    }

    json settings_ = {{"Main", {{"MyTelescopeID", "AxisSimulator.Telescope"}}},
                      {"PolarAlign", {{"PlateSolveMethod", "0"}}},
                      {"Solve", {{"ScaleH", "3.6"}, {"ScaleV", "3.6"}}}};
    ListedCommands commands_;
};

/// What makes a situation.
using Prepare = std::function<void(Script&)>;

inline Prepare failing(const char* object, const char* member) {
    return [=](Script& s) { s.fail(object, member); };
}
inline Prepare typing(const char* control, const char* text) {
    return [=](Script& s) { s.type(control, text); };
}

}  // namespace vantrel::headless::test

// Holds docs/protocol.md against vantrel-headless: what the document tells of exists, what exists it tells
// of, and its worked example runs as it is printed there.
#include <algorithm>
#include <cmath>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "headless/headless_program.h"
#include "headless/options.h"
#include "headless/script_lines.h"
#include "headless/small_program.h"
#include "observatory/observatory.h"
#include "platform/text.h"
#include "support/temp_folder.h"
#include "support/time_zone.h"

namespace vantrel::documents::test {
namespace {

using namespace headless;
using headless::test::Dialogue;
using headless::test::KeptReplies;
using headless::test::ListedCommands;
using headless::test::SmallWorld;
using nlohmann::json;
using Names = std::set<std::string>;

const std::filesystem::path sourceFolder = VANTREL_SOURCE_DIR;

using Cells = std::vector<std::string>;

/// The texts between ` signs, in their order.
std::vector<std::string> codesOf(const std::string& text) {
    static const std::regex kCode("`([^`]+)`");
    return {std::sregex_token_iterator(text.begin(), text.end(), kCode, 1), {}};
}

/// What stands below a heading, up to the next one that is no deeper.
class Section {
  public:
    explicit Section(const std::string& heading) {
        std::istringstream file(vantrel::test::contentsOf(sourceFolder / "docs/protocol.md"));
        std::size_t level = 0;
        bool inBlock = false;
        for (std::string line; std::getline(file, line);) {
            const bool fence = line.starts_with("```");
            if (fence) inBlock = !inBlock;
            const std::size_t here = inBlock || line[0] != '#' ? 0 : line.find_first_not_of('#');
            if (level > 0 && here > 0 && here <= level) break;
            if (level > 0 && fence && inBlock) blocks.emplace_back();
            if (level > 0 && !fence) (inBlock ? blocks.back() : text) += line + "\n";
            if (here > 0 && line.substr(here + 1) == heading) level = here;
        }
        EXPECT_GT(level, 0U) << "docs/protocol.md has no heading \"" << heading << "\"";
    }

    /// Of every table, without the heads.
    std::vector<Cells> rows() const {
        std::vector<Cells> found;
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            if (!line.starts_with('|')) continue;
            if (line.find_first_not_of("|-: ") == std::string::npos) {
                found.pop_back();  // it was the head
                continue;
            }
            found.emplace_back();
            std::istringstream cells(line.substr(1));
            for (std::string cell; std::getline(cells, cell, '|');)
                found.back().push_back(platform::trimmed(cell));
        }
        return found;
    }
    Names codes() const {
        const auto all = codesOf(text);
        return {all.begin(), all.end()};
    }

    std::string text;                 // without the blocks
    std::vector<std::string> blocks;  // between ``` lines
};

Names namesIn(const std::string& cell) {
    const auto codes = codesOf(cell);
    return {codes.begin(), codes.end()};
}

std::string joined(const Names& names) {
    std::string text;
    for (const std::string& name : names) text += " `" + name + "`";
    return text.empty() ? " nothing" : text;
}

/// Both sets are the same; says what is to be added to the document, or taken out of it.
void expectTold(const Names& told, const Names& real, const std::string& place) {
    Names missing, stale;
    std::set_difference(real.begin(), real.end(), told.begin(), told.end(),
                        std::inserter(missing, missing.end()));
    std::set_difference(told.begin(), told.end(), real.begin(), real.end(),
                        std::inserter(stale, stale.end()));
    EXPECT_TRUE(missing.empty()) << "docs/protocol.md, " << place << ": add" << joined(missing);
    EXPECT_TRUE(stale.empty()) << "docs/protocol.md, " << place << ": there is no" << joined(stale);
}

/// The row of each command.
std::map<std::string, Cells> commandRows() {
    std::map<std::string, Cells> rows;
    for (const Cells& row : Section("The commands").rows()) {
        const auto names = codesOf(row[0]);
        EXPECT_EQ(names.size(), 1U) << row[0];
        EXPECT_TRUE(rows.emplace(names.at(0), row).second) << row[0] << " stands there twice";
    }
    return rows;
}

std::vector<json> answersTo(const std::vector<std::string>& commands, Options options) {
    const vantrel::test::TempFolder home;
    options.home = home.path();
    platform::VirtualTime time(*platform::parseInstant(kVirtualStart), std::chrono::hours{3});
    ListedCommands lines;
    for (const std::string& command : commands) lines.add(command);
    KeptReplies kept;
    EXPECT_TRUE(HeadlessProgram(options, time, lines, kept).run([] { return false; }));
    return kept.replies;
}

Options virtualTime() {
    Options options;
    options.virtualTime = true;
    return options;
}

void addMembers(const json& value, Names& members) {
    if (value.is_object())
        for (const auto& [name, inner] : value.items()) members.insert(name);
    if (value.is_structured())
        for (const json& inner : value) addMembers(inner, members);
}

/// The worked example: the command line's options, what is sent and what comes back.
struct Example {
    Options options;
    Dialogue dialogue;
};

Example workedExample() {
    const std::string commandLine = Section("Starting it").blocks.at(0);
    std::istringstream words(commandLine);
    std::vector<std::string> arguments;
    for (std::string word; words >> word;) arguments.push_back(word);
    EXPECT_EQ(arguments.at(0), "vantrel-headless");
    arguments.erase(arguments.begin());
    return {*parseOptions(arguments), Dialogue(Section("A worked example").blocks.at(0))};
}

// What the worked example leaves out, so that every answer is seen with every member that it can have.
const std::vector<std::string>& tour() {
    static const std::vector<std::string> commands = {
        R"({"do":"fault","object":"AxisSimulator.Telescope","member":"SiderealTime","number":7,"times":1})",
        R"({"do":"setting","section":"Main","key":"MyTelescopeID","value":"AxisSimulator.Telescope"})",
        R"({"do":"setting","section":"PolarAlign","key":"PlateSolveMethod","value":0})",
        R"({"do":"answer","dialog":"folder","with":"C:\\Nights"})",
        R"({"do":"wait","for":{"idle":true}})",
        R"({"do":"click","control":"frmMain.cmdSetLogPath"})",
        R"({"do":"windows"})",
        R"({"do":"log","from":2})",
        R"({"do":"popups"})",
        R"({"do":"read","control":"frmMain.txtDeltaRA"})",
        R"({"do":"read","control":"frmMain.cmbCrossHairWidth"})",
        R"({"do":"read","control":"frmMain.chkCrossHairEnable"})",
        R"({"do":"key","control":"frmMain.txtDeltaRA","code":49})",
        R"({"do":"leave","control":"frmMain.txtDeltaRA"})",
        R"({"do":"choose","control":"frmMain.cmbCrossHairWidth","item":"3"})",
        R"({"do":"check","control":"frmMain.chkCrossHairEnable","value":1})",
        R"({"do":"click","control":"frmMain.cmdExpose"})",
        R"({"do":"advance","seconds":60})",
        R"({"do":"image","save":"C:\\Nights\\one.fit"})",
        R"({"do":"journal","object":"*"})",
        R"({"do":"automation","object":"MaxIm.Application","get":"CurrentDocument"})",
        R"({"do":"automation","object":"AxisSimulator.Telescope","get":"ImageArray"})",
        R"({"do":"automation","object":"AxisSimulator.Telescope","get":"Nothing"})",
        R"({"do":"click","control":"frmMain.mnuAbout"})",
        R"({"do":"click","control":"frmAbout.cmdSysInfo"})",
        R"({"do":"boxes"})",
        R"({"do":"close","window":"frmAbout"})",
        R"({"do":"wait","for":{"window":"frmPolarPlot"},"seconds":1})",
        R"({"do":"automation","object":"AxisSimulator.Telescope","put":"PolarAzimuthError","value":0.2})",
        R"({"do":"automation","object":"AxisSimulator.Telescope","put":"PolarElevationError","value":0.3})",
        R"({"do":"click","control":"frmMain.cmdPolarPlot"})",
        R"({"do":"check","control":"frmPolarPlot.chkHistory","value":1})",
        R"({"do":"type","control":"frmMain.txtDeltaRA","text":"9"})",
        R"({"do":"click","control":"frmMain.cmdRun"})",
        R"({"do":"wait","for":{"control":"frmMain.cmdNext","property":"enabled","is":true}})",
        R"({"do":"click","control":"frmMain.cmdSkip"})",
        R"({"do":"wait","for":{"idle":true}})",
        R"({"do":"click","control":"frmMain.cmdRun"})",
        R"({"do":"wait","for":{"control":"frmMain.cmdNext","property":"enabled","is":true}})",
        R"({"do":"click","control":"frmMain.cmdSkip"})",
        R"({"do":"wait","for":{"idle":true}})",
        R"({"do":"drawing","control":"frmPolarPlot.picPolarPlot"})",
        R"({"do":"dance"})",
        R"({"do":"quit"})",
    };
    return commands;
}

TEST(Protocol, TellsOfEveryCommandAndOfItsMembers) {
    SmallWorld w;
    const OperatorCommands commands(
        {w.program, w.loop, w.screen, w.settings, w.automation, w.classes, w.folders, w.dialogs, w.images});
    const auto rows = commandRows();
    Names told, real;
    for (const auto& [name, row] : rows) told.insert(name);
    for (const auto& command : commands.all()) {
        real.insert(command.name);
        if (const auto row = rows.find(command.name); row != rows.end())
            expectTold(namesIn(row->second[1]), {command.fields.begin(), command.fields.end()},
                       std::string("members of `") + command.name + "`");
    }
    expectTold(told, real, "The commands");
}

TEST(Protocol, TellsOfEveryMemberOfAnAnswer) {
    std::map<std::string, Names> good;  // members of the answers to each command
    Names bad = {};
    const auto look = [&](const std::vector<std::string>& commands, const Options& options) {
        const auto answers = answersTo(commands, options);
        ASSERT_EQ(answers.size(), commands.size());
        for (std::size_t i = 0; i < answers.size(); ++i)
            addMembers(answers[i], answers[i]["ok"] == true ? good[json::parse(commands[i])["do"]] : bad);
    };
    const Example example = workedExample();
    look(tour(), virtualTime());
    look(example.dialogue.commands, example.options);
    for (const auto& [name, row] : commandRows()) {
        ASSERT_TRUE(good.contains(name)) << "The tour of this test should come by " << name;
        for (const char* common : {"ok", "id"}) good[name].erase(common);
        expectTold(namesIn(row[3]), good[name], "answer of `" + name + "`");
    }
    bad.erase("ok");
    Names failures;
    for (const Cells& row : Section("Commands and answers").rows()) failures.merge(namesIn(row[0]));
    expectTold(failures, bad, "Commands and answers");

    Names properties;
    for (const Cells& row : Section("Properties of a control").rows()) properties.merge(namesIn(row[0]));
    expectTold(properties, good["read"], "Properties of a control");

    Names shapes = {"drawing", "scale", "left", "top", "right", "bottom", "kind"};
    for (const Cells& row : Section("Shapes of a drawing").rows()) shapes.merge(namesIn(row[1]));
    expectTold(shapes, good["drawing"], "Shapes of a drawing");
}

TEST(Protocol, TellsOfEveryOption) {
    static const std::regex kOption("--[a-z-]+|-h\\b");
    const auto optionsOf = [](const std::string& text) {
        return Names(std::sregex_token_iterator(text.begin(), text.end(), kOption), {});
    };
    Names told;
    for (const Cells& row : Section("Starting it").rows()) {
        const auto names = optionsOf(row[0]);
        told.insert(names.begin(), names.end());
    }
    testing::internal::CaptureStdout();
    EXPECT_FALSE(parseOptions({"--help"}));
    expectTold(told, optionsOf(testing::internal::GetCapturedStdout()), "Starting it");
}

TEST(Protocol, TellsOfEveryCondition) {
    static const std::regex kQuoted("\"([a-z]+)\"");
    const auto quoted = [](const std::string& text) {
        return Names(std::sregex_token_iterator(text.begin(), text.end(), kQuoted, 1), {});
    };
    std::string conditions;
    for (const Cells& row : Section("What wait waits for").rows()) conditions += row[0];
    Names told = quoted(conditions);
    told.insert("for");
    const auto answers = answersTo({R"({"do":"wait","for":{}})"}, virtualTime());
    expectTold(told, quoted(answers.at(0)["error"]), "What wait waits for");
}

// Numbers that aren't whole may differ in their last digits between compilers.
void expectSame(const json& real, const json& printed, const std::string& place) {
    if (printed.is_number_float() && real.is_number()) {
        EXPECT_NEAR(real.get<double>(), printed.get<double>(), 1e-9) << place;
    } else if (printed.is_structured() && real.type() == printed.type()) {
        ASSERT_EQ(real.size(), printed.size()) << place << "\n" << real << "\n" << printed;
        for (auto item = printed.begin(); item != printed.end(); ++item) {
            const auto key = printed.is_object() ? item.key() : std::to_string(item - printed.begin());
            const auto found = printed.is_object() ? real.find(key) : real.begin() + (item - printed.begin());
            ASSERT_NE(found, real.end()) << place << " has no " << key;
            expectSame(*found, *item, place + " / " + key);
        }
    } else {
        EXPECT_EQ(real, printed) << place;
    }
}

TEST(Protocol, TheWorkedExampleRunsAsPrinted) {
    const vantrel::test::TimeZone utc("UTC");
    const auto [options, dialogue] = workedExample();
    const auto answers = answersTo(dialogue.commands, options);
    ASSERT_EQ(dialogue.commands.size(), dialogue.replies.size());
    ASSERT_EQ(answers.size(), dialogue.replies.size());
    for (std::size_t i = 0; i < answers.size(); ++i)
        expectSame(answers[i], json::parse(dialogue.replies[i]),
                   "docs/protocol.md, A worked example, answer to " + dialogue.commands[i] + " is " +
                       answers[i].dump());
}

/// The members that the sources of the mounts define.
Names membersDefinedIn(const std::string& file) {
    static const std::regex kDefinition(
        R"re((?:property|setting|method|reading|text|addAdjuster|addPixelCount)\(\s*"(\w+)"|"(Can\w+)")re");
    const std::string source = vantrel::test::contentsOf(sourceFolder / file);
    Names found;
    for (std::sregex_iterator match(source.begin(), source.end(), kDefinition), end; match != end; ++match)
        found.insert((*match)[1].matched ? (*match)[1] : (*match)[2]);
    return found;
}

TEST(Protocol, TellsOfEveryMemberOfTheMounts) {
    Names told = Section("Both mounts").codes();
    for (const char* progId : {"AxisSimulator.Telescope", "ScopeSim.Telescope"}) told.erase(progId);
    expectTold(told, membersDefinedIn("src/observatory/telescopes/telescope_driver.cpp"), "Both mounts");

    Names simulators;
    for (const Cells& row : Section("The simulator of a polar axis").rows())
        simulators.merge(namesIn(row[0]));
    expectTold(simulators, membersDefinedIn("src/observatory/telescopes/axis_simulator.cpp"),
               "The simulator of a polar axis");
}

struct Mounts {
    platform::VirtualTime time{*platform::parseInstant(kVirtualStart)};
    platform::QueuedEventLoop loop{time};
    vantrel::test::TempFolder drives;
    platform::FolderMap folders{drives.path()};
    observatory::Observatory observatory{loop, folders, 1, {}};
    platform::ClassRegistry classes;

    Mounts() { observatory.install(classes); }
    platform::ObjectRef connected(const char* progId) {
        auto mount = classes.create(progId);
        mount->put("Connected", true);
        return mount;
    }
};

/// The numbers of a range such as "degrees, -90 to 90".
std::optional<std::pair<double, double>> rangeIn(const std::string& cell) {
    static const std::regex kRange("(-?[0-9.]+) to (-?[0-9.]+)");
    std::smatch match;
    if (!std::regex_search(cell, match, kRange)) return std::nullopt;
    return std::pair{std::stod(match[1]), std::stod(match[2])};
}

bool takes(platform::AutomationObject& mount, const std::string& member, const platform::Value& value) {
    try {
        mount.put(member, value);
        return true;
    } catch (const platform::OperationError&) {
        return false;
    }
}

TEST(Protocol, TheMountsMembersAreUsedAsToldWithinTheirRanges) {
    Mounts mounts;
    const std::pair<const char*, const char*> tables[] = {
        {"Both mounts", "AxisSimulator.Telescope"},
        {"Both mounts", "ScopeSim.Telescope"},
        {"The simulator of a polar axis", "AxisSimulator.Telescope"},
    };
    int ranges = 0;
    for (const auto& [heading, progId] : tables)
        for (const Cells& row : Section(heading).rows()) {
            const std::string member = codesOf(row[0]).at(0);
            SCOPED_TRACE(std::string(progId) + " " + member);
            const auto mount = mounts.connected(progId);
            if (row[1] == "method") {
                EXPECT_THROW(mount->get(member), platform::AutomationError);
                continue;
            }
            if (member == "ImageArray") mount->call("Expose");
            const platform::Value before = mount->get(member);
            EXPECT_EQ(takes(*mount, member, before), row[1] == "set") << row[1];
            if (const auto range = rangeIn(row[2])) {
                ++ranges;
                const auto [low, high] = *range;
                EXPECT_TRUE(takes(*mount, member, low)) << low;
                EXPECT_TRUE(takes(*mount, member, high)) << high;
                EXPECT_FALSE(takes(*mount, member, low - 0.001 - std::abs(low) / 100)) << "below " << low;
                EXPECT_FALSE(takes(*mount, member, high + 0.001 + std::abs(high) / 100)) << "above " << high;
                EXPECT_EQ(mount->get(member).toDouble(), high) << "a value out of range leaves the old one";
                mount->put(member, before);
            } else if (row[1] == "set") {
                EXPECT_EQ(row[2], "true or false");
                EXPECT_TRUE(std::holds_alternative<bool>(before.held()));
            }
        }
    EXPECT_GT(ranges, 15);
}

}  // namespace
}  // namespace vantrel::documents::test

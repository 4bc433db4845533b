#include "headless/options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/command_line.h"
#include "script.h"

namespace vantrel::headless {
namespace {

using testing::HasSubstr;
using testing::ThrowsMessage;

TEST(Options, AreTakenWithTheirValuesBehindOrBeside) {
    const Options options =
        *parseOptions({"--virtual-time", "--start=2026-03-01T04:05:06Z", "--home", "/tmp/x", "--seed", "77",
                       "--installed", "ScopeSim.Telescope, MaxIm.CCDCamera,", "--settings", "s.json"});
    EXPECT_TRUE(options.virtualTime);
    EXPECT_EQ(options.start, platform::parseInstant("2026-03-01T04:05:06Z"));
    EXPECT_EQ(options.home, "/tmp/x");
    EXPECT_EQ(options.seed, 77U);
    EXPECT_EQ(options.installed, (std::vector<std::string>{"ScopeSim.Telescope", "MaxIm.CCDCamera"}));
    EXPECT_EQ(options.settings, "s.json");
    EXPECT_EQ(parseOptions({"--installed", ""})->installed, std::vector<std::string>{});
    EXPECT_EQ(parseOptions({})->installed, std::nullopt);
}

TEST(Options, RefusesWhatItDoesNotUnderstand) {
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{"--fast"}, "The following argument was not expected: --fast"},
        {{"--home"}, "--home: 1 required DIR missing"},
        {{"script.json"}, "The following argument was not expected: script.json"},
        {{"--seed", "-1"}, "--seed needs a whole number"},
        {{"--seed", "1x"}, "--seed needs a whole number"},
        {{"--seed", "99999999999999999999"}, "--seed needs a whole number"},
        {{"--start", "tonight"}, "--start needs an instant such as 2026-11-24T20:00:00Z"},
    };
    for (const auto& c : cases)
        EXPECT_THAT([&] { parseOptions(c.first); }, ThrowsMessage<platform::UsageError>(c.second));
}

TEST(Options, SettingsThatCannotBeUsedAreToldBeforeTheStart) {
    const vantrel::test::TempFolder home;
    ASSERT_EQ(::mkfifo((home / "pipe").c_str(), 0600), 0);
    home.write("list", "[]");
    home.write("cut", R"({"Main": )");
    home.write("flat", R"({"Main": 7})");
    home.write("large", "{\"Main\": {\"Key\": \"" + std::string(5'000'000, 'x') + "\"}}");
    const std::pair<std::filesystem::path, const char*> cases[] = {
        {home / "list", "list holds no JSON object"},
        {home / "cut", "cut holds no JSON object"},
        {home / "flat", "flat: \"Main\" is not a section with keys"},
        {home / "missing", "Can't read "},
        {"/dev/zero", "Can't read /dev/zero, which is no regular file"},
        {home / "pipe", "pipe, which is no regular file"},
        {home.path(), "Is a directory"},
        {home / "large", "large: File too large"},
    };
    for (const auto& [file, text] : cases) {
        SCOPED_TRACE(text);
        Options options;
        options.virtualTime = true;
        options.home = home.path();
        options.settings = file;
        platform::VirtualTime time(*platform::parseInstant(kVirtualStart), std::chrono::hours{3});
        test::ListedCommands commands;
        test::KeptReplies replies;
        EXPECT_THAT([&] { HeadlessProgram(options, time, commands, replies); },
                    ThrowsMessage<std::runtime_error>(HasSubstr(text)));
    }
}

}  // namespace
}  // namespace vantrel::headless

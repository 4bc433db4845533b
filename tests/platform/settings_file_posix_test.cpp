#include <cerrno>
#include <csignal>
#include <system_error>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "platform/settings_file.h"
#include "support/temp_folder.h"

namespace vantrel::platform {
namespace {

using test::contentsOf;
using test::TempFolder;

TEST(SettingsFile, KeepsEveryTextAcrossRuns) {
    const TempFolder folder;
    const std::string awkward[] = {"",           "plain",    "tab\tand\nline\r\n",          "back\\slash\\t",
                                   "\xC2\xB0 '", " blanks ", std::string("NUL\0inside", 10)};
    for (const std::string& value : awkward) {
        {
            SettingsFile file(folder / "below/settings");
            file.write("Main", "Key\\with\t", value);
            file.write("", "root", "value");
        }
        const SettingsFile file(folder / "below/settings");
        EXPECT_EQ(file.read("main", "key\\with\t"), value);
        EXPECT_EQ(file.read("", "Root"), "value");
        EXPECT_TRUE(file.hasSection("MAIN"));
        EXPECT_FALSE(file.hasSection("Mai"));
    }
}

TEST(SettingsFile, RemovesAndReplaces) {
    const TempFolder folder;
    SettingsFile file(folder / "settings");
    EXPECT_TRUE(file.isEmpty());
    file.write("Solve", "A", "1");
    file.write("solve", "a", "2");
    EXPECT_EQ(SettingsFile(folder / "settings").read("Solve", "A"), "2");
    file.remove("SOLVE", "A");
    EXPECT_EQ(SettingsFile(folder / "settings").read("Solve", "A"), std::nullopt);
    EXPECT_FALSE(file.hasSection("Solve"));
}

TEST(SettingsFile, SavesWhatItCanOfADamagedFileAndKeepsTheRest) {
    const TempFolder folder;
    const std::string damaged = "Main\tGood\t1\nnonsense\nMain\tBad\\q\t2\nMain\tCut\t3";
    std::ofstream(folder / "settings") << damaged;
    SettingsFile file(folder / "settings");
    EXPECT_EQ(file.read("Main", "Good"), "1");
    EXPECT_EQ(file.read("Main", "Cut"), "3");
    file.write("Main", "New", "4");
    EXPECT_EQ(contentsOf(folder / "settings.damaged"), damaged);
    EXPECT_EQ(contentsOf(folder / "settings"), "Main\tCut\t3\nMain\tGood\t1\nMain\tNew\t4\n");
}

TEST(SettingsFile, AFailedWriteLeavesOldFileAndOldValue) {
    const TempFolder folder;
    SettingsFile file(folder / "settings");
    file.write("Main", "Key", "old");
    std::filesystem::create_directory(folder / "settings.new");  // where the fresh file would be written
    EXPECT_THROW(file.write("Main", "Key", "new"), std::runtime_error);
    EXPECT_EQ(file.read("Main", "Key"), "old");
    EXPECT_EQ(SettingsFile(folder / "settings").read("Main", "Key"), "old");
}

TEST(SettingsFile, OpeningTakesAwayWhatAKilledRunLeftHalfWritten) {
    const TempFolder folder;
    SettingsFile(folder / "settings").write("Main", "Key", "kept");
    std::ofstream(folder / "settings.new") << "Main\tKe";
    SettingsFile file(folder / "settings");
    EXPECT_EQ(file.read("Main", "Key"), "kept");
    EXPECT_TRUE(std::filesystem::exists(folder / "settings.new")) << "perhaps of an instance that still runs";
    file.open();
    EXPECT_FALSE(std::filesystem::exists(folder / "settings.new"));
}

TEST(SettingsFile, NothingStaysOfAFileThatCantBeWrittenWhole) {
    const TempFolder folder;
    SettingsFile file(folder / "settings");
    file.write("Main", "Key", "old");
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{100, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    EXPECT_THROW(file.write("Main", "Key", std::string(1000, 'x')), std::system_error);
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, SIG_DFL);
    EXPECT_FALSE(std::filesystem::exists(folder / "settings.new"));
    EXPECT_EQ(SettingsFile(folder / "settings").read("Main", "Key"), "old");
}

TEST(SettingsFile, ReportsAStoreThatCantBeOpened) {
    const TempFolder folder;
    std::ofstream(folder / "file") << "not a folder";
    EXPECT_THROW(SettingsFile(folder / "file/settings").open(), std::system_error);
}

TEST(SettingsFile, RefusesWhatNeverEndsOrIsNoFile) {
    const TempFolder folder;
    std::filesystem::create_directory(folder / "folder");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    std::filesystem::create_symlink("/dev/zero", folder / "device");
    folder.write("large", "Main\tKey\t" + std::string(5'000'000, 'x') + "\n");
    const std::pair<const char*, int> cases[] = {
        {"folder", EISDIR}, {"pipe", EINVAL}, {"device", EINVAL}, {"large", EFBIG}};
    for (const auto& [name, code] : cases) {
        SCOPED_TRACE(name);
        SettingsFile file(folder / name);
        try {
            file.open();
            ADD_FAILURE() << "opened";
        } catch (const std::system_error& error) {
            EXPECT_EQ(error.code().value(), code);
            EXPECT_NE(std::string(error.what()).find(folder / name), std::string::npos) << error.what();
        }
        EXPECT_THROW(file.write("Main", "Key", "1"), std::system_error);
    }
    EXPECT_GT(std::filesystem::file_size(folder / "large"), 5'000'000U) << "is left as it was";
}

TEST(SettingsFile, WaitsForNobodyWhereItWrites) {
    const TempFolder folder;
    ASSERT_EQ(::mkfifo((folder / "settings.new").c_str(), 0600), 0);
    EXPECT_THROW(SettingsFile(folder / "settings").write("Main", "Key", "1"), std::system_error);
}

}  // namespace
}  // namespace vantrel::platform

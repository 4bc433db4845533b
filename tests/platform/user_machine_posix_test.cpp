#include <cerrno>
#include <csignal>
#include <fstream>
#include <map>
#include <system_error>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/utsname.h>

#include "platform/instance_guard.h"
#include "platform/settings_file.h"
#include "platform/system_name.h"
#include "platform/termination.h"
#include "platform/user_machine.h"
#include "support/temp_folder.h"

namespace vantrel::platform {
namespace {

Environment environmentOf(std::map<std::string, std::string> variables) {
    return [variables = std::move(variables)](const std::string& name) -> std::optional<std::string> {
        const auto found = variables.find(name);
        if (found == variables.end()) return std::nullopt;
        return found->second;
    };
}

TEST(DesktopPaths, FollowTheEnvironmentOrTheUsualPlaces) {
    const UserPaths usual = desktopPaths(environmentOf({{"HOME", "/home/ann"}, {"USER", "ann"}}));
    EXPECT_EQ(usual.settings, "/home/ann/.config/vantrel/settings");
    EXPECT_EQ(usual.drives, "/home/ann/.local/share/vantrel/drives");
    EXPECT_EQ(usual.documents, "/home/ann/Documents");
    EXPECT_EQ(usual.cache, "/home/ann/.cache/vantrel");
    EXPECT_EQ(usual.data, "/home/ann/.local/share/vantrel");

    const UserPaths named = desktopPaths(environmentOf({{"HOME", "/home/ann"},
                                                        {"XDG_CONFIG_HOME", "/config"},
                                                        {"XDG_DATA_HOME", "relative/is/ignored"},
                                                        {"XDG_RUNTIME_DIR", "/run/user/1"}}));
    EXPECT_EQ(named.settings, "/config/vantrel/settings");
    EXPECT_EQ(named.drives, "/home/ann/.local/share/vantrel/drives");
    EXPECT_EQ(named.lock, "/run/user/1/vantrel.lock");
    EXPECT_EQ(named.userName, "ann");

    EXPECT_THROW(desktopPaths(environmentOf({})), std::runtime_error);
}

TEST(DesktopPaths, FindTheDocumentsOfTheDesktop) {
    const struct {
        const char* why;
        const char* line;
        const char* documents;
    } rows[] = {
        {"below the home", "XDG_DOCUMENTS_DIR=\"$HOME/Dokumente\"", "/home/ann/Dokumente"},
        {"elsewhere", "XDG_DOCUMENTS_DIR=\"/data/docs\"", "/data/docs"},
        {"commented out", "# XDG_DOCUMENTS_DIR=\"/data/docs\"", "/home/ann/Documents"},
        {"no quotes", "XDG_DOCUMENTS_DIR=/data", "/home/ann/Documents"},
        {"cut short", "XDG_DOCUMENTS_DIR=\"", "/home/ann/Documents"},
        {"neither absolute nor below the home", "XDG_DOCUMENTS_DIR=\"$HOMER/x\"", "/home/ann/Documents"},
    };
    for (const auto& row : rows) {
        const test::TempFolder config;
        std::ofstream(config / "user-dirs.dirs") << "XDG_MUSIC_DIR=\"$HOME/Music\"\n" << row.line << "\n";
        const auto paths =
            desktopPaths(environmentOf({{"HOME", "/home/ann"}, {"XDG_CONFIG_HOME", config.path().string()}}));
        EXPECT_EQ(paths.documents, row.documents) << row.why;
    }
    const test::TempFolder config;
    ASSERT_EQ(::mkfifo((config / "user-dirs.dirs").c_str(), 0600), 0);
    const auto paths =
        desktopPaths(environmentOf({{"HOME", "/home/ann"}, {"XDG_CONFIG_HOME", config.path().string()}}));
    EXPECT_EQ(paths.documents, "/home/ann/Documents") << "a pipe, for which nobody waits";
}

TEST(UserMachine, KeepsEverythingBelowTheGivenFolder) {
    const test::TempFolder home;
    UserMachine machine(pathsBelow(home.path()));
    EXPECT_TRUE(std::filesystem::is_empty(home.path())) << "nothing is created before it is needed";
    machine.settings.write("Main", "Key", "value");
    EXPECT_TRUE(std::filesystem::exists(home / "settings"));
    EXPECT_EQ(machine.folders.real("D:\\Images"), home / "drives" / "d" / "Images");
    for (const std::string documents : {"\\My Documents", "\\Documents"})
        EXPECT_EQ(machine.folders.real(machine.userProfile + documents + "\\Vantrel"),
                  home / "Documents" / "Vantrel");
}

TEST(LockFileGuard, LetsOneInstanceRunAndTellsItOnceThatItsWindowIsWanted) {
    const test::TempFolder folder;
    const auto file = folder / "below/vantrel.lock";
    LockFileGuard second(file);
    {
        LockFileGuard first(file);
        second.activateOther();
        EXPECT_TRUE(first.acquire());
        EXPECT_FALSE(first.activationRequested()) << "asked before it ran";
        EXPECT_FALSE(second.acquire());
        second.activateOther();
        EXPECT_TRUE(first.activationRequested());
        EXPECT_FALSE(first.activationRequested());
    }
    EXPECT_TRUE(second.acquire()) << "the first one is gone";
    EXPECT_TRUE(LockFileGuard("/proc/no/such/folder/lock").acquire()) << "what can't be locked keeps nobody";
}

// ---- system name

TEST(SystemName, IsTheDistributionsElseTheKernels) {
    utsname kernel{};
    ASSERT_EQ(::uname(&kernel), 0);
    const std::string otherwise = std::string(kernel.sysname) + " " + kernel.release;
    const struct {
        const char* why;
        const char* file;
        const char* text;
        std::string name;
    } rows[] = {
        {"in quotes", "etc/os-release", "NAME=Starry\nPRETTY_NAME=\"Starry Linux 3 (night)\"\nID=starry\n",
         "Starry Linux 3 (night)"},
        {"in the other quotes", "etc/os-release", "PRETTY_NAME='Starry 3'\n", "Starry 3"},
        {"with marks", "etc/os-release", "PRETTY_NAME=\"The \\\"Starry\\\" one\"\n", "The \"Starry\" one"},
        {"only the vendor's file", "usr/lib/os-release", "PRETTY_NAME=Starry\n", "Starry"},
        {"without the line", "etc/os-release", "NAME=Starry\n", otherwise},
        {"no file", "etc/other", "", otherwise},
    };
    for (const auto& row : rows) {
        const test::TempFolder root;
        std::filesystem::create_directories((root / row.file).parent_path());
        std::ofstream(root / row.file) << row.text;
        EXPECT_EQ(systemName(root.path()), row.name) << row.why;
    }
}

// ---- termination

bool isUsual(int signal) {
    struct sigaction now {};
    ::sigaction(signal, nullptr, &now);
    return now.sa_handler == SIG_DFL;
}

TEST(TerminationWatch, HearsOfEverySignalAndLeavesOnlyASecondInterruptToTheSystem) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        const TerminationWatch watch;
        EXPECT_FALSE(watch.requested());
        std::raise(signal);
        EXPECT_TRUE(watch.requested()) << signal;
        for (const int more : {SIGTERM, SIGHUP, SIGTERM}) std::raise(more);  // would end this test
        EXPECT_TRUE(isUsual(SIGINT)) << signal;
    }
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) EXPECT_TRUE(isUsual(signal)) << signal;
}

// ---- settings file

using test::contentsOf;
using test::TempFolder;

TEST(SettingsFile, KeepsEveryTextAcrossRuns) {
    const TempFolder folder;
    const std::string awkward[] = {"",           "plain",    "tab\tand\nline\r\n",          "back\\slash\\t",
                                   "\xC2\xB0 '", " blanks ", std::string("NUL\0inside", 10)};
    for (const std::string& value : awkward) {
        {
            SettingsFile file(folder / "below/settings");
            file.write("main", "key\\with\t", "before");
            file.write("Main", "Key\\with\t", value);
            file.write("", "root", "value");
        }
        SettingsFile file(folder / "below/settings");
        EXPECT_FALSE(file.isEmpty());
        EXPECT_EQ(file.read("main", "key\\with\t"), value);
        EXPECT_EQ(file.read("", "Root"), "value");
        EXPECT_TRUE(file.hasSection("MAIN"));
        EXPECT_FALSE(file.hasSection("Mai"));
        file.remove("MAIN", "KEY\\with\t");
        EXPECT_FALSE(file.hasSection("Main"));
        EXPECT_EQ(SettingsFile(folder / "below/settings").read("Main", "Key\\with\t"), std::nullopt);
    }
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
    EXPECT_EQ(file.read("Main", "Key"), "old");
    EXPECT_EQ(SettingsFile(folder / "settings").read("Main", "Key"), "old");
}

TEST(SettingsFile, RefusesWhatNeverEndsOrIsNoFile) {
    const TempFolder folder;
    std::filesystem::create_directory(folder / "folder");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    std::filesystem::create_symlink("/dev/zero", folder / "device");
    folder.write("file", "not a folder");
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
    EXPECT_THROW(SettingsFile(folder / "file/settings").open(), std::system_error);
    EXPECT_GT(std::filesystem::file_size(folder / "large"), 5'000'000U) << "is left as it was";
}

TEST(SettingsFile, WaitsForNobodyWhereItWrites) {
    const TempFolder folder;
    ASSERT_EQ(::mkfifo((folder / "settings.new").c_str(), 0600), 0);
    EXPECT_THROW(SettingsFile(folder / "settings").write("Main", "Key", "1"), std::system_error);
}

}  // namespace
}  // namespace vantrel::platform

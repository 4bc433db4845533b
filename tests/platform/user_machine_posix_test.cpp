#include <csignal>
#include <fstream>
#include <map>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/utsname.h>

#include "platform/instance_guard.h"
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
}

TEST(DesktopPaths, WaitForNobody) {
    const test::TempFolder config;
    ASSERT_EQ(::mkfifo((config / "user-dirs.dirs").c_str(), 0600), 0);
    const auto paths =
        desktopPaths(environmentOf({{"HOME", "/home/ann"}, {"XDG_CONFIG_HOME", config.path().string()}}));
    EXPECT_EQ(paths.documents, "/home/ann/Documents");
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

TEST(LockFileGuard, LetsOneInstanceRun) {
    const test::TempFolder folder;
    const auto file = folder / "below/vantrel.lock";
    LockFileGuard second(file);
    {
        LockFileGuard first(file);
        EXPECT_TRUE(first.acquire());
        EXPECT_FALSE(second.acquire());
    }
    EXPECT_TRUE(second.acquire()) << "the first one is gone";
}

TEST(LockFileGuard, TellsTheRunningInstanceOnceThatItsWindowIsWanted) {
    const test::TempFolder folder;
    LockFileGuard second(folder / "lock");
    LockFileGuard first(folder / "lock");
    second.activateOther();
    EXPECT_TRUE(first.acquire());
    EXPECT_FALSE(first.activationRequested()) << "asked before it ran";
    second.activateOther();
    EXPECT_TRUE(first.activationRequested());
    EXPECT_FALSE(first.activationRequested());
}

TEST(LockFileGuard, WhatCantBeLockedKeepsNobodyFromRunning) {
    EXPECT_TRUE(LockFileGuard("/proc/no/such/folder/lock").acquire());
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
        {"one word", "etc/os-release", "PRETTY_NAME=Starry", "Starry"},
        {"with marks", "etc/os-release", "PRETTY_NAME=\"The \\\"Starry\\\" one\"\n", "The \"Starry\" one"},
        {"only the vendor's file", "usr/lib/os-release", "PRETTY_NAME=Starry\n", "Starry"},
        {"without the line", "etc/os-release", "NAME=Starry\n", otherwise},
        {"empty", "etc/os-release", "PRETTY_NAME=\"\"\n", otherwise},
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

}  // namespace
}  // namespace vantrel::platform

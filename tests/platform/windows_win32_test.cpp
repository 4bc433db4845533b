// What stands behind platform/ on Windows.
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "platform/durable_file.h"
#include "platform/input_file.h"
#include "platform/instance_guard.h"
#include "platform/mapped_file.h"
#include "platform/paths.h"
#include "platform/settings_file.h"
#include "platform/system_name.h"
#include "platform/user_machine.h"
#include "platform/whole_file.h"
#include "support/temp_folder.h"

namespace vantrel::platform {
namespace {

const std::string kOddName =
    "Gr\xC3\xBC\xC3\x9F"
    "e \xE6\xB8\xAC";  // "Grüße 測"

std::error_code whyUnreadable(const std::filesystem::path& path) {
    try {
        contentsOf(path, 100);
    } catch (const std::system_error& error) {
        return error.code();
    }
    return {};
}

TEST(Windows, PathsAreUtf8Inside) {
    const test::TempFolder folder;
    const auto file = folder.path() / pathOf(kOddName);
    writeDurably(file, "words");
    EXPECT_EQ(file.filename().string(), kOddName);
    EXPECT_EQ(contentsOf(file, 100), "words");
    const std::string name = libraryName(file);
    EXPECT_TRUE(std::ifstream(name).good()) << name;
}

TEST(Windows, FilesTellWhyTheyCantBeRead) {
    const test::TempFolder folder;
    EXPECT_EQ(whyUnreadable(folder / "none"), std::errc::no_such_file_or_directory);
    EXPECT_EQ(whyUnreadable(folder / "none" / "at all"), std::errc::no_such_file_or_directory);
    EXPECT_EQ(whyUnreadable(folder.path()), std::errc::is_a_directory);
    EXPECT_EQ(whyUnreadable(folder.write("large", std::string(101, 'x'))), std::errc::file_too_large);
    EXPECT_EQ(whyUnreadable("NUL"), std::errc::invalid_argument);
}

TEST(Windows, WhoHasAFileOpenKeepsItWhenAnotherTakesItsPlace) {
    const test::TempFolder folder;
    const auto old = folder.write("target", "old");
    for (const char* round : {"first", "second"}) {
        const InputFile open(old);
        const MappedFile mapped(old);
        std::error_code error;
        takePlace(folder.write("fresh", round), old, error);
        EXPECT_FALSE(error) << error.message();
        EXPECT_EQ(contentsOf(old, 100), round);
        char first = 0;
        EXPECT_EQ(open.read(0, std::as_writable_bytes(std::span(&first, 1))), 1U);
        EXPECT_EQ(first, static_cast<char>(mapped.bytes()[0]));
    }
}

TEST(Windows, TemporaryFilesGoAndLibrariesCanReadThem) {
    std::filesystem::path name;
    {
        InputFile file = InputFile::temporary();
        name = file.nameToOpen();
        const std::string words = "in between";
        file.append(std::as_bytes(std::span(words)));
        EXPECT_EQ(contentsOf(name, 100), words);
        EXPECT_EQ(file.size(), words.size());
    }
    EXPECT_FALSE(std::filesystem::exists(name));
}

TEST(Windows, OneInstanceRunsAndAsksForTheWindow) {
    const test::TempFolder folder;
    LockFileGuard first(folder / "lock"), second(folder / "lock");
    EXPECT_TRUE(first.acquire());
    EXPECT_FALSE(second.acquire());
    second.activateOther();
    EXPECT_TRUE(first.activationRequested());
    EXPECT_FALSE(first.activationRequested());
}

TEST(Windows, SettingsAreOneFileOfTheUser) {
    const test::TempFolder folder;
    const std::string home = (folder.path() / pathOf(kOddName)).string();
    const auto environment = [&](const std::string& name) -> std::optional<std::string> {
        if (name == "USERPROFILE") return home;
        if (name == "APPDATA") return home + "\\Roaming";
        if (name == "LOCALAPPDATA") return home + "\\Local";
        return std::nullopt;
    };
    const UserPaths paths = desktopPaths(environment);
    EXPECT_EQ(paths.profile, home);
    EXPECT_EQ(paths.settings, pathOf(home + "\\Roaming\\Vantrel\\settings"));
    EXPECT_EQ(paths.cache, pathOf(home + "\\Local\\Vantrel\\cache"));
    EXPECT_EQ(paths.data, pathOf(home + "\\Local\\Vantrel"));
    EXPECT_TRUE(paths.drives.empty());
    EXPECT_NE(systemName().find("Windows"), std::string::npos) << systemName();
    {
        SettingsFile settings(paths.settings);
        settings.open();
        settings.write("Main", "Folder", kOddName);
        settings.write("Main", "Other", "x");
    }
    EXPECT_EQ(SettingsFile(paths.settings).read("Main", "Folder"), kOddName);
}

TEST(Windows, FolderTextsAreTheSystemsOwn) {
    FolderMap folders{std::filesystem::path()};
    folders.map(R"(C:\Users\me\My Documents)", R"(D:\Papers)");
    const std::pair<const char*, const char*> cases[] = {
        {R"(E:\Images\a.fit)", R"(E:\Images\a.fit)"},
        {"E:/Images/x", R"(E:\Images\x)"},
        {R"(\Images)", R"(C:\Images)"},
        {R"(C:\..\x)", R"(C:\x)"},
        {R"(\\server\share\x)", R"(\\server\share\x)"},
        {R"(c:\users\ME\my documents\Log)", R"(D:\Papers\Log)"},
    };
    for (const auto& [text, path] : cases) EXPECT_EQ(folders.real(text), pathOf(path)) << text;
    EXPECT_EQ(folders.text(R"(D:\Papers\Log)"), R"(C:\Users\me\My Documents\Log)");
    EXPECT_EQ(folders.text(R"(E:\Images)"), R"(E:\Images)");
}

}  // namespace
}  // namespace vantrel::platform

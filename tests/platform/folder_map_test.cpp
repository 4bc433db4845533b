#include "platform/folder_map.h"

#include <gtest/gtest.h>

namespace vantrel::platform {
namespace {

TEST(FolderMap, TurnsFolderTextsIntoPathsThatStayInside) {
    FolderMap folders("/data/drives");
    folders.map(R"(C:\Users\me\Documents\)", "/home/me/Papers");
    const struct {
        const char* why;
        const char* text;
        const char* path;
    } cases[] = {
        {"drive", R"(C:\Images\a.fit)", "/data/drives/c/Images/a.fit"},
        {"drive alone", "D:", "/data/drives/d"},
        {"drive relative", "c:Images", "/data/drives/c/Images"},
        {"no drive", R"(\Images)", "/data/drives/c/Images"},
        {"forward slashes", "C:/Images/x", "/data/drives/c/Images/x"},
        {"mapped", R"(C:\Users\me\Documents)", "/home/me/Papers"},
        {"mapped, other case", R"(c:\USERS\Me\documents\Log)", "/home/me/Papers/Log"},
        {"only the beginning of a name", R"(C:\Users\me\Documents2)", "/data/drives/c/Users/me/Documents2"},
        {"up and out", R"(C:\..\..\etc\passwd)", "/data/drives/c/etc/passwd"},
        {"doubled", R"(C:\\Images\\.\x)", "/data/drives/c/Images/x"},
        {"a real path", "/tmp/x", "/tmp/x"},
        {"empty", "", "/data/drives/c"},
    };
    for (const auto& c : cases) EXPECT_EQ(folders.real(c.text), c.path) << c.why;
}

TEST(FolderMap, NamesPathsByTheirFolders) {
    FolderMap folders("/data/drives");
    folders.map(R"(C:\Users\me\Documents)", "/home/me/Papers/");
    const std::pair<const char*, const char*> cases[] = {
        {"/data/drives/c/Images/a.fit", R"(C:\Images\a.fit)"},   {"/data/drives/d", R"(D:\)"},
        {"/home/me/Papers/Log", R"(C:\Users\me\Documents\Log)"}, {"/home/me/Papers2", "/home/me/Papers2"},
        {"/data/drives/long/x", "/data/drives/long/x"},
    };
    for (const auto& [path, text] : cases) EXPECT_EQ(folders.text(path), text);
}

TEST(FolderMap, JoinsWithOneBackslash) {
    EXPECT_EQ(joinFolder("C:", "a.fit"), R"(C:\a.fit)");
    EXPECT_EQ(joinFolder(R"(C:\)", "a.fit"), R"(C:\a.fit)");
    EXPECT_EQ(joinFolder("", "a.fit"), R"(\a.fit)");
}

}  // namespace
}  // namespace vantrel::platform

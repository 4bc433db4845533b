#include "app/settings_store.h"

#include <gtest/gtest.h>

#include "support/full_disk.h"
#include "support/recording_dialogs.h"

namespace vantrel::app {
namespace {

using platform::Dialogs;
using platform::MemorySettings;
using test::RecordingDialogs;

struct SettingsStoreTest : testing::Test {
    MemorySettings memory;
    RecordingDialogs dialogs;
    SettingsStore store{memory, dialogs};
};

TEST_F(SettingsStoreTest, ReadingAMissingValueGivesTheDefaultAndStoresNothing) {
    EXPECT_EQ(store.GetSetting("Nowhere", "Key", "default"), "default");
    EXPECT_TRUE(memory.isEmpty());
}

TEST_F(SettingsStoreTest, ReadingAMissingOrEmptyMainValueStoresTheDefault) {
    store.SaveMainSetting("Empty", "");
    EXPECT_EQ(store.GetMainSetting("Missing", "1"), "1");
    EXPECT_EQ(store.GetMainSetting("Empty", "2"), "2");
    EXPECT_EQ(memory.read("Main", "Missing"), "1");
    EXPECT_EQ(memory.read("Main", "Empty"), "2");
    EXPECT_EQ(store.GetMainSetting("missing", "other"), "1");
}

TEST_F(SettingsStoreTest, ReadsWhatTheBufferHolds) {
    const std::string degree = "\xC2\xB0";
    std::string degrees;
    for (int i = 0; i < 1024; ++i) degrees += degree;
    const struct {
        const char* why;
        std::string stored, read;
    } rows[] = {
        {"an empty value exists", "", ""},
        {"as long as the buffer", std::string(1023, 'x'), std::string(1023, 'x')},
        {"longer than the buffer", std::string(1024, 'x'), std::string(1023, 'x')},
        {"characters count, not bytes", degrees, degrees.substr(0, 2 * 1023)},
        {"a NUL at the end", std::string("text\0", 5), "text"},
        {"only one NUL is dropped", std::string("text\0\0", 6), std::string("text\0", 5)},
    };
    for (const auto& row : rows) {
        store.SaveSetting("Solve", "Key", row.stored);
        EXPECT_EQ(store.GetSetting("Solve", "Key", "default"), row.read) << row.why;
    }
}

TEST(SettingsStoreFailures, ShowTheirBoxAndEndTheProgram) {
    const struct {
        const char* why;
        bool failsToOpen;
        const char* section;
        const char* text;
        Dialogs::Icon icon;
    } rows[] = {
        {"no root", true, "Main", "Failed to open/create root registry key (5)", Dialogs::Icon::kCritical},
        {"no section", false, "Solve", "Failed to open/create section key Solve.",
         Dialogs::Icon::kExclamation},
        {"no value", false, "Main", "Failed to write config value Key to registry section Main.",
         Dialogs::Icon::kCritical},
    };
    for (const auto& row : rows) {
        test::FullDisk root;
        root.write("Main", "Other", "there");
        root.full = true;
        root.missing = row.failsToOpen;
        RecordingDialogs dialogs;
        SettingsStore store(root, dialogs);
        int ends = 0;
        store.onFailure = [&] { ++ends; };

        EXPECT_THROW(store.SaveSetting(row.section, "Key", "1"), SettingsFailure) << row.why;
        EXPECT_THROW(store.SaveSetting(row.section, "Key", "1"), SettingsFailure) << row.why;

        ASSERT_EQ(dialogs.boxes.size(), 1u) << row.why;
        EXPECT_EQ(dialogs.boxes[0].title, "");
        EXPECT_EQ(dialogs.boxes[0].text, row.text);
        EXPECT_EQ(dialogs.boxes[0].icon, row.icon) << row.why;
        EXPECT_EQ(ends, 1) << row.why;
    }
}

}  // namespace
}  // namespace vantrel::app

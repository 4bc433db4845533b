#include <csignal>
#include <filesystem>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "app/folders.h"
#include "app/message_log.h"
#include "support/app_world.h"

namespace vantrel::app {
namespace {

namespace fs = std::filesystem;
using test::contentsOf;

struct MessageLogTest : testing::Test, test::AppWorld {
    frmLog window{screen};
    MessageLog log{time, folders, window};
    test::RecordingMessages messages;

    std::string now(const char* pattern) const {
        return platform::formatTime(platform::civilLocal(time.utc()), pattern);
    }
    std::vector<fs::path> filesIn(const std::string& folder) const {
        std::vector<fs::path> files;
        for (const auto& entry : fs::directory_iterator(folders.real(folder)))
            if (entry.is_regular_file()) files.push_back(entry.path());
        return files;
    }
};

TEST_F(MessageLogTest, EveryLineReachesWindowAndFileInItsOwnForm) {
    log.AddToLog("too early for the file");
    log.SetLogStream("C:\\Logs", messages);
    const std::string name = now("yyyyMMdd_HHmmss") + ".log";
    pass(61);
    log.AddToLog("");
    log.AddToLog("second");

    const std::string stamp = now("HH:mm:ss") + "   ";
    EXPECT_EQ(contentsOf(folders.real("C:\\Logs\\" + name)), stamp + "\r\n" + stamp + "second\r\n");
    EXPECT_TRUE(window.txtLog.text().starts_with("\r\n"));
    EXPECT_TRUE(window.txtLog.text().ends_with("\r\n" + stamp + "\r\n" + stamp + "second"));
    ASSERT_EQ(log.lines().size(), 3u);
    EXPECT_EQ(log.lines()[2], stamp + "second");
    EXPECT_TRUE(window.loaded()) << "logging loads the window";
    EXPECT_FALSE(window.shown());
}

TEST_F(MessageLogTest, TheWindowShowsTheLast30000Characters) {
    log.SetLogStream("C:\\Logs", messages);
    std::string whole;
    for (int i = 0; whole.size() < 31000; ++i) {
        const std::string text = "line " + std::to_string(i);
        log.AddToLog(text);
        whole += "\r\n" + now("HH:mm:ss") + "   " + text;
    }
    EXPECT_EQ(window.txtLog.text(), whole.substr(whole.size() - 30000));
    EXPECT_EQ(contentsOf(filesIn("C:\\Logs").front()).size(), whole.size());
}

/// While one lives, no file grows beyond so many bytes.
struct SmallDisk {
    explicit SmallDisk(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &before);
        const rlimit limit{bytes, before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SmallDisk() { ::setrlimit(RLIMIT_FSIZE, &before); }
    rlimit before{};
};

TEST_F(MessageLogTest, GoesOnWhenAFullDiskHasRoomAgain) {
    log.SetLogStream("C:\\Logs", messages);
    log.AddToLog("before");
    {
        const SmallDisk full(20);
        for (int i = 0; i < 1000; ++i) log.AddToLog("while the disk is full");
    }
    log.AddToLog("afterwards");
    EXPECT_EQ(log.lines().size(), 1002u);
    const std::string file = contentsOf(filesIn("C:\\Logs").front());
    EXPECT_NE(file.find("before"), std::string::npos);
    EXPECT_TRUE(file.ends_with("afterwards\r\n")) << file.size();
}

TEST_F(MessageLogTest, AFolderGetsOneFileHoweverOftenItIsSet) {
    log.SetLogStream("", messages);
    EXPECT_FALSE(fs::exists(folders.real("C:\\")));

    log.SetLogStream("C:\\First", messages);
    pass(2);
    log.SetLogStream("C:\\First", messages);
    EXPECT_EQ(filesIn("C:\\First").size(), 1u);

    log.SetLogStream("D:\\Second\\", messages);
    log.AddToLog("goes to the second");
    ASSERT_EQ(filesIn("D:\\Second").size(), 1u);
    EXPECT_NE(contentsOf(filesIn("D:\\Second").front()).find("second"), std::string::npos);
    EXPECT_EQ(contentsOf(filesIn("C:\\First").front()), "");
    EXPECT_TRUE(messages.shown.empty());
}

TEST_F(MessageLogTest, WithoutAFolderTheWindowStillGetsTheLines) {
    std::ofstream(home / "c") << "a file where the drive's folder should be";
    log.SetLogStream("C:\\Logs", messages);
    log.AddToLog("text");
    ASSERT_EQ(messages.shown.size(), 1u);
    EXPECT_EQ(messages.shown[0].text, "Could not create directory");
    EXPECT_EQ(messages.shown[0].seconds, 10);
    EXPECT_TRUE(window.txtLog.text().ends_with("   text"));
    EXPECT_FALSE(MakeFolderPath(folders, "C:\\Logs", messages));
}

TEST_F(MessageLogTest, AReleasedLogLeavesTheWindowAlone) {
    log.release();
    log.AddToLog("late");
    EXPECT_FALSE(window.loaded());
    EXPECT_EQ(log.lines().size(), 1u);
}

struct FoldersTest : testing::Test, test::AppWorld {
    test::RecordingMessages messages;
};

TEST_F(FoldersTest, MakesEveryLevelAndLeavesNoTestFileBehind) {
    EXPECT_FALSE(FolderIsWritable(folders, "C:\\A"));
    EXPECT_TRUE(MakeFolderPath(folders, "C:\\A\\B\\C", messages));
    EXPECT_TRUE(FolderIsWritable(folders, "C:\\A\\B\\C\\"));
    EXPECT_TRUE(fs::is_empty(folders.real("C:\\A\\B\\C")));
    EXPECT_EQ(std::distance(fs::directory_iterator(folders.real("C:\\A")), fs::directory_iterator()), 1);
}

TEST_F(FoldersTest, DataFoldersFollowTheSettingsAndTheOperatingSystem) {
    const std::string profile = "C:\\Users\\me";
    const std::string old = profile + "\\My Documents\\Vantrel";
    const std::string vista = profile + "\\Documents\\Vantrel";
    const char* const ours = "C:\\Program Files\\Vantrel\\Message Logs";  // the program's folder
    const struct {
        const char* why;
        bool vista;
        const char* log;
        const char* images;
        DataFolders chosen;
    } rows[] = {
        {"fresh machine", false, "", "", {old + "\\Message Logs", old}},
        {"fresh machine, Vista", true, "", "", {vista + "\\Messaage Logs", vista}},
        {"one is missing: both start afresh", false, "C:\\Good", "", {old + "\\Message Logs", old}},
        {"one can't be written", false, "C:\\Good", "C:\\Gone", {old + "\\Message Logs", old}},
        {"both are good", false, "C:\\Good", "C:\\Good", {"C:\\Good", "C:\\Good"}},
        {"both are good, Vista", true, "C:\\Good", "C:\\Good", {"C:\\Good", "C:\\Good"}},
        {"Vista doesn't log into its folder", true, ours, "C:\\Good", {vista + "\\Message Logs", vista}},
        {"others may", false, ours, "C:\\Good", {ours, "C:\\Good"}},
    };
    MakeFolderPath(folders, "C:\\Good", messages);
    MakeFolderPath(folders, ours, messages);
    for (const auto& row : rows) {
        settings.SaveSetting("PolarAlign", "LogPath", row.log);
        settings.SaveSetting("PolarAlign", "ImagePath", row.images);
        EXPECT_EQ(chooseDataFolders(folders, settings, messages, profile, row.vista), row.chosen) << row.why;
        EXPECT_EQ(memory.read("PolarAlign", "LogPath"), row.chosen.log) << row.why;
        EXPECT_EQ(memory.read("PolarAlign", "ImagePath"), row.chosen.images) << row.why;
        EXPECT_TRUE(FolderIsWritable(folders, row.chosen.log)) << row.why;
        fs::remove_all(folders.real("C:\\Users"));
    }
    EXPECT_TRUE(messages.shown.empty());
}

}  // namespace
}  // namespace vantrel::app

// The windows of a program of our own, which shows those that imaging programs have.
#include "hosts/com/system_windows.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "platform/errors.h"
#include "platform/own_program.h"

namespace vantrel::hosts::com {
namespace {

using platform::WindowId;

const std::string kProgram = (platform::ownProgram().parent_path() / "com_observatory.exe").string();

/// The first of these windows with the title; 0 when none has it within ten seconds.
WindowId waitFor(const std::function<std::vector<WindowId>()>& windows, const SystemWindows& system,
                 const std::string& title) {
    for (int tries = 0; tries < 500; ++tries) {
        for (const WindowId window : windows())
            if (system.titleOf(window) == title) return window;
        ::Sleep(20);
    }
    return 0;
}

struct SystemWindowsTest : testing::Test {
    SystemWindows windows;

    WindowId top(const std::string& title) {
        return waitFor([this] { return windows.topLevelWindows(); }, windows, title);
    }
    bool gone(const std::string& title) {
        for (int tries = 0; tries < 1000; ++tries) {
            const auto all = windows.topLevelWindows();
            if (std::none_of(all.begin(), all.end(),
                             [&](WindowId one) { return windows.titleOf(one) == title; }))
                return true;
            ::Sleep(20);
        }
        return false;
    }
    WindowId inside(WindowId window, const std::string& title) {
        return waitFor([this, window] { return windows.childrenOf(window); }, windows, title);
    }
};

TEST_F(SystemWindowsTest, ProgramsAreStartedAndTheirWindowsFound) {
    ASSERT_TRUE(gone("MaxIm DL Version 4.56")) << "somebody else's is open";
    windows.startProgram(kProgram);
    const WindowId main = top("MaxIm DL Version 4.56"), dialog = top("MaxIm CCD");
    ASSERT_NE(main, 0U);
    ASSERT_NE(dialog, 0U);
    EXPECT_EQ(windows.classOf(dialog), "#32770");
    EXPECT_EQ(windows.parentOf(dialog), main);
    EXPECT_EQ(windows.parentOf(main), 0U);
    const WindowId setup = inside(dialog, "Setup");
    const WindowId button = inside(setup, "&Connect");
    ASSERT_NE(button, 0U);
    EXPECT_EQ(windows.parentOf(button), setup);
    EXPECT_EQ(windows.classOf(button), "Button");
    EXPECT_EQ(windows.buttonState(button), 0) << "the camera isn't connected";
    const auto inDialog = windows.childrenOf(dialog);
    const auto tabs = std::find_if(inDialog.begin(), inDialog.end(), [&](WindowId window) {
        return windows.classOf(window) == "SysTabControl32";
    });
    ASSERT_NE(tabs, inDialog.end());
    windows.selectTab(*tabs, 4);
    EXPECT_FALSE(windows.minimised(main));
    EXPECT_FALSE(windows.maximised(main));
    windows.bringToTop(main);
    EXPECT_TRUE(windows.programIsIdle(kProgram));
}

TEST_F(SystemWindowsTest, ProgramsTellTheirVersion) {
    EXPECT_EQ(windows.fileVersion(kProgram), "5, 00, 205, 1");
    EXPECT_EQ(windows.fileVersion(platform::ownProgram().string()), std::nullopt);
    EXPECT_EQ(windows.fileVersion("C:\\nobody.exe"), std::nullopt);
}

TEST_F(SystemWindowsTest, WhatIsNotThereIsNothing) {
    EXPECT_EQ(windows.shellOpen("C:\\nobody.exe", "C:\\"), 2);
    try {
        windows.startProgram("C:\\nobody.exe");
        ADD_FAILURE() << "there is no such program";
    } catch (const platform::OperationError& error) {
        EXPECT_EQ(error.number(), platform::error_number::kFileNotFound);
    }
    constexpr WindowId kNobody = 0x7ffffff0;
    EXPECT_EQ(windows.titleOf(kNobody), "");
    EXPECT_EQ(windows.parentOf(kNobody), 0U);
    EXPECT_EQ(windows.buttonState(kNobody), 0);
    EXPECT_TRUE(windows.childrenOf(kNobody).empty());
}

}  // namespace
}  // namespace vantrel::hosts::com

#include "platform/desktop_windows.h"

#include <gmock/gmock.h>

#include "platform/errors.h"

namespace vantrel::platform {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(DesktopWindows, KeepsWindowsInTheirOrderAndPlace) {
    //  main ── tabs, button        dialog belongs to main, other stands alone
    DesktopWindows desktop;
    const WindowId main = desktop.open({"Main", "Frame"});
    const WindowId tabs = desktop.open({"", "SysTabControl32", main});
    const WindowId button = desktop.open({"&Connect", "Button", main});
    const WindowId dialog = desktop.open({"Dialog", "#32770", 0, main});
    const WindowId other = desktop.open({"Other", "Frame"});

    EXPECT_THAT(desktop.topLevelWindows(), ElementsAre(other, dialog, main));
    EXPECT_THAT(desktop.childrenOf(main), ElementsAre(tabs, button));
    EXPECT_EQ(desktop.parentOf(button), main);
    EXPECT_EQ(desktop.parentOf(dialog), main);
    EXPECT_EQ(desktop.parentOf(main), 0U);

    desktop.bringToTop(main);
    EXPECT_THAT(desktop.topLevelWindows(), ElementsAre(main, other, dialog));

    desktop.close(main);
    EXPECT_THAT(desktop.topLevelWindows(), ElementsAre(other)) << "its dialog goes with it";
    EXPECT_THAT(desktop.childrenOf(main), IsEmpty());
    EXPECT_EQ(desktop.titleOf(dialog), "");
    desktop.bringToTop(main);
    desktop.restore(main);
    desktop.selectTab(tabs, 1);
    EXPECT_THAT(desktop.topLevelWindows(), ElementsAre(other)) << "wishes for a closed window are ignored";
}

TEST(DesktopWindows, StartsInstalledProgramsOnly) {
    DesktopWindows desktop;
    bool idle = false;
    desktop.installProgram("C:\\Programs\\Camera.exe", {[&] {
                                                            desktop.open({"Camera", "Frame"});
                                                        },
                                                        "5.0.1", [&] { return idle; }});

    EXPECT_GT(desktop.shellOpen("c:\\programs\\CAMERA.EXE", "c:\\programs"), 32);
    desktop.startProgram("C:\\Programs\\Camera.exe");
    EXPECT_EQ(desktop.topLevelWindows().size(), 2U);
    EXPECT_EQ(desktop.fileVersion("C:\\Programs\\Camera.exe"), "5.0.1");
    EXPECT_FALSE(desktop.programIsIdle("C:\\Programs\\Camera.exe"));

    EXPECT_LE(desktop.shellOpen("C:\\Programs\\Other.exe", ""), 32);
    EXPECT_THROW(desktop.startProgram("C:\\Programs\\Other.exe"), OperationError);
    EXPECT_EQ(desktop.fileVersion("C:\\Programs\\Other.exe"), std::nullopt);
}

}  // namespace
}  // namespace vantrel::platform

#include <QAction>
#include <QCheckBox>
#include <QGuiApplication>
#include <QScreen>

#include <gtest/gtest.h>

#include "qt/night.h"

namespace vantrel::qt {
namespace {

TEST(NightVision, SwitchesWhenTheOptionsAreClosed) {
    Night night;
    FormWindow& options = night.program.window("frmOptions");
    bool before = true, after = false;
    night.pass({
        {[&] { return night.started(); },
         [&] { widgetOf<QAction>(night.main(), "mnuSetOptions").trigger(); }},
        {[&] { return options.isVisible(); },
         [&] { widgetOf<QCheckBox>(options, "chkGreenColors").click(); }},
        {[] { return true; },
         [&] {
             before = night.theme.night();
             options.close();
         }},
        {[&] { return !options.isVisible(); }, [&] { after = night.theme.night(); }},
    });
    EXPECT_FALSE(before);
    EXPECT_TRUE(after);
}

TEST(PlacesOfWindows, LeaveRoomForTheirTitleBars) {
    constexpr int kTitleBar = 20;
    Night night;
    const QRect room = QGuiApplication::primaryScreen()->availableGeometry();
    QRect telescope;
    night.pass({{[&] { return night.started(); },
                 [&] { telescope = night.program.window("frmTelescope").geometry(); }}});
    EXPECT_LE(telescope.bottom(), room.bottom() - kTitleBar);
    EXPECT_LE(telescope.right(), room.right());
    EXPECT_GT(telescope.bottom(), room.bottom() - 3 * kTitleBar) << "in the corner all the same";
}

}  // namespace
}  // namespace vantrel::qt

#include <QAction>
#include <QCheckBox>

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

}  // namespace
}  // namespace vantrel::qt

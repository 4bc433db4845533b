// The main window drives the whole program, from a fresh start to the measured axis.
#include <QAction>
#include <QCheckBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/message_log.h"
#include "qt/night.h"

namespace vantrel::qt {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST(Measurement, OfAFreshStartFindsTheSimulatorsAxis) {
    Night night;
    night.turnAxis(20, -12);
    std::string before, result, after;
    double elevation = 0, azimuth = 0;
    const auto figure = [&](const char* name) {
        return widgetOf<QLabel>(night.program.window("frmPolarPlot"), name).text().toDouble();
    };
    night.pass({
        {[&] { return night.started(); },
         [&] {
             before = night.instructions();
             night.typeInto("txtDeltaRA", "15");
             night.click("cmdRun");
         }},
        {[&] { return night.enabled("cmdNext"); },
         [&] {
             result = night.instructions();
             night.click("cmdPolarPlot");
         }},
        {[&] { return night.program.window("frmPolarPlot").isVisible(); },
         [&] {
             elevation = figure("txtAltitudeError");
             azimuth = figure("txtAzimuthError");
             night.click(night.enabled("cmdSkip") ? "cmdSkip" : "cmdNext");
         }},
        {[&] { return night.enabled("cmdRun"); }, [&] { after = night.instructions(); }},
    });
    EXPECT_THAT(before, StartsWith("Polar Align Measurement Start"));
    EXPECT_EQ(night.boxes.str(), "") << "no questions on a fresh machine";
    EXPECT_THAT(result, HasSubstr("Completed Successfully !!"))
        << testing::PrintToString(night.program.application().log().lines());
    // What the simulator was set to, within what one measurement of this slew can tell.
    EXPECT_NEAR(elevation, -12, 0.5);
    EXPECT_NEAR(std::abs(azimuth), 20, 0.7);
    EXPECT_THAT(after, StartsWith("Polar Align Measurement Start"));
    EXPECT_FALSE(night.main().isVisible());
    EXPECT_EQ(night.failures, "");
}

TEST(Measurement, NeedsNoOperator) {
    for (const char* slew : {"15", "0"}) {  // degrees; none is refused by a question
        Night night;
        night.user.settings.write("PolarAlign", "DeltaRA", slew);
        std::ostringstream out;
        UnattendedRun run(night.program, night.loop, out);
        night.loop.post([&] { run.begin(); });
        night.loop.runUntil([&] { return run.over(); });
        EXPECT_EQ(run.measured(), slew == std::string("15")) << out.str();
        EXPECT_THAT(out.str(), HasSubstr(run.measured() ? "Alignment Run Complete" : "Align Aborted"));
        night.program.application().close();
        night.loop.runUntil([&] { return night.program.application().ended(); });
    }
}

TEST(Measurement, EndsAtTheStopButtonAndWithTheWindow) {
    Night night;
    night.pass({
        {[&] { return night.started(); }, [&] { night.click("cmdRun"); }},
        {[&] { return night.enabled("cmdStop"); }, [&] { night.click("cmdStop"); }},
        {[&] { return night.enabled("cmdRun"); }, [&] { night.click("cmdRun"); }},
        {[&] { return night.enabled("cmdStop"); }, [] {}},
    });
    EXPECT_THAT(night.program.application().log().lines(), testing::Contains(HasSubstr("Align Aborted")));
    for (const platform::Form* form : night.program.screen().forms())
        EXPECT_FALSE(form->shown()) << form->name();
    EXPECT_EQ(night.failures, "");
}

}  // namespace
}  // namespace vantrel::qt

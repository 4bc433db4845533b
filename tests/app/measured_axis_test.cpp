// From the set axis to the words and numbers in the window: signs, hemispheres, mirrored cameras, the
// equinox.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "observatory/simulator_setup.h"
#include "platform/text.h"
#include "program_world.h"

namespace vantrel::app {
namespace {

struct MeasuredAxisTest : testing::Test, test::ProgramWorld {
    MeasuredAxisTest() {
        observatory::storeSimulatorSetup(settings);
        start();
    }

    platform::ObjectRef simulator() { return host.newest("AxisSimulator.Telescope"); }

    /// Points at the meridian side of a field with this declination (degrees).
    void pointTo(double declination) {
        const double lst = simulator()->get("SiderealTime").toDouble();
        simulator()->call("SlewToCoordinatesAsync", {lst > 1 ? lst - 1 : lst + 23, declination});
        pass(90);
    }

    void measure() {
        control<platform::TextBox>("frmMain.txtDeltaRA").type("20");
        loop.post([this] { control<platform::Button>("frmMain.cmdRun").click(); });
        const auto later = loop.after(std::chrono::minutes{3},
                                      [this] { control<platform::Button>("frmMain.cmdSkip").click(); });
        pass(200);
        ASSERT_EQ(logged().back(), "Alignment Run Complete");
    }

    double shown(const std::string& box) { return platform::leadingNumber(text("frmPolarPlot." + box)); }
};

TEST_F(MeasuredAxisTest, SignsHoldInBothHemispheresAndForMirroredCameras) {
    // The window speaks of the axis's northern end. In the south the observer looks at the other one, so both
    // parts have the opposite sign there.
    const struct {
        double latitude, azimuth, elevation;  // as set: east and above positive, arc-minutes
        bool mirrored;
        double shownAzimuth, shownElevation;
        const char* why;
    } cases[] = {
        {45, 0, 30, false, 0, 30, "north, above the pole"},
        {45, 0, -30, true, 0, -30, "north, below the pole, mirrored"},
        {45, 30, 0, true, 30, 0, "north, east of the pole, mirrored"},
        {45, -30, 0, false, -30, 0, "north, west of the pole"},
        {-35, 0, 30, true, 0, -30, "south, above the pole, mirrored"},
        {-35, 0, -30, false, 0, 30, "south, below the pole"},
        {-35, 30, 0, false, -30, 0, "south, east of the pole"},
        {-35, -30, 0, true, 30, 0, "south, west of the pole, mirrored"},
    };
    for (const auto& c : cases) {
        simulator()->put("SiteLatitude", c.latitude);
        simulator()->put("PolarAzimuthError", c.azimuth);
        simulator()->put("PolarElevationError", c.elevation);
        simulator()->put("CameraMirrored", c.mirrored);
        pointTo(c.latitude > 0 ? 40 : -40);
        measure();
        EXPECT_NEAR(shown("txtAzimuthError"), c.shownAzimuth, 0.5) << c.why;
        EXPECT_NEAR(shown("txtAltitudeError"), c.shownElevation, 0.5) << c.why;
        EXPECT_EQ(control<platform::Label>("frmPolarPlot.lblAzimuth_Unit").caption(), "arc-min") << c.why;
        EXPECT_TRUE(hasLogged("Elevation error: " + text("frmPolarPlot.txtAltitudeError") + " arc-min"))
            << c.why;
        EXPECT_TRUE(hasLogged("Azimuth error: " + text("frmPolarPlot.txtAzimuthError") + " arc-min"))
            << c.why;
    }
}

TEST_F(MeasuredAxisTest, SolutionsOfJ2000WouldPutThePoleWhereItWasThen) {
    simulator()->put("PolarAzimuthError", 0.0);
    simulator()->put("PolarElevationError", 0.0);
    measure();
    EXPECT_LT(shown("txtMagnitude"), 0.3) << "an aligned mount, in the equinox of date";

    // General precession moves the pole by 20.04" a year (IAU 2006), 26.9 years since 2000; nutation and
    // aberration add up to half a minute.
    host.newest("PinPoint.Plate")->put("Equinox", 2000);
    measure();
    EXPECT_NEAR(shown("txtMagnitude"), 26.9 * 20.04 / 60, 0.5);
}

}  // namespace
}  // namespace vantrel::app

#include "correction/polar_plot.h"

#include <cmath>

#include <gmock/gmock.h>

#include "correction/polar_chart.h"
#include "platform/queued_event_loop.h"
#include "platform/text.h"
#include "support/memory_settings_port.h"
#include "support/recording_log.h"

namespace vantrel::correction {
namespace {

using namespace platform;
using testing::ElementsAre;

/// A telescope that only knows where it stands.
struct SiteOnly : engine::TelescopePort {
    double latitude = 45;
    double GetTelescopeRA() override { return 0; }
    double GetTelescopeDec() override { return 0; }
    void SlewToCoordinates(double /*ra*/, double /*dec*/) override {}
    double SiderealTime() override { return 0; }
    double SiteLatitude() override { return latitude; }
    double SiteLongitude() override { return 0; }
    void AbortTelescopeSlew() override {}
    void simulatorExpose() override {}
    void simulatorSaveImage(const std::string& /*path*/) override {}
};

template <typename Shape>
std::vector<Shape> shapesOf(const Drawing& drawing) {
    std::vector<Shape> found;
    for (const auto& shape : drawing.shapes)
        if (const auto* wanted = std::get_if<Shape>(&shape)) found.push_back(*wanted);
    return found;
}

Circle dotOf(const Drawing& drawing) {
    const auto circles = shapesOf<Circle>(drawing);
    EXPECT_TRUE(!circles.empty() && circles.back().filled);
    return circles.empty() ? Circle{} : circles.back();
}

class Plot : public testing::Test {
  protected:
    Plot() { form.show(); }

    std::vector<Label*> units() {
        return {&window.lblRA_Unit, &window.lblElevation_Unit, &window.lblAzimuth_Unit, &window.lblUnits};
    }

    VirtualTime time{*parseInstant("2026-11-24T20:00:00Z"), std::chrono::hours{2}};
    QueuedEventLoop loop{time};
    test::MemorySettingsPort settings;
    test::RecordingLog log;
    SiteOnly telescope;
    Screen screen{{0, 0, 1920, 1040}};
    Form form{screen, "frmMain", "", {0, 0, 600, 500}};
    ErrorPlotPanel panel{form};
    frmPolarPlot window{screen};
    PolarPlot plot{loop, settings, log, telescope, window, panel};
};

TEST(ErrorUnitsTest, FourDecimalsBelowAnArcMinute) {
    struct Case {
        double value;
        const char* text;
    };
    for (const Case& c :
         {Case{0.5, "0.5000"}, Case{12.345, "12.35"}, Case{-0.25, "-0.2500"}, Case{0, "0.0000"},
          Case{0.99999, "1.0000"}, Case{1, "1.00"}, Case{-1, "-1.00"}, Case{-250.126, "-250.13"}}) {
        EXPECT_EQ(ErrorUnits(c.value).text, c.text);
        EXPECT_EQ(ErrorUnits(c.value).unit, "arc-min");
    }
}

TEST(ChartRangeTest, AlwaysReachesBeyondTheAxis) {
    struct Case {
        double arcMinutes;
        int rings, step;
    };
    for (const Case& c :
         {Case{0, 1, 1}, Case{0.4, 1, 1}, Case{1, 2, 1}, Case{9.5, 10, 1}, Case{10, 11, 1}, Case{10.5, 2, 10},
          Case{99.9, 10, 10}, Case{100, 11, 10}, Case{100.5, 2, 100}, Case{250, 3, 100}, Case{300, 4, 100}}) {
        const ChartRange range = chartRange(c.arcMinutes);
        EXPECT_EQ(range.rings, c.rings) << c.arcMinutes;
        EXPECT_EQ(range.step, c.step) << c.arcMinutes;
        EXPECT_EQ(range.radius(), c.rings * c.step) << c.arcMinutes;
    }
}

TEST(PolarChartTest, Drawing) {
    const Drawing drawing = polarChart(25, 0, color::kRed);  // three rings of 10
    EXPECT_EQ(drawing.scale, (DrawingScale{.left = -3, .top = 3, .right = 3, .bottom = -3}));

    const auto circles = shapesOf<Circle>(drawing);
    ASSERT_EQ(circles.size(), 4U);
    for (std::size_t ring = 0; ring < 3; ++ring) {
        EXPECT_DOUBLE_EQ(circles[ring].radius, 0.8 * static_cast<double>(ring + 1));
        EXPECT_EQ(circles[ring].x, 0);
        EXPECT_EQ(circles[ring].y, 0);
        EXPECT_FALSE(circles[ring].filled);
    }
    const auto lines = shapesOf<Line>(drawing);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_DOUBLE_EQ(lines[0].x2 - lines[0].x1, 2 * 0.85 * 3);
    EXPECT_DOUBLE_EQ(lines[1].y2 - lines[1].y1, 2 * 0.85 * 3);

    struct Label {
        const char* text;
        double x, y;  // in radii
    };
    const Label labels[] = {{"30", 0.78, -0.7},    {"arc-min", 0.65, -0.8}, {"Up", -0.05, 0.98},
                            {"Down", -0.1, -0.85}, {"E", 0.9, 0.04},        {"W", -0.95, 0.04}};
    const auto texts = shapesOf<Text>(drawing);
    ASSERT_EQ(texts.size(), std::size(labels));
    for (std::size_t i = 0; i < texts.size(); ++i) {
        EXPECT_EQ(texts[i].text, labels[i].text);
        EXPECT_DOUBLE_EQ(texts[i].x, labels[i].x * 3) << labels[i].text;
        EXPECT_DOUBLE_EQ(texts[i].y, labels[i].y * 3) << labels[i].text;
    }
}

// The axis 30' from the pole, seen from a site at 45° north:
//
//           Up (0)
//   W (270)   +   E (90)
//         Down (180)
TEST_F(Plot, FourDirections) {
    struct Case {
        double angle;
        double x, y;  // in arc-minutes
        double elevation, azimuth;
    };
    // At altitude 45° an azimuth of 30' of arc on the sky is 30' / cos 45° = 42.43'; the shift sideways
    // lowers the axis by 30'² / 2 · tan 45° in radians = 0.13'.
    const Case cases[] = {
        {0, 0, 30, 30, 0}, {90, 30, 0, -0.13, 42.43}, {180, 0, -30, -30, 0}, {270, -30, 0, -0.13, -42.43}};
    for (const Case& c : cases) {
        plot.PlotPolar(0.5, c.angle);
        const Circle dot = dotOf(window.picPolarPlot.drawing());
        EXPECT_NEAR(dot.x * 10 / 0.8, c.x, 1e-9) << c.angle;
        EXPECT_NEAR(dot.y * 10 / 0.8, c.y, 1e-9) << c.angle;
        EXPECT_DOUBLE_EQ(dot.radius, 0.05 * 4);
        EXPECT_NEAR(toNumber(window.txtAltitudeError.text()), c.elevation, 0.011) << c.angle;
        EXPECT_NEAR(toNumber(window.txtAzimuthError.text()), c.azimuth, 0.011) << c.angle;
    }
}

TEST_F(Plot, FillsBoxesAndLog) {
    plot.PlotPolar(0.2, 0);
    EXPECT_EQ(window.txtMagnitude.text(), "12.00");
    EXPECT_EQ(window.lblRA_Unit.caption(), "arc-min");
    EXPECT_EQ(window.lblFromPole.caption(), " from pole");
    EXPECT_EQ(window.txtAngle.text(), "0.00");
    EXPECT_EQ(window.txtAltitudeError.text(), "12.00");
    EXPECT_EQ(window.lblElevation_Unit.caption(), "arc-min");
    EXPECT_EQ(window.lblUpFromPole.caption(), " Up from pole");
    EXPECT_EQ(window.txtAzimuthError.text(), "0.0000");
    EXPECT_EQ(window.lblAzimuth_Unit.caption(), "arc-min");
    EXPECT_EQ(window.lblRightOfPole.caption(), " Right of pole");
    EXPECT_THAT(log.lines, ElementsAre("Elevation error: 12.00 arc-min", "Azimuth error: 0.0000 arc-min"));
    EXPECT_FALSE(window.shown()) << "the window follows, also while it is closed";
}

TEST_F(Plot, WithoutAnErrorTheDotIsAtTheCentre) {
    for (const double angle : {0.0, 123.4}) {
        log.lines.clear();
        plot.PlotPolar(0, angle);
        EXPECT_NEAR(dotOf(window.picPolarPlot.drawing()).x, 0, 1e-12);
        EXPECT_NEAR(dotOf(window.picPolarPlot.drawing()).y, 0, 1e-12);
        EXPECT_EQ(window.picPolarPlot.drawing().scale.right, 1);
        EXPECT_THAT(log.lines,
                    ElementsAre("Elevation error: 0.0000 arc-min", "Azimuth error: 0.0000 arc-min"));
    }
}

TEST_F(Plot, ColoursOfTheNight) {
    settings.SaveSetting("PolarAlign", "GreenColors", "1");
    plot.PlotPolar(0.5, 30);
    EXPECT_EQ(dotOf(window.picPolarPlot.drawing()).color, color::kDarkGreen);
    for (const Label* unit : units()) EXPECT_NE(unit->foreColor(), color::kRed) << unit->name();

    settings.SaveSetting("PolarAlign", "GreenColors", "0");
    plot.PlotPolar(0.5, 30);
    EXPECT_EQ(dotOf(window.picPolarPlot.drawing()).color, color::kRed);
    for (const Label* unit : units()) EXPECT_EQ(unit->foreColor(), color::kRed) << unit->name();
}

TEST_F(Plot, OffsetsAndClearing) {
    plot.showOffsets("0.1000", "-0.2500");
    EXPECT_EQ(window.txtOffsetRA.text(), "0.1000");
    EXPECT_EQ(window.txtOffsetDec.text(), "-0.2500");
    plot.showBadSolution();
    EXPECT_EQ(window.txtOffsetRA.text(), "0.1000");
    EXPECT_EQ(window.txtOffsetDec.text(), "Bad Solution");
    plot.PlotPolar(0.5, 30);
    plot.clearPolarPlot();
    EXPECT_TRUE(window.picPolarPlot.drawing().shapes.empty());
}

TEST_F(Plot, WindowKeepsItsPlace) {
    const Rectangle initial = window.place();
    EXPECT_TRUE(panel.cmdPolarPlot.click());
    EXPECT_TRUE(window.shown());
    EXPECT_EQ(window.place(), initial);
    EXPECT_FALSE(plot.Timer1().enabled());

    window.placeByOperator({300, 200, initial.width, initial.height});
    window.closeByOperator();
    EXPECT_EQ(settings.root.read("PolarAlign", "PolarPlotTop"), "200");
    EXPECT_EQ(settings.root.read("PolarAlign", "PolarPlotLeft"), "300");

    settings.SaveSetting("PolarAlign", "PolarPlotTop", "250");
    settings.SaveSetting("PolarAlign", "PolarPlotLeft", "50000");  // of a screen that is gone
    panel.cmdPolarPlot.click();
    EXPECT_EQ(window.place().top, 250);
    EXPECT_LT(window.place().left, screen.workArea().width);
}

TEST_F(Plot, UnitsBlinkTogetherWhileTheTimerRuns) {
    window.show();
    window.lblUnits.setVisible(false);
    plot.Timer1().setEnabled(true);
    loop.sleep(Milliseconds{600});
    for (const Label* unit : units()) EXPECT_FALSE(unit->visible()) << unit->name();
    loop.sleep(Milliseconds{500});
    for (const Label* unit : units()) EXPECT_TRUE(unit->visible()) << unit->name();
    window.unload();
    loop.sleep(Milliseconds{500});
    for (const Label* unit : units()) EXPECT_TRUE(unit->visible()) << unit->name();
}

TEST_F(Plot, ErrorPlotOverThePlates) {
    plot.PlotError({5, 6, 7}, {-0.1, 0.2, 0.1});
    EXPECT_EQ(panel.txtRARange.text(), "30.0000");
    EXPECT_EQ(panel.txtDecError.text(), "0.3000");

    const Drawing& drawing = panel.picErrorPlot.drawing();
    EXPECT_DOUBLE_EQ(drawing.scale.left, 4.9);
    EXPECT_DOUBLE_EQ(drawing.scale.right, 7.1);
    EXPECT_DOUBLE_EQ(drawing.scale.top, 0.215);
    EXPECT_DOUBLE_EQ(drawing.scale.bottom, -0.115);
    const auto lines = shapesOf<Line>(drawing);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].x1, 5);
    EXPECT_EQ(lines[0].x2, 7);
    EXPECT_DOUBLE_EQ(lines[0].y1, 0.05);
    EXPECT_DOUBLE_EQ(lines[0].y2, 0.05);
    const auto dots = shapesOf<Circle>(drawing);
    ASSERT_EQ(dots.size(), 3U);
    for (const Circle& dot : dots) {
        EXPECT_TRUE(dot.filled);
        EXPECT_EQ(dot.color, color::kBlack);
        EXPECT_DOUBLE_EQ(dot.radius, 0.05);
    }
    EXPECT_EQ(dots[1].x, 6);
    EXPECT_EQ(dots[1].y, 0.2);
}

TEST_F(Plot, ErrorPlotWithoutAnExtentStaysEmpty) {
    struct Case {
        const char* why;
        engine::PerPlate ras, decErrors;
        const char *raRange, *decError;
    };
    const Case cases[] = {
        {"one declination error", {5, 6, 7}, {0.2, 0.2, 0.2}, "30.0000", "0.0000"},
        {"one right ascension", {5, 5, 5}, {0.1, 0.2, 0.3}, "0.0000", "0.2000"},
    };
    for (const Case& c : cases) {
        plot.PlotError({5, 6, 7}, {-0.1, 0.2, 0.1});
        plot.PlotError(c.ras, c.decErrors);
        EXPECT_EQ(panel.txtRARange.text(), c.raRange) << c.why;
        EXPECT_EQ(panel.txtDecError.text(), c.decError) << c.why;
        EXPECT_TRUE(panel.picErrorPlot.drawing().shapes.empty()) << c.why;
    }
}

}  // namespace
}  // namespace vantrel::correction

#include "correction/polar_plot.h"

#include <cmath>
#include <sstream>

#include <gmock/gmock.h>

#include "correction/polar_chart.h"
#include "correction_world.h"

namespace vantrel::correction {
namespace {

using namespace platform;
using testing::ElementsAre;

/// "circle 0 0 0.8", "dot 1 2 0.05 255" with its colour, "line 0 -1 0 1", "text 0.5 0.9 Up".
std::vector<std::string> shapesOf(const Drawing& drawing) {
    std::vector<std::string> texts;
    for (const auto& shape : drawing.shapes) {
        std::ostringstream text;
        const auto add = [&](std::initializer_list<double> numbers) {
            for (const double number : numbers) text << ' ' << std::round(number * 1e6) / 1e6 + 0.0;
        };
        if (const auto* circle = std::get_if<Circle>(&shape)) {
            text << (circle->filled ? "dot" : "circle");
            add({circle->x, circle->y, circle->radius});
            if (circle->filled) text << ' ' << circle->color;
        } else if (const auto* line = std::get_if<Line>(&shape)) {
            text << "line";
            add({line->x1, line->y1, line->x2, line->y2});
        } else if (const auto* print = std::get_if<Text>(&shape)) {
            text << "text";
            add({print->x, print->y});
            text << ' ' << print->text;
        }
        texts.push_back(text.str());
    }
    return texts;
}

/// Drawn last.
Circle dotOf(const Drawing& drawing) { return std::get<Circle>(drawing.shapes.back()); }

class Plot : public testing::Test {
  protected:
    Plot() { form.show(); }

    std::vector<Label*> units() {
        return {&window.lblRA_Unit, &window.lblElevation_Unit, &window.lblAzimuth_Unit, &window.lblUnits};
    }

    VirtualTime time{*parseInstant("2026-11-24T20:00:00Z"), std::chrono::hours{2}};
    QueuedEventLoop loop{time};
    vantrel::test::MemorySettingsPort settings;
    vantrel::test::RecordingLog log;
    vantrel::test::Mount telescope{loop};  // at latitude 45
    Screen screen{{0, 0, 1920, 1040}};
    Form form{screen, "frmMain", "", {0, 0, 600, 500}};
    ErrorPlotPanel panel{form};
    frmPolarPlot window{screen};
    PolarPlot plot{loop, settings, log, telescope, window, panel};
};

TEST(ErrorUnitsTest, FourDecimalsBelowAnArcMinute) {
    for (const auto& [value, text] :
         {std::pair{12.345, "12.35"}, {-0.25, "-0.2500"}, {0.99999, "1.0000"}, {1, "1.00"}, {-1, "-1.00"}})
        EXPECT_EQ(ErrorUnits(value).text, text);
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

TEST(PolarChartTest, HasRingsLabelsAndTheAxis) {
    const Drawing drawing = polarChart(25, 0, color::kRed);  // three rings of 10
    EXPECT_EQ(drawing.scale, (DrawingScale{.left = -3, .top = 3, .right = 3, .bottom = -3}));
    EXPECT_THAT(shapesOf(drawing),
                ElementsAre("circle 0 0 0.8", "circle 0 0 1.6", "circle 0 0 2.4", "line -2.55 0 2.55 0",
                            "line 0 -2.55 0 2.55", "text 2.34 -2.1 30", "text 1.95 -2.4 arc-min",
                            "text -0.15 2.94 Up", "text -0.3 -2.55 Down", "text 2.7 0.12 E",
                            "text -2.85 0.12 W", "dot 0 2 0.15 255"));
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
    plot.PlotPolar(0, 123.4);
    EXPECT_NEAR(dotOf(window.picPolarPlot.drawing()).x, 0, 1e-12);
    EXPECT_NEAR(dotOf(window.picPolarPlot.drawing()).y, 0, 1e-12);
    EXPECT_THAT(log.lines, ElementsAre("Elevation error: 0.0000 arc-min", "Azimuth error: 0.0000 arc-min"));
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
    EXPECT_THAT(shapesOf(drawing), ElementsAre("line 5 0.05 7 0.05", "dot 5 -0.1 0.05 0", "dot 6 0.2 0.05 0",
                                               "dot 7 0.1 0.05 0"));
}

TEST_F(Plot, ErrorPlotWithoutAnExtentStaysEmpty) {
    plot.PlotError({5, 6, 7}, {0.2, 0.2, 0.2});
    EXPECT_EQ(panel.txtRARange.text(), "30.0000");
    EXPECT_EQ(panel.txtDecError.text(), "0.0000");
    EXPECT_TRUE(panel.picErrorPlot.drawing().shapes.empty());
    plot.PlotError({5, 5, 5}, {0.1, 0.2, 0.3});
    EXPECT_EQ(panel.txtRARange.text(), "0.0000");
    EXPECT_TRUE(panel.picErrorPlot.drawing().shapes.empty());
}

}  // namespace
}  // namespace vantrel::correction

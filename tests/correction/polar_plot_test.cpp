#include "correction/polar_plot.h"

#include <cmath>
#include <sstream>

#include <gmock/gmock.h>

#include "correction/plot_export.h"
#include "correction/polar_chart.h"
#include "correction_world.h"
#include "platform/queued_event_loop.h"
#include "platform/user_desktop.h"
#include "support/memory_settings_port.h"
#include "support/recording_log.h"
#include "support/temp_folder.h"

namespace vantrel::correction {
namespace {

using namespace platform;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

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
        } else if (const auto* print = std::get_if<DrawnText>(&shape)) {
            text << "text";
            add({print->x, print->y});
            text << ' ' << print->text;
        } else if (const auto* ellipse = std::get_if<Ellipse>(&shape)) {
            text << "ellipse";
            add({ellipse->x, ellipse->y, ellipse->major, ellipse->minor, ellipse->direction});
        } else if (const auto* cross = std::get_if<Cross>(&shape)) {
            text << "cross";
            add({cross->x, cross->y, cross->reach});
        }
        texts.push_back(text.str());
    }
    return texts;
}

Circle dotOf(const Drawing& drawing) {
    for (const Shape& shape : drawing.shapes)
        if (const auto* circle = std::get_if<Circle>(&shape); circle != nullptr && circle->filled)
            return *circle;
    return {};
}

std::vector<std::string> shapesOf(const Shapes& shapes) {
    return shapesOf(Drawing{.scale = {}, .shapes = shapes});
}

/// By its amplitude in arc-minutes and its angle; the covariance in arc-seconds squared.
engine::AxisEstimate axisAt(double amplitude, double angle, const engine::AxisCovariance& covariance) {
    engine::AxisEstimate axis;
    axis.validity = engine::Validity::kValid;
    axis.written = {.ErrorAmplitude = amplitude / 60, .ErrorAngle = angle};
    axis.covariance = covariance;
    return axis;
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
    test::Mount telescope{loop};  // at latitude 45
    Screen screen{{0, 0, 1920, 1040}};
    Form form{screen, "frmMain", "", {0, 0, 600, 500}};
    ErrorPlotPanel panel{form};
    frmPolarPlot window{screen};
    ResultPanel result{form};
    PolarPlot plot{loop, settings, log, telescope, window, panel, result};
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

// East 3" and up 4" of one sigma, or leaning to the east: 30" along the line from down west to up east, 10"
// across, in a covariance (30² + 10²) / 2 = 500 and (30² - 10²) / 2 = 400. On one ring an arc-minute is 0.8.
TEST(PolarChartTest, TheEstimateIsACrossWithItsEllipse) {
    const ChartRange oneRing = chartRange(0.5), tenRings = chartRange(9.5), coarse = chartRange(20);
    const struct {
        const char* why;
        const ChartRange& range;
        double amplitude, angle;  // arc-minutes, degrees
        double eastEast, eastUp, upUp;
        const char* shapes;
    } cases[] = {
        {"round and above", oneRing, 0.5, 0, 900, 0, 900, "cross 0 0.4 0.09, ellipse 0 0.4 0.4 0.4 0"},
        {"uncertain up", oneRing, 0.5, 90, 100, 0, 900, "cross 0.4 0 0.09, ellipse 0.4 0 0.4 0.133333 0"},
        {"sideways", oneRing, 0.5, 270, 900, 0, 100, "cross -0.4 0 0.09, ellipse -0.4 0 0.4 0.133333 90"},
        {"east", oneRing, 0.5, 180, 500, 400, 500, "cross 0 -0.4 0.09, ellipse 0 -0.4 0.4 0.133333 45"},
        {"west", oneRing, 0.5, 180, 500, -400, 500, "cross 0 -0.4 0.09, ellipse 0 -0.4 0.4 0.133333 135"},
        {"an ellipse that the dot would cover", tenRings, 5, 90, 100, 0, 900, "cross 4 0 0.9"},
        {"a larger one", tenRings, 5, 90, 100, 0, 3600, "cross 4 0 0.9, ellipse 4 0 0.8 0.133333 0"},
        {"tens", coarse, 20, 0, 90000, 0, 90000, "cross 0 1.6 0.27, ellipse 0 1.6 0.4 0.4 0"},
        {"off", oneRing, 42, 90, 1, 0, 1, "line 0.82 0 0.95 0, text -0.98 -0.89 Least squares: 42.0'"},
    };
    for (const auto& c : cases) {
        const auto axis = axisAt(c.amplitude, c.angle, {c.eastEast, c.eastUp, c.upUp});
        std::string shapes;
        for (const std::string& shape : shapesOf(estimateMarks(c.range, axis)))
            shapes += (shapes.empty() ? "" : ", ") + shape;
        EXPECT_EQ(shapes, c.shapes) << c.why;
    }
    EXPECT_TRUE(estimateMarks(oneRing, {}).empty()) << "no estimate";
}

// At latitude 45 the air lifts the pole by 58", of which 0.8 units an arc-minute are 0.77. In the south it
// lifts the southern end, so that the northern one, which the chart shows, sinks.
TEST(PolarChartTest, BothPolesWhereTheyCanBeToldApart) {
    const struct {
        const char* why;
        double farthest;  // arc-minutes
        engine::Site site;
        double y;  // 0: only the middle is shown
        double truePoleText = 0;
    } cases[] = {
        {"north", 0.5, {45, {}}, 0.77},
        {"south", 0.5, {-45, {}}, -0.77, 0.1},
        {"ten rings", 9.5, {45, {}}, 0},
        {"seven rings", 6.5, {45, {}}, 0.77},
        {"rings of ten", 20, {45, {}}, 0},
        {"no air", 0.5, {45, engine::kNoAir}, 0},
        {"near the equator the lift leaves the chart", 0.5, {5, {}}, 0},
        {"at the pole itself", 0.5, {90, {}}, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const ChartRange range = chartRange(c.farthest);
        const Shapes marks = poleMarks(range, c.site);
        ASSERT_EQ(marks.size(), c.y == 0 ? 0u : 3u);
        if (marks.empty()) continue;
        const auto& mark = std::get<Line>(marks[0]);
        EXPECT_NEAR(mark.y1, c.y, 0.01);
        EXPECT_EQ(mark.y1, mark.y2);
        EXPECT_EQ(mark.x1, -mark.x2);
        EXPECT_EQ(std::get<DrawnText>(marks[1]).text, "Refracted pole");
        EXPECT_EQ(std::get<DrawnText>(marks[2]).text, "True pole");
        EXPECT_NEAR(std::get<DrawnText>(marks[2]).y, c.truePoleText * range.rings, 1e-12);
    }
}

TEST(PolarChartTest, EarlierMeasurementsFadeWithAge) {
    std::vector<engine::PolarError> earlier;
    earlier.reserve(32);
    for (int i = 0; i < 30; ++i) earlier.push_back({.ErrorAmplitude = 0.5 / 60, .ErrorAngle = 12.0 * i});
    earlier.push_back({.ErrorAmplitude = 3.0 / 60, .ErrorAngle = 0});  // beyond the chart
    earlier.push_back({.ErrorAmplitude = 0.5 / 60, .ErrorAngle = 90});
    const Shapes dots = earlierDots(chartRange(0.5), earlier, color::kRed);
    ASSERT_EQ(dots.size(), 19u) << "of the last twenty";
    double strongest = 0;
    for (const Shape& shape : dots) {
        const auto& dot = std::get<Circle>(shape);
        EXPECT_TRUE(dot.filled);
        EXPECT_GT(dot.strength, strongest);
        EXPECT_LT(dot.strength, 1);
        strongest = dot.strength;
    }
    EXPECT_NEAR(std::get<Circle>(dots.back()).x, 0.4, 1e-9);
    EXPECT_TRUE(earlierDots(chartRange(1), {}, color::kRed).empty());
}

TEST(PolarChartTest, TheToleranceIsARingWhereItCanBeSeen) {
    const struct {
        double arcMinutes, tolerance, radius;  // 0: no ring
    } rows[] = {{12.8, 2, 0.16}, {5, 2, 1.6}, {500, 2, 0}, {0.5, 2, 0}};
    for (const auto& row : rows) {
        const Shapes ring = toleranceRing(chartRange(row.arcMinutes), row.tolerance);
        ASSERT_EQ(ring.empty(), row.radius == 0) << row.arcMinutes;
        if (ring.empty()) continue;
        EXPECT_NEAR(std::get<Ellipse>(ring[0]).major, row.radius, 1e-9) << row.arcMinutes;
    }
}

// The axis 30' from the pole, seen from a site at 45° north:
//
//           Up (0)
//   W (270)   +   E (90)
//         Down (180)
//
// At altitude 45° an azimuth of 30' of arc on the sky is 30' / cos 45° = 42.43'; the shift sideways lowers
// the axis by 30'² / 2 · tan 45° in radians = 0.13'.
TEST_F(Plot, TellsBothErrorsInEveryDirectionAndByNight) {
    const struct {
        double amplitude, angle;  // arc-minutes, degrees
        const char *night, *elevation, *azimuth;
        double x, y;  // of the dot, in arc-minutes
    } cases[] = {{30, 90, "1", "-0.1309", "42.43", 30, 0},
                 {30, 270, "1", "-0.1309", "-42.43", -30, 0},
                 {30, 0, "0", "30.00", "0.0000", 0, 30},
                 {30, 180, "0", "-30.00", "0.0000", 0, -30},
                 {0, 123.4, "0", "0.0000", "0.0000", 0, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.angle);
        log.lines.clear();
        settings.SaveSetting("PolarAlign", "GreenColors", c.night);
        plot.PlotPolar(c.amplitude / 60, c.angle);
        const Drawing& drawing = window.picPolarPlot.drawing();
        const double unit = chartRange(c.amplitude).step / 0.8;
        EXPECT_NEAR(dotOf(drawing).x * unit, c.x, 1e-9);
        EXPECT_NEAR(dotOf(drawing).y * unit, c.y, 1e-9);
        const bool night = *c.night == '1';
        EXPECT_EQ(dotOf(drawing).color, night ? color::kDarkGreen : color::kRed);
        for (const Label* unitLabel : units()) EXPECT_EQ(unitLabel->foreColor() == color::kRed, !night);
        EXPECT_EQ(window.txtAltitudeError.text(), c.elevation);
        EXPECT_EQ(window.txtAzimuthError.text(), c.azimuth);
        EXPECT_THAT(log.lines, ElementsAre(std::string("Elevation error: ") + c.elevation + " arc-min",
                                           std::string("Azimuth error: ") + c.azimuth + " arc-min"));
    }
    EXPECT_FALSE(window.shown()) << "the window follows, also while it is closed";
    plot.PlotPolar(0.2, 0);
    EXPECT_EQ(window.txtMagnitude.text() + ", " + window.txtAngle.text(), "12.00, 0.00");
    EXPECT_EQ(window.lblFromPole.caption() + window.lblUpFromPole.caption() + window.lblRightOfPole.caption(),
              " from pole Up from pole Right of pole");
    for (const Label* unit : {&window.lblRA_Unit, &window.lblElevation_Unit, &window.lblAzimuth_Unit})
        EXPECT_EQ(unit->caption(), "arc-min");
    plot.showOffsets("0.1000", "-0.2500");
    EXPECT_EQ(window.txtOffsetRA.text() + ", " + window.txtOffsetDec.text(), "0.1000, -0.2500");
    plot.showBadSolution();
    EXPECT_EQ(window.txtOffsetRA.text() + ", " + window.txtOffsetDec.text(), "0.1000, Bad Solution");
    plot.clearPolarPlot();
    EXPECT_TRUE(window.picPolarPlot.drawing().shapes.empty());
}

TEST(RingFigures, NameAtMostThreeInnerRings) {
    const struct {
        ChartRange range;
        std::vector<std::string> figures;
    } cases[] = {{{1, 10}, {}},
                 {{2, 10}, {"10"}},
                 {{4, 1}, {"3", "2", "1"}},
                 {{5, 10}, {"30", "10"}},
                 {{11, 1}, {"8", "5", "2"}}};
    for (const auto& c : cases) {
        std::vector<std::string> figures;
        for (const Shape& shape : ringFigures(c.range)) figures.push_back(std::get<DrawnText>(shape).text);
        EXPECT_EQ(figures, c.figures) << c.range.rings;
    }
}

TEST_F(Plot, SaysOnTheMainWindowWhatToDo) {
    plot.PlotPolar(16.03 / 60, 133.56);
    EXPECT_FALSE(result.picDial.drawing().shapes.empty());
    EXPECT_EQ(result.lblAzimuthAdvice.caption(), "Azimuth 16.4' too far east: turn west");
    EXPECT_EQ(result.lblElevationAdvice.caption(), "Elevation 11.1' too low: raise");
    EXPECT_EQ(window.lblOnSky.caption(),
              "The azimuth knob's 16.4' are 11.6' on the sky (× cosine of the latitude)");
    plot.showBadSolution();
    plot.PlotPolar(0, 0);
    EXPECT_EQ(result.lblVerdict.caption(), "No valid result");
    EXPECT_EQ(result.lblAzimuthAdvice.caption(), "") << "never a word of a result that isn't one";
    EXPECT_TRUE(result.picDial.drawing().shapes.empty());
    plot.clearPolarPlot();
    EXPECT_EQ(result.lblVerdict.caption(), "No measurement yet");
}

/// The written result is 60' above the pole with 20" in elevation and 30" of sky in azimuth, which are 60"
/// about the vertical at latitude 60; the estimate is as far east with half of that.
engine::AxisCheck twoOpinions() {
    engine::AxisCheck check;
    check.written = axisAt(60, 0, {900, 0, 400});
    check.estimate = axisAt(60, 90, {225, 0, 100});
    check.estimate.fromTruePole = {.azimuth = 120, .elevation = -0.5};
    return check;
}

TEST_F(Plot, UncertaintiesAreThoseOfWhatStandsBeside) {
    const auto shown = [this] {
        return std::vector{window.txtElevationSigma.text(), window.txtAzimuthSigma.text(),
                           window.txtEstimateElevationSigma.text(), window.txtEstimateAzimuthSigma.text()};
    };
    engine::AxisCheck check = twoOpinions();
    plot.showCheck(check, {.latitude = 60}, false);
    EXPECT_THAT(shown(), ElementsAre("20.0", "60.0", "10.0", "30.0"));
    plot.showCheck(check, {.latitude = -60}, true);
    EXPECT_THAT(shown(), ElementsAre("10.0", "30.0", "10.0", "30.0")) << "least squares count";
    plot.showCheck(check, {.latitude = 90}, false);
    EXPECT_THAT(shown(), ElementsAre("20.0", "", "10.0", "")) << "no azimuth at the pole";
    check.written.covariance.reset();
    check.estimate.validity = engine::Validity::kUndetermined;
    plot.showCheck(check, {.latitude = 60}, false);
    EXPECT_THAT(shown(), ElementsAre("", "", "", ""));
    plot.showCheck(twoOpinions(), {.latitude = 60}, false);
    plot.clearPolarPlot();
    EXPECT_THAT(shown(), ElementsAre("", "", "", ""));
}

TEST_F(Plot, TheEstimateAndThePolesComeAfterTheWrittenDrawing) {
    plot.showCheck(twoOpinions(), {.latitude = 45}, false);
    plot.PlotPolar(0.01, 0);
    const auto shapes = shapesOf(window.picPolarPlot.drawing());
    const auto plain = shapesOf(polarChart(0.6, 0, color::kRed));
    ASSERT_GT(shapes.size(), plain.size() + 3);
    EXPECT_TRUE(std::equal(plain.begin(), plain.end(), shapes.begin()));
    EXPECT_THAT(shapes, testing::Contains("text -0.98 -0.89 Least squares: 60.0'"));
    EXPECT_THAT(shapes, testing::Contains(testing::HasSubstr("Refracted pole")));

    plot.clearPolarPlot();
    plot.PlotPolar(0.01, 0);
    EXPECT_EQ(shapesOf(window.picPolarPlot.drawing()), plain) << "nothing of the measurement before";
}

TEST_F(Plot, OffersTheEstimateOnlyWhereItIsBetter) {
    const engine::AxisCheck differing = twoOpinions();
    engine::AxisCheck agreeing = differing;
    agreeing.estimate.fromTruePole = agreeing.written.fromTruePole;
    engine::AxisCheck astride = agreeing;
    astride.astrideSixHours = true;
    engine::AxisCheck byHand = agreeing;
    byHand.written = {.method = engine::EstimateMethod::kWrittenCalculation,
                      .validity = engine::Validity::kNoReadings};
    engine::AxisCheck disagreeing = differing;
    disagreeing.verdict.agreement = engine::Agreement::kSuspicious;
    engine::AxisCheck noEstimate = astride;
    noEstimate.estimate = {};
    const struct {
        const char* why;
        const engine::AxisCheck& check;
        bool leastSquares, offered;
    } cases[] = {
        {"both say the same", agreeing, false, false},
        {"they differ", differing, false, true},
        {"it counts already", differing, true, false},
        {"both sides of six hours", astride, false, true},
        {"no readings, no written result", byHand, false, true},
        {"the plates don't agree", disagreeing, false, false},
        {"no estimate", noEstimate, false, false},
    };
    for (const auto& c : cases) {
        plot.showCheck(c.check, {.latitude = 45}, c.leastSquares);
        EXPECT_EQ(window.lblDoubt.visible(), c.offered) << c.why;
        EXPECT_EQ(window.cmdPlates.backColor() == color::kRed, c.offered) << c.why;
    }
}

TEST_F(Plot, EarlierMeasurementsOfTheSiteAreShownWhenWanted) {
    plot.history = [] {
        const auto of = [](double latitude, double amplitude) {
            return engine::PastMeasurement{.telescope = "", .latitude = latitude, .amplitude = amplitude};
        };
        return std::vector{of(45.01, 0.2), of(-45, 0.3), of(45, 0.4), of(45, 0.50001)};
    };
    const auto dots = [this] {
        std::vector<double> heights;
        for (const Shape& shape : window.picPolarPlot.drawing().shapes)
            if (const auto* circle = std::get_if<Circle>(&shape); circle != nullptr && circle->strength < 1)
                heights.push_back(circle->y);
        return heights;
    };
    window.show();
    EXPECT_FALSE(window.chkHistory.ticked());
    plot.showCheck({}, {.latitude = 45, .air = engine::kNoAir}, false);
    plot.PlotPolar(0.5, 0);
    EXPECT_TRUE(dots().empty());
    window.chkHistory.click();
    EXPECT_THAT(dots(), ElementsAre(testing::DoubleNear(0.96, 1e-9), testing::DoubleNear(1.92, 1e-9)))
        << "another site, and the measurement that is shown itself";
    EXPECT_EQ(settings.root.read("PolarAlign", "ShowHistory"), "1");
    plot.clearPolarPlot();
    window.chkHistory.click();
    EXPECT_TRUE(window.picPolarPlot.drawing().shapes.empty()) << "nothing measured, nothing drawn";
    EXPECT_EQ(settings.root.read("PolarAlign", "ShowHistory"), "0");
}

TEST_F(Plot, WindowComesBackOntoTheScreen) {
    EXPECT_TRUE(panel.cmdPolarPlot.click());
    EXPECT_TRUE(window.shown());
    EXPECT_FALSE(plot.Timer1().enabled());
    window.placeByOperator({300, 200, window.place().width, window.place().height});
    window.closeByOperator();
    EXPECT_EQ(settings.root.read("PolarAlign", "PolarPlotLeft"), "300");
    settings.SaveSetting("PolarAlign", "PolarPlotLeft", "50000");  // of a screen that is gone
    panel.cmdPolarPlot.click();
    EXPECT_EQ(window.place().top, 200);
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
    for (const auto& [plates, range] :
         {std::pair{std::vector{5., 6., 7.}, "30.0000"}, {{5, 5, 5}, "0.0000"}}) {
        const bool level = plates[0] != plates[1];
        plot.PlotError(plates, level ? std::vector{0.2, 0.2, 0.2} : std::vector{0.1, 0.2, 0.3});
        EXPECT_EQ(panel.txtRARange.text(), range);
        EXPECT_EQ(panel.txtDecError.text(), level ? "0.0000" : "0.2000");
        EXPECT_TRUE(panel.picErrorPlot.drawing().shapes.empty()) << "no extent";
    }
}

// ---- export

/// A desktop with a clipboard, unless it is taken away.
struct Clipboard : UserDesktop {
    using UserDesktop::UserDesktop;
    bool open(const std::string& /*file*/) override { return false; }
    bool copyText(const std::string& copied) override {
        text = copied;
        return there;
    }
    bool copyDial(const Drawing& drawing) override {
        shapes = drawing.shapes.size();
        return there;
    }
    bool there = true;
    std::string text;
    std::size_t shapes = 0;
};

class Export : public testing::Test {
  protected:
    Export() {
        window.show();
        folders.map("C:\\pictures", folder.path());
        settings.SaveSetting("PolarAlign", "ImagePath", "C:\\pictures");
        window.txtMagnitude.setText("21.07");
        window.lblRA_Unit.setCaption("arc-min");
        window.txtAltitudeError.setText("-11.07");
        window.txtElevationSigma.setText("3.1");
        window.lblElevation_Unit.setCaption("arc-min");
    }

    std::string told() const { return window.lblExport.caption(); }

    vantrel::test::TempFolder folder;
    FolderMap folders{folder.path()};
    Clipboard desktop{folders, ""};
    VirtualTime time{*parseInstant("2026-11-24T20:00:10Z"), std::chrono::hours{0}};
    vantrel::test::MemorySettingsPort settings;
    vantrel::test::RecordingLog log;
    Screen screen{{0, 0, 1920, 1040}};
    frmPolarPlot window{screen};
    PlotExport plotExport{window, desktop, folders, time, settings, log};
};

TEST_F(Export, CopiesPictureAndFiguresAndSavesIntoTheImageFolder) {
    window.mnuSaveSvg.click();
    EXPECT_EQ(told(), "There is no measurement to save");
    window.picPolarPlot.setDrawing({.scale = {-2, 2, 2, -2},
                                    .shapes = {Circle{0, 0, 0.8}, Circle{1, -1, 0.1, true, color::kRed},
                                               DrawnText{-0.1, 1.9, "Up & <away>"}, Line{-1, 0, 1, 0},
                                               Ellipse{1, 1, 0.4, 0.2, 30}, Cross{1, 1, 0.1}}});
    window.mnuCopyPicture.click();
    EXPECT_EQ(desktop.shapes, 6u);
    EXPECT_EQ(told(), "The picture is copied");
    window.mnuCopyValues.click();
    EXPECT_THAT(desktop.text,
                AllOf(HasSubstr("Distance from the pole: 21.07 arc-min\r\n"),
                      HasSubstr("Elevation: -11.07 arc-min ± 3.1″\r\n"), HasSubstr("Azimuth:  \r\n")));
    EXPECT_TRUE(log.has("The values are copied"));
    desktop.there = false;
    window.mnuCopyValues.click();
    EXPECT_EQ(told(), "There is no clipboard here");

    window.mnuSavePng.click();
    EXPECT_EQ(told(), "Pictures of this kind can't be made here") << "nothing paints";
    window.mnuSaveSvg.click();
    EXPECT_EQ(told(), "Saved as C:\\pictures\\PolarPlot_2026-11-24_20_00_10.svg");
    const std::string svg = vantrel::test::contentsOf(folder.path() / "PolarPlot_2026-11-24_20_00_10.svg");
    EXPECT_THAT(svg, AllOf(HasSubstr(R"(width="600.00" height="600.00")"),
                           HasSubstr(R"(<circle cx="300.00" cy="300.00" r="120.00" fill="none")"),
                           HasSubstr(R"(cx="450.00" cy="450.00" r="15.00" fill="#ff0000")"),
                           HasSubstr("Up &amp; &lt;away>"), HasSubstr("rotate(30.00)"),
                           HasSubstr(R"(<line x1="435.00" y1="150.00" x2="465.00" y2="150.00")")));
    settings.SaveSetting("PolarAlign", "ImagePath", "C:\\nowhere");
    window.mnuSaveSvg.click();
    EXPECT_EQ(told(), "C:\\nowhere\\PolarPlot_2026-11-24_20_00_10.svg can't be written");
}

}  // namespace
}  // namespace vantrel::correction

// The measurement's story: what the operator sees and can do, whatever the plates do.

#include <algorithm>
#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "axis/simulated_mount.h"
#include "engine/manual_exposures.h"
#include "engine/simulator_exposure.h"
#include "platform/color.h"
#include "support/engine_world.h"

namespace vantrel::engine {
namespace {

using platform::joinLines;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

/// A mount with an axis that is off, and an operator who answers the prompts.
struct MeasurementWorld : test::EngineWorld {
    MeasurementWorld() {
        mountOfSky.azimuth = 20;
        mountOfSky.elevation = -15;
        mountOfSky.site.latitude = mount.SiteLatitude();
        mountOfSky.declination = mount.dec;
        solver.sky = [this](const EquatorialPosition& sentTo) { return lookingFrom(sentTo); };
        panel.txtDeltaRA.setText("20");
        loop.setAttendant([this] { attend(); });
    }

    PlateSolution lookingFrom(const EquatorialPosition& sentTo) {
        state.PlateRAError = 0;
        PlateSolution seen = test::solutionOf(
            mountOfSky.plate(mount.lst - sentTo.RA, test::SimulatedAir(standardAir(0))), mount.lst);
        seen.dec += jumps[static_cast<int>(solver.solved.size())] / 3600;
        return seen;
    }

    /// Runs; answers each prompt in turn, and clicks Skip or Next where there are no more answers.
    void measure(std::vector<std::function<void()>> answersOfOperator = {}) {
        answers = std::move(answersOfOperator);
        log.lines.clear();
        panel.cmdRun.click();
    }

    bool anythingLit() const {
        const auto lit = [](const platform::Label* light) {
            return light->backColor() != platform::color::kIndicatorOffBack;
        };
        return std::ranges::any_of(std::array{&panel.lblSlew, &panel.lblExpose, &panel.lblSolve,
                                              &panel.lblFrame1, &panel.lblFrame2, &panel.lblFrame3},
                                   lit) ||
               Indicators::isLit(panel.cmdRun) || Indicators::isLit(panel.cmdStop);
    }
    std::vector<std::string> lines(const std::string& part) const {
        std::vector<std::string> found;
        for (const std::string& line : log.lines)
            if (line.find(part) != std::string::npos) found.push_back(line);
        return found;
    }

    test::SimulatedMount mountOfSky;
    std::map<int, double> jumps;  // arc-seconds in declination at the solve of this number
    std::vector<std::function<void()>> answers;
    std::string whenAsked;  // buttons and instructions at the last prompt

  private:
    void attend() {
        constexpr std::chrono::seconds kToThink{1};
        if (!panel.cmdNext.enabled() || time.sinceStart() < thinksUntil_) return;
        thinksUntil_ = time.sinceStart() + kToThink;
        whenAsked = enabledButtons() + "\r\n" + panel.txtInstructions.text();
        if (answers.empty()) {
            panel.cmdSkip.click() || panel.cmdNext.click();
        } else {
            const auto answer = answers.front();
            answers.erase(answers.begin());
            answer();
        }
    }
    platform::Milliseconds thinksUntil_{0};
};

const std::string kStart =
    joinLines({"Polar Align Measurement Start", "1. Slew and Sync Telescope", "     to any Star",
               "2. Click Run Button to start", "     Alignment Measurement"});
const std::string kOffer =
    joinLines({"Stop Next Skip", "Polar Align Measurement", "Completed Successfully !!",
               "1. Click Next to correct", "      misalignment, or click", "      Skip Button to end"});
std::string refusal(const std::string& first, const std::string& second = "1. Try smaller Telescope Slew") {
    return joinLines({"Stop Next", first, "", second, "", "Click Next to try again"});
}

TEST(MeasurementRun, TakesPlatesComparesThemAndGoesBack) {
    MeasurementWorld world;
    std::vector<std::string> stages;
    const auto told = world.panel.lblProgress.changed.subscribe([&] {
        const std::string& line = world.panel.lblProgress.caption();
        const std::string stage = line.substr(0, line.find_first_of(",;"));
        if (stages.empty() || stages.back() != stage) stages.push_back(stage);
    });
    world.measure();
    EXPECT_THAT(stages,
                ElementsAre("Plate 1 of 3: exposing", "Plate 1 of 3: solving", "Plate 2 of 3: slewing",
                            "Plate 2 of 3: settling", "Plate 2 of 3: exposing", "Plate 2 of 3: solving",
                            "Plate 3 of 3: slewing", "Plate 3 of 3: settling", "Plate 3 of 3: exposing",
                            "Plate 3 of 3: solving", "Slewing back", "Measured: Next corrects",
                            "Measurement complete"));
    EXPECT_EQ(world.whenAsked, kOffer);
    EXPECT_THAT(world.log.lines, Contains("Alignment Run Complete"));
    EXPECT_THAT(world.lines("Theta = "),
                ElementsAre(testing::MatchesRegex("A = -?0\\.00..  C = 1\\.0000  Theta = .\\.....")));
    ASSERT_EQ(world.mount.slews.size(), 3u);
    EXPECT_NEAR(world.mount.slews[1].RA, 2.5 + 40. / 15, 1e-9) << "eastward";
    EXPECT_NEAR(world.mount.slews[2].RA, 2.5, 1e-9) << "back";
    EXPECT_EQ(world.panel.txtInstructions.text(), kStart);
    EXPECT_EQ(world.enabledButtons(), "Run Expose");
    EXPECT_FALSE(world.anythingLit());
    for (const platform::Label* light : {&world.panel.lblSlew, &world.panel.lblExpose, &world.panel.lblSolve})
        EXPECT_EQ(light->foreColor(), platform::color::kIndicatorOffFore) << light->name();
    EXPECT_EQ(world.state.ExposureDec, 20);
    EXPECT_NEAR(world.display.amplitude * 60, std::hypot(20 * std::cos(45 * test::kDegree), 15), 1.5)
        << "without air, which the written calculation doesn't know";
}

TEST(MeasurementRun, StopIsLitUntilItHasHadItsEffect) {
    for (const auto& [stored, lit] : {std::pair{"", platform::color::kRed},
                                      {"0", platform::color::kRed},
                                      {"1", platform::color::kDarkGreen}}) {
        MeasurementWorld world;
        world.settings.SaveSetting("PolarAlign", "GreenColors", stored);
        bool wasLit = false;
        const auto looking = world.panel.cmdStop.changed.subscribe(
            [&, lit = lit] { wasLit = wasLit || world.panel.cmdStop.backColor() == lit; });
        world.measure({[&] { world.panel.cmdStop.click(); }});
        EXPECT_TRUE(wasLit) << stored;
        EXPECT_FALSE(Indicators::isLit(world.panel.cmdStop));
    }
}

TEST(MeasurementRun, RefusesPlansAndPlatesWithTheTextForEach) {
    const auto between = [](const std::string& what, const char* limits) {
        return joinLines({"Stop Next", "***ERROR***ERROR***", what + " must be ", limits, "",
                          "Enter a new value, click Next"});
    };
    const std::string kSlew = between("Telescope Slew", "between 1 and 45 degrees!");
    const std::string kPlates = between("Plates", "between 3 and 9!");
    const std::string kExposures = between("Exposures per Plate", "between 1 and 5!");
    const std::string kUnsolved =
        joinLines({"Stop Next", "Plate Solve Failed !!", "1. Is Scope is Synced to Star?",
                   "2. Check Plate Solve Settings", "", "Click Next to try again"});
    const auto cloudsOver = [](const std::set<int>& plates, const char* ofSoMany = "3") {
        return [=](MeasurementWorld& world) {
            world.panel.txtPlates.setText(ofSoMany);
            world.solver.clouds = plates;
        };
    };
    const struct {
        const char* why;
        std::function<void(MeasurementWorld&)> prepare;
        std::string asked;
    } cases[] = {
        {"slew too small", [](auto& w) { w.panel.txtDeltaRA.setText("0"); }, kSlew},
        {"slew too large", [](auto& w) { w.panel.txtDeltaRA.setText("46"); }, kSlew},
        {"two plates", [](auto& w) { w.panel.txtPlates.setText("2"); }, kPlates},
        {"ten plates", [](auto& w) { w.panel.txtPlates.setText("10"); }, kPlates},
        {"half an exposure", [](auto& w) { w.panel.txtPlateExposures.setText("1.5"); }, kExposures},
        {"plates that don't lie on one circle",
         [](auto& w) { w.panel.txtDeltaRA.setText("1"), w.jumps[2] = 7200; },
         joinLines({"Stop Next", "***ERROR***ERROR***", "Polar Align Error ", "Calculation Failed!", "",
                    "Try new conditions, click Next"})},
        {"no first plate", cloudsOver({1}), kUnsolved},
        {"no second plate, nor at half the slew", cloudsOver({2, 3}),
         refusal("Second Plate Solve Failed !!")},
        {"no third plate", cloudsOver({3}), refusal("Third Plate Solve Failed !!")},
        {"too many of five", cloudsOver({2, 3, 5}, "5"), refusal("Fifth Plate Solve Failed !!")},
        {"none of the first two of five", cloudsOver({1, 2}, "5"), kUnsolved},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        MeasurementWorld world;
        c.prepare(world);
        world.measure();
        EXPECT_EQ(world.whenAsked, c.asked);
        EXPECT_EQ(world.log.lines.back(), "Align Aborted");
        EXPECT_EQ(world.panel.txtInstructions.text(), kStart);
        EXPECT_EQ(world.enabledButtons(), "Run Expose");
        EXPECT_FALSE(world.anythingLit());
        EXPECT_FALSE(world.corrected.noted);
    }
}

TEST(MeasurementRun, StopEndsItWhereverItIs) {
    MeasurementWorld undisturbed;
    undisturbed.measure();
    const double duration =
        std::chrono::duration<double>(undisturbed.time.sinceStart() - std::chrono::hours{1}).count();
    for (double at = 0.05; at < duration; at += 0.5) {
        MeasurementWorld world;
        const auto click = world.loop.after(platform::Milliseconds(static_cast<long>(at * 1000)),
                                            [&] { world.panel.cmdStop.click(); });
        world.measure();
        ASSERT_EQ(world.lines("Operation stopped by operator").size(), 1u) << at;
        EXPECT_EQ(world.log.lines.back(), "Align Aborted") << at;
        EXPECT_EQ(world.enabledButtons(), "Run Expose") << at;
        EXPECT_FALSE(world.anythingLit()) << at;
    }
}

TEST(MeasurementRun, TriesTheSecondPlateAtHalfTheSlewAndTheThirdWhereItWas) {
    MeasurementWorld world;
    world.solver.clouds = {2};
    world.measure();
    EXPECT_THAT(world.log.lines, Contains("Trying again with half Telescope Slew"));
    std::vector<double> degrees;
    for (const EquatorialPosition& slew : world.mount.slews) degrees.push_back((slew.RA - 2.5) * 15);
    using testing::DoubleNear;
    EXPECT_THAT(degrees, ElementsAre(DoubleNear(20, 1e-9), DoubleNear(10, 1e-9), DoubleNear(20, 1e-9),
                                     DoubleNear(0, 1e-9)));
}

TEST(MeasurementRun, MoreThanThreePlatesCanSpareSome) {
    MeasurementWorld world;
    world.panel.txtDeltaRA.setText("8");
    world.panel.txtPlates.setText("6");
    world.panel.txtPlateExposures.setText("2");
    // The fourth plate's first exposure is lost, and both of the fifth.
    world.solver.clouds = {7, 9, 10};
    world.measure();
    EXPECT_EQ(world.camera.exposures.size(), 12u);
    EXPECT_EQ(world.display.plates, 5u);
    EXPECT_THAT(world.log.lines, Contains("Plate 5 is left out"));
    EXPECT_THAT(world.log.lines, Contains("Alignment Run Complete"));
    ASSERT_EQ(world.history.records.size(), 1u);
    const MeasurementRecord& record = world.history.records.front();
    EXPECT_EQ(record.exposure, 20);
    EXPECT_NEAR(record.check.estimate.fromTruePole.azimuth, 20, 0.05);
    EXPECT_NEAR(record.check.estimate.fromTruePole.elevation, -15, 0.05);
    EXPECT_NEAR(world.mount.slews.back().RA, 2.5, 1e-9) << "back over all of the arc";
}

TEST(MeasurementRun, PlatesWeighByTheSolversOwnErrorsWhereItTellsThem) {
    const auto toldFor = [](std::optional<SolutionErrors> errors, bool quality = true) {
        MeasurementWorld world;
        world.solver.sky = [&world, errors, quality](const EquatorialPosition& sentTo) {
            PlateSolution solution = world.lookingFrom(sentTo);
            solution.errors = errors;
            if (!quality) solution.quality.reset();
            return solution;
        };
        world.measure();
        return world.lines("Least squares: ellipse").back();
    };
    EXPECT_NE(toldFor(SolutionErrors{.centre = 3, .roll = 60}), toldFor(std::nullopt));
    EXPECT_EQ(toldFor(SolutionErrors{.centre = 0, .roll = 60}), toldFor(std::nullopt));
    EXPECT_EQ(toldFor(std::nullopt, false), toldFor(SolutionErrors{.centre = 1, .roll = 60})) << "as assumed";
}

TEST(MeasurementRun, APlateLeftOutOrRedoneChangesTheResult) {
    MeasurementWorld world;
    world.panel.txtDeltaRA.setText("10");
    world.panel.txtPlates.setText("5");
    world.jumps[3] = 8;
    auto& boxes = world.plates.rows;
    std::vector<double> elevations;
    const auto note = [&] {
        elevations.push_back(world.history.records.back().check.estimate.fromTruePole.elevation);
    };
    world.plates.show();
    world.measure({
        [&] { note(), boxes[2]->chkPlate.click(); },
        [&] {
            note(), boxes[2]->chkPlate.click(), world.plates.cmbRedo.choose("3"),
                world.plates.cmdRedo.click();
        },
        [&] { note(), world.plates.chkEstimate.click(), world.panel.cmdNext.click(); },
    });
    EXPECT_THAT(world.lines("Warning: The plates don't agree"),
                Contains(HasSubstr("the telescope moved in declination by 8.")));
    ASSERT_EQ(elevations.size(), 3u);
    EXPECT_GT(std::abs(elevations[0] + 15), 0.2) << "with the plate that jumped";
    EXPECT_NEAR(elevations[1], -15, 0.05) << "without it";
    EXPECT_NEAR(elevations[2], -15, 0.05) << "taken again";
    EXPECT_EQ(world.history.records[2].note, "plate 3 counts again");
    EXPECT_EQ(world.history.records[3].note, "plate 3 redone");
    ASSERT_TRUE(world.corrected.noted);
    EXPECT_NEAR(world.corrected.noted->first,
                world.history.records.back().check.estimate.written.ErrorAmplitude, 1e-12)
        << "the estimate counts";
    EXPECT_FALSE(world.plates.chkEstimate.reachable()) << "nothing changes under the correction's feet";
}

/// A mirror that flops and stays: three plates take it for another axis, a closing one doesn't.
TEST(MeasurementRun, AClosingPlateShowsWhatMoved) {
    for (const bool closing : {false, true}) {
        SCOPED_TRACE(closing);
        MeasurementWorld world;
        world.panel.txtDeltaRA.setText("15");
        world.settings.SaveSetting("PolarAlign", "ClosingPlate", closing ? "1" : "0");
        world.jumps = {{2, 5}, {3, 5}, {4, 5}};
        world.measure();
        EXPECT_EQ(world.whenAsked, kOffer);
        EXPECT_EQ(world.history.records.back().plates.size(), closing ? 4u : 3u);
        EXPECT_EQ(world.lines("Warning: The plates don't agree: the telescope moved in declination").size(),
                  closing ? 1u : 0u);
        ASSERT_EQ(world.mount.slews.size(), 3u);
        EXPECT_NEAR(world.mount.slews.back().RA, 2.5, 1e-9);
        EXPECT_FALSE(world.anythingLit());
    }
}

TEST(MeasurementRun, ThreePlatesAreTheFewest) {
    MeasurementWorld world;
    world.plates.show();
    world.measure({[&] { world.plates.rows[0]->chkPlate.click(); }});
    EXPECT_TRUE(world.plates.rows[0]->chkPlate.ticked());
    EXPECT_THAT(world.messages.shown.back().text, HasSubstr("needs three plates at least"));
    EXPECT_EQ(world.history.records.size(), 1u);
}

TEST(MeasurementRun, ARedoThatFailsOrIsStoppedLosesNothing) {
    for (const bool stop : {false, true}) {
        SCOPED_TRACE(stop);
        MeasurementWorld world;
        world.solver.clouds = {4};
        world.plates.show();
        world.measure({[&] {
            world.plates.cmdRedo.click();
            if (stop) world.panel.cmdStop.click();
        }});
        EXPECT_EQ(world.history.records.size(), 1u);
        EXPECT_EQ(world.log.lines.back(), stop ? "Align Aborted" : "Alignment Run Complete");
        EXPECT_EQ(world.lines("couldn't be solved again: the former one stays").size(), stop ? 0u : 1u);
        EXPECT_EQ(world.enabledButtons(), "Run Expose");
    }
}

/// An operator who does what he is told, 4 degrees from picture to picture, and overshoots a little.
TEST(MeasurementRun, GuidesTheHandThatTurnsTheAxis) {
    for (const bool eastward : {true, false}) {
        SCOPED_TRACE(eastward);
        MeasurementWorld world;
        world.panel.chkTurnByHand.setValue(1);
        world.state.SlewEast = eastward;
        world.panel.txtDeltaRA.setText("15");
        world.solver.clouds = {3, 8};
        double hourAngle = 1;
        world.solver.sky = [&](const EquatorialPosition&) {
            const std::string& told = world.panel.txtInstructions.text();
            const bool turning = told.find("Turn the axis") != std::string::npos ||
                                 told.find("Go on turning") != std::string::npos;
            if (turning) hourAngle += (eastward ? -4. : 4.) / 15;
            return world.lookingFrom({.RA = world.mount.lst - hourAngle, .Dec = 0});
        };
        world.measure();
        EXPECT_EQ(world.whenAsked, kOffer);
        EXPECT_TRUE(world.mount.slews.empty());
        EXPECT_EQ(world.lines("The plate is taken").size(), 2u);
        EXPECT_EQ(world.lines("Turned 16.0 of 15.0 degrees: Stop here, and hold still").size(), 2u);
        ASSERT_EQ(world.history.records.size(), 1u);
        const MeasurementRecord& record = world.history.records.front();
        EXPECT_TRUE(record.leastSquares) << "the written calculation needs the mount's readings";
        EXPECT_FALSE(record.plates.front().reading);
        EXPECT_NEAR(record.check.estimate.fromTruePole.azimuth, 20, 0.1);
        EXPECT_NEAR(record.check.estimate.fromTruePole.elevation, -15, 0.1);
    }
}

TEST(MeasurementRun, LetsTimePassBetweenLooksAtATurningMount) {
    MeasurementWorld world;
    world.panel.chkTurnByHand.setValue(1);
    world.solver.sky = [&](const EquatorialPosition&) {  // it never turns
        return world.lookingFrom({.RA = world.mount.lst - 1, .Dec = 0});
    };
    const auto stop = world.loop.after(std::chrono::seconds(60), [&] { world.panel.cmdStop.click(); });
    world.measure();
    EXPECT_THAT(world.solver.solved.size(), testing::AllOf(testing::Gt(10u), testing::Lt(305u)));
}

TEST(MeasurementRun, SaysBeforehandWhatIsToBeExpected) {
    MeasurementWorld world;
    world.panel.txtDeltaRA.setText("5");
    EXPECT_THAT(world.panel.lblProspect.caption(), HasSubstr("\u00b0: +- ")) << "follows the figure";
    world.files["D:\\garden.txt"] = "0 40\n180 85\n";
    world.settings.SaveSetting("PolarAlign", "HorizonFile", "D:\\garden.txt");
    world.measure();
    EXPECT_EQ(world.lines("Expected: +- ").size(), 1u);
    EXPECT_THAT(world.log.lines, Contains(HasSubstr("Warning: Plate 1 will stand")));
    EXPECT_THAT(world.log.lines, Contains("Alignment Run Complete")) << "it warns, and never forbids";

    world.settings.SaveSetting("PolarAlign", "HorizonFile", "D:\\nowhere.txt");
    world.measure();
    EXPECT_EQ(world.lines("D:\\nowhere.txt is no file of a horizon").size(), 1u);
    EXPECT_THAT(world.log.lines, Not(Contains(HasSubstr("will stand"))));
}

TEST(MeasurementRun, SlewsToThePlaceThatIsProposed) {
    MeasurementWorld world;
    world.panel.cmdPreflight.click();
    ASSERT_TRUE(world.preflightForm.cmdSlewThere.enabled());
    EXPECT_THAT(world.preflightForm.txtForecast.text(), HasSubstr("Plate 3: hour angle "));
    EXPECT_THAT(world.preflightForm.txtProposal.text(), HasSubstr("Begin at hour angle "));
    std::string duringTheSlew;
    const auto look =
        world.loop.after(std::chrono::seconds{1}, [&] { duringTheSlew = world.enabledButtons(); });
    world.preflightForm.cmdSlewThere.click();
    EXPECT_EQ(duringTheSlew, "Stop");
    ASSERT_EQ(world.mount.slews.size(), 1u);
    EXPECT_EQ(world.enabledButtons(), "Run Expose");
}

/// Counts the cross hairs.
struct Marks : OverlayPort {
    void CrossHair(const std::optional<PixelPosition>& /*centre*/) override { ++crosses; }
    double DrawCenteredRectangles(double fraction) override { return fraction; }
    void DrawLineOnImage(int, int, int, int) override {}
    int crosses = 0;
};

TEST(ManualExposures, MarkASeriesAndSolveWhatTheySave) {
    MeasurementWorld world;
    ExposurePanel panel(world.form);
    Marks marks;
    ManualExposures exposures(panel, world.panel, world.state, world.services, marks);
    panel.txtContinuousExposeInterval.setText("1");
    world.panel.txtExposeInterval.setText("2");
    panel.chkExposeContinuousEnable.setValue(1);
    panel.chkCrossHairEnable.setValue(1);
    const auto end = world.loop.after(std::chrono::seconds{10}, [&] { exposures.cmdExpose_Click(); });
    exposures.cmdExpose_Click();
    EXPECT_GT(marks.crosses, 3);
    EXPECT_EQ(static_cast<std::size_t>(marks.crosses), world.camera.exposures.size());
    exposures.cmdExposeSolve_Click();
    EXPECT_EQ(world.camera.saved, kSavedImage);
    world.state.UsingAxisSimulator = true;
    exposures.cmdExposeSolve_Click();
    EXPECT_EQ(world.mount.saved, std::string("C:\\") + kSavedImage + ".fit");
    EXPECT_THAT(world.solver.solved, ElementsAre(kSavedImage, kSavedImage));
}

}  // namespace
}  // namespace vantrel::engine

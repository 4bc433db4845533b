#include "engine/axis/axis_check.h"

#include <cmath>
#include <functional>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine/axis/comparison.h"
#include "engine/axis/least_squares.h"
#include "engine/axis/verdict.h"
#include "simulated_mount.h"

namespace vantrel::engine {
namespace {

using test::arc;
using test::Errors;
using test::SimulatedMount;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using Plates = std::vector<Plate>;

Plates measured(const test::SimulatedMount& mount, double middle, double slew) {
    std::mt19937 random(3);
    return test::blurred(mount.plates(test::arc(middle, slew, 3)), {.centre = 0.3, .roll = 5, .reading = 10},
                         random);
}

test::SimulatedMount askew(const Air& air = kNoAir) {
    return {.site = {50, air}, .azimuth = 40, .elevation = -25};
}

TEST(AxisCheck, TellsTheAxisItsUncertaintyAndThatThePlatesAgree) {
    const auto mount = askew();
    const AxisCheck check = checkAxis(measured(mount, 0.5, 20), mount.site);
    EXPECT_THAT(check.lines(),
                ElementsAre(AllOf(StartsWith("Least squares: azimuth 40.0"),
                                  HasSubstr("arc-min, elevation -2"), HasSubstr(", +- ")),
                            StartsWith("Least squares: ellipse "),
                            StartsWith("Least squares: from the refracted pole azimuth 40.0"),
                            StartsWith("The plates agree: chi-square "),
                            StartsWith("A jump of 5 arc-sec in declination could hide here and "
                                       "move the axis by up to 79.")));
    EXPECT_THAT(check.warnings(mount.site), IsEmpty());
}

TEST(AxisCheck, TellsWhatTheRollsHintAt) {
    const auto mount = askew();
    Plates plates = measured(mount, 0.5, 15);
    *plates[0].positionAngle -= 20.0 / 3600;
    *plates[2].positionAngle += 20.0 / 3600;
    const AxisCheck check = checkAxis(plates, mount.site);
    EXPECT_THAT(check.lines(), Contains(StartsWith("The plates' rolls hint at a jump in declination, or at a "
                                                   "camera that turned in each slew; a jump would have moved "
                                                   "the axis by ")));
    EXPECT_THAT(check.lines(), Not(Contains(HasSubstr("could hide here"))));
    EXPECT_THAT(check.warnings(mount.site), IsEmpty());
}

TEST(AxisCheck, WarnsOfEveryWayToBeWrong) {
    const struct {
        const char* why;
        Air air;
        double middle;  // hours
        std::function<void(Plates&)> spoil;
        const char* warning;
    } cases[] = {
        {"astride six hours", kNoAir, 6, [](Plates&) {}, "Plates lie on both sides of hour angle six"},
        {"astride six hours in the east", kNoAir, 18, [](Plates&) {},
         "Plates lie on both sides of hour angle six"},
        {"the air, of which the written calculation knows nothing", standardAir(0), 2, [](Plates&) {},
         "The written result and least squares differ by "},
        {"a jump in declination", kNoAir, 1, [](Plates& plates) { plates[1].declination += 0.05; },
         "The plates don't agree: the telescope moved in declination by "},
        {"a clutch that slipped", kNoAir, 1, [](Plates& plates) { plates[2].reading->hourAngle += 0.01; },
         "The plates don't agree: the mount's hour angle is off by "},
        {"a camera that turned", kNoAir, 1, [](Plates& plates) { *plates[0].positionAngle += 0.3; },
         "The plates don't agree: the camera turned by "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const auto mount = askew(c.air);
        Plates plates = measured(mount, c.middle, 20);
        c.spoil(plates);
        const auto warnings = checkAxis(plates, mount.site).warnings(mount.site);
        EXPECT_THAT(warnings, Contains(StartsWith(c.warning)));
        ASSERT_FALSE(warnings.empty());
        EXPECT_THAT(warnings.back(),
                    AllOf(StartsWith("Least squares gives azimuth "), HasSubstr("Set, Options")));
    }
}

TEST(AxisCheck, WarnsOfSlewsThatTellTooLittle) {
    const auto mount = askew();
    EXPECT_THAT(checkAxis(measured(mount, 0.5, 3), mount.site).warnings(mount.site),
                ElementsAre(AllOf(StartsWith("This measurement is uncertain by +- "),
                                  HasSubstr(": a longer slew tells more"))));
}

TEST(AxisCheck, SaysWhyThereIsNoResult) {
    const auto mount = askew();
    Plates same = measured(mount, 0, 20);
    same[1] = same[2] = same[0];
    EXPECT_THAT(checkAxis(same, mount.site).lines(),
                ElementsAre("Least squares: no result, the plates lie too close together"));
    same[0].declination = std::nan("");
    EXPECT_THAT(checkAxis(same, mount.site).lines(),
                ElementsAre("Least squares: no result, a plate's figures can't be right"));
}

// ---- comparison of two measurements

AxisEstimate estimateOf(const SimulatedMount& mount, double middle, std::mt19937& random) {
    const auto plates = test::blurred(mount.plates(arc(middle, 20, 3)), {}, random);
    return LeastSquares({.centreFloor = 0, .rollFloor = 0}).estimate(plates, mount.site);
}

TEST(Comparison, TellsAnotherAxisFromErrors) {
    SimulatedMount mount{.site = {-40, standardAir(0)}, .azimuth = 10, .elevation = 7};
    mount.site.air.uncertainty = 0;
    mount.declination = -20;
    SimulatedMount moved = mount;
    moved.azimuth += 1.5;  // arc-minutes: 69" on the sky
    std::mt19937 random(2);
    int same = 0;
    int different = 0;
    for (int trial = 0; trial < 200; ++trial) {
        const AxisEstimate first = estimateOf(mount, 1, random);
        const auto again = differenceOf(first, estimateOf(mount, -2, random), mount.site);
        const auto other = differenceOf(first, estimateOf(moved, -2, random), mount.site);
        ASSERT_TRUE(again && other);
        same += again->differs;
        different += other->differs;
        EXPECT_NEAR(other->east, 69, 60);
    }
    EXPECT_LE(same, 3);
    EXPECT_GE(different, 190);
}

TEST(Comparison, NeedsTwoEstimates) {
    std::mt19937 random(2);
    const SimulatedMount mount;
    const AxisEstimate good = estimateOf(mount, 0, random);
    EXPECT_FALSE(differenceOf(good, AxisEstimate{}, mount.site));
    AxisEstimate blind = good;
    blind.covariance.reset();
    EXPECT_FALSE(differenceOf(blind, good, mount.site));
    EXPECT_EQ(differenceOf(good, good, mount.site)->distance, 0);
}

// ---- verdict

using Spoil = std::function<void(Plates&)>;

/// The telescope moved by so many arc-seconds of declination at these plates (from 0), the mount not knowing.
Spoil moved(std::size_t from, std::size_t to, double size) {
    return [=](Plates& plates) {
        for (std::size_t i = from; i < to; ++i) plates[i].declination += size / 3600;
    };
}

Spoil misread(std::size_t from, std::size_t to, double size) {
    return [=](Plates& plates) {
        for (std::size_t i = from; i < to; ++i) plates[i].reading->hourAngle += size / 3600 / 15;
    };
}

Spoil cameraTurned(std::size_t from, std::size_t to, double size) {
    return [=](Plates& plates) {
        for (std::size_t i = from; i < to; ++i) *plates[i].positionAngle += size / 3600;
    };
}

Spoil solvedElsewhere(std::size_t plate, double declination, double hourAngle, double turn) {
    return [=](Plates& plates) {
        plates[plate].declination += declination;
        plates[plate].hourAngle += hourAngle;
        *plates[plate].positionAngle += turn;
    };
}

struct Case {
    const char* why;
    int plates;
    double slew;
    Spoil spoil;
    Fault fault;
    int plate;  // 0: the plates can't tell which
    bool lasting;
    double roll = Errors().roll;
};

/// Share of measurements in which the fault is named first.
double named(const Case& c) {
    std::mt19937 random(11);
    SimulatedMount mount{.site = {50, standardAir(300)}, .azimuth = 20, .elevation = -12};
    const Errors errors{.roll = c.roll};
    const auto exact = mount.plates(arc(0.5, c.slew, c.plates));
    const FitSettings settings{.centreFloor = 0, .rollFloor = 0, .readingSigma = errors.reading};
    constexpr int kTrials = 60;
    int count = 0;
    for (int trial = 0; trial < kTrials; ++trial) {
        Plates plates = test::blurred(exact, errors, random);
        c.spoil(plates);
        const Verdict verdict = judge(plates, mount.site, settings);
        if (verdict.agreement != Agreement::kSuspicious) continue;
        const Suspicion& first = verdict.suspicions.front();
        count += first.fault == c.fault &&
                 (c.plate == 0 || (first.plate == c.plate && first.lasting == c.lasting));
    }
    return count / static_cast<double>(kTrials);
}

TEST(Verdict, NamesWhatWentWrong) {
    using enum Fault;
    const Case cases[] = {
        {"a jump of 5\" at one of seven plates", 7, 5, moved(3, 4, 5), kDeclinationMoved, 4, false},
        {"a jump of 5\" that lasts", 7, 5, moved(4, 7, 5), kDeclinationMoved, 5, true},
        {"three see it in the roll, but not where", 3, 20, moved(1, 2, 5), kDeclinationMoved, 0, false, 8},
        {"a camera that turned", 5, 15, cameraTurned(2, 3, 150), kCameraTurned, 3, false},
        {"a camera that turned and stayed so", 5, 15, cameraTurned(2, 5, 150), kCameraTurned, 3, true},
        {"a clutch that slipped", 5, 15, misread(2, 5, 600), kReadingDisagrees, 3, true},
        {"one reading that is wrong", 5, 15, misread(1, 2, -600), kReadingDisagrees, 2, false},
        {"solved elsewhere", 5, 15, solvedElsewhere(3, 2, 0.3, 0), kFarFromMount, 4, false},
        {"of three as well", 3, 15, solvedElsewhere(1, -3, 0.2, 70), kFarFromMount, 2, false},
    };
    for (const Case& c : cases) EXPECT_GE(named(c), 0.9) << c.why;
}

TEST(Verdict, NamesAnAxisThatMoved) {
    SimulatedMount before{.site = {50, standardAir(300)}, .azimuth = 20, .elevation = -12};
    SimulatedMount after = before;
    after.elevation += 2;
    std::mt19937 random(3);
    int found = 0;
    for (int trial = 0; trial < 60; ++trial) {
        Plates plates = before.plates(arc(-1, 8, 8));
        const Plates later = after.plates(arc(-1, 8, 8));
        std::copy(later.begin() + 4, later.end(), plates.begin() + 4);
        const auto verdict = judge(test::blurred(plates, {}, random), before.site);
        const Suspicion& first = verdict.suspicions.front();
        found += verdict.agreement == Agreement::kSuspicious && first.fault == Fault::kAxisMoved &&
                 first.plate == 5;
    }
    EXPECT_GE(found, 54);
}

TEST(Verdict, SeldomRaisesAFalseAlarm) {
    for (const int count : {3, 7}) {
        std::mt19937 random(5);
        SimulatedMount mount{.site = {50, standardAir(300)}, .azimuth = 20, .elevation = -12};
        const auto exact = mount.plates(arc(0.5, 30.0 / (count - 1), count));
        int alarms = 0;
        for (int trial = 0; trial < 400; ++trial)
            alarms += judge(test::blurred(exact, {}, random), mount.site, {.centreFloor = 0, .rollFloor = 0})
                          .agreement != Agreement::kConsistent;
        EXPECT_LE(alarms, 12) << count;
    }
}

Spoil turningOn(double inEachSlew) {
    return [=](Plates& plates) {
        for (std::size_t i = 1; i < plates.size(); ++i) cameraTurned(i, plates.size(), inEachSlew)(plates);
    };
}

/// The rolls of three plates see what their centres can't; from four on the centres know better.
TEST(Verdict, HintsAtAJumpByTheRolls) {
    const struct {
        const char* why;
        int plates;
        double slew;
        Spoil spoil;
        double least, most;  // share of hints
        double move = 0;     // arc-seconds, by the jump
    } cases[] = {
        {"nothing happened", 3, 15, moved(0, 0, 0), 0, 0.01},
        {"a jump of 5\"", 3, 15, moved(1, 3, 5), 0.9, 1, 75},
        {"a camera that turns in each slew looks the same", 3, 15, turningOn(18), 0.9, 1},
        {"a camera that turns in each slew, and four plates", 4, 10, turningOn(10), 0, 0.02},
    };
    constexpr int kTrials = 200;
    const SimulatedMount mount{.azimuth = 20, .elevation = -12};
    for (const auto& c : cases) {
        std::mt19937 random(9);
        Plates exact = mount.plates(arc(0.5, c.slew, c.plates));
        c.spoil(exact);
        int hints = 0;
        double moves = 0;  // arc-seconds
        for (int trial = 0; trial < kTrials; ++trial) {
            const Plates plates = test::blurred(exact, {.centre = 0.05, .roll = 4, .reading = 30}, random);
            const auto hint = judge(plates, mount.site, {.centreFloor = 0.04}).hint;
            moves += hint ? hint->axisMove : 0;
            hints += hint.has_value();
        }
        EXPECT_GE(hints, c.least * kTrials) << c.why;
        EXPECT_LE(hints, c.most * kTrials) << c.why;
        if (c.move == 0) continue;
        EXPECT_NEAR(moves / hints, c.move, 0.1 * c.move) << c.why;
    }
}

TEST(Verdict, SaysHowMuchIsSeenAndWhenNothingCanBe) {
    SimulatedMount mount;
    auto plates = mount.plates(arc(0, 20, 3));
    for (Plate& plate : plates) plate.covariance = PlateCovariance::ofSigmas(0.3, 20);
    const auto smallest = [&](Fault fault) {
        double size = 0;
        for (const Suspicion& s : judge(plates, mount.site).suspicions)
            if (s.fault == fault) size = std::max(size, s.smallestVisible);
        return size;
    };
    EXPECT_GT(smallest(Fault::kDeclinationMoved), 10);
    EXPECT_LT(smallest(Fault::kDeclinationMoved), 60);

    for (Plate& plate : plates) plate.reading.reset();
    EXPECT_EQ(judge(plates, mount.site).agreement, Agreement::kConsistent);
    for (Plate& plate : plates) plate.positionAngle.reset();
    EXPECT_EQ(judge(plates, mount.site).agreement, Agreement::kUntestable);
    plates.resize(2);
    EXPECT_EQ(judge(plates, mount.site).agreement, Agreement::kNoEstimate);
}

/// A jump at the middle of three plates on an arc s passes for an axis that is off by jump / (1 - cos(s/2)).
TEST(Verdict, SaysHowFarAJumpMovesTheAxisUnnoticed) {
    const struct {
        int plates;
        double slew;
        double expected;  // arc-seconds
    } cases[] = {{3, 15, 5 / (1 - std::cos(15 * test::kDegree))},
                 {3, 30, 5 / (1 - std::cos(30 * test::kDegree))},
                 {4, 10, 0},
                 {5, 15, 0},
                 {7, 5, 0}};
    const SimulatedMount mount{.azimuth = 10, .elevation = -20};
    for (const auto& c : cases) {
        auto plates = mount.plates(arc(0, c.slew, c.plates));
        for (Plate& plate : plates) plate.covariance = PlateCovariance::ofSigmas(0.15, 20);
        const double hidden = judge(plates, mount.site, {.centreFloor = 0.05}).hiddenMove;
        EXPECT_NEAR(hidden, c.expected, 0.01 * c.expected) << c.plates << " of " << c.slew;
    }
}

TEST(Verdict, AnswersWhateverThePlates) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> any(-1, 1);
    const double extremes[] = {0, 90, -90, 1e-300, 1e18, std::nan("")};
    const auto number = [&](double scale) {
        const auto choice = static_cast<std::size_t>(std::abs(any(random)) * 60);
        return choice < std::size(extremes) ? extremes[choice] : scale * any(random);
    };
    for (int trial = 0; trial < 300; ++trial) {
        Plates plates(static_cast<std::size_t>(2 + trial % 5));
        for (Plate& plate : plates) {
            plate.hourAngle = number(12);
            plate.declination = number(90);
            plate.covariance = PlateCovariance::ofSigmas(number(1), number(20));
            if (any(random) > 0) plate.positionAngle = number(180);
            if (any(random) > 0) plate.reading = MountReading{number(12), number(90)};
        }
        const Site site{number(90), standardAir(number(9000))};
        const AxisEstimate estimate = LeastSquares().estimate(plates, site);
        const Verdict verdict = judge(plates, site);
        if (estimate.valid()) {
            EXPECT_TRUE(std::isfinite(estimate.written.ErrorAmplitude + estimate.covariance->sigma()));
            EXPECT_NE(verdict.agreement, Agreement::kNoEstimate);
        }
    }
}

}  // namespace
}  // namespace vantrel::engine

#include "engine/axis/verdict.h"

#include <cmath>
#include <functional>
#include <random>

#include <gtest/gtest.h>

#include "engine/axis/least_squares.h"
#include "simulated_mount.h"

namespace vantrel::engine {
namespace {

using Plates = std::vector<Plate>;
using test::arc;
using test::Errors;
using test::SimulatedMount;

/// The telescope moved by so many arc-seconds of declination at these plates (from 0), the mount not knowing.
void moveDeclination(Plates& plates, std::size_t from, std::size_t to, double size) {
    for (std::size_t i = from; i < to; ++i) plates[i].declination += size / 3600;
}

void misread(Plates& plates, std::size_t from, std::size_t to, double size) {
    for (std::size_t i = from; i < to; ++i) plates[i].reading->hourAngle += size / 3600 / 15;
}

void turnCamera(Plates& plates, std::size_t from, std::size_t to, double size) {
    for (std::size_t i = from; i < to; ++i) *plates[i].positionAngle += size / 3600;
}

struct Case {
    const char* why;
    int plates;
    double slew, declination;
    Errors errors;
    std::function<void(Plates&)> spoil;
    Fault fault;
    int plate;  // 0: the plates can't tell which
    bool lasting;
};

/// Share of measurements in which the fault is named first.
double named(const Case& c) {
    std::mt19937 random(11);
    SimulatedMount mount{.site = {50, standardAir(300)}, .azimuth = 20, .elevation = -12};
    mount.declination = c.declination;
    const auto exact = mount.plates(arc(0.5, c.slew, c.plates));
    const FitSettings settings{.centreFloor = 0, .rollFloor = 0, .readingSigma = c.errors.reading};
    constexpr int kTrials = 60;
    int count = 0;
    for (int trial = 0; trial < kTrials; ++trial) {
        Plates plates = test::blurred(exact, c.errors, random);
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
    const Case cases[] = {{"a jump of 5\" at one of seven plates",
                           7,
                           5,
                           30,
                           {},
                           [](Plates& p) { moveDeclination(p, 3, 4, 5); },
                           Fault::kDeclinationMoved,
                           4,
                           false},
                          {"a jump of 5\" that lasts",
                           7,
                           5,
                           30,
                           {},
                           [](Plates& p) { moveDeclination(p, 4, 7, 5); },
                           Fault::kDeclinationMoved,
                           5,
                           true},
                          {"three plates see it in the roll, but not at which plate",
                           3,
                           20,
                           30,
                           {.roll = 8},
                           [](Plates& p) { moveDeclination(p, 1, 2, 5); },
                           Fault::kDeclinationMoved,
                           0,
                           false},
                          {"a camera that turned",
                           5,
                           15,
                           30,
                           {},
                           [](Plates& p) { turnCamera(p, 2, 3, 150); },
                           Fault::kCameraTurned,
                           3,
                           false},
                          {"a camera that turned and stayed so",
                           5,
                           15,
                           30,
                           {},
                           [](Plates& p) { turnCamera(p, 2, 5, 150); },
                           Fault::kCameraTurned,
                           3,
                           true},
                          {"a clutch that slipped",
                           5,
                           15,
                           30,
                           {},
                           [](Plates& p) { misread(p, 2, 5, 600); },
                           Fault::kReadingDisagrees,
                           3,
                           true},
                          {"one reading that is wrong",
                           5,
                           15,
                           30,
                           {},
                           [](Plates& p) { misread(p, 1, 2, -600); },
                           Fault::kReadingDisagrees,
                           2,
                           false},
                          {"a plate that was solved elsewhere",
                           5,
                           15,
                           30,
                           {},
                           [](Plates& p) {
                               p[3].declination += 2;
                               p[3].hourAngle += 0.3;
                           },
                           Fault::kFarFromMount,
                           4,
                           false},
                          {"a plate of three that was solved elsewhere",
                           3,
                           15,
                           30,
                           {},
                           [](Plates& p) {
                               p[1].declination -= 3;
                               p[1].hourAngle += 0.2;
                               *p[1].positionAngle += 70;
                           },
                           Fault::kFarFromMount,
                           2,
                           false}};
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

/// The rolls of three plates see what their centres can't; from four on the centres know better.
TEST(Verdict, HintsAtAJumpByTheRolls) {
    const struct {
        const char* why;
        int plates;
        double slew;
        std::function<void(Plates&)> spoil;
        double least, most;  // share of hints
        double moved = 0;    // arc-seconds, by the jump
    } cases[] = {
        {"nothing happened", 3, 15, [](Plates&) {}, 0, 0.01},
        {"a jump of 5\"", 3, 15, [](Plates& p) { moveDeclination(p, 1, 3, 5); }, 0.9, 1, 75},
        {"a camera that turns in each slew looks the same", 3, 15,
         [](Plates& p) {
             turnCamera(p, 1, 3, 18);
             turnCamera(p, 2, 3, 18);
         },
         0.9, 1},
        {"a camera that turns in each slew, and four plates", 4, 10,
         [](Plates& p) {
             for (int i = 1; i < 4; ++i) turnCamera(p, i, 4, 10);
         },
         0, 0.02},
    };
    constexpr int kTrials = 200;
    const SimulatedMount mount{.azimuth = 20, .elevation = -12};
    for (const auto& c : cases) {
        std::mt19937 random(9);
        Plates exact = mount.plates(arc(0.5, c.slew, c.plates));
        c.spoil(exact);
        int hints = 0;
        double moved = 0;  // arc-seconds
        for (int trial = 0; trial < kTrials; ++trial) {
            const Plates plates = test::blurred(exact, {.centre = 0.05, .roll = 4, .reading = 30}, random);
            const auto hint = judge(plates, mount.site, {.centreFloor = 0.04}).hint;
            moved += hint ? hint->axisMove : 0;
            hints += hint.has_value();
        }
        EXPECT_GE(hints, c.least * kTrials) << c.why;
        EXPECT_LE(hints, c.most * kTrials) << c.why;
        if (c.moved > 0) EXPECT_NEAR(moved / hints, c.moved, 0.1 * c.moved) << c.why;
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

#include "engine/axis/axis_check.h"

#include <functional>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "simulated_mount.h"

namespace vantrel::engine {
namespace {

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

}  // namespace
}  // namespace vantrel::engine

#include "sky/tangent_wcs.h"

#include <cmath>

#include <gtest/gtest.h>

namespace vantrel::sky {
namespace {

// Values by hand from the definitions; a star on the meridian stands at tan(distance).
TEST(TangentPlane, ProjectsByTheDefinition) {
    const auto north = toTangentPlane({50, 61}, {50, 60});
    ASSERT_TRUE(north);
    EXPECT_NEAR(north->xi, 0, 1e-12);
    EXPECT_NEAR(north->eta, std::tan(M_PI / 180) * 180 / M_PI, 1e-9);
    const auto overPole = toTangentPlane({230, 89}, {50, 89.5});
    ASSERT_TRUE(overPole);
    EXPECT_NEAR(overPole->eta, std::tan(1.5 * M_PI / 180) * 180 / M_PI, 1e-9);
    EXPECT_FALSE(toTangentPlane({230, 0}, {50, 0}));
    for (const SkyPosition centre : {SkyPosition{0, 90}, SkyPosition{359.9, -60}, SkyPosition{12, 5}}) {
        for (const PlanePosition plane : {PlanePosition{3, 4}, PlanePosition{-20, 15}, PlanePosition{0, 0}}) {
            const auto back = toTangentPlane(fromTangentPlane(plane, centre), centre);
            ASSERT_TRUE(back);
            EXPECT_NEAR(back->xi, plane.xi, 1e-9);
            EXPECT_NEAR(back->eta, plane.eta, 1e-9);
        }
    }
}

}  // namespace
}  // namespace vantrel::sky

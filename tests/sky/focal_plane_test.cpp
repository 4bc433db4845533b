#include "sky/focal_plane.h"

#include <cmath>

#include <gtest/gtest.h>

#include "sky/sip_distortion.h"
#include "sky/tangent_wcs.h"

namespace vantrel::sky {
namespace {

// The camera looks along x; up is z, east is y.
constexpr Vector3 kAxis{1, 0, 0};
constexpr Vector3 kUp{0, 0, 1};
constexpr Vector3 kEast{0, 1, 0};

TEST(FocalPlane, OrientationsAsLookedAtWithRowZeroOnTop) {
    const struct {
        double rotation;
        bool mirrored;
        double upX, upY, eastX, eastY;  // unit steps in columns and rows
        const char* why;
    } cases[] = {
        {0, false, 0, -1, -1, 0, "up on top, east on the left"},
        {90, false, 1, 0, 0, -1, "east on top, so up is on the right"},
        {180, false, 0, 1, 1, 0, "upside down"},
        {-90, false, -1, 0, 0, 1, "west on top"},
        {0, true, 0, -1, 1, 0, "mirrored: east on the right"},
        {90, true, -1, 0, 0, -1, "mirrored after the rotation"},
    };
    for (const auto& c : cases) {
        const FocalPlane plane(kAxis, kUp, kEast, {0.001, 101, 51, c.rotation, c.mirrored});
        const double step = std::tan(0.02 * kDegree) / (0.001 * kDegree);  // 20 pixels
        const auto up = plane.pixel(direction(0, 0.02 * kDegree));
        const auto east = plane.pixel(direction(0.02 * kDegree, 0));
        ASSERT_TRUE(up && east);
        EXPECT_NEAR(up->x, 50 + c.upX * step, 1e-9) << c.why;
        EXPECT_NEAR(up->y, 25 + c.upY * step, 1e-9) << c.why;
        EXPECT_NEAR(east->x, 50 + c.eastX * step, 1e-9) << c.why;
        EXPECT_NEAR(east->y, 25 + c.eastY * step, 1e-9) << c.why;
    }
}

TEST(FocalPlane, SeesNothingBehindAndKnowsItsCorners) {
    const FocalPlane plane(kAxis, kUp, kEast, {1, 60, 80, 0, false});
    EXPECT_FALSE(plane.pixel({-1, 0, 0}));
    EXPECT_FALSE(plane.pixel({0, 1, 0}));
    EXPECT_NEAR(plane.cornerDistance(), std::atan(50 * kDegree) / kDegree, 1e-9);
}

// ---- tangent wcs

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

// ---- distortion

const TangentWcs kWcs{{150, 30}, {500, 400}, {-0.0004, 0.0001, 0.0001, 0.0004}};

SipDistortion distortion() {
    SipDistortion made{SipPolynomial(2), SipPolynomial(2), SipPolynomial(2), SipPolynomial(2)};
    made.a.at(0, 0) = 0.25;
    made.a.at(2, 0) = 2e-5;
    made.a.at(0, 1) = 1e-3;
    made.b.at(1, 1) = -3e-5;
    made.ap.at(1, 0) = 2e-3;
    made.bp.at(0, 2) = 4e-5;
    return made;
}

// 100 pixels to the right of the reference pixel and 200 above it.
TEST(SipDistortion, ShiftsPixelsByItsPolynomials) {
    const SkyPosition seen = distortion().toSky(kWcs, {600, 200});
    const SkyPosition linear = kWcs.toSky({600 + 0.25 + 0.2 - 0.2, 200 + 0.6});
    EXPECT_NEAR(seen.ra, linear.ra, 1e-12);
    EXPECT_NEAR(seen.dec, linear.dec, 1e-12);
    const auto pixel = distortion().toPixel(kWcs, kWcs.toSky({600, 200}));
    ASSERT_TRUE(pixel);
    EXPECT_NEAR(pixel->x, 600 + 0.2, 1e-8);
    EXPECT_NEAR(pixel->y, 200 + 1.6, 1e-8);
}

// The same sky, rows counted from below in an image of 1000 rows.
TEST(SipDistortion, TurnsUpsideDownWithTheRows) {
    TangentWcs turned = kWcs;
    turned.referencePixel.y = 999 - kWcs.referencePixel.y;
    turned.cd[1] = -kWcs.cd[1];
    turned.cd[3] = -kWcs.cd[3];
    const SkyPosition above = distortion().toSky(kWcs, {613, 222});
    const SkyPosition below = distortion().upsideDown().toSky(turned, {613, 999 - 222});
    EXPECT_NEAR(above.ra, below.ra, 1e-12);
    EXPECT_NEAR(above.dec, below.dec, 1e-12);
    EXPECT_FALSE(distortion().toPixel(kWcs, {330, -30})) << "behind the plane";
}

}  // namespace
}  // namespace vantrel::sky

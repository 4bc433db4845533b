#include "sky/sip_distortion.h"

#include <gtest/gtest.h>

namespace vantrel::sky {
namespace {

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

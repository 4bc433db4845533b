#include "observatory/telescopes/camera.h"

#include <gtest/gtest.h>

#include "platform/image_array.h"
#include "platform/queued_event_loop.h"
#include "support/list_catalog.h"

namespace vantrel::observatory {
namespace {

using sky::kDegree;
using sky::PixelPosition;

class CameraTest : public testing::Test {
  protected:
    CameraTest() {
        mount_.settings().axisError = {90, -45};
        mount_.settings().hourAngleOffset = 0.3;
        camera_.settings().seeing = 6;
    }

    /// Hangs a star where the camera sees it: steps in degrees from the optical axis towards the mount's up
    /// and east, in the tangent plane.
    void hang(double up, double east, double magnitude) {
        const TubeAttitude at = mount_.pointing();
        const double u = std::tan(up * kDegree);
        const double e = std::tan(east * kDegree);
        sky::Vector3 seen;
        for (std::size_t i = 0; i < 3; ++i) seen[i] = at.ahead[i] + u * at.up[i] + e * at.east[i];
        const sky::SkyOfDate sky(time_.utc());
        const HaDec there = haDecOf(sky::normalized(seen));
        const double ra = 15 * sky.siderealTime(mount_.settings().longitude) - there.hourAngle;
        const sky::SkyPosition place = sky.catalogue(sky::SkyPosition{ra, there.declination});
        stars_.push_back({place.ra, place.dec, magnitude});
    }

    /// Centroid of what stands above the background near the pixel.
    static PixelPosition centroid(const platform::ImageArray& image, PixelPosition near) {
        double sum = 0;
        PixelPosition c;
        for (long y = std::lround(near.y) - 8; y <= std::lround(near.y) + 8; ++y)
            for (long x = std::lround(near.x) - 8; x <= std::lround(near.x) + 8; ++x) {
                const double light = image.at(static_cast<std::size_t>(x), static_cast<std::size_t>(y)) - 130;
                sum += light;
                c.x += light * static_cast<double>(x);
                c.y += light * static_cast<double>(y);
            }
        return {c.x / sum, c.y / sum};
    }

    platform::VirtualTime time_{platform::parseInstant("2026-11-24T20:00:00Z").value()};
    NoiseSource noise_{1};
    Mount mount_{time_, noise_};
    std::vector<sky::CatalogStar> stars_;
    Camera camera_{mount_, noise_, [this] { return std::make_shared<test::ListCatalog>(stars_); }};
};

TEST_F(CameraTest, StarsLandWhereTheSkyPutsThem) {
    hang(0, 0, 7);
    hang(0.3, 0, 7);
    hang(0, -0.4, 7);
    hang(-0.2, 0.5, 7);
    for (const double rotation : {0.0, 30.0})
        for (const bool mirrored : {false, true}) {
            camera_.settings().rotation = rotation;
            camera_.settings().mirrored = mirrored;
            const imaging::Picture picture = camera_.expose(time_.utc(), "")();
            const double scale = 6.45 / 1000 / 370;  // radians
            for (const auto& [up, east] : {std::pair{0.0, 0.0}, {0.3, 0.0}, {0.0, -0.4}, {-0.2, 0.5}}) {
                const double u = std::tan(up * kDegree) / scale;
                const double e = std::tan(east * kDegree) / scale;
                const double c = std::cos(rotation * kDegree);
                const double s = std::sin(rotation * kDegree);
                const double right = (s * u - c * e) * (mirrored ? -1 : 1);
                const PixelPosition expected{695.5 + right, 519.5 - (c * u + s * e)};
                const PixelPosition got = centroid(*picture.pixels, expected);
                EXPECT_NEAR(got.x, expected.x, 0.05) << rotation << mirrored << up << east;
                EXPECT_NEAR(got.y, expected.y, 0.05) << rotation << mirrored << up << east;
            }
        }
}

TEST_F(CameraTest, RefractionShiftsWhatIsLow) {
    mount_.settings().axisError = {};
    mount_.settings().slewRate = 3600;
    // On the meridian, 20 degrees above the southern horizon: refraction 2.6' upwards, 43.5 pixels of 3.6".
    mount_.startSlew({std::fmod(mount_.siderealTime() + 24 - 0.3, 24), -20});
    mount_.settings().hourAngleOffset = 0.3;
    time_.passUntil(time_.utc() + platform::Milliseconds{1000});
    hang(0, 0, 7);
    const auto plain = camera_.starsInView(time_.utc());
    camera_.settings().refraction = true;
    const auto lifted = camera_.starsInView(time_.utc());
    ASSERT_EQ(plain.size(), 1U);
    ASSERT_EQ(lifted.size(), 1U);
    EXPECT_NEAR(plain[0].y - lifted[0].y, 2.63 * 60 / 3.5957, 0.7);
    EXPECT_NEAR(plain[0].x - lifted[0].x, 0, 0.5);
    camera_.settings().air = {.pressure = 505, .temperature = 10};
    const auto thin = camera_.starsInView(time_.utc());
    ASSERT_EQ(thin.size(), 1U);
    EXPECT_NEAR(plain[0].y - thin[0].y, 2.63 * 60 / 3.5957 / 2, 0.4);
}

TEST_F(CameraTest, MagnitudesAndExposuresGiveTheirElectrons) {
    hang(0, 0, 10);
    hang(0.1, 0, 12.5);
    hang(0.2, 0, 14);
    camera_.settings().exposureTime = 3;
    camera_.settings().limitingMagnitude = 13;
    const auto spots = camera_.starsInView(time_.utc());
    ASSERT_EQ(spots.size(), 2U);
    EXPECT_NEAR(spots[0].electrons, 60'000, 1e-6);
    EXPECT_NEAR(spots[1].electrons, 6'000, 1e-6);
}

TEST_F(CameraTest, TheAirMovesThePictureLessTheLongerItIsExposed) {
    hang(0, 0, 6);
    const auto column = [this](double seconds) {
        const imaging::Picture picture = camera_.expose(time_.utc(), "", {.seconds = seconds})();
        const auto& counts = std::get<std::vector<std::uint16_t>>(picture.pixels->pixels());
        double light = 0, moment = 0;
        for (std::size_t y = 510; y < 531; ++y)
            for (std::size_t x = 680; x < 712; ++x) {
                const double excess = std::max(0.0, counts[y * 1392 + x] - 200.0);
                light += excess;
                moment += excess * static_cast<double>(x);
            }
        return moment / light;
    };
    const auto scatter = [&](double seconds) {
        double sum = 0, squares = 0;
        constexpr int kPictures = 60;
        for (int i = 0; i < kPictures; ++i) {
            const double x = column(seconds);
            sum += x;
            squares += x * x;
        }
        return std::sqrt(squares / kPictures - sum * sum / kPictures / kPictures) * 3.5957;
    };
    EXPECT_LT(scatter(1), 0.1);
    camera_.settings().imageMotion = 3;
    EXPECT_NEAR(scatter(1), 3, 0.9);
    EXPECT_NEAR(scatter(9), 1, 0.3);
}

TEST_F(CameraTest, HotPixelsAsACountOrAShare) {
    const auto hot = [this] {
        const imaging::Picture picture = camera_.expose(time_.utc(), "")();
        const auto& counts = std::get<std::vector<std::uint16_t>>(picture.pixels->pixels());
        return std::count_if(counts.begin(), counts.end(), [](std::uint16_t c) { return c > 1500; });
    };
    EXPECT_EQ(hot(), 0);
    camera_.settings().hotPixels = 100;
    EXPECT_NEAR(static_cast<double>(hot()), 100, 2);
    camera_.settings().hotPixels = 0.0005;
    EXPECT_NEAR(static_cast<double>(hot()), 0.0005 * 1392 * 1040, 5);
}

}  // namespace
}  // namespace vantrel::observatory

#include "observatory/telescopes/camera.h"

#include <cmath>
#include <cstdint>
#include <set>

#include <gtest/gtest.h>

#include "observatory/telescopes/dark_subtraction.h"
#include "observatory/telescopes/noise.h"
#include "observatory/telescopes/renderer.h"
#include "observatory/telescopes/simulated_camera.h"
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

TEST_F(CameraTest, HotPixelsAsACountOrAShareStayWhereTheyAre) {
    const auto hot = [this] {
        const imaging::Picture picture = camera_.expose(time_.utc(), "")();
        const auto& counts = std::get<std::vector<std::uint16_t>>(picture.pixels->pixels());
        std::set<std::size_t> places;
        for (std::size_t i = 0; i < counts.size(); ++i)
            if (counts[i] > 1500) places.insert(i);
        return places;
    };
    EXPECT_TRUE(hot().empty());
    camera_.settings().hotPixels = 100;
    EXPECT_NEAR(static_cast<double>(hot().size()), 100, 2);
    EXPECT_EQ(hot(), hot());
    camera_.settings().hotPixels = 0.0005;
    EXPECT_NEAR(static_cast<double>(hot().size()), 0.0005 * 1392 * 1040, 5);
}

// ---- as a piece of hardware

TEST(SimulatedCamera, TurnsItsWheelAndReadsThePartThatIsOrdered) {
    platform::VirtualTime time{platform::Instant{}};
    platform::QueuedEventLoop loop{time};
    platform::BackgroundOfLoop background{loop};
    Shot seen;
    SimulatedCamera camera(
        loop, background,
        {[] {
             return PictureSource::Size{40, 20};
         },
         [&](const Shot& shot) -> LatentPicture {
             seen = shot;
             return [] {
                 return imaging::Picture{
                     std::make_shared<platform::ImageArray>(1, 1, std::vector<std::uint16_t>{7}), {}};
             };
         }});
    for (const double wheel : {2.0, 0.0}) {  // seconds; it need not turn twice
        const auto begin = time.sinceStart();
        camera.start({.seconds = 1,
                      .binX = 2,
                      .binY = 1,
                      .part = platform::CameraOrder::Part{.left = 3, .top = 4, .width = 5, .height = 6},
                      .filter = 1});
        loop.runUntil([&] { return camera.progress() == SimulatedCamera::Progress::kReady; });
        EXPECT_NEAR(std::chrono::duration<double>(time.sinceStart() - begin).count(), wheel + 1, 0.02);
        EXPECT_EQ(seen.transmission, 0.3);
        EXPECT_EQ(seen.window->binX, 2U);
        EXPECT_EQ(seen.window->left, 3U);
        EXPECT_EQ(seen.window->top, 4U);
        EXPECT_EQ(seen.window->width, 5U);
        EXPECT_EQ(seen.window->height, 6U);
    }
}

// ---- renderer

SensorExposure darkFrame(std::size_t width, std::size_t height) {
    SensorExposure exposure;
    exposure.width = width;
    exposure.height = height;
    exposure.readNoise = 0;
    exposure.bias = 0;
    return exposure;
}

TEST(Renderer, SeeingSpreadsTheLightAsAGaussian) {
    NoiseSource noise(1);
    SensorExposure exposure = darkFrame(65, 65);
    exposure.sigma = 2;
    const auto counts = drawFrame(exposure, {{32, 32, 1e6}}, noise);
    // Integrated over a pixel: (erf(0.5 / (2 sqrt 2)))^2 of the light in the middle.
    EXPECT_NEAR(counts[32 * 65 + 32], 1e6 * std::pow(std::erf(0.25 / std::sqrt(2.0)), 2), 5 * 200);
    // Half the height at 1.17741 sigma, up to the pixel's width: compare a pixel 2 sigma off, exp(-2).
    EXPECT_NEAR(counts[32 * 65 + 36] / static_cast<double>(counts[32 * 65 + 32]), std::exp(-2), 0.006);
}

TEST(Renderer, NoiseIsShotAndReadNoise) {
    NoiseSource noise(3);
    NoiseSource same(3);
    SensorExposure exposure = darkFrame(500, 400);
    exposure.sky = 900;
    exposure.readNoise = 40;
    exposure.gain = 2;
    exposure.bias = 100;
    const auto counts = drawFrame(exposure, {}, noise);
    EXPECT_EQ(counts, drawFrame(exposure, {}, same));
    EXPECT_NE(counts, drawFrame(exposure, {}, same)) << "the next frame has its own noise";
    const double n = static_cast<double>(counts.size());
    double sum = 0;
    for (const double c : counts) sum += c;
    const double mean = sum / n;
    double variance = 0;
    double neighbours = 0;
    for (std::size_t i = 0; i + 1 < counts.size(); ++i) {
        variance += std::pow(counts[i] - mean, 2) / n;
        neighbours += (counts[i] - mean) * (counts[i + 1] - mean) / n;
    }
    const double expected = (900 + 40 * 40) / 4.0 + 1 / 12.0;  // in counts; the last for whole counts
    EXPECT_NEAR(mean, 100 + 900 / 2.0, 5 * std::sqrt(expected / n));
    EXPECT_NEAR(variance, expected, 5 * expected * std::sqrt(2 / n));
    EXPECT_NEAR(neighbours, 0, 5 * expected / std::sqrt(n));
}

TEST(Renderer, BrightStarsSaturateAndTheEdgeCuts) {
    NoiseSource noise(1);
    const SensorExposure exposure = darkFrame(32, 32);
    const auto counts =
        drawFrame(exposure, {{16, 16, 1e9}, {-0.5, 31.5, 40'000}, {-500, 16, 1e6}, {16, 1e9, 1e6}}, noise);
    EXPECT_EQ(counts[16 * 32 + 16], 65535);
    EXPECT_NEAR(counts[31 * 32], 40'000 * std::pow(std::erf(1 / std::sqrt(2.0)) / 2, 2), 500);
    EXPECT_EQ(counts[0], 0);
}

TEST(DarkSubtraction, KeepsALevelWithinSixteenBits) {
    using Counts = std::vector<std::uint16_t>;
    const platform::ImageArray light(4, 1, Counts{1000, 100, 100, 65535});
    const platform::ImageArray dark(4, 1, Counts{900, 200, 201, 99});
    EXPECT_EQ(std::get<Counts>(withoutDark(light, dark)->pixels()), (Counts{200, 0, 0, 65535}));
}

TEST(Renderer, BinsAndWindowsReadThePixelsTheyCover) {
    SensorExposure exposure;
    exposure.width = 31;
    exposure.height = 20;
    exposure.sky = 50;
    exposure.readNoise = 0;
    NoiseSource noise(1);
    const auto at = [&](const ReadWindow& window, std::size_t x, std::size_t y) {
        exposure.window = window;
        const auto counts = drawFrame(exposure, {{16, 13, 1e4}}, noise);
        EXPECT_EQ(counts.size(), window.width * window.height);
        return counts[y * window.width + x] - 100.0;
    };
    // The star's centre pixel lies in the third bin of four columns' width and the fifth of three rows'.
    EXPECT_NEAR(at({4, 3, 0, 0, 7, 6}, 0, 0), 12 * 50, 5 * std::sqrt(600));
    EXPECT_GT(at({4, 3, 0, 0, 7, 6}, 4, 4), 5000);
    EXPECT_GT(at({4, 3, 3, 2, 2, 3}, 1, 2), 5000);
    EXPECT_NEAR(at({4, 3, 3, 2, 2, 3}, 1, 0), 600, 5 * std::sqrt(600));
}

// ---- noise

TEST(NoiseSource, DrawsTheNormalDistribution) {
    NoiseSource noise(7);
    constexpr int kDraws = 1'000'000;
    double sums[5] = {};
    int beyond2 = 0;
    int beyond3 = 0;
    for (int i = 0; i < kDraws; ++i) {
        const double x = noise.gaussian();
        for (int power = 1; power < 5; ++power) sums[power] += std::pow(x, power);
        beyond2 += std::abs(x) > 2 ? 1 : 0;
        beyond3 += std::abs(x) > 3 ? 1 : 0;
    }
    // Five standard errors each.
    EXPECT_NEAR(sums[1] / kDraws, 0, 0.005);
    EXPECT_NEAR(sums[2] / kDraws, 1, 0.007);
    EXPECT_NEAR(sums[3] / kDraws, 0, 0.02);
    EXPECT_NEAR(sums[4] / kDraws, 3, 0.05);
    EXPECT_NEAR(beyond2, 0.0455003 * kDraws, 5 * std::sqrt(0.0455003 * kDraws));
    EXPECT_NEAR(beyond3, 0.0026998 * kDraws, 5 * std::sqrt(0.0026998 * kDraws));
}

}  // namespace
}  // namespace vantrel::observatory

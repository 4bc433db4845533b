// The pictures that test servers show: of the place where a mount with a misaligned axis truly points.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "observatory/telescopes/camera.h"
#include "platform/queued_event_loop.h"
#include "sky/compact_catalog.h"
#include "sky/epoch.h"

namespace vantrel::observatory {
namespace {

using sky::SkyPosition;
using namespace std::chrono_literals;

const platform::Instant kTonight = platform::parseInstant("2026-11-24T20:00:00Z").value();

std::string outputOf(const std::string& options) {
    std::FILE* const pipe = ::popen((std::string(VANTREL_SKY_PICTURE) + " " + options).c_str(), "r");
    std::string output;
    std::array<char, 65536> part{};
    for (std::size_t got; (got = std::fread(part.data(), 1, part.size(), pipe)) > 0;)
        output.append(part.data(), got);
    EXPECT_EQ(::pclose(pipe), 0) << options;
    return output;
}

struct Where {
    SkyPosition place;
    double roll = 0;
};
Where where(const std::string& options) {
    std::istringstream text(outputOf(options + " --where 1"));
    Where found;
    text >> found.place.ra >> found.place.dec >> found.roll;
    return found;
}

double distance(const SkyPosition& a, const SkyPosition& b) {
    return sky::separation(sky::directionOf(a), sky::directionOf(b));
}

TEST(SkyPicture, LooksWhereAPerfectMountSays) {
    const Where seen = where("--mount-ra 5.5 --mount-dec 41 --latitude 50 --longitude 10");
    EXPECT_LT(distance(seen.place, sky::SkyOfDate(kTonight).catalogue(SkyPosition{5.5 * 15, 41})) * 3600,
              0.01);
    // Up is the pole of date's side: precession has turned north by 20.04" a year times sin(ra) / cos(dec).
    EXPECT_NEAR(seen.roll, -20.04 / 3600 * 26.9 * std::sin(5.5 * sky::kHour) / std::cos(41 * sky::kDegree),
                0.006);
}

TEST(SkyPicture, SeesTheStarsThatTheSimulatorSees) {
    // The simulator's own mount and camera, with the same axis error, at the same place.
    platform::VirtualTime time{kTonight - 1h};
    NoiseSource noise(1);
    Mount mount(time, noise);
    mount.settings().latitude = 50;
    mount.settings().longitude = 10;
    mount.settings().axisError = {40, -25};
    mount.settings().slewRate = 1000;
    const std::shared_ptr<const sky::StarCatalog> catalog = sky::CompactCatalog::openBuiltIn();
    Camera camera(mount, noise, [&catalog] { return catalog; });
    mount.startSlew({4, 35});
    time.passUntil(kTonight);
    auto stars = camera.starsInView(kTonight);
    const auto brightest = *std::max_element(stars.begin(), stars.end(), [](const auto& a, const auto& b) {
        const auto light = [](const StarSpot& star) {
            const bool isInside = star.x > 5 && star.y > 5 && star.x < 1386 && star.y < 1034;
            return isInside ? star.electrons : 0;
        };
        return light(a) < light(b);
    });

    const std::string bytes = outputOf(
        "--mount-ra 4 --mount-dec 35 --latitude 50 --longitude 10 --azimuth 40 --elevation -25 --seconds "
        "0.2");
    std::vector<std::uint16_t> pixels(1392 * 1040);
    ASSERT_EQ(bytes.size(), 2 * pixels.size());
    std::memcpy(pixels.data(), bytes.data(), bytes.size());
    const auto peak =
        static_cast<std::size_t>(std::max_element(pixels.begin(), pixels.end()) - pixels.begin());
    EXPECT_NEAR(static_cast<double>(peak % 1392), brightest.x, 1);
    EXPECT_NEAR(static_cast<double>(peak / 1392), brightest.y, 1);
}

TEST(SkyPicture, TurnsWithItsRoll) {
    const Where seen = where("--ra 100 --dec -30 --roll 25");
    EXPECT_NEAR(seen.place.ra, 100, 1e-6);
    EXPECT_NEAR(seen.place.dec, -30, 1e-6);
    EXPECT_NEAR(seen.roll, 25, 1e-4);
    // What a mount shows is what is seen at the place that it says.
    const std::string mount =
        "--mount-ra 20 --mount-dec 60 --latitude -35 --longitude 150 --azimuth 60 --rotation 80";
    const Where there = where(mount);
    const std::string fixed = "--ra " + std::to_string(there.place.ra) + " --dec " +
                              std::to_string(there.place.dec) + " --roll " + std::to_string(there.roll);
    const auto sum = [](const std::string& bytes) {
        double total = 0;
        for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
            total += static_cast<unsigned char>(bytes[i + 1]);
        return total;
    };
    EXPECT_NEAR(sum(outputOf(mount)), sum(outputOf(fixed)), 30);
}

}  // namespace
}  // namespace vantrel::observatory

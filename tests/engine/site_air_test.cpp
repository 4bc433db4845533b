#include "engine/site_air.h"

#include <gtest/gtest.h>

#include "platform/queued_event_loop.h"
#include "support/engine_world.h"

namespace vantrel::engine {
namespace {

TEST(SiteAir, TakesWhatIsKnownBest) {
    struct HighMount : test::Mount {
        using Mount::Mount;
        std::optional<double> siteHeightIfKnown() override { return height; }
        bool looksThroughAir() override { return outside; }
        std::optional<double> height;
        bool outside = true;
    };
    const struct {
        const char *height, *pressure, *temperature;
        std::optional<double> mountsHeight;
        double expectedPressure, expectedTemperature, uncertainty;
        bool outside = true;
    } cases[] = {
        {"", "", "", {}, 1013.25, 15, 0.05},         {"", "", "", 1000, 898.7, 8.5, 0.05},
        {"2000", "", "", 1000, 795, 2, 0.05},        {"", "990", "", {}, 990, 15, 0.05},
        {"1000", "905", "-12", {}, 905, -12, 0.02},  {"high", "29.9", "500", 9e9, 1013.25, 15, 0.05},
        {"1000", "905", "-12", {}, 0, 15, 0, false},
    };
    for (const auto& c : cases) {
        platform::VirtualTime time{platform::Instant{}};
        platform::QueuedEventLoop loop{time};
        test::MemorySettingsPort settings;
        HighMount mount{loop};
        mount.height = c.mountsHeight;
        mount.outside = c.outside;
        settings.SaveSetting("PolarAlign", "SiteHeight", c.height);
        settings.SaveSetting("PolarAlign", "AirPressure", c.pressure);
        settings.SaveSetting("PolarAlign", "AirTemperature", c.temperature);
        const Air air = siteAir(settings, mount);
        EXPECT_NEAR(air.pressure, c.expectedPressure, 0.5) << c.height << " " << c.pressure;
        EXPECT_NEAR(air.temperature, c.expectedTemperature, 0.1);
        EXPECT_EQ(air.uncertainty, c.uncertainty);
    }
}

}  // namespace
}  // namespace vantrel::engine

#include "correction/stars/star_light.h"

#include <cstdint>

#include <gmock/gmock.h>

namespace vantrel::correction {
namespace {

constexpr int kSide = 40;

struct Spot {
    int x, y;
    float height;
};

/// A sky of 1 with a noise far below that, and what stands out of it.
platform::ImageArray skyWith(const std::vector<Spot>& spots) {
    std::vector<float> pixels(kSide * kSide);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = 1 + 0.001F * static_cast<float>((i * 7 + i / kSide * 3) % 11);
    for (const Spot& spot : spots)
        pixels[static_cast<std::size_t>(spot.y) * kSide + static_cast<std::size_t>(spot.x)] += spot.height;
    return {kSide, kSide, std::move(pixels)};
}

TEST(StarLight, isWhatTheSecondBrightestNeighbourSupports) {
    const struct {
        const char* what;
        std::vector<Spot> spots;
        double light;  // of pixel 20, 20
    } rows[] = {
        {"nothing stands out", {}, 0},
        {"a hot pixel alone", {{20, 20, 900}}, 0},
        {"two side by side", {{20, 20, 900}, {21, 20, 900}}, 0},
        {"neighbours across a corner don't count", {{20, 20, 900}, {21, 21, 900}, {19, 19, 900}}, 0},
        {"a sharp star", {{20, 20, 90}, {21, 20, 40}, {20, 21, 30}}, 90},
        {"neighbours on the other sides", {{20, 20, 90}, {19, 20, 40}, {20, 19, 30}}, 90},
        {"above and below", {{20, 20, 90}, {20, 19, 40}, {20, 21, 30}}, 90},
        {"a hot pixel on a star's flank", {{20, 20, 900}, {21, 20, 40}, {20, 21, 30}}, 3.5 * 30},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const auto image = skyWith(row.spots);
        const SkyLevel sky(image, 20);
        EXPECT_NEAR(starLight(image, sky, {0, 0, kSide, kSide}).at(20, 20), row.light, 0.1);
        if (row.light == 0) {
            // The sums over squares are made another way.
            EXPECT_EQ(decimatedStarLight(image, sky, 2).at(10, 10), 0);
        }
    }
}

}  // namespace
}  // namespace vantrel::correction

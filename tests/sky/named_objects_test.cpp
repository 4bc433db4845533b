#include "sky/named_objects.h"

#include <set>
#include <string>

#include <gtest/gtest.h>

#include "sky/compact_catalog.h"

namespace vantrel::sky {
namespace {

// A slip in a place would put a name beside nothing.
TEST(NamedStars, StandOnBrightStars) {
    const auto catalog = CompactCatalog::openBuiltIn();
    std::set<std::string> names;
    for (const NamedStar& star : namedStars()) {
        EXPECT_TRUE(names.insert(star.name).second) << star.name;
        const bool varies = std::string(star.name) == "Mira";
        EXPECT_FALSE(catalog
                         ->cone({.raDeg = star.place.ra,
                                 .decDeg = star.place.dec,
                                 .radiusDeg = 0.003,
                                 .faintestMagnitude = varies ? 10 : 4.2})
                         .empty())
            << star.name;
    }
}

TEST(DeepSkyObjects, AreAllOfMessiersAndMore) {
    const auto objects = deepSkyObjects();
    ASSERT_GT(objects.size(), 120U);
    for (std::size_t i = 0; i < objects.size(); ++i) {
        if (i < 110) {
            EXPECT_EQ(objects[i].name, "M " + std::to_string(i + 1));
        }
        EXPECT_TRUE(objects[i].sizeArcmin >= 1 && objects[i].sizeArcmin < 700) << objects[i].name;
        EXPECT_TRUE(objects[i].place.ra >= 0 && objects[i].place.ra < 360) << objects[i].name;
    }
}

}  // namespace
}  // namespace vantrel::sky

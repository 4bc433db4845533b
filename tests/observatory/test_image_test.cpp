#include "observatory/test_image.h"

#include <fstream>

#include <gtest/gtest.h>

#include "fits/fits_image.h"
#include "sky/tycho_catalog.h"
#include "support/temp_folder.h"

namespace vantrel::observatory {
namespace {

const auto kBuiltIn = [] { return sky::TychoCatalog::openBuiltIn(); };

TEST(SolverTestImage, IsTheSameEverywhereSmallAndUnsolved) {
    const test::TempFolder one, other;
    provideTestImage(one.path(), kBuiltIn);
    provideTestImage(other.path(), kBuiltIn);
    const std::string bytes = test::contentsOf(one / kTestImageName);
    EXPECT_TRUE(bytes == test::contentsOf(other / kTestImageName));
    EXPECT_LT(bytes.size(), 700'000U);
    EXPECT_FALSE(fits::FitsImage::open(one / kTestImageName).wcs());
}

TEST(SolverTestImage, LeavesAFileThatIsThereAndOpensNoCatalogueForIt) {
    const test::TempFolder folder;
    std::ofstream(folder / kTestImageName) << "mine";
    provideTestImage(folder.path(),
                     []() -> std::shared_ptr<const sky::StarCatalog> { throw sky::CatalogError("opened"); });
    EXPECT_EQ(test::contentsOf(folder / kTestImageName), "mine");
    EXPECT_THROW(provideTestImage(folder / "missing", kBuiltIn), fits::FitsError);
}

}  // namespace
}  // namespace vantrel::observatory

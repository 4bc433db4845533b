#include "observatory/test_image.h"

#include <fstream>

#include <gtest/gtest.h>

#include "observatory/sky/fits_image.h"
#include "observatory/sky/tycho_catalog.h"
#include "support/temp_folder.h"

namespace vantrel::observatory {
namespace {

const auto kBuiltIn = [] { return TychoCatalog::openBuiltIn(); };

TEST(SolverTestImage, IsTheSameEverywhereSmallAndUnsolved) {
    const test::TempFolder one, other;
    provideTestImage(one.path(), kBuiltIn);
    provideTestImage(other.path(), kBuiltIn);
    const std::string bytes = test::contentsOf(one / kTestImageName);
    EXPECT_TRUE(bytes == test::contentsOf(other / kTestImageName));
    EXPECT_LT(bytes.size(), 700'000U);
    EXPECT_FALSE(FitsImage::open(one / kTestImageName).wcs());
}

TEST(SolverTestImage, LeavesAFileThatIsThereAndOpensNoCatalogueForIt) {
    const test::TempFolder folder;
    std::ofstream(folder / kTestImageName) << "mine";
    provideTestImage(folder.path(),
                     []() -> std::shared_ptr<const StarCatalog> { throw CatalogError("opened"); });
    EXPECT_EQ(test::contentsOf(folder / kTestImageName), "mine");
    EXPECT_THROW(provideTestImage(folder / "missing", kBuiltIn), FitsError);
}

}  // namespace
}  // namespace vantrel::observatory

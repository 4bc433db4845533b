// The observatory as the program sees it: through its automation classes.

#include "observatory/observatory.h"

#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fits/fits_image.h"
#include "observatory/test_image.h"
#include "platform/queued_event_loop.h"
#include "sky/compact_catalog.h"
#include "support/refusal.h"
#include "support/temp_folder.h"

namespace vantrel::observatory {
namespace {

using platform::ObjectRef;
using testing::ElementsAre;

class ObservatoryTest : public testing::Test {
  protected:
    void install(ObservatorySeams seams) {
        observatory_.emplace(loop_, folders_, 1, std::move(seams));
        observatory_->install(classes_);
    }

    platform::VirtualTime time_{platform::parseInstant("2026-11-24T20:00:00Z").value()};
    platform::QueuedEventLoop loop_{time_};
    platform::FolderMap folders_{"/nowhere"};
    std::optional<Observatory> observatory_;
    platform::ClassRegistry classes_;
};

TEST_F(ObservatoryTest, OffersItsDriversAndHelpers) {
    std::vector<std::string> setups;
    ObservatorySeams seams;
    seams.chooser = [](const auto&, const auto& drivers, const auto&) { return drivers.back().progId; };
    seams.setup = [&setups](const std::string& progId) { setups.push_back(progId); };
    install(seams);
    EXPECT_THAT(classes_.installed("Telescope"),
                ElementsAre("AxisSimulator.Telescope", "ScopeSim.Telescope"));
    EXPECT_EQ(classes_.create("DriverHelper.Chooser")->call("Choose", {""}).toText(), "ScopeSim.Telescope");
    const ObjectRef profile = classes_.create("DriverHelper.Profile");
    EXPECT_EQ(profile->call("GetValue", {"ScopeSim.Telescope", ""}).toText(), "Simulated equatorial mount");
    EXPECT_EQ(classes_.create("driverhelper.util")->call("HoursToHMS", {1.5}).toText(), "01:30:00");
    for (const std::string& driver : classes_.installed("Telescope"))
        classes_.create(driver)->call("SetupDialog");
    EXPECT_THAT(setups, ElementsAre("AxisSimulator.Telescope", "ScopeSim.Telescope"));
}

TEST_F(ObservatoryTest, MountsOutliveTheirObjects) {
    install({});
    for (const char* progId : {"ScopeSim.Telescope", "AxisSimulator.Telescope"}) {
        ObjectRef driver = classes_.create(progId);
        driver->put("Connected", true);
        driver->put("SlewRate", 10);
        driver->call("SlewToCoordinates", {5.5, 20.0});
        driver.reset();
        driver = classes_.create(progId);
        EXPECT_TRUE(driver->get("Connected").toBool());
        EXPECT_NEAR(driver->get("RightAscension").toDouble(), 5.5, 1e-6);
        EXPECT_EQ(driver->get("SlewRate").toDouble(), 10);
    }
}

/// Waits for an answer that never comes.
class SilentNetwork : public catalogs::Downloads {
  public:
    std::string fetch(const std::string&, const catalogs::KeepGoing& keepGoing) override {
        while (keepGoing()) {
            if (++turns == 3) onThirdTurn();
        }
        throw catalogs::DownloadGivenUp("the download was given up");
    }
    int turns = 0;
    std::function<void()> onThirdTurn;
};

TEST_F(ObservatoryTest, StaysResponsiveAndStopsWhileItWaitsForTheNetwork) {
    bool stopping = false;
    const auto network = std::make_shared<SilentNetwork>();
    ObservatorySeams seams;
    seams.downloads = network;
    seams.stopping = [&] { return stopping; };
    install(seams);
    const ObjectRef plate = classes_.create("PinPoint.Plate");
    plate->put("Catalog", 8);
    plate->put("CatalogPath", "Internet");
    plate->put("ArcsecPerPixelHoriz", 1.0);
    plate->put("ArcsecPerPixelVert", 1.0);
    // The operator clicks meanwhile: the handler runs within the look-up, which then ends.
    network->onThirdTurn = [&] { loop_.post([&] { stopping = true; }); };
    EXPECT_THAT(test::refusalOf<platform::AutomationError>([&] { plate->call("FindCatalogStars"); }),
                testing::HasSubstr("USNO-B-Net was not waited for"));
    EXPECT_EQ(network->turns, 3);
}

// ---- test image

const auto kBuiltIn = [] { return sky::CompactCatalog::openBuiltIn(); };

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

#include "solver/pin_point_plate.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fits/fits_writing.h"
#include "platform/image_array.h"
#include "platform/queued_event_loop.h"
#include "sky/compact_catalog.h"
#include "solver/pattern_store.h"
#include "support/catalog_trees.h"
#include "support/refusal.h"
#include "support/star_field.h"
#include "support/temp_folder.h"

namespace vantrel::solver {
namespace {

using sky::CompactCatalog;
using sky::PixelPosition;
using sky::separationDeg;
using sky::SkyPosition;
using testing::HasSubstr;

constexpr SkyPosition kCentre{83, 40};
constexpr double kScale = 3.6;

class PinPointPlateTest : public testing::Test {
  protected:
    /// A star field as the file C:\field.fits.
    void draw(const std::vector<fits::FitsCard>& cards = {}, SkyPosition centre = kCentre, double turn = 35,
              bool mirrored = false) {
        std::filesystem::create_directories(folder_ / "c");
        test::StarField field;
        field.width = 800;
        field.height = 600;
        field.wcs = test::wcsFor(field.width, field.height, centre, kScale, turn, mirrored);
        fits::writeFits(file(), field.width, field.height,
                        test::drawField(CompactCatalog::openBuiltIn().get(), field), cards);
    }
    /// The same, attached to a plate that tells positions of 2000.
    void drawAndAttach(const std::vector<fits::FitsCard>& cards = {}, SkyPosition centre = kCentre,
                       double turn = 35, bool mirrored = false) {
        draw(cards, centre, turn, mirrored);
        plate_.put("Equinox", 2000);
        plate_.call("AttachFITS", {R"(C:\field.fits)"});
    }

    /// A plate of one degree around the zero of both coordinates, without a picture of it.
    void lookAtOrigin() {
        plate_.put("ImageArray", platform::ImageRef(std::make_shared<platform::ImageArray>(
                                     6, 6, std::vector<std::int32_t>(36, 1))));
        plate_.put("CatalogExpansion", 0);
        plate_.put("Equinox", 2000);
        start({0, 0}, 600);
    }

    std::filesystem::path file() const { return folder_ / "c" / "field.fits"; }

    void start(SkyPosition place, double scale = kScale * 1.05) {
        plate_.put("RightAscension", place.ra / 15);
        plate_.put("Declination", place.dec);
        plate_.put("ArcsecPerPixelHoriz", scale);
        plate_.put("ArcsecPerPixelVert", scale);
    }

    bool solve() {
        return plate_.call("FindImageStars").toBool() && plate_.call("FindCatalogStars").toBool() &&
               plate_.call("Solve").toBool();
    }

    double number(const char* member) { return plate_.get(member).toDouble(); }
    SkyPosition place() { return {number("RightAscension") * 15, number("Declination")}; }
    double pixelsOff(SkyPosition expected) { return separationDeg(place(), expected) * 3600 / kScale; }
    int catalogStars() {
        EXPECT_TRUE(plate_.call("FindCatalogStars").toBool());
        return plate_.get("CatalogStars").toObject()->get("Count").toInt();
    }

    template <typename Step>
    std::string failureOf(Step&& step) {
        return test::refusalOf<platform::OperationError>(step);
    }

    test::TempFolder folder_;
    platform::VirtualTime clock_{*platform::parseInstant("2026-11-24T20:00:00")};
    platform::QueuedEventLoop loop_{clock_};
    platform::BackgroundOfLoop background_{loop_};
    platform::FolderMap folders_{folder_.path()};
    static std::shared_ptr<const StarPatterns> patterns() {
        static const auto made = patternsOf(*CompactCatalog::openBuiltIn(), {}, [](const auto&) {});
        return made;
    }
    PinPointPlate plate_{clock_, background_, folders_, [] { return CompactCatalog::openBuiltIn(); },
                         {},     patterns};
};

TEST_F(PinPointPlateTest, SolvesInTheEquinoxAskedForAndRollsWithIt) {
    draw({{"DATE-OBS", std::string("2026-01-10T22:00:00")}});
    ASSERT_TRUE(plate_.call("AttachFITS", {R"(C:\field.fits)"}).toBool());
    EXPECT_FALSE(plate_.get("WCSValid").toBool());
    EXPECT_EQ(number("Columns"), 800);
    EXPECT_EQ(number("Rows"), 600);

    const PlateFrame ofDate = PlateFrame::ofDate(*platform::parseInstant("2026-01-10T22:00:00"));
    const SkyPosition today = ofDate.fromCatalogue(kCentre);
    EXPECT_NEAR(separationDeg(today, kCentre) * 60, 20, 5);  // 26 years of precession at this place
    start({today.ra + 0.2, today.dec - 0.1});
    ASSERT_TRUE(solve());
    EXPECT_NEAR(number("Equinox"), 2026.03, 0.01);
    EXPECT_LT(pixelsOff(today), 0.2);

    // The matrix of roll and scales leads from the centre of date to the place of date of any other pixel.
    const auto cd =
        matrixOf({number("RollAngle"), number("ArcsecPerPixelHoriz"), number("ArcsecPerPixelVert")});
    const sky::TangentWcs drawn = test::wcsFor(800, 600, kCentre, kScale, 35, false);
    const sky::TangentWcs told{place(), {399.5, 299.5}, {cd[0], cd[1], cd[2], cd[3]}};
    for (const PixelPosition corner : {PixelPosition{0, 0}, PixelPosition{799, 599}, PixelPosition{799, 0}}) {
        EXPECT_LT(
            separationDeg(told.toSky(corner), ofDate.fromCatalogue(drawn.toSky(corner))) * 3600 / kScale,
            0.5);
    }

    plate_.put("Equinox", 2000);
    start({kCentre.ra + 0.2, kCentre.dec - 0.1});
    ASSERT_TRUE(solve());
    EXPECT_LT(pixelsOff(kCentre), 0.2);
    EXPECT_NEAR(number("RollAngle"), 35, 0.02);
    EXPECT_GT(plate_.get("MatchedStars").toObject()->get("Count").toInt(), 20);
    EXPECT_LT(number("MatchAvgResidual"), 1.0);
    EXPECT_GE(number("MatchFitOrder"), 1);
    EXPECT_GT(number("MatchCentreError"), 0);
    EXPECT_LT(number("MatchCentreError"), number("MatchAvgResidual"));
    // A star turns the field by its own error divided by how far out it is: about a quarter of a degree here.
    EXPECT_NEAR(number("MatchRollError") / number("MatchCentreError"), 220, 100);
}

TEST_F(PinPointPlateTest, SearchesAsFarAsItIsAllowedTo) {
    drawAndAttach();
    const SkyPosition farAway{200, -10};
    start(farAway);
    EXPECT_FALSE(solve()) << "near the start only";
    plate_.put("SearchRadius", 30);
    EXPECT_FALSE(solve()) << "not that far";
    plate_.put("SearchRadius", 180);
    ASSERT_TRUE(solve());
    EXPECT_LT(pixelsOff(kCentre), 0.3);
}

TEST_F(PinPointPlateTest, WritesItsSolutionAndStartsFromItNextTime) {
    drawAndAttach();
    start(kCentre);
    ASSERT_TRUE(solve());
    plate_.call("UpdateFITS");
    plate_.call("DetachFITS");
    EXPECT_NE(failureOf([&] { plate_.get("Columns"); }), "");

    PinPointPlate other{clock_, background_, folders_, [] { return CompactCatalog::openBuiltIn(); }};
    other.put("Equinox", 2000);
    other.call("AttachFITS", {R"(C:\field.fits)"});
    EXPECT_TRUE(other.get("WCSValid").toBool());
    EXPECT_NEAR(other.get("RightAscension").toDouble() * 15, kCentre.ra, 3e-4);
    EXPECT_NEAR(other.get("ArcsecPerPixelHoriz").toDouble(), kScale, 2e-3);
    const auto header = fits::FitsImage::open(file()).header();
    EXPECT_EQ(header.number("EQUINOX"), 2000);
    EXPECT_NEAR(header.number("CRVAL1").value_or(0), kCentre.ra, 3e-4);
}

TEST_F(PinPointPlateTest, FindsTheScaleInTheHeaderWhenTheGivenOneIsMissingOrWrong) {
    // 1.8 or, binned, 3.6 arcseconds a pixel.
    drawAndAttach({{"FOCALLEN", 206.264806}, {"XPIXSZ", 1.8}, {"XBINNING", std::int64_t{2}}});
    for (const double given : {0.0, 12.0}) {
        start(kCentre, given);
        EXPECT_TRUE(solve()) << given;
        EXPECT_NEAR(number("ArcsecPerPixelHoriz"), kScale, 0.01) << given;
    }
}

TEST_F(PinPointPlateTest, SaysWhichCatalogueItUsesAndRefusesEmptyFolders) {
    const std::string builtIn = CompactCatalog::openBuiltIn()->folder().string();
    for (const char* untouched : {"C:\\", "c:\\", ""}) {
        plate_.put("CatalogPath", untouched);
        EXPECT_EQ(plate_.get("CatalogPath").toText(), builtIn) << untouched;
    }
    drawAndAttach();
    start(kCentre);
    plate_.put("Catalog", 4);
    for (const char* folder : {R"(D:\Tycho)", "Internet"}) {
        EXPECT_THAT(failureOf([&] { plate_.put("CatalogPath", folder); }),
                    HasSubstr("no star catalogue Tycho-2 that can be read"));
        EXPECT_EQ(plate_.get("CatalogPath").toText(), builtIn) << "the former one stays in use";
    }
    // Another folder with a copy of the file will do.
    std::filesystem::create_directories(folder_ / "d" / "Tycho");
    std::filesystem::copy_file(std::filesystem::path(builtIn) / sky::kTychoFileName,
                               folder_ / "d" / "Tycho" / sky::kTychoFileName);
    plate_.put("CatalogPath", R"(D:\Tycho)");
    EXPECT_GT(catalogStars(), 50);
}

TEST_F(PinPointPlateTest, TakesTheCatalogueOfItsNumberOrOneThatServesForAll) {
    const auto ucac2 = folder_ / "d" / "Ucac2";
    test::writeUcac2(ucac2 / "u2", {{0, 0, 9.5}, {0.1, 0.1, 10.5}});
    const auto cells = folder_ / "d" / "Cells";
    test::writeCells(cells, {{0, 0, 9.5}, {0.1, 0.1, 10.5}, {359.9, 0, 11}}, "d05", "290", 5);
    const struct {
        int number;
        const char* path;
        int stars;  // -1: refused
    } cases[] = {{6, R"(D:\Ucac2)", 2},   {7, R"(D:\Ucac2)", -1}, {0, R"(D:\Ucac2)", -1},
                 {6, R"(D:\Cells)", 3},   {1, R"(D:\Cells)", 3},  {8, R"(D:\Cells)", 3},
                 {8, R"(D:\Nowhere)", -1}};
    for (const auto& c : cases) {
        lookAtOrigin();
        plate_.put("Catalog", c.number);
        plate_.put("CatalogPath", "");
        if (c.stars < 0) {
            EXPECT_THAT(failureOf([&] { plate_.put("CatalogPath", c.path); }),
                        HasSubstr("no star catalogue"));
            continue;
        }
        plate_.put("CatalogPath", c.path);
        EXPECT_EQ(plate_.get("CatalogPath").toText(), c.path);
        EXPECT_EQ(catalogStars(), c.stars) << c.number;
    }
    // A disc that is no longer whole is told by the look-up.
    std::filesystem::remove(ucac2 / "u2" / "z181");
    plate_.put("Catalog", 6);
    plate_.put("CatalogPath", R"(D:\Ucac2)");
    EXPECT_THAT(failureOf([&] { plate_.call("FindCatalogStars"); }), HasSubstr("z181"));
}

// The look-up without a picture that proves catalogue and folder.
TEST_F(PinPointPlateTest, LooksUpStarsForAnImageArray) {
    lookAtOrigin();
    plate_.put("ProjectionType", 1);
    plate_.put("CatalogMaximumMagnitude", 20);
    EXPECT_GT(catalogStars(), 10);
    plate_.put("CatalogMaximumMagnitude", -5);
    EXPECT_EQ(catalogStars(), 0);
    EXPECT_FALSE(plate_.call("FindImageStars").toBool());
    EXPECT_FALSE(plate_.call("Solve").toBool());
}

TEST_F(PinPointPlateTest, RefusesWhatItCannotUseAndKeepsTheRest) {
    EXPECT_NE(failureOf([&] { plate_.call("AttachFITS", {R"(C:\nowhere.fits)"}); }), "");
    EXPECT_NE(failureOf([&] { plate_.call("FindImageStars"); }), "");
    const struct {
        const char* member;
        platform::Value wrong;
    } rows[] = {{"CatalogExpansion", -1}, {"SigmaAboveMean", "many"}, {"ProjectionType", 2}};
    for (const auto& row : rows) {
        const auto before = plate_.get(row.member);
        EXPECT_NE(failureOf([&] { plate_.put(row.member, row.wrong); }), "") << row.member;
        EXPECT_EQ(plate_.get(row.member), before) << row.member;
    }
    plate_.put("MinMatchStars", 7);
    drawAndAttach();
    plate_.call("DetachFITS");
    EXPECT_EQ(number("MinMatchStars"), 7) << "settings outlive the file";
}

// Plates of 0.8 by 0.6 degrees. Searches step in declination: what one attempt can't reach in right
// ascension must stay unfound.
TEST_F(PinPointPlateTest, ReachesAStartAFieldOffButNotThree) {
    for (const double dec : {0.0, 61.0, -84.0}) {
        const SkyPosition centre{200, dec};
        drawAndAttach({}, centre, 160 + dec, dec > 0);
        const auto off = [&](double east, double north) {
            start(sky::fromTangentPlane({east, north}, centre), kScale * 1.03);
            return solve();
        };
        EXPECT_TRUE(off(0.8, 0)) << dec;
        EXPECT_LT(pixelsOff(centre), 0.5) << dec;
        EXPECT_TRUE(off(0, -0.8)) << dec;
        EXPECT_FALSE(off(3, 0)) << dec;
        EXPECT_FALSE(off(-3, 0)) << dec;
    }
}

// A search in declination walks over the pole.
TEST_F(PinPointPlateTest, TakesStartPositionsBeyondThePole) {
    drawAndAttach({}, {200, 89.6}, 35, true);
    start({20, 90.3});
    ASSERT_TRUE(solve());
    EXPECT_LT(pixelsOff({200, 89.6}), 0.3);
    EXPECT_LT(number("ArcsecPerPixelVert"), 0);
}

}  // namespace
}  // namespace vantrel::solver

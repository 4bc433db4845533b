#include "observatory/sky/fits_image.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>

#include <fitsio.h>
#include <gtest/gtest.h>

#include "observatory/sky/fits_writing.h"
#include "support/fits_bytes.h"
#include "support/refusal.h"
#include "support/temp_folder.h"

namespace vantrel::observatory {
namespace {

using test::bigEndian;
using test::fitsHeader;
using test::padded;

std::vector<float> pixelsOf(const FitsImage& image) {
    std::vector<float> pixels(image.width() * image.height());
    image.readRows(0, pixels);
    return pixels;
}

std::vector<std::string> imageCards(int bitpix, std::vector<std::string> more = {}) {
    std::vector<std::string> cards = {"SIMPLE  =                    T", "BITPIX  = " + std::to_string(bitpix),
                                      "NAXIS   =                    2", "NAXIS1  =                    3",
                                      "NAXIS2  =                    2"};
    cards.insert(cards.end(), more.begin(), more.end());
    return cards;
}

class FitsImageTest : public testing::Test {
  protected:
    FitsImage opened(const std::string& bytes) { return FitsImage::open(folder_.write("image.fits", bytes)); }
    static std::string errorOf(const std::filesystem::path& path) {
        return test::refusalOf<FitsError>([&] { pixelsOf(FitsImage::open(path)); });
    }

    test::TempFolder folder_;
};

// Six pixels, 3 wide: the same numbers in every format.
TEST_F(FitsImageTest, ReadsEveryPixelFormat) {
    const std::vector<float> expected = {0, 1, 100, 7, 200, 255};
    const struct {
        const char* why;
        int bitpix;
        std::vector<std::string> cards;
        std::function<std::string(float)> encode;
    } cases[] = {
        {"8-bit", 8, {}, [](float v) { return std::string(1, static_cast<char>(v)); }},
        {"16-bit signed", 16, {}, [](float v) { return bigEndian(static_cast<std::uint16_t>(v)); }},
        {"16-bit unsigned by offset",
         16,
         {"BZERO   = 32768", "BSCALE  = 1"},
         [](float v) { return bigEndian(static_cast<std::uint16_t>(v + 0x8000)); }},
        {"16-bit scaled, exponent D",
         16,
         {"BSCALE  = 2.5D-1", "BZERO   = -1.0"},
         [](float v) { return bigEndian(static_cast<std::uint16_t>((v + 1) * 4)); }},
        {"32-bit", 32, {}, [](float v) { return bigEndian(static_cast<std::uint32_t>(v)); }},
        {"64-bit", 64, {}, [](float v) { return bigEndian(static_cast<std::uint64_t>(v)); }},
        {"float", -32, {}, [](float v) { return bigEndian(std::bit_cast<std::uint32_t>(v)); }},
        {"double", -64, {}, [](double v) { return bigEndian(std::bit_cast<std::uint64_t>(v)); }},
    };
    for (const auto& c : cases) {
        std::string data;
        for (const float v : expected) data += c.encode(v);
        const auto image = opened(fitsHeader(imageCards(c.bitpix, c.cards)) + padded(data));
        EXPECT_EQ(image.width(), 3U) << c.why;
        EXPECT_EQ(pixelsOf(image), expected) << c.why;
    }
}

TEST_F(FitsImageTest, RowOrderPutsTheTopRowFirst) {
    const std::string data = padded("\1\2\3\4\5\6");
    const std::vector<float> asInTheFile = {1, 2, 3, 4, 5, 6}, turned = {4, 5, 6, 1, 2, 3};
    for (const auto& [order, pixels] :
         {std::pair{"'TOP-DOWN'", asInTheFile}, {"'BOTTOM-UP'", turned}, {"'BOGUS'", asInTheFile}}) {
        const auto image = opened(fitsHeader(imageCards(8, {std::string("ROWORDER= ") + order})) + data);
        EXPECT_EQ(pixelsOf(image), pixels) << order;
        std::vector<float> row(3);
        image.readRows(1, row);
        EXPECT_EQ(row, std::vector<float>(pixels.begin() + 3, pixels.end())) << order;
    }
    std::vector<float> second(3);
    FitsImage(3, 2, asInTheFile).readRows(1, second);
    EXPECT_EQ(second, (std::vector<float>{4, 5, 6})) << "of an image in memory";
}

TEST_F(FitsImageTest, AveragesColourPlanes) {
    auto cards = imageCards(8);
    cards[2] = "NAXIS   = 3";
    cards.emplace_back("NAXIS3  = 3");
    std::string data;
    for (const int plane : {0, 30, 90})
        for (int i = 0; i < 6; ++i) data += static_cast<char>(plane + 3 * i);
    const auto pixels = pixelsOf(opened(fitsHeader(cards) + padded(data)));
    for (int i = 0; i < 6; ++i) EXPECT_NEAR(pixels[static_cast<std::size_t>(i)], 40 + 3 * i, 1e-4);
}

// What CFITSIO packs must read as the plain file does.
TEST_F(FitsImageTest, ReadsPackedFiles) {
    std::vector<std::uint16_t> values(70 * 40);
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<std::uint16_t>(i * 37 % 65536);
    writeFits(folder_ / "plain.fits", 70, 40, values,
              {{"OBJECT", std::string("M 13's heart")}, {"EXPTIME", 2.5}, {"GUIDED", true}, {"DARK", false}});
    const auto plain = FitsImage::open(folder_ / "plain.fits");
    EXPECT_EQ(plain.header().text("OBJECT"), "M 13's heart");
    EXPECT_EQ(plain.header().number("exptime"), 2.5);
    EXPECT_EQ(plain.header().logical("GUIDED"), true);
    EXPECT_EQ(plain.header().logical("DARK"), false);
    EXPECT_EQ(pixelsOf(plain), std::vector<float>(values.begin(), values.end()));

    for (const std::string packed :
         {"tiles.fits[compress Rice]", "tiles_gzip.fits[compress GZIP]", "zipped.fits.gz"}) {
        int status = 0;
        fitsfile* from = nullptr;
        fitsfile* to = nullptr;
        fits_open_diskfile(&from, (folder_ / "plain.fits").c_str(), READONLY, &status);
        fits_create_file(&to, (folder_ / packed).c_str(), &status);
        if (packed.find('[') == std::string::npos) {
            fits_copy_file(from, to, 1, 1, 1, &status);
        } else {
            fits_img_compress(from, to, &status);
        }
        fits_close_file(to, &status);
        fits_close_file(from, &status);
        ASSERT_EQ(status, 0) << packed;
        const auto image = FitsImage::open(folder_ / packed.substr(0, packed.find('[')));
        EXPECT_EQ(pixelsOf(image), pixelsOf(plain)) << packed;
        EXPECT_EQ(image.header().number("EXPTIME"), 2.5) << packed;
        std::vector<float> row(70);
        image.readRows(39, row);
        EXPECT_EQ(row, std::vector<float>(values.end() - 70, values.end())) << packed;
    }
}

TEST_F(FitsImageTest, RefusesDamagedAndHostileFilesInOneLine) {
    const std::string data = padded("123456");
    const auto with = [](std::vector<std::string> cards, std::size_t at, const char* card) {
        cards[at] = card;
        return fitsHeader(cards);
    };
    std::string endless = fitsHeader(imageCards(8));
    endless.replace(endless.find("END     "), 3, "OUT");
    const std::string gzip("\x1f\x8b\x08\0\0\0\0\0\0\3", 10);
    const struct {
        const char* why;
        std::string bytes;
        const char* says = "";
    } cases[] = {
        {"empty", ""},
        {"a long text", std::string(10000, 'z')},
        {"pixels missing", fitsHeader(imageCards(8))},
        {"header without end", endless + data, "the header has no end"},
        {"cut in the header", fitsHeader(imageCards(8)).substr(0, 1000)},
        {"no axes", with(imageCards(8), 2, "NAXIS   = 0") + data},
        {"negative width", with(imageCards(8), 3, "NAXIS1  = -3") + data},
        {"zero height", with(imageCards(8), 4, "NAXIS2  = 0") + data},
        {"huge", with(imageCards(8), 3, "NAXIS1  = 2000000000") + data},
        {"product overflows",
         fitsHeader({"SIMPLE  =                    T", "BITPIX  = -64", "NAXIS   = 3", "NAXIS1  = 4294967296",
                     "NAXIS2  = 4294967296", "NAXIS3  = 4294967296"}) +
             data},
        {"unknown pixel format", fitsHeader(imageCards(17)) + data},
        {"width is a text", with(imageCards(8), 3, "NAXIS1  = 'three'") + data},
        {"infinite scale", fitsHeader(imageCards(8, {"BSCALE  = 1E300"})) + data},
        {"gzip of nothing", gzip + std::string(3000, '\1')},
        {"gzip that claims 1 GB", gzip + std::string(2999, '\0') + '\x40', "claims to hold more"},
        {"a packed image of more pixels than its bytes can be",
         padded(fitsHeader({"SIMPLE  =                    T", "BITPIX  = 8", "NAXIS   = 0"})) +
             fitsHeader({"XTENSION= 'IMAGE   '", "BITPIX  = 8", "NAXIS   = 2", "NAXIS1  = 20000",
                         "NAXIS2  = 20000", "PCOUNT  = 0", "GCOUNT  = 1"}) +
             data,
         "claims to hold more"},
        {"gzip that claims 4 GB", gzip + std::string(3000, '\xff')},
    };
    for (const auto& c : cases) {
        const std::string error = errorOf(folder_.write("hostile.fits", c.bytes));
        EXPECT_NE(error.find(std::string("hostile.fits: ") + c.says), std::string::npos)
            << c.why << ": " << error;
        EXPECT_EQ(error.find('\n'), std::string::npos) << c.why;
    }
    for (const char* none : {"/nowhere/image.fits", "/", "/dev/zero"}) EXPECT_NE(errorOf(none), "") << none;
}

TEST(WriteFits, ReplacesTheFileOnlyWhenComplete) {
    const test::TempFolder folder;
    const std::vector<std::uint16_t> values = {0, 1, 32768, 65535};
    writeFits(folder / "written.fits", 2, 2, values, {});
    EXPECT_THROW(writeFits(folder / "written.fits", 2, 2, values, {{"EXPTIME", std::nan("")}}), FitsError);
    EXPECT_EQ(pixelsOf(FitsImage::open(folder / "written.fits")), (std::vector<float>{0, 1, 32768, 65535}));
    EXPECT_THROW(writeFits(folder / "no such folder/x.fits", 2, 2, values, {}), FitsError);
    for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
        EXPECT_EQ(entry.path().filename(), "written.fits");
}

TEST(WriteFits, FailuresNameTheFileThatWasToBeWritten) {
    const test::TempFolder folder;
    const std::vector<std::uint16_t> values(4, 7);
    const std::string text(5000, 'x');
    std::ofstream(folder / "text") << text;
    const TangentWcs wcs{{0, 0}, {0, 0}, {1, 0, 0, 1}};
    const struct {
        const char* why;
        std::filesystem::path target;
        std::function<void(const std::filesystem::path&)> write;
    } cases[] = {
        {"a value that FITS has no text for", folder / "image.fits",
         [&](const auto& target) {
             writeFits(target, 2, 2, values, {{"EXPTIME", std::nan("")}});
         }},
        {"no such folder", folder / "none/image.fits",
         [&](const auto& target) { writeFits(target, 2, 2, values, {}); }},
        {"the source is no image", folder / "solved.fits",
         [&](const auto& target) { writeWcs(folder / "text", target, wcs); }},
    };
    for (const auto& c : cases) {
        const std::string error = test::refusalOf<FitsError>([&] { c.write(c.target); });
        EXPECT_TRUE(error.starts_with(c.target.string() + ": ")) << c.why << ": " << error;
    }
}

TEST(WriteWcs, IsReadBackInArrayPixelsForBothRowOrders) {
    const test::TempFolder folder;
    const std::vector<std::uint16_t> values(50 * 30, 100);
    const TangentWcs wcs{{210.5, -42.25}, {24.5, 10.5}, {-0.001, 0.0002, 0.0002, 0.0011}};
    for (const char* order : {"TOP-DOWN", "BOTTOM-UP"}) {
        const auto path = folder / "wcs.fits";
        // A former solution of the other kind must not survive.
        writeFits(path, 50, 30, values,
                  {{"ROWORDER", std::string(order)}, {"CDELT1", 0.5}, {"CROTA2", 77.0}, {"EPOCH", 1950.0}});
        writeWcs(path, path, wcs);
        const auto image = FitsImage::open(path);
        const auto read = image.wcs();
        ASSERT_TRUE(read) << order;
        EXPECT_EQ(image.header().number("EQUINOX"), 2000.0);
        EXPECT_EQ(image.header().text("RADESYS"), "ICRS");
        EXPECT_FALSE(image.header().number("CDELT1") || image.header().number("EPOCH"));
        EXPECT_EQ(pixelsOf(image).size(), values.size());
        for (const PixelPosition pixel : {PixelPosition{0, 0}, PixelPosition{49, 3}}) {
            EXPECT_LT(separationDeg(read->toSky(pixel), wcs.toSky(pixel)), 1e-9) << order;
            const auto back = read->toPixel(wcs.toSky(pixel));
            ASSERT_TRUE(back);
            EXPECT_NEAR(back->x, pixel.x, 1e-6);
            EXPECT_NEAR(back->y, pixel.y, 1e-6);
        }
        // In the file, row 1 is the array's first or last row.
        EXPECT_NEAR(image.header().number("CRPIX2").value_or(0), order[0] == 'T' ? 11.5 : 19.5, 1e-9);
        EXPECT_GT(image.header().number("CD2_2").value_or(0) * (order[0] == 'T' ? 1 : -1), 0) << order;
    }
}

// Values by hand from the definitions; a star on the meridian stands at tan(distance).
TEST(TangentPlane, ProjectsByTheDefinition) {
    const auto north = toTangentPlane({50, 61}, {50, 60});
    ASSERT_TRUE(north);
    EXPECT_NEAR(north->xi, 0, 1e-12);
    EXPECT_NEAR(north->eta, std::tan(M_PI / 180) * 180 / M_PI, 1e-9);
    const auto overPole = toTangentPlane({230, 89}, {50, 89.5});
    ASSERT_TRUE(overPole);
    EXPECT_NEAR(overPole->eta, std::tan(1.5 * M_PI / 180) * 180 / M_PI, 1e-9);
    EXPECT_FALSE(toTangentPlane({230, 0}, {50, 0}));
    for (const SkyPosition centre : {SkyPosition{0, 90}, SkyPosition{359.9, -60}, SkyPosition{12, 5}}) {
        for (const PlanePosition plane : {PlanePosition{3, 4}, PlanePosition{-20, 15}, PlanePosition{0, 0}}) {
            const auto back = toTangentPlane(fromTangentPlane(plane, centre), centre);
            ASSERT_TRUE(back);
            EXPECT_NEAR(back->xi, plane.xi, 1e-9);
            EXPECT_NEAR(back->eta, plane.eta, 1e-9);
        }
    }
}

TEST(WcsFromHeader, UnderstandsTheThreeWaysAndRefusesTheRest) {
    FitsHeader base;
    for (const char* card : {"CTYPE1  = 'RA---TAN'", "CTYPE2  = 'DEC--TAN'", "CRVAL1  = 10.", "CRVAL2  = 20.",
                             "CRPIX1  = 51.", "CRPIX2  = 51."}) {
        base.addCardImage(card);
    }
    const auto with = [&](std::initializer_list<const char*> cards) {
        FitsHeader header = base;
        for (const char* card : cards) header.addCardImage(card);
        return wcsFromHeader(header, 101, false);
    };
    EXPECT_FALSE(with({}));
    EXPECT_FALSE(with({"CD1_1   = 0.0", "CD1_2   = 0.0"}));
    EXPECT_FALSE(with({"CDELT1  = 0.001"}));
    const auto matrix = with({"CD1_1   = 0.0", "CD1_2   = -0.001", "CD2_1   = 0.001", "CD2_2   = 0.0"});
    const auto turned = with({"CDELT1  = 0.001", "CDELT2  = 0.001", "CROTA2  = 90."});
    const auto scaled = with({"CDELT1  = 0.001", "CDELT2  = 0.001", "PC1_1   = 0.", "PC1_2   = -1.",
                              "PC2_1   = 1.", "PC2_2   = 0."});
    ASSERT_TRUE(matrix && turned && scaled);
    for (int i = 0; i < 4; ++i) {
        EXPECT_NEAR(turned->cd[i], matrix->cd[i], 1e-15) << i;
        EXPECT_NEAR(scaled->cd[i], matrix->cd[i], 1e-15) << i;
    }
    EXPECT_EQ(matrix->referencePixel.x, 50);
}

}  // namespace
}  // namespace vantrel::observatory

#include "fits/fits_image.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>

#include <fitsio.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include "fits/fits_writing.h"
#include "fits/header_wcs.h"
#include "platform/paths.h"
#include "support/fits_bytes.h"
#include "support/refusal.h"
#include "support/temp_folder.h"

namespace vantrel::fits {
namespace {

using sky::PixelPosition;
using sky::TangentWcs;
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

constexpr float kNone = std::numeric_limits<float>::quiet_NaN();

/// The same texts for the same values, in eighths; "-" where there is none.
std::vector<std::string> told(const std::vector<float>& pixels) {
    std::vector<std::string> texts;
    texts.reserve(pixels.size());
    for (const float pixel : pixels)
        texts.push_back(std::isnan(pixel) ? "-" : std::to_string(std::lround(pixel * 8)));
    return texts;
}

std::string gzipped(const std::string& bytes) {
    std::string packed(::compressBound(bytes.size()) + 64, '\0');
    z_stream stream{};
    EXPECT_EQ(::deflateInit2(&stream, 9, Z_DEFLATED, 15 + 16, 9, Z_DEFAULT_STRATEGY), Z_OK);
    std::string input = bytes;
    stream.next_in = reinterpret_cast<Bytef*>(input.data());
    stream.avail_in = static_cast<uInt>(input.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    EXPECT_EQ(::deflate(&stream, Z_FINISH), Z_STREAM_END);
    packed.resize(stream.total_out);
    ::deflateEnd(&stream);
    return packed;
}

const std::string kEmptyPrimary = fitsHeader(
    {"SIMPLE  =                    T", "BITPIX  =                    8", "NAXIS   =                    0"});

/// The image as an extension.
std::string behindPrimary(const std::vector<std::string>& imageCards) {
    std::vector<std::string> cards = imageCards;
    cards[0] = "XTENSION= 'IMAGE   '";
    cards.insert(cards.begin() + 5, {"PCOUNT  =                    0", "GCOUNT  =                    1"});
    return kEmptyPrimary + fitsHeader(cards);
}

/// The file compressed tile by tile.
std::filesystem::path tiled(const std::filesystem::path& plain, int algorithm) {
    std::filesystem::path packed = plain;
    packed += ".fz";
    std::filesystem::remove(packed);
    int status = 0;
    fitsfile* from = nullptr;
    fitsfile* to = nullptr;
    fits_open_diskfile(&from, platform::libraryName(plain).c_str(), READONLY, &status);
    fits_create_diskfile(&to, platform::libraryName(packed).c_str(), &status);
    fits_set_compression_type(to, algorithm, &status);
    fits_set_quantize_level(to, algorithm == RICE_1 ? -0.01F : 0,
                            &status);  // steps of floats; 0: as they are
    fits_img_compress(from, to, &status);
    fits_close_file(to, &status);
    fits_close_file(from, &status);
    EXPECT_EQ(status, 0) << packed;
    return packed;
}

// The same pixels in every type, with and without pixels that have no value, on every way into the program.
TEST_F(FitsImageTest, ReadsEveryTypeOfPixelsOnEveryWay) {
    using Encode = std::string (*)(float);
    const Encode as8 = [](float v) { return std::string(1, static_cast<char>(static_cast<int>(v))); };
    const Encode as16 = [](float v) { return bigEndian(static_cast<std::uint16_t>(static_cast<int>(v))); };
    const Encode as32 = [](float v) { return bigEndian(static_cast<std::uint32_t>(static_cast<int>(v))); };
    const Encode as64 = [](float v) { return bigEndian(static_cast<std::uint64_t>(static_cast<int>(v))); };
    const Encode asFloat = [](float v) { return bigEndian(std::bit_cast<std::uint32_t>(v)); };
    const Encode asDouble = [](float v) { return bigEndian(std::bit_cast<std::uint64_t>(double{v})); };
    constexpr float kInfinite = std::numeric_limits<float>::infinity();
    using Cards = std::vector<std::string>;
    const Cards unsignedCards = {"BZERO   = 32768", "BSCALE  = 1", "BLANK   = -32768"};
    const Cards scaledCards = {"BSCALE  = 2.5D-1", "BZERO   = -1.0", "BLANK   = 99."};
    const struct {
        const char* why;
        int bitpix;
        Cards cards;
        Encode encode;
        std::string blank = {};  // a pixel without a value
        float scale = 1, zero = 0;
    } cases[] = {
        {"8-bit", 8, {}, as8},
        {"8-bit, BLANK", 8, {"BLANK   = 255"}, as8, "\xFF"},
        {"16-bit", 16, {}, as16},
        {"16-bit, BLANK", 16, {"BLANK   = -32768"}, as16, bigEndian(std::uint16_t{0x8000})},
        {"16-bit unsigned by offset, BLANK", 16, unsignedCards, as16, bigEndian(std::uint16_t{0x8000}), 1,
         32768},
        {"16-bit scaled, exponent D, BLANK real", 16, scaledCards, as16, bigEndian(std::uint16_t{99}), 0.25F,
         -1},
        {"16-bit, BLANK beyond them", 16, {"BLANK   = 65635"}, as16},
        {"32-bit, BLANK", 32, {"BLANK   = -2147483648"}, as32, bigEndian(0x8000'0000U)},
        {"64-bit, BLANK", 64, {"BLANK   = -9223372036854775808"}, as64, bigEndian(std::uint64_t{1} << 63U)},
        {"float", -32, {}, asFloat},
        {"float, not a number", -32, {}, asFloat, asFloat(kNone)},
        {"float, infinite", -32, {}, asFloat, asFloat(-kInfinite)},
        {"float, BLANK is for whole numbers", -32, {"BLANK   = 7"}, asFloat},
        {"double, not a number", -64, {}, asDouble, asDouble(kNone)},
        {"double beyond all floats", -64, {}, asDouble, bigEndian(std::bit_cast<std::uint64_t>(1e300))},
    };
    constexpr int kPixels = 20 * 10;
    for (const auto& c : cases) {
        std::vector<std::string> cards = imageCards(c.bitpix, c.cards);
        cards[3] = "NAXIS1  =                   20";
        cards[4] = "NAXIS2  =                   10";
        std::string data;
        std::vector<float> expected;
        for (int i = 0; i < kPixels; ++i) {
            const auto stored = static_cast<float>(i % 97);
            const bool blank = !c.blank.empty() && (i == 0 || i == 33 || i == kPixels - 1);
            data += blank ? c.blank : c.encode(stored);
            expected.push_back(blank ? kNone : stored * c.scale + c.zero);
        }
        const std::string image = fitsHeader(cards) + padded(data);
        const std::string extension = behindPrimary(cards) + padded(data);
        std::vector<std::filesystem::path> ways = {folder_.write("plain.fits", image),
                                                   folder_.write("image.fits.gz", gzipped(image)),
                                                   folder_.write("extension.fits", extension),
                                                   folder_.write("extension.fits.gz", gzipped(extension))};
        const bool packable = c.bitpix != 64 && (c.bitpix > 0 || c.cards.empty());
        if (packable) {
            for (const int algorithm : {RICE_1, GZIP_1, GZIP_2}) {
                const auto name = "tiles" + std::to_string(algorithm);
                ways.push_back(tiled(folder_.write(name, image), algorithm));
                ways.push_back(folder_.write(name + ".fz.gz", gzipped(test::contentsOf(ways.back()))));
            }
        }
        for (const auto& way : ways) {
            SCOPED_TRACE(std::string(c.why) + ": " + way.filename().string());
            const auto read = FitsImage::open(way);
            EXPECT_EQ(read.width(), 20U);
            EXPECT_EQ(told(pixelsOf(read)), told(expected));
            std::vector<float> lastRow(20);
            read.readRows(9, lastRow);
            EXPECT_EQ(told(lastRow), told({expected.end() - 20, expected.end()}));
            std::vector<float> end(15);
            read.readInRow(9, 5, end);
            EXPECT_EQ(told(end), told({expected.end() - 15, expected.end()}));
            EXPECT_TRUE(read.mayHoldBlanks() || c.blank.empty());
        }
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
        float middle = 0;
        image.readInRow(1, 1, std::span(&middle, 1));
        EXPECT_EQ(middle, pixels[4]) << order;
    }
    std::vector<float> second(3);
    FitsImage(3, 2, asInTheFile).readRows(1, second);
    EXPECT_EQ(second, (std::vector<float>{4, 5, 6})) << "of an image in memory";
}

TEST_F(FitsImageTest, APixelNeedsAValueInEveryPlane) {
    auto cards = imageCards(16);
    cards[2] = "NAXIS   = 3";
    cards.insert(cards.end(), {"NAXIS3  = 2", "BLANK   = 7"});
    std::string data;
    for (const unsigned value : {1, 7, 3, 4, 5, 6, 3, 4, 5, 6, 7, 8})
        data += bigEndian(static_cast<std::uint16_t>(value));
    const auto plain = folder_.write("plain.fits", fitsHeader(cards) + padded(data));
    for (const auto& way : {plain, tiled(plain, RICE_1)})
        EXPECT_EQ(told(pixelsOf(FitsImage::open(way))), told({2, kNone, 4, 5, kNone, 7})) << way;
    float last = 0;
    FitsImage::open(plain).readInRow(1, 2, std::span(&last, 1));
    EXPECT_EQ(last, 7);
}

TEST_F(FitsImageTest, ReadsTheHeaderOnEveryWay) {
    const std::vector<std::uint16_t> values(70 * 40, 1);
    const auto plain = folder_ / "plain.fits";
    writeFits(plain, 70, 40, values,
              {{"OBJECT", std::string("M 13's heart")}, {"EXPTIME", 2.5}, {"GUIDED", true}, {"DARK", false}});
    const auto tiles = tiled(plain, RICE_1);
    std::string behind = test::contentsOf(tiles);  // what stands in the first unit counts as well
    behind.replace(behind.find("EXTEND"), 30, "SITELAT =               -33.25");
    for (const auto& way : {plain, folder_.write("packed.gz", gzipped(test::contentsOf(plain))), tiles,
                            folder_.write("behind.fz", behind)}) {
        SCOPED_TRACE(way.filename().string());
        const auto image = FitsImage::open(way);
        EXPECT_EQ(image.header().text("OBJECT"), "M 13's heart");
        EXPECT_EQ(image.header().number("exptime"), 2.5);
        EXPECT_EQ(image.header().logical("GUIDED"), true);
        EXPECT_EQ(image.header().logical("DARK"), false);
        EXPECT_EQ(image.header().number("SITELAT").has_value(), way.filename() == "behind.fz");
    }
}

// What stands behind the image is damaged here: nobody may look at it.
TEST_F(FitsImageTest, UnpacksNoMoreThanTheHeaderPromises) {
    const auto plain = folder_.write("plain.fits", fitsHeader(imageCards(8)) + padded("\1\2\3\4\5\6"));
    for (const auto& image : {plain, tiled(plain, RICE_1)}) {
        std::string bomb = gzipped(test::contentsOf(image) + std::string(4'000'000, '\0'));
        std::fill(bomb.begin() + static_cast<std::ptrdiff_t>(bomb.size() / 2), bomb.end(), '\xFF');
        const auto packed = folder_.write("bomb.gz", bomb);
        EXPECT_EQ(pixelsOf(FitsImage::open(packed)), (std::vector<float>{1, 2, 3, 4, 5, 6})) << image;
        const TangentWcs wcs{{210.5, -42.25}, {1, 1}, {-0.001, 0, 0, 0.001}};
        writeWcs(packed, folder_ / "solved.fits", wcs);
        EXPECT_TRUE(FitsImage::open(folder_ / "solved.fits").wcs()) << image;
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
    const auto with0 = [](std::string bytes, std::size_t at) { return bytes.replace(at, 99, 99, '\0'); };
    const auto square = [](int side, int bitpix) {
        auto cards = imageCards(bitpix);
        cards[3] = "NAXIS1  = " + std::to_string(side);
        cards[4] = "NAXIS2  = " + std::to_string(side);
        return cards;
    };
    std::string noise = fitsHeader(square(100, 16));
    std::mt19937 random(1);
    for (int i = 0; i < 100 * 100; ++i) noise += bigEndian(static_cast<std::uint16_t>(random()));
    std::string endlessUnits = kEmptyPrimary;
    for (int i = 0; i < 3000; ++i)
        endlessUnits += fitsHeader({"XTENSION= 'IMAGE   '", "BITPIX  = 8", "NAXIS   = 0"});
    const struct {
        const char* why;
        std::string bytes;
        const char* says = "";
    } cases[] = {
        {"empty", ""},
        {"pixels missing", fitsHeader(imageCards(8))},
        {"header without end", endless + data, "the header has no end"},
        {"no axes", with(imageCards(8), 2, "NAXIS   = 0") + data},
        {"negative width", with(imageCards(8), 3, "NAXIS1  = -3") + data},
        {"huge", with(imageCards(8), 3, "NAXIS1  = 2000000000") + data},
        {"product overflows",
         fitsHeader({"SIMPLE  =                    T", "BITPIX  = -64", "NAXIS   = 3", "NAXIS1  = 4294967296",
                     "NAXIS2  = 4294967296", "NAXIS3  = 4294967296"}) +
             data},
        {"unknown pixel format", fitsHeader(imageCards(17)) + data},
        {"width is a text", with(imageCards(8), 3, "NAXIS1  = 'three'") + data},
        {"infinite scale", fitsHeader(imageCards(8, {"BSCALE  = 1E300"})) + data},
        {"gzip of nothing", gzip + std::string(3000, '\1')},
        {"gzip of no FITS", gzipped(std::string(10'000, 'z')), "not a FITS file"},
        {"gzip cut in the header", gzipped(noise).substr(0, 60), "not a FITS file"},
        {"gzip cut in the pixels", gzipped(noise).substr(0, 9'000), "ends before its last pixel"},
        {"gzip damaged in the pixels", with0(gzipped(noise), 9'000), "damaged"},
        {"gzip that promises 400 MB", gzipped(fitsHeader(square(20'000, 8)) + data), "claims to hold more"},
        {"gzip that promises 3 GB", gzipped(fitsHeader(square(20'000, -64)) + data),
         "the image is too large"},
        {"an endless unit before the image",
         fitsHeader({"SIMPLE  =                    T", "BITPIX  = 64", "NAXIS   = 2", "NAXIS1  = -1",
                     "NAXIS2  = 9000000000000000000"}) +
             behindPrimary(imageCards(8)) + data},
        {"units without end", endlessUnits, "holds no image"},
    };
    for (const auto& c : cases) {
        const std::string error = errorOf(folder_.write("hostile.fits", c.bytes));
        EXPECT_NE(error.find(std::string("hostile.fits: ") + c.says), std::string::npos)
            << c.why << ": " << error;
        EXPECT_EQ(error.find('\n'), std::string::npos) << c.why;
    }
    for (const char* none : {"/nowhere/image.fits", "/", "/dev/zero"}) EXPECT_NE(errorOf(none), "") << none;
}

// What a header says of its tiles must be doubted before the library takes memory and time for it.
TEST_F(FitsImageTest, RefusesTilesThatAskForTooMuch) {
    auto cards = imageCards(16);
    cards[3] = "NAXIS1  = 200";
    cards[4] = "NAXIS2  = 100";
    std::string data;
    std::mt19937 random(1);
    for (int i = 0; i < 200 * 100; ++i) data += bigEndian(static_cast<std::uint16_t>(random() % 999));
    const std::string sound =
        test::contentsOf(tiled(folder_.write("plain.fits", fitsHeader(cards) + padded(data)), RICE_1));
    const auto card = [&](const std::string& keyword, const std::string& value) {
        std::string bytes = sound;
        std::string text = keyword;
        text.resize(8, ' ');
        text += "= " + value;
        text.resize(80, ' ');
        const auto place = bytes.find(text.substr(0, 10));
        EXPECT_NE(place, std::string::npos) << keyword;
        return bytes.replace(place, 80, text);
    };
    // The first tile's place in the heap: how many bytes, and from where.
    const auto descriptor = [&](std::uint32_t count, std::uint32_t place) {
        std::string bytes = sound;
        const auto table = bytes.find("XTENSION");
        const auto end = bytes.find("END     ", table) / 2880 * 2880 + 2880;
        return bytes.replace(end, 8, bigEndian(count) + bigEndian(place));
    };
    const struct {
        const char* why;
        std::string bytes;
        const char* says;
    } cases[] = {
        {"wide tiles", card("ZTILE1", "2000000000"), "damaged"},
        {"tiles without pixels", card("ZTILE2", "0"), "damaged"},
        {"fewer rows than tiles", card("ZTILE1", "1"), "claims to hold more"},
        {"more pixels than its bytes can be", card("ZNAXIS2", "90000"), "claims to hold more"},
        {"an image without width", card("ZNAXIS1", "0"), "holds no image"},
        {"an image too wide", card("ZNAXIS1", "100000000000"), "the image is too large"},
        {"a heap beyond the file", card("PCOUNT", "1800000"), "ends before its last pixel"},
        {"rows beyond the file", card("NAXIS2", "900000"), "ends before its last pixel"},
        {"a tile of 2 GB", descriptor(0x7FFF'FFFFU, 0), ""},
        {"a tile that lies beyond the file", descriptor(100, 0x7FFF'FFFFU), ""},
        {"a way of packing that nobody knows", card("ZCMPTYPE", "'MAGIC   '"), ""},
        {"cut in the heap", sound.substr(0, sound.size() - 2880), "ends before its last pixel"},
    };
    EXPECT_EQ(errorOf(folder_.write("tiles.fz", sound)), "");
    for (const auto& c : cases) {
#ifdef _WIN32
        // Nothing limits the library there, and it reads the image all the same.
        if (std::string(c.why) == "wide tiles") continue;
#endif
        for (const bool packed : {false, true}) {
            const std::string error = errorOf(folder_.write("tiles.fz", packed ? gzipped(c.bytes) : c.bytes));
            EXPECT_NE(error.find(std::string("tiles.fz: ") + c.says), std::string::npos)
                << c.why << ": " << error;
            EXPECT_EQ(error.find('\n'), std::string::npos) << c.why;
        }
    }
}

TEST(WriteFits, FailuresNameTheFileThatIsAtFaultAndLeaveWhatWasThere) {
    const test::TempFolder folder;
    const std::vector<std::uint16_t> values = {0, 1, 32768, 65535};
    const auto written = folder / "written.fits", text = folder.write("text", std::string(5000, 'x'));
    writeFits(written, 2, 2, values, {});
    const struct {
        const char* why;
        std::filesystem::path named;
        std::function<void()> write;
    } cases[] = {
        {"a value that FITS has no text for", written,
         [&] {
             writeFits(written, 2, 2, values, {{"EXPTIME", std::nan("")}});
         }},
        {"no such folder", folder / "none/image.fits",
         [&] { writeFits(folder / "none/image.fits", 2, 2, values, {}); }},
        {"the source is no image, and is what is named", text,
         [&] {
             writeWcs(text, folder / "solved.fits", TangentWcs{{0, 0}, {0, 0}, {1, 0, 0, 1}});
         }},
    };
    for (const auto& c : cases) {
        const std::string error = test::refusalOf<FitsError>(c.write);
        EXPECT_TRUE(error.starts_with(c.named.string() + ": ")) << c.why << ": " << error;
    }
    EXPECT_EQ(pixelsOf(FitsImage::open(written)), (std::vector<float>{0, 1, 32768, 65535}));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 2);
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
            EXPECT_LT(sky::separationDeg(read->toSky(pixel), wcs.toSky(pixel)), 1e-9) << order;
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

// The file's own pixels, counted as its rows run, must be corrected as the array's are.
TEST(WriteWcs, TellsADistortionForBothRowOrders) {
    const test::TempFolder folder;
    const TangentWcs wcs{{210.5, -42.25}, {24.5, 10.5}, {-0.001, 0.0002, 0.0002, 0.0011}};
    sky::SipDistortion sip{sky::SipPolynomial(3), sky::SipPolynomial(3), sky::SipPolynomial(1),
                           sky::SipPolynomial(1)};
    for (auto* polynomial : {&sip.a, &sip.b})
        for (int degree = 2; degree <= 3; ++degree)
            for (int q = 0; q <= degree; ++q)
                polynomial->at(degree - q, q) = (1 + q + (polynomial == &sip.b ? 7 : 0)) * 1e-3 / degree;
    for (const bool topDown : {true, false}) {
        const auto path = folder / "wcs.fits";
        writeFits(path, 50, 30, std::vector<std::uint16_t>(50 * 30, 100),
                  {{"ROWORDER", std::string(topDown ? "TOP-DOWN" : "BOTTOM-UP")}, {"B_0_5", 1.0}});
        writeWcs(path, path, wcs, sip);
        const FitsHeader header = FitsImage::open(path).header();
        EXPECT_EQ(header.text("CTYPE1"), "RA---TAN-SIP");
        EXPECT_EQ(header.integer("AP_ORDER"), 1);
        EXPECT_FALSE(header.number("B_0_5"));
        for (const auto& [p, q] : {std::pair{2, 0}, {1, 1}, {0, 3}}) {
            const std::string place = "_" + std::to_string(p) + "_" + std::to_string(q);
            const double sign = topDown || q % 2 == 0 ? 1 : -1;
            EXPECT_NEAR(header.number("A" + place).value_or(0), sign * sip.a.at(p, q), 1e-15) << place;
            EXPECT_NEAR(header.number("B" + place).value_or(0), (topDown ? 1 : -1) * sign * sip.b.at(p, q),
                        1e-15);
        }

        writeWcs(path, path, wcs);
        const FitsHeader plain = FitsImage::open(path).header();
        EXPECT_EQ(plain.text("CTYPE2"), "DEC--TAN");
        EXPECT_FALSE(plain.number("A_ORDER") || plain.number("B_1_2"));
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

TEST(FitsHeader, TakesWholeNumbersThatAreWrittenAsReals) {
    FitsHeader header;
    for (const char* card : {"MOST    = 9.0E15", "MORE    = 9.1E15", "PART    = 2.5", "TEXT    = '-7'"})
        header.addCardImage(card);
    EXPECT_EQ(header.integer("MOST"), 9'000'000'000'000'000);
    EXPECT_EQ(header.integer("TEXT"), -7);
    for (const char* none : {"MORE", "PART", "NONE"}) EXPECT_FALSE(header.integer(none)) << none;
}

}  // namespace
}  // namespace vantrel::fits

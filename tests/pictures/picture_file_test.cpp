#include "pictures/picture_file.h"

#include <cstdio>
#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <jpeglib.h>
#include <png.h>
#include <tiffio.h>

#include "fits/fits_writing.h"
#include "pictures/png_writing.h"
#include "support/temp_folder.h"

namespace vantrel::pictures {
namespace {

using testing::HasSubstr;

constexpr std::size_t kWidth = 60, kHeight = 40;

/// Brighter to the right and downwards, and one bright spot: 0 to 255.
std::uint8_t levelAt(std::size_t x, std::size_t y) {
    return x == 20 && y == 10 ? 255 : static_cast<std::uint8_t>(x + 2 * y);
}

void writeJpeg(const std::filesystem::path& path) {
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    jpeg_compress_struct jpeg{};
    jpeg_error_mgr errors{};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    jpeg_stdio_dest(&jpeg, file);
    jpeg.image_width = kWidth;
    jpeg.image_height = kHeight;
    jpeg.input_components = 3;
    jpeg.in_color_space = JCS_RGB;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, 98, TRUE);
    jpeg_start_compress(&jpeg, TRUE);
    std::vector<JSAMPLE> line(3 * kWidth);
    for (std::size_t y = 0; y < kHeight; ++y) {
        for (std::size_t i = 0; i < line.size(); ++i) line[i] = levelAt(i / 3, y);
        JSAMPROW at = line.data();
        jpeg_write_scanlines(&jpeg, &at, 1);
    }
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
    std::fclose(file);
}

void writePng(const std::filesystem::path& path) {
    std::vector<std::uint8_t> values;
    for (std::size_t i = 0; i < kWidth * kHeight; ++i) values.push_back(levelAt(i % kWidth, i / kWidth));
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    png.width = kWidth;
    png.height = kHeight;
    png.format = PNG_FORMAT_GRAY;
    png_image_write_to_file(&png, path.c_str(), 0, values.data(), 0, nullptr);
}

struct TiffKind {
    const char* name;
    std::uint16_t bits, samples, format, planes, packing;
};

/// With what every one needs.
TIFF* newTiff(const std::filesystem::path& path, const TiffKind& kind, unsigned rowsInStrip,
              int photometric) {
    TIFF* const tiff = TIFFOpen(path.c_str(), "w");
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(kWidth));
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(kHeight));
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, kind.bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, kind.samples);
    TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, kind.format);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, kind.planes);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, kind.packing);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, rowsInStrip);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometric);
    return tiff;
}

template <typename Sample>
void writeTiff(const std::filesystem::path& path, const TiffKind& kind) {
    TIFF* const tiff = newTiff(path, kind, 7, kind.samples >= 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
    const bool apart = kind.planes == PLANARCONFIG_SEPARATE;
    const std::size_t inLine = apart ? 1 : kind.samples;
    std::vector<Sample> line(kWidth * inLine);
    const std::uint16_t planes = apart ? kind.samples : std::uint16_t{1};
    for (std::uint16_t plane = 0; plane < planes; ++plane)
        for (std::uint32_t y = 0; y < kHeight; ++y) {
            for (std::size_t i = 0; i < line.size(); ++i)
                line[i] = static_cast<Sample>(levelAt(i / inLine, y));
            TIFFWriteScanline(tiff, line.data(), y, plane);
        }
    TIFFClose(tiff);
}

/// The sensor's pixels behind a colour filter array, as cameras write them.
void writeDng(const std::filesystem::path& path) {
    constexpr int kFilterArray = 32803;
    const TiffKind plain{"", 16, 1, SAMPLEFORMAT_UINT, PLANARCONFIG_CONTIG, COMPRESSION_NONE};
    TIFF* const tiff = newTiff(path, plain, kHeight, kFilterArray);
    const std::uint8_t version[] = {1, 4, 0, 0}, filters[] = {0, 1, 1, 2};
    const std::uint16_t twoByTwo[] = {2, 2};
    TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, 0U);
    TIFFSetField(tiff, TIFFTAG_MAKE, "Maker");
    TIFFSetField(tiff, TIFFTAG_MODEL, "Camera");
    TIFFSetField(tiff, TIFFTAG_UNIQUECAMERAMODEL, "Maker Camera");
    TIFFSetField(tiff, TIFFTAG_DATETIME, "2026:03:21 23:10:00");
    TIFFSetField(tiff, TIFFTAG_DNGVERSION, version);
    TIFFSetField(tiff, TIFFTAG_CFAREPEATPATTERNDIM, twoByTwo);
    TIFFSetField(tiff, TIFFTAG_CFAPATTERN, 4, filters);
    std::vector<std::uint16_t> line(kWidth);
    for (std::uint32_t y = 0; y < kHeight; ++y) {
        for (std::size_t x = 0; x < kWidth; ++x) line[x] = levelAt(x, y);
        TIFFWriteScanline(tiff, line.data(), y, 0);
    }
    TIFFClose(tiff);
}

class OpenPicture : public testing::Test {
  protected:
    static std::vector<float> pixelsOf(const fits::FitsImage& image) {
        std::vector<float> pixels(image.width() * image.height());
        image.readRows(0, pixels);
        return pixels;
    }
    /// The picture's levels, up to so much.
    static void expectLevels(const fits::FitsImage& image, float tolerance) {
        ASSERT_EQ(image.width(), kWidth);
        ASSERT_EQ(image.height(), kHeight);
        const auto pixels = pixelsOf(image);
        double worst = 0;
        for (std::size_t i = 0; i < pixels.size(); ++i)
            worst = std::max<double>(worst, std::abs(pixels[i] - levelAt(i % kWidth, i / kWidth)));
        EXPECT_LE(worst, tolerance);
    }
    std::filesystem::path file(const char* name) { return folder_ / name; }

    test::TempFolder folder_;
};

TEST_F(OpenPicture, ReadsEveryKindOfTiff) {
    constexpr std::uint16_t kWhole = SAMPLEFORMAT_UINT, kFloat = SAMPLEFORMAT_IEEEFP;
    constexpr std::uint16_t kTogether = PLANARCONFIG_CONTIG, kApart = PLANARCONFIG_SEPARATE;
    const TiffKind kinds[] = {
        {"8", 8, 1, kWhole, kTogether, COMPRESSION_NONE},
        {"16", 16, 1, kWhole, kTogether, COMPRESSION_LZW},
        {"colour", 16, 3, kWhole, kTogether, COMPRESSION_NONE},
        {"apart", 16, 3, kWhole, kApart, COMPRESSION_LZW},
        {"one plane", 16, 1, kWhole, kApart, COMPRESSION_NONE},
        {"alpha", 8, 4, kWhole, kTogether, COMPRESSION_NONE},
        {"float", 32, 1, kFloat, kTogether, COMPRESSION_NONE},
        {"wide", 64, 1, kFloat, kTogether, COMPRESSION_NONE},
        {"long", 32, 1, kWhole, kTogether, COMPRESSION_NONE},
    };
    for (const TiffKind& kind : kinds) {
        SCOPED_TRACE(kind.name);
        const auto write = kind.bits == 8                       ? writeTiff<std::uint8_t>
                           : kind.bits == 16                    ? writeTiff<std::uint16_t>
                           : kind.bits == 64                    ? writeTiff<double>
                           : kind.format == SAMPLEFORMAT_IEEEFP ? writeTiff<float>
                                                                : writeTiff<std::uint32_t>;
        write(file("a.tif"), kind);
        EXPECT_EQ(kindOf(file("a.tif")), PictureKind::kTiff);
        expectLevels(openPicture(file("a.tif")), 0.01F);
    }
}

TEST_F(OpenPicture, ReadsJpegPngRawAndFits) {
    writeJpeg(file("a.jpg"));
    EXPECT_EQ(kindOf(file("a.jpg")), PictureKind::kJpeg);
    const auto jpeg = pixelsOf(openPicture(file("a.jpg")));
    EXPECT_NEAR(jpeg[30 * kWidth + 40], levelAt(40, 30), 3);
    EXPECT_GT(jpeg[10 * kWidth + 20], 180);

    writePng(file("a.png"));
    EXPECT_EQ(kindOf(file("a.png")), PictureKind::kPng);
    const auto png = pixelsOf(openPicture(file("a.png")));
    EXPECT_EQ(png[10 * kWidth + 20], 65535) << "white";
    EXPECT_LT(png[0], png[kWidth * kHeight - 1]);
    EXPECT_LT(png[kWidth * kHeight - 1], 65535.0 * levelAt(kWidth - 1, kHeight - 1) / 255)
        << "as light, not as shown";

    writeDng(file("a.DNG"));
    EXPECT_EQ(kindOf(file("a.DNG")), PictureKind::kRaw);
    const auto raw = openPicture(file("a.DNG"));
    expectLevels(raw, 0);
    EXPECT_EQ(raw.header().text("BAYERPAT"), "RGGB");
    EXPECT_THAT(raw.header().text("DATE-OBS").value_or(""), HasSubstr("2026-03-2"));

    std::vector<std::uint16_t> counts;
    for (std::size_t i = 0; i < kWidth * kHeight; ++i) counts.push_back(levelAt(i % kWidth, i / kWidth));
    fits::writeFits(file("a.fits"), kWidth, kHeight, counts, {});
    EXPECT_EQ(kindOf(file("a.fits")), PictureKind::kFits);
    expectLevels(openPicture(file("a.fits")), 0);
}

TEST_F(OpenPicture, RefusesWhatIsDamagedAndNamesIt) {
    writeJpeg(file("a.jpg"));
    writePng(file("a.png"));
    writeTiff<std::uint16_t>(file("a.tif"),
                             {"", 16, 1, SAMPLEFORMAT_UINT, PLANARCONFIG_CONTIG, COMPRESSION_NONE});
    writeDng(file("a.dng"));
    for (const char* name : {"a.jpg", "a.png", "a.tif", "a.dng"}) {
        const std::string whole = test::contentsOf(file(name));
        for (const std::size_t kept : {std::size_t{16}, std::size_t{40}, whole.size() / 3}) {
            const std::string cut = std::string("cut-") + name;
            folder_.write(cut, whole.substr(0, kept));
            SCOPED_TRACE(cut + " after " + std::to_string(kept));
            try {
                // Some say of the rest of a cut picture that it is dark; nothing else may come of it.
                EXPECT_EQ(openPicture(file(cut.c_str())).width(), kWidth);
            } catch (const fits::FitsError& e) {
                EXPECT_THAT(e.what(), HasSubstr(cut));
            }
        }
    }
    // A header that promises a hundred thousand million pixels.
    std::string huge = test::contentsOf(file("a.png"));
    for (const std::size_t at : {16U, 20U}) huge.replace(at, 4, std::string("\0\x05\x16\x15", 4));
    folder_.write("huge.png", huge);
    EXPECT_THROW(openPicture(file("huge.png")), fits::FitsError);
    EXPECT_THROW(openPicture(file("none.jpg")), fits::FitsError);
}

TEST_F(OpenPicture, ReadsThePngsThatAreWritten) {
    std::vector<std::uint8_t> rgb;
    for (std::size_t i = 0; i < kWidth * kHeight; ++i)
        rgb.insert(rgb.end(), 3, levelAt(i % kWidth, i / kWidth));
    pictures::writePng(file("colours.png"), kWidth, kHeight, rgb);
    writePng(file("grey.png"));
    const auto rows = [&](const char* name) {
        std::vector<float> all(kWidth * kHeight);
        openPicture(file(name)).readRows(0, all);
        return all;
    };
    EXPECT_EQ(rows("colours.png"), rows("grey.png"));
    std::filesystem::create_directory(file("taken.png"));
    for (const char* name : {"taken.png", "none/x.png"}) {
        try {
            pictures::writePng(file(name), kWidth, kHeight, rgb);
            FAIL() << name;
        } catch (const std::runtime_error& error) {
            EXPECT_THAT(error.what(), HasSubstr(std::string(name) + " can't be written: "));
        }
    }
    std::size_t files = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder_.path())) ++files;
    EXPECT_EQ(files, 3U) << "something is left of what couldn't be written";
    EXPECT_THROW(pictures::writePng(file("none.png"), 3, 2, rgb), std::invalid_argument);
}

}  // namespace
}  // namespace vantrel::pictures

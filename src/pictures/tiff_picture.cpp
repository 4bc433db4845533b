#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include <tiffio.h>

#include "pictures/picture_sink.h"
#include "platform/paths.h"

namespace vantrel::pictures {

namespace {

using OpenTiff = std::unique_ptr<TIFF, void (*)(TIFF*)>;

struct TiffLayout {
    std::uint32_t width = 0, height = 0;
    std::uint16_t bits = 1, samples = 1, format = SAMPLEFORMAT_UINT, planes = PLANARCONFIG_CONTIG,
                  meaning = 0;

    explicit TiffLayout(TIFF* tiff) {
        TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
        TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height);
        TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &bits);
        TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &samples);
        TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLEFORMAT, &format);
        TIFFGetFieldDefaulted(tiff, TIFFTAG_PLANARCONFIG, &planes);
        TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &meaning);
    }
    std::size_t colours() const { return std::min<std::size_t>(samples, meaning == PHOTOMETRIC_RGB ? 3 : 1); }
};

template <typename Sample>
float valueOf(const unsigned char* at) {
    Sample value{};
    std::memcpy(&value, at, sizeof value);
    return static_cast<float>(value);
}

using Read = float (*)(const unsigned char* at);

/// Null for samples that aren't whole bytes, and what else only the library's own conversion reads.
Read readerFor(const TiffLayout& layout) {
    if (layout.meaning != PHOTOMETRIC_MINISBLACK && layout.meaning != PHOTOMETRIC_RGB) return nullptr;
    const bool isFloat = layout.format == SAMPLEFORMAT_IEEEFP;
    const bool isSigned = layout.format == SAMPLEFORMAT_INT;
    switch (layout.bits) {
        case 8:
            return isFloat ? nullptr : isSigned ? valueOf<std::int8_t> : valueOf<std::uint8_t>;
        case 16:
            return isFloat ? nullptr : isSigned ? valueOf<std::int16_t> : valueOf<std::uint16_t>;
        case 32:
            return isFloat ? valueOf<float> : isSigned ? valueOf<std::int32_t> : valueOf<std::uint32_t>;
        case 64:
            return isFloat ? valueOf<double> : nullptr;
        default:
            return nullptr;
    }
}

void readLines(TIFF* tiff, const TiffLayout& layout, Read read, PictureSink& sink) {
    const std::size_t bytes = layout.bits / 8U;
    const bool apart = layout.planes == PLANARCONFIG_SEPARATE;
    const std::size_t step = apart ? bytes : bytes * layout.samples;
    const std::size_t colours = layout.colours();
    std::vector<unsigned char> line(static_cast<std::size_t>(TIFFScanlineSize(tiff)));
    if (line.size() < step * layout.width) throw PictureError("damaged: its lines are too short");
    std::vector<std::vector<float>> planes;
    std::vector<float> row(layout.width);
    const auto addLine = [&](std::uint32_t y, std::uint16_t sample) {
        if (TIFFReadScanline(tiff, line.data(), y, sample) != 1)
            throw PictureError("damaged, or ends too soon");
        for (std::size_t x = 0; x < row.size(); ++x)
            for (std::size_t c = 0; c < (apart ? 1 : colours); ++c)
                row[x] += read(line.data() + x * step + c * bytes) / static_cast<float>(colours);
    };
    if (apart && colours > 1) {  // lines of a packed plane can only be read one after the other
        std::vector<float> sums(std::size_t{layout.width} * layout.height);
        for (std::uint16_t sample = 0; sample < colours; ++sample)
            for (std::uint32_t y = 0; y < layout.height; ++y) {
                std::ranges::fill(row, 0.0F);
                addLine(y, sample);
                float* const sum = sums.data() + std::size_t{y} * layout.width;
                for (std::size_t x = 0; x < row.size(); ++x) sum[x] += row[x];
            }
        for (std::uint32_t y = 0; y < layout.height; ++y)
            sink.addRow(std::span(sums).subspan(std::size_t{y} * layout.width, layout.width));
        return;
    }
    for (std::uint32_t y = 0; y < layout.height; ++y) {
        std::ranges::fill(row, 0.0F);
        addLine(y, 0);
        sink.addRow(row);
    }
}

/// Palettes, tiles, single bits: the library makes colours of eight bits of them.
void readColours(TIFF* tiff, const TiffLayout& layout, PictureSink& sink) {
    std::vector<std::uint32_t> colours(std::size_t{layout.width} * layout.height);
    if (TIFFReadRGBAImageOriented(tiff, layout.width, layout.height, colours.data(), ORIENTATION_TOPLEFT,
                                  1) != 1)
        throw PictureError("damaged, or of a kind of TIFF that isn't read");
    std::vector<float> row(layout.width);
    for (std::size_t y = 0; y < layout.height; ++y) {
        for (std::size_t x = 0; x < row.size(); ++x) {
            const std::uint32_t c = colours[y * layout.width + x];
            row[x] = static_cast<float>(TIFFGetR(c) + TIFFGetG(c) + TIFFGetB(c)) / 3;
        }
        sink.addRow(row);
    }
}

}  // namespace

void readTiff(const std::filesystem::path& path, PictureSink& sink) {
    TIFFSetErrorHandler(nullptr);
    TIFFSetWarningHandler(nullptr);
    const OpenTiff tiff(TIFFOpen(platform::libraryName(path).c_str(), "r"), &TIFFClose);
    if (!tiff) throw PictureError("is no sound TIFF file");
    const TiffLayout layout(tiff.get());
    sink.begin({layout.width, layout.height});
    const Read read = TIFFIsTiled(tiff.get()) != 0 ? nullptr : readerFor(layout);
    if (read != nullptr)
        readLines(tiff.get(), layout, read, sink);
    else
        readColours(tiff.get(), layout, sink);
}

}  // namespace vantrel::pictures

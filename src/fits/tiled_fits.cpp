#include "fits/tiled_fits.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "fits/fits_error.h"
#include "fits/fits_library.h"
#include "fits/opened_fits.h"

namespace vantrel::fits {

namespace {

constexpr std::size_t kMega = 1024 * 1024;

/// Pixels a side of a tile. They may reach beyond the image.
FitsLayout tileOf(const FitsImageUnit& image) {
    const auto side = [&](const char* keyword, std::size_t usual) {
        const auto pixels = image.unit.header.integer(keyword).value_or(static_cast<std::int64_t>(usual));
        return static_cast<std::size_t>(std::clamp<std::int64_t>(pixels, 0, 1'000'000));
    };
    return {side("ZTILE1", image.layout.width), side("ZTILE2", 1), side("ZTILE3", 1)};
}

std::size_t pixelsOf(const FitsLayout& part) { return part.width * part.height * part.planes; }

std::size_t inTiles(std::size_t pixels, std::size_t side) { return (pixels + side - 1) / side; }

/// What the library keeps at a time: the tiles side by side, in its widest numbers and once more as floats.
GuardLimits limitsFor(const FitsImageUnit& image) {
    constexpr std::size_t kBytesPerPixel = 40;
    constexpr std::size_t kPixelsPerSecond = 4'000'000;
    const FitsLayout tile = tileOf(image);
    const std::size_t row = inTiles(image.layout.width, tile.width) * pixelsOf(tile);
    return {256 * kMega + kBytesPerPixel * row + image.unit.dataBytes,
            static_cast<unsigned>(10 + pixelsOf(image.layout) / kPixelsPerSecond)};
}

/// Pixels that the library unpacked into a file in memory.
class UnpackedPixels : public FitsPixels {
  public:
    UnpackedPixels(const std::filesystem::path& path, std::size_t width)
        : file_(RawFile::inMemory(path)), width_(width) {}
    RawFile& file() { return file_; }
    void read(std::size_t first, std::span<float> out) const override { readInRow(first, 0, out); }
    void readInRow(std::size_t row, std::size_t column, std::span<float> out) const override {
        file_.read((row * width_ + column) * sizeof(float), std::as_writable_bytes(out));
    }

  private:
    RawFile file_;
    std::size_t width_;
};

/// Adds a plane's rows, from `first` on, to the sums.
void addRows(LibraryFile& file, const FitsImageUnit& image, std::size_t plane, std::size_t first,
             std::span<float> sums) {
    const auto width = static_cast<long>(image.layout.width);
    const auto top = static_cast<long>(first);
    const auto rows = static_cast<long>(sums.size()) / width;
    const auto layer = static_cast<long>(plane);
    long from[3] = {1, top + 1, layer + 1};
    long to[3] = {width, top + rows, layer + 1};
    long each[3] = {1, 1, 1};
    float noValue = std::numeric_limits<float>::quiet_NaN();
    int anyWithout = 0;  // the library writes there in any case
    std::vector<float> values(sums.size());
    file.check(fits_read_subset(file.get(), TFLOAT, from, to, each, &noValue, values.data(), &anyWithout,
                                file.status()));
    for (std::size_t i = 0; i < sums.size(); ++i) sums[i] += values[i];
}

}  // namespace

void checkTiles(FitsFile& bytes, const FitsImageUnit& image) {
    // No way of packing images takes less than a byte for so many pixels, unless nothing is on them.
    constexpr std::size_t kMostPixelsInByte = 2064;
    constexpr std::size_t kLargeTile = 16 * kMega;
    const auto& [width, height, planes] = image.layout;
    if (width * height * sizeof(float) > RawFile::kMostInMemory)
        failFits(bytes.path(), "the image is too large");
    const FitsLayout tile = tileOf(image);
    const std::size_t tilePixels = pixelsOf(tile);
    if (tilePixels == 0 || tilePixels > std::max(pixelsOf(image.layout), kLargeTile))
        failFits(bytes.path(), "damaged: its tiles don't fit the image");
    if (!bytes.reach(image.unit.dataStart + image.unit.dataBytes))
        failFits(bytes.path(), "ends before its last pixel");
    const std::size_t tiles =
        inTiles(width, tile.width) * inTiles(height, tile.height) * inTiles(planes, tile.planes);
    const auto rows =
        static_cast<std::size_t>(std::max<std::int64_t>(0, image.unit.header.integer("NAXIS2").value_or(0)));
    if (tiles > rows || pixelsOf(image.layout) / kMostPixelsInByte > image.unit.dataBytes)
        failFits(bytes.path(), "claims to hold more than a file of its size can");
}

void unpackTiles(const FitsFile& bytes, const FitsImageUnit& image, RawFile& pixels) {
    LibraryFile file(bytes);
    file.moveTo(image);
    const auto& [width, height, planes] = image.layout;
    // Each tile is unpacked once: tiles that lie behind each other push each other out of the library's
    // memory.
    const std::size_t rowsAtOnce = std::min(height, tileOf(image).height);
    std::vector<float> sums;
    for (std::size_t y = 0; y < height; y += rowsAtOnce) {
        sums.assign(width * std::min(rowsAtOnce, height - y), 0.0F);
        for (std::size_t plane = 0; plane < planes; ++plane) addRows(file, image, plane, y, sums);
        for (float& sum : sums) {
            sum /= static_cast<float>(planes);
            if (!std::isfinite(sum)) sum = std::numeric_limits<float>::quiet_NaN();
        }
        pixels.append(std::as_bytes(std::span(sums)));
    }
}

OpenedFits openTiledImage(std::unique_ptr<FitsFile> bytes, FitsImageUnit image) {
    checkTiles(*bytes, image);
    auto pixels = std::make_unique<UnpackedPixels>(bytes->path(), image.layout.width);
    guardedLibraryCall(bytes->path(), limitsFor(image), [&] { unpackTiles(*bytes, image, pixels->file()); });
    OpenedFits opened{image.layout.width, image.layout.height, true, std::move(image.unit.header), nullptr};
    opened.header.append(image.primary);
    opened.pixels = std::move(pixels);
    return opened;
}

}  // namespace vantrel::fits

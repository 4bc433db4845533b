// Sound images of any pixels, compressed tile by tile and read by the library in this very process, where a
// crash is one: they must hold what the image itself does. The input says how, and then the pixels. (Of
// unsound ones the library does crash: they are for the target that guards against that.)
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <zlib.h>

#include "fits/raw_file.h"
#include "fits/tiled_fits.h"
#include "fuzz/fits_reading.h"
#include "support/fits_bytes.h"

namespace vantrel::fuzz {
namespace {

class Recipe {
  public:
    explicit Recipe(std::string_view input) : rest_(input) {}
    /// 0 to most - 1.
    int upTo(int most) {
        if (rest_.empty()) return 0;
        const int value = static_cast<unsigned char>(rest_.front()) % most;
        rest_.remove_prefix(1);
        return value;
    }
    /// So many bytes, over and over again what is left.
    std::string bytes(int wanted) const {
        const auto count = static_cast<std::size_t>(wanted);
        std::string filled;
        while (filled.size() < count) filled += rest_.empty() ? std::string_view("\0", 1) : rest_;
        filled.resize(count);
        return filled;
    }

  private:
    std::string_view rest_;
};

struct Drawn {
    explicit Drawn(Recipe recipe) {
        constexpr int kTypes[] = {8, 16, 32, -32, -64};
        bitpix = kTypes[recipe.upTo(5)];
        rice = bitpix > 0 && recipe.upTo(2) == 1;
        split = recipe.upTo(8);
        // Large numbers of different signs don't average well.
        const int mostPlanes = bitpix == 8 || bitpix == 16 ? 3 : 1;
        const int mostPixels[3] = {60, 60, mostPlanes};
        for (int axis = 0; axis < 3; ++axis) sides[axis] = 1 + recipe.upTo(mostPixels[axis]);
        for (int axis = 0; axis < 3; ++axis) tile[axis] = 1 + recipe.upTo(sides[axis]);
        if (bitpix > 0 && recipe.upTo(2) == 1)
            cards.push_back("BLANK   = " + std::to_string(recipe.upTo(128)));
        if (recipe.upTo(2) == 1) cards.insert(cards.end(), {"BZERO   = 32768", "BSCALE  = 0.5"});
        pixels = recipe.bytes(sides[0] * sides[1] * sides[2] * bytesPerPixel());
    }

    int bytesPerPixel() const { return std::abs(bitpix) / 8; }

    int bitpix = 8;
    bool rice = false;
    int split = 0;  // how the Rice code splits numbers, or that it doesn't
    int sides[3] = {1, 1, 1}, tile[3] = {1, 1, 1};
    std::vector<std::string> cards;
    std::string pixels;
};

std::vector<std::string> axesCards(const std::string& keyword, const int (&sides)[3]) {
    std::vector<std::string> cards(3);
    for (std::size_t axis = 0; axis < cards.size(); ++axis)
        cards[axis] = keyword + std::to_string(axis + 1) + " = " + std::to_string(sides[axis]);
    for (std::string& card : cards) card.insert(card.find(' '), 8 - card.find(' '), ' ');
    for (std::string& card : cards) card.erase(8, card.find('=') - 8);
    return cards;
}

template <typename... Lists>
std::vector<std::string> joined(std::vector<std::string> cards, const Lists&... lists) {
    (cards.insert(cards.end(), lists.begin(), lists.end()), ...);
    return cards;
}

std::string plainFile(const Drawn& image) {
    return test::fitsHeader(
               joined({"SIMPLE  = T", "BITPIX  = " + std::to_string(image.bitpix), "NAXIS   = 3"},
                      axesCards("NAXIS", image.sides), image.cards)) +
           test::padded(image.pixels);
}

std::string gzipped(std::string bytes) {
    std::string packed(::compressBound(bytes.size()) + 64, '\0');
    z_stream stream{};
    ::deflateInit2(&stream, 1, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
    stream.next_in = reinterpret_cast<Bytef*>(bytes.data());
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    ::deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    ::deflateEnd(&stream);
    return packed;
}

class Bits {
  public:
    void put(std::uint64_t value, int count) {
        for (int bit = count - 1; bit >= 0; --bit) {
            if (used_ % 8 == 0) bytes_ += '\0';
            bytes_.back() = static_cast<char>(bytes_.back() | ((value >> bit & 1U) << (7 - used_ % 8)));
            ++used_;
        }
    }
    const std::string& bytes() const { return bytes_; }

  private:
    std::string bytes_;
    int used_ = 0;
};

/// Rice code in blocks of 32 (FITS standard 4.0, section 10.4.1). Numbers are split after `split` bits, or
/// not at all where that would be long.
std::string riceCoded(const std::string& bytes, int size, int split) {
    const int bits = 8 * size;
    const int codeBits = size == 1 ? 3 : size == 2 ? 4 : 5;
    const int unsplit = size == 1 ? 6 : size == 2 ? 14 : 25;
    const auto mask = (std::uint64_t{1} << bits) - 1;
    std::vector<std::uint64_t> values;
    for (std::size_t at = 0; at < bytes.size(); at += static_cast<std::size_t>(size)) {
        std::uint64_t value = 0;
        for (int i = 0; i < size; ++i)
            value = value << 8U | static_cast<unsigned char>(bytes[at + static_cast<std::size_t>(i)]);
        values.push_back(value);
    }
    Bits coded;
    coded.put(values.front(), bits);
    std::uint64_t last = values.front();
    for (std::size_t block = 0; block < values.size(); block += 32) {
        std::vector<std::uint64_t> steps;
        for (std::size_t i = block; i < std::min(block + 32, values.size()); ++i) {
            const std::uint64_t step = (values[i] - last) & mask;
            const bool down = (step >> (bits - 1) & 1U) != 0;
            steps.push_back((down ? ~(step << 1U) : step << 1U) & mask);
            last = values[i];
        }
        const std::uint64_t most = *std::max_element(steps.begin(), steps.end());
        const int cut = most >> split > 40 ? unsplit : std::min(split, unsplit - 1);
        if (most == 0) {
            coded.put(0, codeBits);
            continue;
        }
        coded.put(static_cast<std::uint64_t>(cut) + 1, codeBits);
        for (const std::uint64_t step : steps) {
            if (cut == unsplit) {
                coded.put(step, bits);
                continue;
            }
            coded.put(1, static_cast<int>(step >> cut) + 1);
            coded.put(step & ((std::uint64_t{1} << cut) - 1), cut);
        }
    }
    return coded.bytes();
}

std::string tiledFile(const Drawn& image) {
    const int size = image.bytesPerPixel();
    std::string table;
    std::string heap;
    std::size_t longest = 0;
    std::uint32_t rows = 0;
    for (int z0 = 0; z0 < image.sides[2]; z0 += image.tile[2])
        for (int y0 = 0; y0 < image.sides[1]; y0 += image.tile[1])
            for (int x0 = 0; x0 < image.sides[0]; x0 += image.tile[0]) {
                std::string bytes;
                const int width = std::min(image.tile[0], image.sides[0] - x0);
                for (int z = z0; z < std::min(z0 + image.tile[2], image.sides[2]); ++z)
                    for (int y = y0; y < std::min(y0 + image.tile[1], image.sides[1]); ++y) {
                        const int first = (z * image.sides[1] + y) * image.sides[0] + x0;
                        bytes.append(image.pixels.data() + first * size,
                                     image.pixels.data() + (first + width) * size);
                    }
                const std::string packed = image.rice ? riceCoded(bytes, size, image.split) : gzipped(bytes);
                table += test::bigEndian(static_cast<std::uint32_t>(packed.size()));
                table += test::bigEndian(static_cast<std::uint32_t>(heap.size()));
                heap += packed;
                longest = std::max(longest, packed.size());
                ++rows;
            }
    std::vector<std::string> how = {image.rice ? "ZCMPTYPE= 'RICE_1  '" : "ZCMPTYPE= 'GZIP_1  '"};
    if (image.rice)
        how.insert(how.end(), {"ZNAME1  = 'BLOCKSIZE'", "ZVAL1   = 32", "ZNAME2  = 'BYTEPIX '",
                               "ZVAL2   = " + std::to_string(size)});
    if (image.bitpix < 0) how.emplace_back("ZQUANTIZ= 'NONE    '");
    return test::fitsHeader({"SIMPLE  = T", "BITPIX  = 8", "NAXIS   = 0", "EXTEND  = T"}) +
           test::fitsHeader(
               joined({"XTENSION= 'BINTABLE'", "BITPIX  = 8", "NAXIS   = 2", "NAXIS1  = 8",
                       "NAXIS2  = " + std::to_string(rows), "PCOUNT  = " + std::to_string(heap.size()),
                       "GCOUNT  = 1", "TFIELDS = 1", "TTYPE1  = 'COMPRESSED_DATA'",
                       "TFORM1  = '1PB(" + std::to_string(longest) + ")'", "ZIMAGE  = T",
                       "ZBITPIX = " + std::to_string(image.bitpix), "ZNAXIS  = 3"},
                      axesCards("ZNAXIS", image.sides), axesCards("ZTILE", image.tile), how, image.cards)) +
           test::padded(table + heap);
}

void check(bool good, const char* what) {
    if (good) return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

void compare(const Drawn& drawn) {
    constexpr float kRounding = 1e-5F;
    constexpr float kSmallest = 1e-30F, kMost = 1e30F;  // beyond, the library has its own way with numbers
    const float least = drawn.sides[2] > 1 ? 0.05F : kSmallest;
    static const test::TempFolder folder(test::TempFolder::quickPlace());
    const auto tiled = folder.write("image.fz", tiledFile(drawn));
    fits::FitsFile bytes(tiled);
    const fits::FitsImageUnit image = fits::findImage(bytes);
    fits::checkTiles(bytes, image);
    auto unpacked = fits::RawFile::inMemory(tiled);
    fits::unpackTiles(bytes, image, unpacked);
    std::vector<float> tiles(image.layout.width * image.layout.height);
    unpacked.read(0, std::as_writable_bytes(std::span(tiles)));

    std::vector<float> pixels(tiles.size());
    fits::FitsImage::open(folder.write("image.fit", plainFile(drawn))).readRows(0, pixels);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        if (std::abs(pixels[i]) > kMost) continue;
        check(std::isnan(tiles[i]) == std::isnan(pixels[i]), "a pixel got or lost its value");
        const float difference = std::abs(tiles[i] - pixels[i]);
        check(!(difference > kRounding * std::abs(pixels[i]) + least), "a pixel has another value");
    }
}

}  // namespace
}  // namespace vantrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vantrel::fuzz::compare(vantrel::fuzz::Drawn(vantrel::fuzz::Recipe(vantrel::fuzz::textOf(data, size))));
    return 0;
}

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "fits/fits_error.h"
#include "fits/opened_fits.h"
#include "platform/vector_code.h"

namespace vantrel::fits {

namespace {

constexpr float kNoValue = std::numeric_limits<float>::quiet_NaN();

std::uint16_t swapped(std::uint16_t v) { return static_cast<std::uint16_t>((v << 8) | (v >> 8)); }
std::uint32_t swapped(std::uint32_t v) { return __builtin_bswap32(v); }
std::uint64_t swapped(std::uint64_t v) { return __builtin_bswap64(v); }

/// What the numbers in a file stand for.
struct PixelCoding {
    std::int64_t bitpix = 0;
    float scale = 1, zero = 0;          // of an average over the planes
    std::optional<std::int64_t> blank;  // the whole number that stands for no value

    std::size_t bytes() const { return static_cast<std::size_t>(std::abs(bitpix)) / 8; }
    bool isFloating() const { return bitpix < 0; }
    /// False when every number that can be stored is one that a float can hold.
    bool mayHoldBlanks() const {
        const float most = std::ldexp(std::abs(scale), static_cast<int>(bitpix)) + std::abs(zero);
        return isFloating() || blank || !std::isfinite(most);
    }
};

/// Adds (or sets, for the first plane) big-endian values to a row. One simple loop each, which compilers turn
/// into vector code.
template <typename Stored, typename Raw>
VANTREL_VECTOR_CODE void convert(const std::byte* from, std::span<float> out, bool add,
                                 const PixelCoding& coding) {
    static_assert(sizeof(Stored) == sizeof(Raw));
    const auto stored = [&](std::size_t i) {
        Raw raw;
        std::memcpy(&raw, from + i * sizeof raw, sizeof raw);
        if constexpr (sizeof raw > 1) raw = swapped(raw);
        return std::bit_cast<Stored>(raw);
    };
    const auto each = [&](auto&& value) {
        if (add) {
            for (std::size_t i = 0; i < out.size(); ++i) out[i] += value(stored(i));
        } else {
            for (std::size_t i = 0; i < out.size(); ++i) out[i] = value(stored(i));
        }
    };
    const float scale = coding.scale;
    const float zero = coding.zero;
    const auto plain = [=](Stored v) { return static_cast<float>(v) * scale + zero; };
    const auto orBlank = [=](Stored v) {
        const float value = plain(v);
        return std::abs(value) <= std::numeric_limits<float>::max() ? value : kNoValue;
    };
    if constexpr (std::is_integral_v<Stored>) {
        if (coding.blank) {
            const std::int64_t blank = *coding.blank;
            each([=](Stored v) { return static_cast<std::int64_t>(v) == blank ? kNoValue : orBlank(v); });
            return;
        }
    }
    if (coding.mayHoldBlanks())
        each(orBlank);
    else
        each(plain);
}

class PlainPixels : public FitsPixels {
  public:
    PlainPixels(std::unique_ptr<FitsFile> bytes, const FitsImageUnit& image, const PixelCoding& coding)
        : bytes_(std::move(bytes)),
          layout_(image.layout),
          dataStart_(image.unit.dataStart),
          coding_(coding) {}

    void read(std::size_t first, std::span<float> out) const override {
        const std::size_t width = layout_.width;
        const std::size_t rowBytes = width * coding_.bytes();
        const std::size_t rowsAtOnce = std::max<std::size_t>(1, kChunk / rowBytes);
        buffer_.resize(std::min(rowsAtOnce, out.size() / width) * rowBytes);
        for (std::size_t done = 0; done < out.size();) {
            const auto part = out.subspan(done, std::min(rowsAtOnce * width, out.size() - done));
            readPlanes(first * width + done, part);
            done += part.size();
        }
    }

    void readInRow(std::size_t row, std::size_t column, std::span<float> out) const override {
        buffer_.resize(std::max(buffer_.size(), out.size() * coding_.bytes()));
        readPlanes(row * layout_.width + column, out);
    }

  private:
    static constexpr std::size_t kChunk = 128 * 1024;  // stays in the second-level cache

    /// So many pixels as `out` has room for, which the buffer must have for their bytes.
    void readPlanes(std::size_t firstPixel, std::span<float> out) const {
        const std::size_t planePixels = layout_.width * layout_.height;
        for (std::size_t plane = 0; plane < layout_.planes; ++plane) {
            bytes_->read(dataStart_ + (plane * planePixels + firstPixel) * coding_.bytes(),
                         std::span(buffer_).first(out.size() * coding_.bytes()));
            convertPart(out, plane > 0);
        }
    }

    void convertPart(std::span<float> out, bool add) const {
        const std::byte* from = buffer_.data();
        switch (coding_.bitpix) {
            case 8:
                convert<std::uint8_t, std::uint8_t>(from, out, add, coding_);
                break;
            case 16:
                convert<std::int16_t, std::uint16_t>(from, out, add, coding_);
                break;
            case 32:
                convert<std::int32_t, std::uint32_t>(from, out, add, coding_);
                break;
            case 64:
                convert<std::int64_t, std::uint64_t>(from, out, add, coding_);
                break;
            case -32:
                convert<float, std::uint32_t>(from, out, add, coding_);
                break;
            default:
                convert<double, std::uint64_t>(from, out, add, coding_);
                break;
        }
    }

    std::unique_ptr<FitsFile> bytes_;
    FitsLayout layout_;
    std::size_t dataStart_;
    PixelCoding coding_;
    mutable std::vector<std::byte> buffer_;
};

PixelCoding codingOf(const std::filesystem::path& path, const FitsHeader& header, std::size_t planes) {
    PixelCoding coding;
    coding.bitpix = header.integer("BITPIX").value_or(0);
    constexpr std::int64_t kKnown[] = {8, 16, 32, 64, -32, -64};
    if (std::find(std::begin(kKnown), std::end(kKnown), coding.bitpix) == std::end(kKnown))
        failFits(path, std::string("BITPIX ").append(std::to_string(coding.bitpix)).append(" is unknown"));
    const auto count = static_cast<double>(planes);
    coding.scale = static_cast<float>(header.number("BSCALE").value_or(1) / count);
    coding.zero = static_cast<float>(header.number("BZERO").value_or(0) / count);
    if (!std::isfinite(coding.scale) || !std::isfinite(coding.zero))
        failFits(path, "BSCALE or BZERO is out of range");
    if (!coding.isFloating()) coding.blank = header.integer("BLANK");
    return coding;
}

}  // namespace

OpenedFits openPlainImage(std::unique_ptr<FitsFile> bytes, FitsImageUnit image) {
    const auto& [width, height, planes] = image.layout;
    const PixelCoding coding = codingOf(bytes->path(), image.unit.header, planes);
    if (!bytes->reach(image.unit.dataStart + width * height * planes * coding.bytes()))
        failFits(bytes->path(), "ends before its last pixel");
    OpenedFits opened{width, height, coding.mayHoldBlanks(), std::move(image.unit.header), nullptr};
    opened.header.append(image.primary);
    opened.pixels = std::make_unique<PlainPixels>(std::move(bytes), image, coding);
    return opened;
}

}  // namespace vantrel::fits

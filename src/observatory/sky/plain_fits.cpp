#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <vector>

#include "observatory/sky/fits_error.h"
#include "observatory/sky/opened_fits.h"
#include "observatory/sky/raw_file.h"

namespace vantrel::observatory {

namespace {

constexpr std::size_t kMaxHeaderBytes = 400 * kFitsBlock;
constexpr std::int64_t kMaxPixels = 400'000'000;
constexpr std::int64_t kMaxSide = 100'000;
constexpr std::int64_t kMaxPlanes = 16;

std::uint16_t swapped(std::uint16_t v) { return static_cast<std::uint16_t>((v << 8) | (v >> 8)); }
std::uint32_t swapped(std::uint32_t v) { return __builtin_bswap32(v); }
std::uint64_t swapped(std::uint64_t v) { return __builtin_bswap64(v); }

/// Adds (or sets, for the first plane) big-endian values to a row. One simple loop each, which compilers turn
/// into vector code.
template <typename Stored, typename Raw>
void convert(const std::byte* from, std::span<float> out, bool add, float scale, float zero) {
    static_assert(sizeof(Stored) == sizeof(Raw));
    const auto value = [&](std::size_t i) {
        Raw raw;
        std::memcpy(&raw, from + i * sizeof raw, sizeof raw);
        if constexpr (sizeof raw > 1) raw = swapped(raw);
        return static_cast<float>(std::bit_cast<Stored>(raw)) * scale + zero;
    };
    if (add) {
        for (std::size_t i = 0; i < out.size(); ++i) out[i] += value(i);
    } else {
        for (std::size_t i = 0; i < out.size(); ++i) out[i] = value(i);
    }
}

class PlainPixels : public FitsPixels {
  public:
    explicit PlainPixels(const std::filesystem::path& path) : file_(path) {}

    /// Reads the primary header; false when it isn't that of a plain image (CFITSIO may know what it is).
    bool readHeader(const std::filesystem::path& path, FitsHeader& header) {
        char block[kFitsBlock];
        std::size_t at = 0;
        for (;; at += kFitsBlock) {
            if (at + kFitsBlock > file_.size() || at > kMaxHeaderBytes) {
                if (at == 0) return false;
                failFits(path, "the header has no end");
            }
            file_.read(at, std::as_writable_bytes(std::span(block)));
            if (at == 0 && std::string_view(block, 9) != "SIMPLE  =") return false;
            bool ended = false;
            for (std::size_t c = 0; c < kFitsBlock && !ended; c += kFitsCard) {
                const std::string_view card(block + c, kFitsCard);
                ended = card.starts_with("END     ");
                header.addCardImage(card);
            }
            if (ended) break;
        }
        dataStart_ = at + kFitsBlock;
        const auto axes = header.integer("NAXIS").value_or(0);
        layout_ = {header.integer("BITPIX").value_or(0), header.integer("NAXIS1").value_or(0),
                   header.integer("NAXIS2").value_or(0),
                   axes == 3 ? header.integer("NAXIS3").value_or(0) : 1};
        return axes == 2 || axes == 3;
    }

    void prepare(const std::filesystem::path& path, const FitsHeader& header) {
        checkLayout(path, layout_);
        switch (layout_.bitpix) {
            case 8:
            case 16:
            case 32:
            case 64:
            case -32:
            case -64:
                break;
            default:
                failFits(path,
                         std::string("BITPIX ").append(std::to_string(layout_.bitpix)).append(" is unknown"));
        }
        bytesPerPixel_ = static_cast<std::size_t>(std::abs(layout_.bitpix) / 8);
        planeBytes_ = static_cast<std::size_t>(layout_.width * layout_.height) * bytesPerPixel_;
        if (file_.size() - dataStart_ < planeBytes_ * static_cast<std::size_t>(layout_.planes)) {
            failFits(path, "ends before its last pixel");
        }
        const auto planes = static_cast<double>(layout_.planes);
        scale_ = static_cast<float>(header.number("BSCALE").value_or(1) / planes);
        zero_ = static_cast<float>(header.number("BZERO").value_or(0) / planes);
        if (!std::isfinite(scale_) || !std::isfinite(zero_))
            failFits(path, "BSCALE or BZERO is out of range");
    }

    const FitsLayout& layout() const { return layout_; }

    void read(std::size_t first, std::span<float> out) const override {
        const auto width = static_cast<std::size_t>(layout_.width);
        const std::size_t rowBytes = width * bytesPerPixel_;
        const std::size_t rowsAtOnce = std::max<std::size_t>(1, kChunk / rowBytes);
        buffer_.resize(std::min(rowsAtOnce, out.size() / width) * rowBytes);
        for (std::size_t done = 0; done < out.size();) {
            const auto part = out.subspan(done, std::min(rowsAtOnce * width, out.size() - done));
            for (std::size_t plane = 0; plane < static_cast<std::size_t>(layout_.planes); ++plane) {
                const auto bytes = std::span(buffer_).first(part.size() * bytesPerPixel_);
                file_.read(dataStart_ + plane * planeBytes_ + first * rowBytes + done * bytesPerPixel_,
                           bytes);
                convertPart(part, plane > 0);
            }
            done += part.size();
        }
    }

  private:
    static constexpr std::size_t kChunk = 128 * 1024;  // stays in the second-level cache

    void convertPart(std::span<float> out, bool add) const {
        const std::byte* from = buffer_.data();
        switch (layout_.bitpix) {
            case 8:
                convert<std::uint8_t, std::uint8_t>(from, out, add, scale_, zero_);
                break;
            case 16:
                convert<std::int16_t, std::uint16_t>(from, out, add, scale_, zero_);
                break;
            case 32:
                convert<std::int32_t, std::uint32_t>(from, out, add, scale_, zero_);
                break;
            case 64:
                convert<std::int64_t, std::uint64_t>(from, out, add, scale_, zero_);
                break;
            case -32:
                convert<float, std::uint32_t>(from, out, add, scale_, zero_);
                break;
            default:
                convert<double, std::uint64_t>(from, out, add, scale_, zero_);
                break;
        }
    }

    RawFile file_;
    FitsLayout layout_;
    std::size_t dataStart_ = 0;
    std::size_t bytesPerPixel_ = 0;
    std::size_t planeBytes_ = 0;
    float scale_ = 1;
    float zero_ = 0;
    mutable std::vector<std::byte> buffer_;
};

}  // namespace

void checkLayout(const std::filesystem::path& path, const FitsLayout& layout) {
    if (layout.width < 1 || layout.height < 1 || layout.planes < 1) failFits(path, "holds no image");
    if (layout.width > kMaxSide || layout.height > kMaxSide || layout.planes > kMaxPlanes ||
        layout.width * layout.height > kMaxPixels) {
        failFits(path, "the image is too large");
    }
}

std::optional<OpenedFits> openPlainFits(const std::filesystem::path& path) {
    auto pixels = std::make_unique<PlainPixels>(path);
    OpenedFits opened;
    if (!pixels->readHeader(path, opened.header)) return std::nullopt;
    pixels->prepare(path, opened.header);
    opened.width = static_cast<std::size_t>(pixels->layout().width);
    opened.height = static_cast<std::size_t>(pixels->layout().height);
    opened.floatingPoint = pixels->layout().bitpix < 0;
    opened.pixels = std::move(pixels);
    return opened;
}

}  // namespace vantrel::observatory

#include "fits/fits_units.h"

#include <cmath>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "fits/fits_error.h"

namespace vantrel::fits {

namespace {

constexpr std::size_t kBlock = 2880;
constexpr std::size_t kCard = 80;
constexpr int kMostUnits = 1000;
constexpr std::size_t kMostHeaderBlocks = 2000;
constexpr double kMostBytes = 1e15;
constexpr std::int64_t kMostPixels = 400'000'000;
constexpr std::int64_t kLongestSide = 100'000;
constexpr std::int64_t kMostPlanes = 16;

std::string numbered(const char* keyword, std::int64_t number) { return keyword + std::to_string(number); }

/// FITS standard 4.0, equations 1 and 2. Nonsense is as good as endless.
std::size_t promisedBytes(const FitsHeader& header) {
    const auto size = [&](const std::string& keyword, std::int64_t otherwise) {
        const std::int64_t value = header.integer(keyword).value_or(otherwise);
        return value >= 0 ? static_cast<double>(value) : kMostBytes;
    };
    const std::int64_t axes = header.integer("NAXIS").value_or(0);
    constexpr std::int64_t kMostAxes = 999;
    if (axes <= 0) return 0;
    if (axes > kMostAxes) return static_cast<std::size_t>(kMostBytes);
    double elements = 1;
    for (std::int64_t axis = 1; axis <= axes; ++axis) elements *= size(numbered("NAXIS", axis), 0);
    const double bytes = std::abs(header.number("BITPIX").value_or(0)) / 8 * size("GCOUNT", 1) *
                         (size("PCOUNT", 0) + elements);
    return static_cast<std::size_t>(bytes < kMostBytes ? bytes : kMostBytes);
}

/// Nothing when the axes under these keywords are not two or three.
std::optional<FitsLayout> layoutOf(const std::filesystem::path& path, const FitsHeader& header,
                                   const char* axesKeyword) {
    const std::int64_t axes = header.integer(axesKeyword).value_or(0);
    if (axes != 2 && axes != 3) return std::nullopt;
    const auto side = [&](std::int64_t axis) {
        return header.integer(numbered(axesKeyword, axis)).value_or(0);
    };
    const std::int64_t width = side(1);
    const std::int64_t height = side(2);
    const std::int64_t planes = axes == 3 ? side(3) : 1;
    if (width < 1 || height < 1 || planes < 1) failFits(path, "holds no image");
    if (width > kLongestSide || height > kLongestSide || planes > kMostPlanes || width * height > kMostPixels)
        failFits(path, "the image is too large");
    return FitsLayout{static_cast<std::size_t>(width), static_cast<std::size_t>(height),
                      static_cast<std::size_t>(planes)};
}

}  // namespace

std::optional<FitsUnit> FitsUnits::next() {
    FitsUnit unit;
    if (number_ == kMostUnits || !readHeader(unit.header)) {
        if (number_ == 0) failFits(bytes_.path(), "not a FITS file");
        return std::nullopt;
    }
    unit.number = ++number_;
    unit.dataStart = end_;
    unit.dataBytes = promisedBytes(unit.header);
    end_ += (unit.dataBytes + kBlock - 1) / kBlock * kBlock;
    return unit;
}

bool FitsUnits::readHeader(FitsHeader& header) {
    char block[kBlock];
    for (bool first = true;; first = false) {
        if (!bytes_.reach(end_ + kBlock) || headerBlocks_ == kMostHeaderBlocks) {
            if (first) return false;
            failFits(bytes_.path(), "the header has no end");
        }
        bytes_.read(end_, std::as_writable_bytes(std::span(block)));
        const std::string_view text(block, kBlock);
        if (first && !text.starts_with(number_ == 0 ? "SIMPLE  =" : "XTENSION=")) return false;
        end_ += kBlock;
        ++headerBlocks_;
        for (std::size_t at = 0; at < kBlock; at += kCard) {
            const std::string_view card = text.substr(at, kCard);
            if (card.starts_with("END     ")) return true;
            header.addCardImage(card);
        }
    }
}

FitsImageUnit findImage(FitsFile& bytes) {
    FitsUnits units(bytes);
    FitsImageUnit found;
    while (auto unit = units.next()) {
        const FitsHeader& header = unit->header;
        const std::string kind = unit->number == 1 ? "IMAGE" : header.text("XTENSION").value_or("");
        found.tiled = kind == "BINTABLE" && header.logical("ZIMAGE").value_or(false);
        if (kind == "IMAGE" || found.tiled) {
            if (const auto layout = layoutOf(bytes.path(), header, found.tiled ? "ZNAXIS" : "NAXIS")) {
                found.layout = *layout;
                found.unit = std::move(*unit);
                return found;
            }
        }
        if (unit->number == 1) found.primary = std::move(unit->header);
    }
    failFits(bytes.path(), "holds no image");
}

}  // namespace vantrel::fits

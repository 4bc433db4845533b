#include "fits/fits_image.h"

#include <algorithm>
#include <stdexcept>

#include "fits/header_wcs.h"
#include "fits/opened_fits.h"

namespace vantrel::fits {

namespace {

class MemoryPixels : public FitsPixels {
  public:
    MemoryPixels(std::size_t width, std::vector<float> pixels) : width_(width), pixels_(std::move(pixels)) {}
    void read(std::size_t first, std::span<float> out) const override { readInRow(first, 0, out); }
    void readInRow(std::size_t row, std::size_t column, std::span<float> out) const override {
        std::copy_n(pixels_.begin() + static_cast<std::ptrdiff_t>(row * width_ + column), out.size(),
                    out.begin());
    }

  private:
    std::size_t width_;
    std::vector<float> pixels_;
};

}  // namespace

FitsImage FitsImage::open(const std::filesystem::path& path) { return in(std::make_unique<FitsFile>(path)); }

FitsImage FitsImage::read(const std::string& name, std::span<const std::byte> bytes) {
    return in(std::make_unique<FitsFile>(name, bytes));
}

FitsImage FitsImage::in(std::unique_ptr<FitsFile> file) {
    FitsImageUnit image = findImage(*file);
    const auto open = image.tiled ? openTiledImage : openPlainImage;
    return FitsImage(open(std::move(file), std::move(image)));
}

FitsImage::FitsImage(OpenedFits opened)
    : width_(opened.width),
      height_(opened.height),
      bottomUp_(opened.header.isBottomUp()),
      mayHoldBlanks_(opened.mayHoldBlanks),
      header_(std::move(opened.header)),
      pixels_(std::move(opened.pixels)) {}

FitsImage::FitsImage(std::size_t width, std::size_t height, std::vector<float> pixels, FitsHeader header)
    : width_(width),
      height_(height),
      header_(std::move(header)),
      pixels_(std::make_unique<MemoryPixels>(width, std::move(pixels))) {}

FitsImage FitsImage::of(const platform::ImageArray& array) {
    std::vector<float> pixels;
    std::visit([&](const auto& values) { pixels.assign(values.begin(), values.end()); }, array.pixels());
    FitsImage image(array.width(), array.height(), std::move(pixels));
    image.mayHoldBlanks_ = std::holds_alternative<std::vector<float>>(array.pixels());
    return image;
}

FitsImage::~FitsImage() = default;
FitsImage::FitsImage(FitsImage&&) noexcept = default;
FitsImage& FitsImage::operator=(FitsImage&&) noexcept = default;

void FitsImage::readRows(std::size_t first, std::span<float> out) const {
    const std::size_t rows = out.size() / width_;
    if (rows * width_ != out.size() || first + rows > height_) {
        throw std::out_of_range("rows outside of the image");
    }
    if (!bottomUp_) {
        pixels_->read(first, out);
        return;
    }
    pixels_->read(height_ - first - rows, out);
    for (std::size_t top = 0, bottom = rows; top + 1 < bottom; ++top) {
        --bottom;
        std::swap_ranges(out.begin() + static_cast<std::ptrdiff_t>(top * width_),
                         out.begin() + static_cast<std::ptrdiff_t>((top + 1) * width_),
                         out.begin() + static_cast<std::ptrdiff_t>(bottom * width_));
    }
}

void FitsImage::readInRow(std::size_t row, std::size_t column, std::span<float> out) const {
    if (row >= height_ || column > width_ || out.size() > width_ - column)
        throw std::out_of_range("pixels outside of the image");
    pixels_->readInRow(bottomUp_ ? height_ - 1 - row : row, column, out);
}

std::optional<sky::TangentWcs> FitsImage::wcs() const {
    return wcsFromHeader(header_, static_cast<double>(height_), bottomUp_);
}

}  // namespace vantrel::fits

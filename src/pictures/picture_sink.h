// Takes a picture from the process that reads it.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <span>
#include <stdexcept>

#include "fits/raw_file.h"

namespace vantrel::pictures {

/// Why a picture can't be read, without the file's name.
class PictureError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct PictureHead {
    std::uint64_t width = 0, height = 0;
    std::array<char, 8> filters{};  ///< of a colour sensor, row after row, as "RGGB"; ends with a zero
    std::array<char, 16> date{};    ///< of the exposure, as "2026-03-21"
};

class PictureSink {
  public:
    explicit PictureSink(fits::RawFile& file) : file_(file) {}

    static constexpr std::uint64_t kMostPixels = 240'000'000;

    /// Comes first. Throws PictureError for what is no picture, or too large.
    void begin(const PictureHead& facts) {
        if (facts.width == 0 || facts.height == 0) throw PictureError("holds no pixels");
        if (facts.width > kMostPixels || facts.height > kMostPixels / facts.width)
            throw PictureError("the image is too large");
        file_.append(std::as_bytes(std::span(&facts, 1)));
    }
    /// The next row from the top.
    void addRow(std::span<const float> row) { file_.append(std::as_bytes(row)); }

  private:
    fits::RawFile& file_;
};

// Each reads the file into the sink, or throws PictureError.
void readJpeg(const std::filesystem::path& path, PictureSink& sink);
void readPng(const std::filesystem::path& path, PictureSink& sink);
void readTiff(const std::filesystem::path& path, PictureSink& sink);
void readRaw(const std::filesystem::path& path, PictureSink& sink);

}  // namespace vantrel::pictures

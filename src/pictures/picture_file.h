// Picture files of any kind as images: FITS, and what cameras and imaging programs write besides, as JPEG,
// PNG, TIFF and raw files. All but FITS are read by libraries that hostile files may crash, so they are read
// in a process of its own, with limits of memory and time. Colours are averaged; of raw files the sensor's
// own pixels are taken, colour filters and all.
#pragma once

#include <filesystem>

#include "fits/fits_image.h"

namespace vantrel::pictures {

enum class PictureKind { kFits, kJpeg, kPng, kTiff, kRaw };

/// By the first bytes, and raw files, which look like TIFF, by the name's ending. FITS is what is nothing
/// else.
PictureKind kindOf(const std::filesystem::path& path);

/// Opens the picture. What it says of itself beside its pixels (a raw file's date and colour filters) stands
/// in the header as FITS files have it. Throws FitsError for anything that isn't a sound picture.
fits::FitsImage openPicture(const std::filesystem::path& path);

}  // namespace vantrel::pictures

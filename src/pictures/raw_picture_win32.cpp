#include "pictures/picture_sink.h"

namespace vantrel::pictures {

/// The library for them isn't built for Windows.
void readRaw(const std::filesystem::path& /*path*/, PictureSink& /*sink*/) {
    throw PictureError("raw pictures can't be read on Windows; FITS, JPEG, PNG and TIFF can");
}

}  // namespace vantrel::pictures
